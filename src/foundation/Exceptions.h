// The system's exception types.
//
// ErrorException is thrown for reports of level Error; AnyError is what the classified
// guard returns; exception_win is the family for OS errors that the guard recognises
// first. ComError and ATL::CAtlException stand in for the two platform exception types
// that the guard classifies: they carry an HRESULT and are deliberately not derived from
// std::exception, as their originals are not.
//
// Thread safety: plain values.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "foundation/ErrorCode.h"
#include "foundation/ExceptionEx.h"

namespace ErrorHandling {

class ErrorException : public STLHelpers::exception_ex<1024, 65001> {};

class AnyError : public ErrorException {
public:
    enum Kind { NoError, Error };

    explicit AnyError(Kind kind) noexcept : isError(kind == Error) {}

    bool operator!() const noexcept { return !isError; }

    bool isError;
};

// An operating-system error: the Win32 error number and a UTF-8 message.
class exception_win : public std::exception {
public:
    exception_win(uint32_t error, std::string message)
        : m_error(error), m_message(std::move(message)) {}
    const char* what() const noexcept override { return m_message.c_str(); }
    uint32_t Error() const noexcept { return m_error; }

private:
    uint32_t m_error;
    std::string m_message;
};

// A COM error: an HRESULT and, optionally, the COM library's text for it.
class ComError {
public:
    explicit ComError(HRESULT hr, std::wstring message = {})
        : m_hr(hr), m_message(std::move(message)) {}
    HRESULT Error() const noexcept { return m_hr; }
    // Null when no text was given, as the COM library gives no text for unknown codes.
    const wchar_t* ErrorMessage() const noexcept {
        return m_message.empty() ? nullptr : m_message.c_str();
    }

private:
    HRESULT m_hr;
    std::wstring m_message;
};

}  // namespace ErrorHandling

namespace ATL {

class CAtlException {
public:
    explicit CAtlException(HRESULT hr) noexcept : m_hr(hr) {}
    HRESULT m_hr;
};

}  // namespace ATL
