// Reporting: a failed check hands its text and code to the module's reporting object,
// which composes one line and passes it to its sink. The installed sink turns reports of
// level Error into ErrorHandling::ErrorException and ignores the others.
//
// Thread safety: Report composes in local storage and the installed sinks hold only
// constant data, so any thread may report at any time. A custom sink must be safe for
// concurrent calls.
#pragma once

#include <string>
#include <string_view>

#include "foundation/ErrorCode.h"
#include "foundation/LiteString.h"

namespace Reporting {

enum Level : int {
    Warning = 0,       // tolerated: the caller goes on, often with a fallback
    Error = 1,         // ends the operation: the installed sink throws
    GuardedError = 2,  // reported, but the report itself never throws
};

class ReportingObject {
public:
    class Notifications {
    public:
        virtual ~Notifications() = default;
        virtual void Notify(ReportingObject* reporter, const std::wstring& text, Level level) = 0;
    };

    constexpr explicit ReportingObject(Notifications* sink = nullptr) : notifications(sink) {}
    virtual ~ReportingObject() = default;

    // Composes "<code text> <message>" (the code text only when *code is not 0, the blank
    // only between two non-empty parts) and hands it to the sink, if there is one.
    // Throws whatever the sink throws.
    void Report(std::wstring_view message, Level level, const ErrorCode* code);

    Notifications* notifications;
};

class NotificationsDefault : public ReportingObject::Notifications {
public:
    constexpr explicit NotificationsDefault(bool throwErrors) : throwErrors(throwErrors) {}
    // Throws ErrorHandling::ErrorException for level Error when throwErrors is set.
    void Notify(ReportingObject* reporter, const std::wstring& text, Level level) override;

    const bool throwErrors;
};

class ModuleGlobalReportingObject : public ReportingObject {
public:
    using ReportingObject::ReportingObject;
};

// The module's reporting object, wired to the throwing sink before any dynamic
// initialisation runs. Every check reports to it.
ReportingObject& GetModuleReportingObject();

// The entry points of the check forms. checkText is UTF-8.
void ReportWarning(STLHelpers::litestring_a checkText, const ErrorCode* code);
// Throws ErrorHandling::ErrorException through the installed sink.
void ReportError(STLHelpers::litestring_a checkText, const ErrorCode* code);
// Never lets an exception of the classified families escape.
void ReportGuarded(STLHelpers::litestring_a checkText, const ErrorCode* code);
void ReportDebug(STLHelpers::litestring_a checkText, const ErrorCode* code);

}  // namespace Reporting
