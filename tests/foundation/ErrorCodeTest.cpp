#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "foundation/ErrorCode.h"
#include "foundation/ErrorCodeText.h"
#include "foundation/TextConversion.h"

namespace {

TEST(ErrorCode, Win32RuleAndConditions) {
    EXPECT_EQ(ErrorCode::FromWin32(5).Value(), static_cast<HRESULT>(0x80070005u));
    EXPECT_EQ(ErrorCode::FromWin32(0).Value(), 0);
    // Only the lower 16 bits survive; a number that already looks like an HRESULT stays.
    EXPECT_EQ(ErrorCode::FromWin32(0x12345).Value(), static_cast<HRESULT>(0x80072345u));
    EXPECT_EQ(ErrorCode::FromWin32(0x80004005u).Value(), E_FAIL);

    int x = 0;
    int* none = nullptr;
    EXPECT_EQ(ToErrorCode(false).Value(), E_FAIL);
    EXPECT_EQ(ToErrorCode(true).Value(), S_OK);
    EXPECT_EQ(ToErrorCode(none).Value(), E_FAIL);
    EXPECT_EQ(ToErrorCode(&x).Value(), S_OK);
    EXPECT_EQ(ToErrorCode(std::shared_ptr<int>()).Value(), E_FAIL);
    EXPECT_EQ(ToErrorCode(S_FALSE).Value(), S_FALSE);
    EXPECT_EQ(ToErrorCode(Win32Error{2}).Value(), static_cast<HRESULT>(0x80070002u));
}

TEST(ErrorCode, FailureValuesAndTheBadCastOfASuccess) {
    const ErrorCode failed(E_FAIL);
    EXPECT_FALSE(failed.FailureAs<bool>());
    EXPECT_EQ(failed.FailureAs<int*>(), nullptr);
    EXPECT_EQ(failed.FailureAs<std::wstring>(), L"");
    EXPECT_EQ(failed.FailureAs<ErrorCode>(), failed);

    try {
        (void)ErrorCode(S_OK).FailureAs<std::wstring>();
        FAIL() << "a success code has no failure value";
    } catch (const std::bad_cast& e) {
        EXPECT_STREQ(e.what(), "ErrorCode to non-empty object or pointer");
    }
}

TEST(ErrorCodeText, FormsOfTheNumberAndTheMessage) {
    // Wrapped Win32 errors (E_OUTOFMEMORY, E_INVALIDARG) show their Win32 number; a code
    // without text has nothing after ": ".
    const std::pair<HRESULT, const wchar_t*> cases[] = {
        {E_FAIL, L"Code 0x80004005: Unspecified error"},
        {ErrorCode::FromWin32(5).Value(), L"Code 5: Access is denied."},
        {E_OUTOFMEMORY,
         L"Code 14: Not enough memory resources are available to complete this operation."},
        {E_INVALIDARG, L"Code 87: The parameter is incorrect."},
        {static_cast<HRESULT>(0x80041234u), L"Code 0x80041234: "},
        {ErrorCode::FromWin32(9999).Value(), L"Code 9999: "},
        {S_FALSE, L"Code 1: Incorrect function."}};
    for (const auto& [code, text] : cases)
        EXPECT_EQ(ErrorHandling::ErrorCodeText(ErrorCode(code)), text) << code;
}

TEST(TextConversion, Utf8AndWide) {
    using STLHelpers::Utf8ToWide;
    using STLHelpers::WideToUtf8;
    EXPECT_EQ(Utf8ToWide("\xC3\x84rger"), L"\u00C4rger");
    EXPECT_EQ(WideToUtf8(L"\u00C4\U0001F600"), "\xC3\x84\xF0\x9F\x98\x80");
    // Explicit lengths include embedded NULs; -1 measures.
    EXPECT_EQ(Utf8ToWide("a\0b", 3), std::wstring(L"a\0b", 3));
    EXPECT_EQ(Utf8ToWide(nullptr, 5), L"");
    // Ill-formed input becomes U+FFFD instead of failing: a stray continuation byte, a
    // truncated sequence, an overlong form and an encoded surrogate.
    EXPECT_EQ(Utf8ToWide("a\x80"
                         "b"),
              L"a\uFFFDb");
    EXPECT_EQ(Utf8ToWide("\xE2\x82"), L"\uFFFD");
    EXPECT_EQ(Utf8ToWide("\xC0\xAF"), L"\uFFFD\uFFFD");
    EXPECT_EQ(Utf8ToWide("\xED\xA0\x80"), L"\uFFFD\uFFFD\uFFFD");
    const wchar_t surrogate[] = {static_cast<wchar_t>(0xD800), 0};
    EXPECT_EQ(WideToUtf8(surrogate), "\xEF\xBF\xBD");
}

}  // namespace
