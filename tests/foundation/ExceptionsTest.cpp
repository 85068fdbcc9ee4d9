#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <string>

#include "foundation/ExceptionsGuard.h"

// Counts heap allocations made on this thread, to show that the exception types keep
// their message inside themselves.
namespace {
thread_local long allocations = 0;
}
void* operator new(std::size_t n) {
    ++allocations;
    if (void* p = std::malloc(n ? n : 1)) return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept {
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}

namespace {

using ErrorHandling::AnyError;
using ErrorHandling::ErrorException;

TEST(ExceptionEx, KeepsAtMostCapacityMinusOneBytesWithoutAllocating) {
    const std::string longText(2000, 'x');
    const long before = allocations;
    ErrorException e;
    EXPECT_STREQ(e.what(), "");
    e << std::string_view(longText) << 42 << L"more";
    ErrorException copy(e);
    const long after = allocations;
    EXPECT_EQ(after, before);
    EXPECT_EQ(std::string(e.what()), std::string(1023, 'x'));
    EXPECT_STREQ(copy.what(), e.what());
}

TEST(ExceptionEx, WideTextIsUtf8AndNeverSplitAtTheEnd) {
    ErrorException e;
    e << L"\u00C4";
    EXPECT_STREQ(e.what(), "\xC3\x84");

    // 1022 bytes leave room for one more byte only: the two-byte character is dropped whole.
    ErrorException full;
    full << std::string(1022, 'a') << L"\u00C4" << "b";
    const std::string text = full.what();
    EXPECT_EQ(text.size(), 1023u);
    EXPECT_EQ(text.back(), 'b');

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
    EXPECT_STREQ(none.what(), "");

    const AnyError win = Classify([] { throw ErrorHandling::exception_win(5, "denied \xC3\x84"); });
    EXPECT_TRUE(win.isError);
    EXPECT_FALSE(!win);
    EXPECT_STREQ(win.what(), "ERRNO denied \xC3\x84");

    // A standard exception, including the bad-cast of a success code.
    EXPECT_STREQ(Classify([] { throw std::runtime_error("plain"); }).what(), "plain");
    EXPECT_STREQ(Classify([] { (void)ErrorCode(S_OK).FailureAs<bool>(); }).what(),
                 "ErrorCode to non-empty object or pointer");
    // Our own report exception is a standard exception too.
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
