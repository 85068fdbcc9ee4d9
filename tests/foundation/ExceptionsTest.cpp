#include <gtest/gtest.h>

#include <string>

#include "foundation/ExceptionsGuard.h"

namespace {

using ErrorHandling::AnyError;
using ErrorHandling::ErrorException;

// Each piece is written in turn; the message is the longest prefix of their sum that fits
// 1023 bytes and ends on a whole UTF-8 character.
TEST(ExceptionEx, TheMessageIsAPrefixOfWhatWasWrittenCutBeforeAWholeCharacter) {
    struct Case {
        const char* name;
        std::string head;   // narrow text written first
        std::wstring wide;  // then wide text
        std::string tail;   // then narrow text again
        std::string expected;
        bool cut = true;
    };
    const std::string a1022(1022, 'a'), a1021(1021, 'a');
    const Case cases[] = {
        {"fits", "x=", L"\u00C4", "!", "x=\xC3\x84!", false},
        {"a wide character over the end ends the text", a1022, L"\u00C4", "b", a1022},
        {"a narrow character over the end is not split", a1021, L"",
         "\xE2\x82\xAC"
         "b",
         a1021},
        {"a four-byte character over the end", a1021, L"", "\xF0\x9F\x98\x80", a1021},
        {"exactly full, then more", std::string(1023, 'a'), L"z", "z", std::string(1023, 'a')},
        {"a cut narrow piece stops later wide ones", a1022 + "bb", L"z", "", a1022 + "b"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ErrorException e;
        e << std::string_view(c.head) << std::wstring_view(c.wide) << std::string_view(c.tail);
        EXPECT_EQ(std::string(e.what()), c.expected);
        // A copy is cut the same way: what is written to it later is dropped as well.
        ErrorException copy(e);
        copy << "more";
        EXPECT_EQ(std::string(copy.what()), c.cut ? c.expected : c.expected + "more");
    }

    ErrorException numbers;
    numbers << "n=" << -17 << ' ' << 4294967295u;
    EXPECT_STREQ(numbers.what(), "n=-17 4294967295");

    // Streaming into a temporary keeps the derived type.
    EXPECT_THROW(throw ErrorException() << "boom " << 7, ErrorException);
}

template <class Throw>
AnyError Classify(Throw thrower) {
    return ErrorHandling::ClassifiedExceptionsGuard(thrower);
}

TEST(ClassifiedExceptionsGuard, ClassifiesTheFourFamiliesInOrder) {
    const AnyError none = Classify([] {});
    EXPECT_FALSE(none.isError);
    EXPECT_TRUE(!none);

    const AnyError win = Classify([] { throw ErrorHandling::exception_win(5, "denied \xC3\x84"); });
    EXPECT_TRUE(win.isError);
    EXPECT_FALSE(!win);
    EXPECT_STREQ(win.what(), "ERRNO denied \xC3\x84");

    EXPECT_STREQ(Classify([] { throw ErrorException() << "reported"; }).what(), "reported");

    EXPECT_STREQ(Classify([] { throw ErrorHandling::ComError(E_FAIL); }).what(),
                 "Error HRESULT 80004005");
    EXPECT_STREQ(
        Classify([] { throw ErrorHandling::ComError(E_NOTIMPL, L"Not implemented"); }).what(),
        "Error HRESULT 80004001: Not implemented");
    EXPECT_STREQ(Classify([] { throw ATL::CAtlException(E_FAIL); }).what(),
                 "Error CAtlException 80004005");

    // Other types pass through.
    EXPECT_THROW(Classify([] { throw 42; }), int);

    // Long messages are cut; a copy keeps the flag.
    const std::string longText(3000, 'y');
    const AnyError e = Classify([&] { throw std::runtime_error(longText); });
    const AnyError copy = e;
    EXPECT_TRUE(copy.isError);
    EXPECT_EQ(std::string(copy.what()), std::string(1023, 'y'));
}

}  // namespace
