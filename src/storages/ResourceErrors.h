// The error codes of the resource library and of the storage system, as Boost.System
// categories, and the optional-error-pointer convention of the storages.
//
// Convention: an operation takes a `boost::system::error_code* error` last. On failure
// with a pointer it stores the code there and returns an empty result; without one it
// throws boost::system::system_error built from the code.
#pragma once

#include <boost/system/error_code.hpp>
#include <boost/system/system_error.hpp>

namespace ResourceLib {

enum ResourceError : int {
    None = 0,
    ResourceNotFound = 1,
    InvalidResourceID = 2,
    InvalidResourceName = 3,
    NotSupported = 4,
    InvalidStorageState = 5,
    InvalidResource = 6,
};

// name() "Resource error"; message(code) the code's name ("None" for codes outside 0..6).
class error_category : public boost::system::error_category {
public:
    const char* name() const noexcept override;
    std::string message(int code) const override;
};

// The one instance of the process.
const error_category& GetErrorCategory();

inline boost::system::error_code MakeErrorCode(ResourceError code) {
    return {code, GetErrorCategory()};
}

// Reports `code` by the convention above: stored in *error, or thrown when error is null.
void ReportError(boost::system::error_code* error, const boost::system::error_code& code);
inline void ReportError(boost::system::error_code* error, ResourceError code) {
    ReportError(error, MakeErrorCode(code));
}

}  // namespace ResourceLib

namespace StorageSystem {

enum StorageError : int {
    None = 0,
    NullPointer = 1,
    DriverAlreadyRegistered = 2,
    InvalidMarker = 3,
    DriversNotRegistered = 4,
    InvalidPath = 5,
    ItemIsNotGroup = 6,
    ItemIsGroup = 7,
    InvalidSource = 8,
    InvalidAccessMode = 9,
    ItemNotFound = 10,
    IncompatibleDriver = 11,
};

// name() "Storage system error"; message(code) the code's name ("None" outside 0..11).
class error_category : public boost::system::error_category {
public:
    const char* name() const noexcept override;
    std::string message(int code) const override;
};

const error_category& GetErrorCategory();

inline boost::system::error_code MakeErrorCode(StorageError code) {
    return {code, GetErrorCategory()};
}

}  // namespace StorageSystem
