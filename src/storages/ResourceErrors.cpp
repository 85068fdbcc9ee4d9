#include "storages/ResourceErrors.h"

#include <array>

namespace ResourceLib {

const char* error_category::name() const noexcept {
    return "Resource error";
}

std::string error_category::message(int code) const {
    static constexpr std::array<const char*, 7> kNames = {
        "None",         "ResourceNotFound",    "InvalidResourceID", "InvalidResourceName",
        "NotSupported", "InvalidStorageState", "InvalidResource"};
    if (code < 0 || code >= int(kNames.size())) code = 0;
    return kNames[code];
}

const error_category& GetErrorCategory() {
    static const error_category instance;
    return instance;
}

void ReportError(boost::system::error_code* error, const boost::system::error_code& code) {
    if (error == nullptr) throw boost::system::system_error(code);
    *error = code;
}

}  // namespace ResourceLib

namespace StorageSystem {

const char* error_category::name() const noexcept {
    return "Storage system error";
}

std::string error_category::message(int code) const {
    static constexpr std::array<const char*, 12> kNames = {"None",
                                                           "NullPointer",
                                                           "DriverAlreadyRegistered",
                                                           "InvalidMarker",
                                                           "DriversNotRegistered",
                                                           "InvalidPath",
                                                           "ItemIsNotGroup",
                                                           "ItemIsGroup",
                                                           "InvalidSource",
                                                           "InvalidAccessMode",
                                                           "ItemNotFound",
                                                           "IncompatibleDriver"};
    if (code < 0 || code >= int(kNames.size())) code = 0;
    return kNames[code];
}

const error_category& GetErrorCategory() {
    static const error_category instance;
    return instance;
}

}  // namespace StorageSystem
