// Engine::UpdateReport: what happened during one update, as facts rather than text: the
// request, every response, how the transfer ended, how the setup ran, and what was done to
// the product. The engine fills it as the run goes; the diagnostic log lines and the
// diagnostic tool's summary are both worded from it by the functions below, so they tell the
// same story.
//
// Thread safety: the download and setup parts are written by the worker thread while it
// runs, the product parts by the controlling thread; read it only while neither writes (in
// practice after the worker thread has ended).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Engine {

// How the transfer of the setup program ended.
enum class TransferEnd {
    NotStarted,        // no request was sent
    Complete,          // the whole body arrived and was written
    BadAddress,        // the URL names no host that can be asked
    NameNotResolved,   // the host name could not be resolved
    Refused,           // the server refused the connection
    ConnectFailed,     // the connection could not be made for another reason
    ConnectTimeout,    // the connection was not made within the connect time-out
    ReceiveTimeout,    // nothing arrived within the receive time-out
    Cut,               // the connection closed before the whole body arrived
    BadRedirect,       // a redirect named no place that can be followed
    TooManyRedirects,  // more redirects than are followed
    WriteFailed,       // the setup file could not be written
    Cancelled,         // the update was cancelled
    Failed,            // anything else; the transfer library's text tells more
};

// How the setup program ran.
enum class SetupEnd {
    NotRun,      // the download did not complete
    NotStarted,  // it could not be started; startError tells why
    Running,     // started, and not yet waited for to the end
    Exited,      // it ended by itself (or by a signal); exitCode holds the status
    TimedOut,    // the time limit ended the wait; the setup was left running
    WaitFailed,  // the wait for it failed
};

struct UpdateReport {
    // One response of the server: a redirect or the final answer.
    struct Response {
        int status = 0;
        std::optional<uint32_t> contentLength;  // none: missing or unreadable
        std::string location;                   // where a followed redirect leads
    };

    // Download.
    std::wstring url;                 // as requested: "http://" put before it, port 80, encoded
    std::string proxy;                // empty: a direct connection
    std::string noProxy;              // hosts reached directly despite the proxy
    std::vector<Response> responses;  // in order; the last one is the final answer
    uint64_t bytesReceived = 0;       // of the final answer's body
    TransferEnd transfer = TransferEnd::NotStarted;
    std::string transferError;  // the transfer library's own text, when it had one
    uint32_t timeoutMs = 0;     // the time-out that ended the transfer, if one did

    // Signature check (only with a public key): why the setup was refused, empty otherwise.
    std::string signatureProblem;

    // Installation.
    std::wstring setupPath;
    std::wstring setupCommandLine;
    SetupEnd setup = SetupEnd::NotRun;
    uint32_t startError = 0;  // Win32 error number of a failed start
    std::optional<int> exitCode;
    uint32_t setupLimitMs = 0xFFFFFFFFu;  // the wait's limit (0xFFFFFFFF: none)

    bool cancelled = false;

    // The final answer, or null before any.
    const Response* FinalResponse() const {
        return responses.empty() ? nullptr : &responses.back();
    }
};

// One line of the story with the log level it is written at (2 for what went as it should,
// 3 for a doubtful answer, 4 for a failure).
struct ReportLine {
    int level = 2;
    std::wstring text;
};

// The lines, each worded for the moment it happens.
ReportLine DescribeRequest(const UpdateReport& report);
ReportLine DescribeResponse(const UpdateReport::Response& response, bool redirect);
ReportLine DescribeTransfer(const UpdateReport& report);
ReportLine DescribeSetupFile(const UpdateReport& report);
ReportLine DescribeSetupStart(const UpdateReport& report);
ReportLine DescribeSetupEnd(const UpdateReport& report);

// The run so far from the request on, in the order it happened.
std::vector<ReportLine> DescribeRun(const UpdateReport& report);

// Why a failed run failed, in words ("the server answered 404 and the file it sent could
// not be started (...)"); empty when nothing in the report failed.
std::wstring FailureReason(const UpdateReport& report);

}  // namespace Engine
