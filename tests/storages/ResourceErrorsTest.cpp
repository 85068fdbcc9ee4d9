#include <gtest/gtest.h>

#include "storages/ResourceErrors.h"

namespace {

// Storing and throwing the codes is checked wherever a storage fails (StorageBaseTest).
TEST(ResourceErrors, CategoriesNameTheirCodes) {
    const auto& resource = ResourceLib::GetErrorCategory();
    EXPECT_STREQ(resource.name(), "Resource error");
    EXPECT_EQ(resource.message(6), "InvalidResource");
    EXPECT_EQ(resource.message(2), "InvalidResourceID");
    EXPECT_EQ(resource.message(7), "None");
    EXPECT_EQ(resource.message(-1), "None");

    const auto& storage = StorageSystem::GetErrorCategory();
    EXPECT_STREQ(storage.name(), "Storage system error");
    EXPECT_EQ(storage.message(11), "IncompatibleDriver");
    EXPECT_EQ(storage.message(12), "None");
    EXPECT_NE(ResourceLib::MakeErrorCode(ResourceLib::ResourceNotFound),
              boost::system::error_code(1, storage))
        << "equal values of different categories are different errors";
}

}  // namespace
