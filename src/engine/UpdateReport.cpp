#include "engine/UpdateReport.h"

#include "foundation/ErrorCode.h"
#include "foundation/ErrorCodeText.h"
#include "foundation/TextConversion.h"

namespace Engine {
namespace {

std::wstring Wide(const std::string& text) {
    return STLHelpers::Utf8ToWide(text);
}

std::wstring Number(uint64_t value) {
    return std::to_wstring(value);
}

bool IsErrorStatus(int status) {
    return status >= 400;
}

// "N bytes", or "N of M bytes" when the answer gave its size.
std::wstring ByteCount(const UpdateReport& report) {
    std::wstring text = Number(report.bytesReceived);
    const UpdateReport::Response* final = report.FinalResponse();
    if (final && final->contentLength && *final->contentLength != 0)
        text += L" of " + Number(*final->contentLength);
    return text + L" bytes";
}

// The system's message for a Win32 error ("Code 2: ..."), its insert filled with `path`.
std::wstring ErrorText(uint32_t error, const std::wstring& path) {
    std::wstring text = ErrorHandling::ErrorCodeText(ErrorCode::FromWin32(error));
    if (const size_t insert = text.find(L"%1"); insert != std::wstring::npos)
        text.replace(insert, 2, path);
    return text;
}

// What went wrong with the transfer, as the middle of a sentence.
std::wstring TransferProblem(const UpdateReport& report) {
    const std::wstring host = report.proxy.empty() ? L"the server" : L"the proxy";
    switch (report.transfer) {
        case TransferEnd::NotStarted:
            return L"the download did not begin";
        case TransferEnd::Complete:
            return L"the download completed";
        case TransferEnd::BadAddress:
            return L"the download address names no host";
        case TransferEnd::NameNotResolved:
            return L"the name of " + host + L" could not be resolved";
        case TransferEnd::Refused:
            return host + L" refused the connection";
        case TransferEnd::ConnectFailed:
            return L"no connection to " + host + L" could be made";
        case TransferEnd::ConnectTimeout:
            return L"no connection to " + host + L" was made within " + Number(report.timeoutMs) +
                   L" ms (connect time-out)";
        case TransferEnd::ReceiveTimeout:
            return host + L" sent nothing for " + Number(report.timeoutMs) +
                   L" ms (receive time-out) after " + Number(report.bytesReceived) + L" bytes";
        case TransferEnd::Cut:
            return L"the connection closed after " + ByteCount(report);
        case TransferEnd::BadRedirect:
            return L"a redirect led nowhere that can be followed";
        case TransferEnd::TooManyRedirects:
            return L"the server redirected too many times";
        case TransferEnd::WriteFailed:
            return L"the setup file could not be written";
        case TransferEnd::Cancelled:
            return L"the update was cancelled during the download";
        case TransferEnd::Failed:
            return L"the download failed";
    }
    return L"the download failed";
}

}  // namespace

ReportLine DescribeRequest(const UpdateReport& report) {
    std::wstring text = L"download " + report.url + L" via ";
    if (report.proxy.empty()) {
        text += L"a direct connection (no proxy)";
    } else {
        text += L"proxy " + Wide(report.proxy);
        if (!report.noProxy.empty()) text += L", except for " + Wide(report.noProxy);
    }
    return {2, text};
}

ReportLine DescribeResponse(const UpdateReport::Response& response, bool redirect) {
    std::wstring text = L"response " + Number(static_cast<uint64_t>(response.status)) +
                        L", Content-Length " +
                        (response.contentLength ? Number(*response.contentLength) : L"none");
    if (redirect) text += L", redirected to " + Wide(response.location);
    return {IsErrorStatus(response.status) ? 3 : 2, text};
}

ReportLine DescribeTransfer(const UpdateReport& report) {
    const bool complete = report.transfer == TransferEnd::Complete;
    std::wstring text = L"received " + ByteCount(report) + L": ";
    text += complete ? L"complete" : TransferProblem(report);
    if (!report.transferError.empty()) text += L" (" + Wide(report.transferError) + L")";
    return {complete ? 2 : 4, text};
}

ReportLine DescribeSetupFile(const UpdateReport& report) {
    return {2, L"setup file " + report.setupPath};
}

ReportLine DescribeSetupStart(const UpdateReport& report) {
    if (report.setup == SetupEnd::NotStarted)
        return {4, L"setup could not be started: " + report.setupCommandLine + L" (" +
                       ErrorText(report.startError, report.setupPath) + L")"};
    return {2, L"setup started: " + report.setupCommandLine};
}

ReportLine DescribeSetupEnd(const UpdateReport& report) {
    const std::wstring limit = report.setupLimitMs == 0xFFFFFFFFu
                                   ? L"no time limit"
                                   : L"time limit " + Number(report.setupLimitMs) + L" ms";
    switch (report.setup) {
        case SetupEnd::Exited:
            return {2, L"setup exited with code " +
                           (report.exitCode ? std::to_wstring(*report.exitCode) : L"unknown") +
                           L" (" + limit + L" not reached)"};
        case SetupEnd::TimedOut:
            return {4, L"setup still ran when its " + limit + L" ended the wait"};
        case SetupEnd::WaitFailed:
            return {4, L"the wait for the setup failed"};
        case SetupEnd::NotRun:
        case SetupEnd::NotStarted:
        case SetupEnd::Running:
            break;
    }
    return DescribeSetupStart(report);
}

std::vector<ReportLine> DescribeRun(const UpdateReport& report) {
    std::vector<ReportLine> lines;
    if (report.transfer == TransferEnd::NotStarted) return lines;
    lines.push_back(DescribeRequest(report));
    for (const UpdateReport::Response& response : report.responses)
        lines.push_back(DescribeResponse(response, !response.location.empty()));
    lines.push_back(DescribeTransfer(report));
    if (report.setup == SetupEnd::NotRun) return lines;
    lines.push_back(DescribeSetupStart(report));
    if (report.setup != SetupEnd::NotStarted && report.setup != SetupEnd::Running)
        lines.push_back(DescribeSetupEnd(report));
    return lines;
}

std::wstring FailureReason(const UpdateReport& report) {
    const UpdateReport::Response* final = report.FinalResponse();
    const std::wstring answered =
        final && IsErrorStatus(final->status)
            ? L"the server answered " + Number(static_cast<uint64_t>(final->status)) + L" and "
            : L"";
    if (report.transfer != TransferEnd::Complete) {
        if (report.cancelled) return L"the update was cancelled during the download";
        return answered + TransferProblem(report);
    }
    if (!report.signatureProblem.empty())
        return L"the setup's signature was refused: " +
               STLHelpers::Utf8ToWide(report.signatureProblem);
    switch (report.setup) {
        case SetupEnd::NotStarted:
            return answered + (answered.empty() ? L"the setup file" : L"the file it sent") +
                   L" could not be started (" + ErrorText(report.startError, report.setupPath) +
                   L")";
        case SetupEnd::TimedOut:
            return answered + L"the setup did not end within its time limit of " +
                   Number(report.setupLimitMs) + L" ms";
        case SetupEnd::WaitFailed:
            return L"the wait for the setup failed";
        case SetupEnd::NotRun:
            return report.cancelled ? L"the update was cancelled before the setup ran"
                                    : L"the setup was not run";
        case SetupEnd::Running:
            return L"the setup was still running";
        case SetupEnd::Exited:
            break;
    }
    return report.cancelled ? L"the update was cancelled" : L"";
}

}  // namespace Engine
