#include "engine/UpdateWorker.h"

#include "engine/Timeouts.h"
#include "engine/internal/ReportLog.h"
#include "engine/internal/SetupProcess.h"
#include "engine/internal/SignatureDownload.h"
#include "foundation/Log.h"
#include "foundation/TextConversion.h"
#include "system/CommandLine.h"
#include "system/FileHelpers.h"
#include "system/ShellHelpers.h"

namespace Engine {
namespace {

// Writer names of the worker's log lines.
constexpr const wchar_t* kSignatureWriter = L"Engine:UpdateWorker:SetupIsSigned@1";
constexpr const wchar_t* kSetupFileWriter = L"Engine:UpdateWorker:UpdateWorker@1";
constexpr const wchar_t* kSetupStartWriter = L"Engine:UpdateWorker:Install@1";
constexpr const wchar_t* kSetupEndWriter = L"Engine:UpdateWorker:Install@2";
constexpr const wchar_t* kOutcomeWriter = L"Engine:UpdateWorker:Run@1";

}  // namespace

UpdateWorker::UpdateWorker(std::wstring downloadURL, bool silent, IUpdateEvents* events,
                           std::wstring setupFilePath, std::wstring publicKey)
    : events(events),
      silent(silent),
      downloadURL(std::move(downloadURL)),
      setupFilePath(setupFilePath.empty()
                        ? System::MakeUniqueFilePath(System::GetTempFolder(), kSetupFileTemplate)
                        : std::move(setupFilePath)),
      publicKey(std::move(publicKey)),
      writer(this->setupFilePath, this),
      downloader(this->downloadURL, &writer),
      setupProcess(std::make_unique<SetupProcess>()) {
    // The download watches the stop request so that a cancel does not wait out a slow
    // server; the cancel flag alone only stops it between blocks.
    downloader.SetStopFlag(&stopRequested);
    downloader.SetReport(&report);
    report.setupPath = this->setupFilePath;
    internal::LogReportLine(kSetupFileWriter, [&] { return DescribeSetupFile(report); });
}

UpdateWorker::~UpdateWorker() {
    StopEverything();
}

uint32_t UpdateWorker::Run() {
    SetState(Connecting);
    uint32_t result = 1;
    if (Download() && !failed.load()) {
        SetState(Installing);
        failed.store(!Install());
        result = 0;
    } else {
        if (cancelled.load() && report.transfer != TransferEnd::Complete)
            report.transfer = TransferEnd::Cancelled;
        failed.store(true);
    }
    report.cancelled = cancelled.load();
    internal::LogReportLine(kOutcomeWriter, [&] {
        if (!failed.load()) return ReportLine{2, L"update installed"};
        return ReportLine{4, L"update failed: " + FailureReason(report)};
    });
    SetState(Finished);
    return result;
}

void UpdateWorker::SetState(UpdateState newState) {
    if (state.exchange(newState) == newState) return;
    Notify(&IUpdateEvents::OnStateChanged);
}

void UpdateWorker::Cancel() {
    cancelled.store(true);
    const UpdateState current = state.load();
    if (!IsRunning() || current == Preparing || current == Finished) return;
    if (IsOwnThread()) {
        // An observer cancels from inside an event: the run cannot wait for itself. It
        // notices the request at its next step and ends as failed on its own.
        Stop();
        return;
    }
    StopEverything();
    failed.store(true);
    SetState(Finished);
}

void UpdateWorker::StopEverything() {
    Stop(ThreadLib::kInfinite);
    setupProcess->Terminate();
    downloader.Close();
    writer.Abort();
}

bool UpdateWorker::Download() {
    if (!downloader.Download()) return false;
    return publicKey.empty() || SetupIsSigned();
}

bool UpdateWorker::SetupIsSigned() {
    const SignatureVerdict verdict = internal::CheckSetupSignature(
        downloader.GetURL(), setupFilePath, publicKey, &stopRequested);
    const STLHelpers::litestring writer(kSignatureWriter);
    if (verdict.valid) {
        Debugging::LogMessage(Debugging::GetLog(),
                              L"Setup " + setupFilePath + L" is signed by key " +
                                  STLHelpers::Utf8ToWide(verdict.keyId) + L" (trusted comment: " +
                                  STLHelpers::Utf8ToWide(verdict.trustedComment) + L")",
                              writer, Debugging::LevelInfo);
        return true;
    }
    report.signatureProblem = verdict.reason;
    Debugging::LogMessage(Debugging::GetLog(),
                          L"Setup from " + downloader.GetURL() + L" is not run: " +
                              STLHelpers::Utf8ToWide(verdict.reason) + L" (signature " +
                              internal::SignatureUrl(downloader.GetURL()) + L")",
                          writer, Debugging::LevelError);
    System::DeleteWithShell(setupFilePath, false);
    return false;
}

bool UpdateWorker::Install() {
    const wchar_t* arguments = silent ? kSilentSetupArguments : L"";
    report.setupCommandLine = System::BuildCommandLine(setupFilePath, arguments);
    setupProcess->Start(setupFilePath, arguments, &report.startError);
    report.setup = setupProcess->HasHandle() ? SetupEnd::Running : SetupEnd::NotStarted;
    internal::LogReportLine(kSetupStartWriter, [&] { return DescribeSetupStart(report); });
    if (!setupProcess->HasHandle()) return false;
    // A stop request does not end this wait: a cancel lets the setup finish its work
    // (within the limit of a silent run), since a half-installed product is worse than a
    // late cancel. Only then does the cancel end a setup that is still running.
    const uint32_t limit = silent ? SilentSetupTimeoutMs() : ThreadLib::kInfinite;
    report.setupLimitMs = limit;
    const bool ended = setupProcess->Wait(limit);
    report.setup = ended                            ? SetupEnd::Exited
                   : limit != ThreadLib::kInfinite ? SetupEnd::TimedOut
                                                   : SetupEnd::WaitFailed;
    report.exitCode = setupProcess->ExitCode();
    internal::LogReportLine(kSetupEndWriter, [&] { return DescribeSetupEnd(report); });
    if (!ended) return false;
    // The setup's exit code is not examined: any ending counts as an installation.
    System::DeleteWithShell(setupFilePath, false);
    return true;
}

uint32_t UpdateWorker::GetSetupProcessId() const {
    return setupProcess->GetId();
}

bool UpdateWorker::OnStart(uint32_t totalBytes) {
    totalSize.store(totalBytes == 0xFFFFFFFFu ? 0 : totalBytes);
    SetState(Downloading);
    return !cancelled.load();
}

bool UpdateWorker::OnWritten(uint32_t bytesWritten) {
    downloadedSize.store(bytesWritten);
    Notify(&IUpdateEvents::OnProgress);
    return !cancelled.load();
}

void UpdateWorker::OnFinish(bool success) {
    if (!success) failed.store(true);
}

void UpdateWorker::Notify(void (IUpdateEvents::*event)()) {
    if (events) (events->*event)();
}

}  // namespace Engine
