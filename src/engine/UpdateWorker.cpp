#include "engine/UpdateWorker.h"

#include "engine/Timeouts.h"
#include "engine/internal/SetupProcess.h"
#include "engine/internal/SignatureDownload.h"
#include "foundation/Log.h"
#include "foundation/TextConversion.h"
#include "system/FileHelpers.h"
#include "system/ShellHelpers.h"

namespace Engine {
namespace {

// The diagnostic log's writer name for the signature check.
constexpr const wchar_t* kSignatureWriter = L"Engine:UpdateWorker:SetupIsSigned@1";

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
}

UpdateWorker::~UpdateWorker() {
    StopEverything();
}

uint32_t UpdateWorker::Run() {
    SetState(Connecting);
    if (Download() && !failed.load()) {
        SetState(Installing);
        failed.store(!Install());
        SetState(Finished);
        return 0;
    }
    failed.store(true);
    SetState(Finished);
    return 1;
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
    Debugging::LogMessage(Debugging::GetLog(),
                          L"Setup from " + downloader.GetURL() + L" is not run: " +
                              STLHelpers::Utf8ToWide(verdict.reason) + L" (signature " +
                              internal::SignatureUrl(downloader.GetURL()) + L")",
                          writer, Debugging::LevelError);
    System::DeleteWithShell(setupFilePath, false);
    return false;
}

bool UpdateWorker::Install() {
    setupProcess->Start(setupFilePath, silent ? kSilentSetupArguments : L"");
    if (!setupProcess->HasHandle()) return false;
    // A stop request does not end this wait: a cancel lets the setup finish its work
    // (within the limit of a silent run), since a half-installed product is worse than a
    // late cancel. Only then does the cancel end a setup that is still running.
    const uint32_t limit = silent ? SilentSetupTimeoutMs() : ThreadLib::kInfinite;
    if (!setupProcess->Wait(limit)) return false;
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
