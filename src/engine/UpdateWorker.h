// Engine::UpdateWorker: one update run on its own thread. It downloads the setup program
// into a file created at construction, runs it, and keeps the state, the byte counts and
// the failed and cancelled flags that an observer shows.
//
//   Preparing -> Connecting -> Downloading -> Installing -> Finished
//
// A failure at any stage, and a cancel, end in Finished with IsFailed() true. Events go to
// the one IUpdateEvents given at construction (the engine, which fans them out).
//
// Thread safety: construction, Start, Cancel and destruction on the controlling thread;
// Run and the writer callbacks on the worker thread; the getters from any thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "engine/HttpDownloader.h"
#include "engine/IUpdateEvents.h"
#include "engine/IVerboseWritingConsumerCallback.h"
#include "engine/ThreadImpl.h"
#include "engine/UpdateReport.h"
#include "engine/UpdateState.h"
#include "engine/VerboseWritingConsumer.h"

namespace Engine {

class SetupProcess;

using WorkerThreadPolicy =
    ThreadLib::DefaultThreadPolicy<ThreadLib::MinStartPolicy<0>,
                                   ThreadLib::EventStopPolicy<ThreadLib::MinStopPolicy<-1>>>;

class UpdateWorker : public ThreadLib::ThreadImpl<UpdateWorker, WorkerThreadPolicy>,
                     public IVerboseWritingConsumerCallback {
public:
    // The name template of the setup file in the temporary folder.
    static constexpr const wchar_t* kSetupFileTemplate = L"Update!.exe";
    // The switches of a silent setup run (64 characters; the quotes belong to the text).
    static constexpr const wchar_t* kSilentSetupArguments =
        L"/verysilent /norestart /S /SUPPRESSMSGBOXES /COMPONENTS=\"!suite\"";

    // Creates the setup file at setupFilePath or, when that is empty, under a fresh name
    // from kSetupFileTemplate in the temporary folder. Throws std::runtime_error "Cannot
    // open destination file" when it cannot be created. `silent` chooses how the setup runs.
    // With a `publicKey` (the base64 line of a minisign public key) the download counts
    // only when the setup's signature, fetched from the URL with ".minisig" after its path,
    // is valid for that key; otherwise the setup file is deleted and the update fails.
    UpdateWorker(std::wstring downloadURL, bool silent, IUpdateEvents* events,
                 std::wstring setupFilePath = {}, std::wstring publicKey = {});
    ~UpdateWorker();

    // The thread body: 0 after an attempted installation, 1 when the download failed.
    uint32_t Run();

    // Stores the state and reports it, unless it is the current one.
    void SetState(UpdateState newState);

    // Stops the update: from now on the download gives up at once; a run under way is
    // stopped and waited for, and the state becomes Finished with the failed flag. A setup
    // that runs is not interrupted: the run waits for it (at most the silent limit, else
    // without limit), and only a setup still running after that is ended. Before the run
    // has begun, or after it has finished, only the flag is set. Blocks until the worker
    // thread has ended, so a user interface calls it off its own thread.
    void Cancel();

    // The stages, called by Run on the worker thread.
    bool Download();
    bool Install();

    UpdateState GetState() const { return state.load(); }
    bool IsFailed() const { return failed.load(); }
    bool IsCancelled() const { return cancelled.load(); }
    uint32_t GetTotalSize() const { return totalSize.load(); }
    uint32_t GetDownloadedSize() const { return downloadedSize.load(); }
    const std::wstring& GetDownloadURL() const { return downloadURL; }
    const std::wstring& GetSetupFilePath() const { return setupFilePath; }
    // The identifier of the started setup process; 0 before it was started.
    uint32_t GetSetupProcessId() const;
    // What the run did and learnt; complete once the worker thread has ended (read it only
    // then, or before Start).
    const UpdateReport& GetReport() const { return report; }

    bool OnStart(uint32_t totalBytes) override;
    bool OnWritten(uint32_t bytesWritten) override;
    void OnFinish(bool success) override;

private:
    void Notify(void (IUpdateEvents::*event)());
    // With a public key: whether the downloaded setup is signed by it. When it is not, the
    // setup file is deleted and the reason logged.
    bool SetupIsSigned();
    // Stops the thread, ends the setup and closes the download: shared by Cancel and the
    // destructor.
    void StopEverything();

    // The flags come first: the writer reports to this worker while it is being built.
    // They are written by one thread and read by another; each reader needs only the
    // latest value.
    std::atomic<UpdateState> state{Preparing};
    std::atomic<bool> cancelled{false};
    std::atomic<uint32_t> totalSize{0};  // 0 when unknown
    std::atomic<uint32_t> downloadedSize{0};
    std::atomic<bool> failed{false};

    IUpdateEvents* events;
    UpdateReport report;  // before the members that write to it while they are built
    const bool silent;
    std::wstring downloadURL;
    std::wstring setupFilePath;
    std::wstring publicKey;  // empty: setups are not checked
    VerboseWritingConsumer writer;
    HttpDownloader downloader;
    std::unique_ptr<SetupProcess> setupProcess;
};

}  // namespace Engine
