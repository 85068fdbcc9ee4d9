// Fonts and the desktop palette need a GUI application: one session for the whole program.
#include <gtest/gtest.h>

#include <memory>

#include "graphics/GuiSession.h"

namespace {

class GuiEnvironment : public ::testing::Environment {
public:
    void SetUp() override { session_ = std::make_unique<CommonGuiLib::GuiSession>(); }
    void TearDown() override { session_.reset(); }

private:
    std::unique_ptr<CommonGuiLib::GuiSession> session_;
};

[[maybe_unused]] ::testing::Environment* const registered =
    ::testing::AddGlobalTestEnvironment(new GuiEnvironment);

}  // namespace
