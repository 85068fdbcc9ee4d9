#include "foundation/Reporting.h"

#include "foundation/ErrorCodeText.h"
#include "foundation/Exceptions.h"
#include "foundation/ExceptionsGuard.h"
#include "foundation/TextConversion.h"

namespace Reporting {
namespace {

// Constant-initialised, so the wiring holds before any dynamic initialiser can report.
constinit NotificationsDefault throwingSink{true};
constinit NotificationsDefault quietSink{false};  // kept for callers that want a silent sink
constinit ModuleGlobalReportingObject moduleReporter{&throwingSink};

std::wstring CheckTextToWide(STLHelpers::litestring_a checkText) {
    return STLHelpers::Utf8ToWide(checkText.data(), checkText.size());
}

}  // namespace

void ReportingObject::Report(std::wstring_view message, Level level, const ErrorCode* code) {
    std::wstring text;
    if (code != nullptr && code->Value() != 0) text = ErrorHandling::ErrorCodeText(*code);
    if (!message.empty() && !text.empty()) text += L' ';
    text += message;
    if (notifications != nullptr) notifications->Notify(this, text, level);
}

void NotificationsDefault::Notify(ReportingObject*, const std::wstring& text, Level level) {
    if (level != Error || !throwErrors) return;
    ErrorHandling::ErrorException e;
    e << text;
    throw e;
}

ReportingObject& GetModuleReportingObject() {
    (void)quietSink;
    return moduleReporter;
}

void ReportWarning(STLHelpers::litestring_a checkText, const ErrorCode* code) {
    GetModuleReportingObject().Report(CheckTextToWide(checkText), Warning, code);
}

void ReportError(STLHelpers::litestring_a checkText, const ErrorCode* code) {
    GetModuleReportingObject().Report(CheckTextToWide(checkText), Error, code);
}

void ReportGuarded(STLHelpers::litestring_a checkText, const ErrorCode* code) {
    (void)ErrorHandling::ClassifiedExceptionsGuard([&]() {
        GetModuleReportingObject().Report(CheckTextToWide(checkText), GuardedError, code);
    });
}

void ReportDebug(STLHelpers::litestring_a, const ErrorCode*) {}

}  // namespace Reporting
