#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "foundation/Check.h"
#include "foundation/Exceptions.h"
#include "foundation/RegisteredMessages.h"
#include "support/RecordingSink.h"

namespace {

using Reporting::ReportingObject;

// Puts a recording sink on the module's reporting object for one test.
class ReportingTest : public ::testing::Test {
protected:
    TestSupport::RecordingSink sink;
    const TestSupport::ScopedReportingSink installed{&sink};
};

TEST(Checks, InstalledSinkThrowsOnlyForErrorLevel) {
    const std::wstring name;
    EXPECT_TRUE(CHECK_ERROR(!name.empty() || true).Succeeded());
    EXPECT_EQ(CHECK_WARNING(!name.empty()).Value(), E_FAIL);
    // The code of a Win32 failure travels through the check unchanged.
    const Win32Error lerr{5};
    try {
        CHECK_ERROR(lerr);
        FAIL() << "an Error-level check must throw";
    } catch (const ErrorHandling::ErrorException& e) {
        EXPECT_STREQ(e.what(), "Code 5: Access is denied. ((lerr))");
    }
}

TEST_F(ReportingTest, ChecksReportTheirSourceTextAtTheirLevel) {
    int evaluations = 0;
    auto fail = [&] {
        ++evaluations;
        return false;
    };
    int* pExtra = nullptr;
    auto CreateThing = [](int, int*, const char*) { return 0; };

    CHECK_WARNING(fail());
    // The text is the source as written, spacing included.
    // clang-format off
    CHECK_GUARDED(CreateThing(0,&evaluations,"a, b"), fail());
    // clang-format on
    CHECK_DEBUG(pExtra);
    CHECK_WARNING(true);

    EXPECT_EQ(evaluations, 2) << "each expression is evaluated exactly once";
    ASSERT_EQ(sink.reports.size(), 2u) << "debug checks and passing checks report nothing";
    EXPECT_EQ(sink.reports[0].first, L"Code 0x80004005: Unspecified error ((fail()))");
    EXPECT_EQ(sink.reports[0].second, Reporting::Warning);
    EXPECT_EQ(
        sink.reports[1].first,
        L"Code 0x80004005: Unspecified error ((CreateThing(0,&evaluations,\"a, b\"), fail()))");
    EXPECT_EQ(sink.reports[1].second, Reporting::GuardedError);
}

TEST_F(ReportingTest, GuardedReportsSwallowAThrowingSink) {
    sink.throwAlways = true;
    const ErrorCode code(E_FAIL);
    EXPECT_NO_THROW(Reporting::ReportGuarded("((m_pInfo))", &code));
    EXPECT_THROW(Reporting::ReportWarning("((hr))", &code), std::runtime_error);
    EXPECT_EQ(sink.reports.size(), 2u);
}

TEST_F(ReportingTest, ComposesCodeTextAndMessage) {
    ReportingObject& reporter = Reporting::GetModuleReportingObject();
    const ErrorCode none(S_OK);
    const ErrorCode denied = ErrorCode::FromWin32(5);
    reporter.Report(L"((x))", Reporting::Warning, &none);
    reporter.Report(L"", Reporting::Warning, &denied);
    reporter.Report(L"((y))", Reporting::Error, &denied);
    reporter.Report(L"", Reporting::Warning, &none);
    ASSERT_EQ(sink.reports.size(), 4u);
    EXPECT_EQ(sink.reports[0].first, L"((x))");
    EXPECT_EQ(sink.reports[1].first, L"Code 5: Access is denied.");
    EXPECT_EQ(sink.reports[2].first, L"Code 5: Access is denied. ((y))");
    EXPECT_EQ(sink.reports[3].first, L"");

    // Without a sink a report goes nowhere, even at level Error.
    ReportingObject silent(nullptr);
    EXPECT_NO_THROW(silent.Report(L"((z))", Reporting::Error, &denied));
}

TEST(RegisteredMessages, SameNameSameIdentifier) {
    const unsigned a = Reporting::RegisterWindowMessage(L"LumettaTestMessage");
    EXPECT_GE(a, 0xC000u);
    EXPECT_EQ(Reporting::RegisterWindowMessage(L"lumettatestmessage"), a);
    EXPECT_NE(Reporting::RegisterWindowMessage(L"LumettaOtherMessage"), a);
    EXPECT_EQ(Reporting::NotificationSinkMessage(0), Reporting::NotificationSinkMessage(1));
    EXPECT_EQ(Reporting::RegisterWindowMessage(L"QzNotificationSinkMTOnEvent"),
              Reporting::NotificationSinkMessage(0));
}

}  // namespace
