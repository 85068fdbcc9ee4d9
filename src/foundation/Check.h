// The check forms. Each evaluates its expression once, turns the result into an ErrorCode
// (see ToErrorCode), and on failure reports the expression's source text, wrapped as
// "((" expression "))", with the code. Each yields the ErrorCode, so the caller can go on
// or return code.FailureAs<T>():
//
//   if (auto code = CHECK_GUARDED(!url.empty()); code.Failed()) return code.FailureAs<bool>();
//
// CHECK_ERROR throws ErrorHandling::ErrorException on failure; the others return.
#pragma once

#include "foundation/ErrorCode.h"
#include "foundation/LiteString.h"
#include "foundation/Reporting.h"

namespace Reporting::internal {

using EntryPoint = void (*)(STLHelpers::litestring_a, const ErrorCode*);

template <class T>
inline ErrorCode Check(T&& result, STLHelpers::litestring_a checkText, EntryPoint report) {
    const ErrorCode code = ToErrorCode(static_cast<T&&>(result));
    if (code.Failed()) report(checkText, &code);
    return code;
}

}  // namespace Reporting::internal

#define LUMETTA_CHECK_(report, ...) \
    ::Reporting::internal::Check(   \
        (__VA_ARGS__), ::STLHelpers::litestring_a("((" #__VA_ARGS__ "))"), &::Reporting::report)

#define CHECK_WARNING(...) LUMETTA_CHECK_(ReportWarning, __VA_ARGS__)
#define CHECK_ERROR(...) LUMETTA_CHECK_(ReportError, __VA_ARGS__)
#define CHECK_GUARDED(...) LUMETTA_CHECK_(ReportGuarded, __VA_ARGS__)
#define CHECK_DEBUG(...) LUMETTA_CHECK_(ReportDebug, __VA_ARGS__)
