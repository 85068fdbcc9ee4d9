// ClassifiedExceptionsGuard runs a callable and turns an exception of the four known
// families into an AnyError that holds an error; anything else passes through unchanged.
// It never reports or logs: the caller decides what the result means.
//
// Thread safety: keeps no state; any thread.
#pragma once

#include <cstdio>
#include <exception>
#include <typeinfo>

#include "foundation/Exceptions.h"

namespace ErrorHandling {

namespace internal {
// The hexadecimal form used by the guard's messages: lowercase digits, no prefix.
inline void AppendHex(AnyError& out, HRESULT hr) {
    char digits[9];
    std::snprintf(digits, sizeof(digits), "%x", static_cast<unsigned>(hr));
    out << digits;
}
inline const char* OrEmpty(const char* text) {
    return text ? text : "";
}
}  // namespace internal

template <class Callable>
AnyError ClassifiedExceptionsGuard(Callable&& callable) {
    try {
        callable();
        return AnyError(AnyError::NoError);
    } catch (const exception_win& e) {
        AnyError result(AnyError::Error);
        // Messages pass through the wide form: ill-formed UTF-8 becomes U+FFFD.
        result << "ERRNO " << STLHelpers::Utf8ToWide(internal::OrEmpty(e.what()));
        return result;
    } catch (const std::exception& e) {
        AnyError result(AnyError::Error);
        result << STLHelpers::Utf8ToWide(internal::OrEmpty(e.what()));
        return result;
    } catch (const ComError& e) {
        AnyError result(AnyError::Error);
        result << "Error HRESULT ";
        internal::AppendHex(result, e.Error());
        if (const wchar_t* text = e.ErrorMessage(); text != nullptr && *text != L'\0')
            result << ": " << text;
        return result;
    } catch (const ATL::CAtlException& e) {
        AnyError result(AnyError::Error);
        result << "Error CAtlException ";
        internal::AppendHex(result, e.m_hr);
        return result;
    }
}

}  // namespace ErrorHandling
