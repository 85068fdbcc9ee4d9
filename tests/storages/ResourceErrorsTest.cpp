#include <gtest/gtest.h>

#include "storages/ResourceErrors.h"

namespace {

TEST(ResourceErrors, CategoriesNameTheirCodes) {
    const auto& resource = ResourceLib::GetErrorCategory();
    EXPECT_STREQ(resource.name(), "Resource error");
    EXPECT_EQ(resource.message(6), "InvalidResource");
    EXPECT_EQ(resource.message(2), "InvalidResourceID");
    EXPECT_EQ(resource.message(7), "None");
    EXPECT_EQ(resource.message(1000), "None");
    EXPECT_EQ(resource.message(-1), "None");

    const auto& storage = StorageSystem::GetErrorCategory();
    EXPECT_STREQ(storage.name(), "Storage system error");
    EXPECT_EQ(storage.message(11), "IncompatibleDriver");
    EXPECT_EQ(storage.message(12), "None");
    EXPECT_NE(ResourceLib::MakeErrorCode(ResourceLib::ResourceNotFound),
              boost::system::error_code(1, storage))
        << "equal values of different categories are different errors";
}

TEST(ResourceErrors, ReportErrorStoresOrThrows) {
    boost::system::error_code stored;
    ResourceLib::ReportError(&stored, ResourceLib::NotSupported);
    EXPECT_EQ(stored, ResourceLib::MakeErrorCode(ResourceLib::NotSupported));

    try {
        ResourceLib::ReportError(nullptr, ResourceLib::InvalidResourceName);
        ADD_FAILURE() << "no exception";
    } catch (const boost::system::system_error& e) {
        EXPECT_EQ(e.code().value(), ResourceLib::InvalidResourceName);
        EXPECT_EQ(&e.code().category(), &ResourceLib::GetErrorCategory());
    }
}

}  // namespace
