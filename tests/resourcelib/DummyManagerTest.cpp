#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include "resourcelib/DummyManagerImpl.h"
#include "resourcelib/ManagerImpl.h"

namespace {

using namespace ResourceLib;

TEST(DummyManagerImpl, HasNothingAndRefusesEverything) {
    auto dummy = boost::make_shared<DummyManagerImpl>();
    EXPECT_EQ(dummy->GetResourceId(L"Close", ResourceType_String), 0) << "not kNoResourceId";
    EXPECT_EQ(dummy->GetString(3), L"");

    auto real = boost::make_shared<ManagerImpl>();
    EXPECT_FALSE(dummy->SetParent(real));
    EXPECT_EQ(real.use_count(), 1) << "the argument is not kept";
    EXPECT_FALSE(dummy->SetLanguage(L"en"));
    dummy->SetThrowOnFailure(true);
    EXPECT_FALSE(dummy->GetThrowOnFailure());
    EXPECT_EQ(dummy->GetString(L"Missing"), L"") << "never throws";

    EXPECT_TRUE(dummy->SetLanguageVerify(L""));
    EXPECT_FALSE(dummy->SetLanguageVerify(L"en"));
}

}  // namespace
