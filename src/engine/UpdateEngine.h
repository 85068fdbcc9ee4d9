// Engine::UpdateEngine: the process-wide holder of the update worker, the observers that
// follow it, and the operations on the product's own process.
//
// Events reach the observers on the worker thread (or on a cancelling thread), delivered to
// a copy of the list with each observer checked for membership just before its call, so an
// observer may be removed while events are under way: RemoveListener waits (at most 5 s)
// until rounds in flight have ended, so that none reaches it after it returned.
//
// Thread safety: construction, Start, Cancel, destruction and the product operations on
// the controlling thread (Cancel may run on a helper thread while the controlling thread
// only reads the getters); AddListener, RemoveListener and the getters from any thread.
#pragma once

#include <cstdint>
#include <string>

#include "engine/IUpdateEvents.h"
#include "engine/ProductSettings.h"
#include "engine/UpdateState.h"
#include "engine/UpdateWorker.h"
#include "foundation/ObserverList.h"

namespace Engine {

class UpdateEngine {
public:
    // The worker creates its setup file at setupFilePath, or in the temporary folder when
    // that is empty; throws std::runtime_error "Cannot open destination file" when it
    // cannot.
    explicit UpdateEngine(ProductSettings settings, std::wstring setupFilePath = {});
    UpdateEngine(const UpdateEngine&) = delete;
    UpdateEngine& operator=(const UpdateEngine&) = delete;
    // Cancels the update (waiting for a running setup, then ending it if it still runs)
    // before anything is released.
    ~UpdateEngine();

    // False when the observer is registered already.
    bool AddListener(IUpdateEvents* listener);
    // False (at once) when it was not registered.
    bool RemoveListener(IUpdateEvents* listener);

    // Starts the worker thread; false when it cannot be started or already runs.
    bool Start();
    // Cancels the update (see UpdateWorker::Cancel); blocks until the worker thread has
    // ended, which lets a running setup finish first. Always true.
    bool Cancel();

    UpdateState GetState() const { return worker.GetState(); }
    bool IsFailed() const { return worker.IsFailed(); }
    uint32_t GetTotalSize() const { return worker.GetTotalSize(); }
    uint32_t GetDownloadedSize() const { return worker.GetDownloadedSize(); }
    UpdateWorker& GetWorker() { return worker; }

    // The first running process (lowest identifier) whose executable file name equals the
    // product executable, ignoring case; 0 when there is none.
    uint32_t FindProductProcessId();
    bool IsProductRunning();
    // Sets the product's exit event and waits up to timeoutMs for the product to end; ends
    // it when it does not. True when the product is gone; false when it could not be ended,
    // and also when none was running (there was nothing to open). Throws std::bad_alloc or
    // ErrorHandling::ComError (carrying the error) when the exit event cannot be created.
    // Whatever the result, no exit signal is left waiting for a product started later.
    bool CloseRunningProduct(uint32_t timeoutMs);
    // Opens the installed product's executable (install path joined with the executable
    // name); true when it was started.
    bool LaunchProduct(bool minimized);

private:
    // The worker's single observer: fans each event out to the registered listeners.
    class Broadcaster : public IUpdateEvents {
    public:
        explicit Broadcaster(UpdateEngine& engine) : engine(engine) {}
        void OnStateChanged() override { engine.Deliver(&IUpdateEvents::OnStateChanged); }
        void OnProgress() override { engine.Deliver(&IUpdateEvents::OnProgress); }

    private:
        UpdateEngine& engine;
    };

    void Deliver(void (IUpdateEvents::*event)()) {
        listeners.Deliver([event](IUpdateEvents& listener) { (listener.*event)(); });
    }

    Synchronization::ObserverList<IUpdateEvents> listeners;
    const ProductSettings settings;
    Broadcaster broadcaster{*this};
    UpdateWorker worker;  // last: it goes first, while the lists above still exist
};

// The one engine of the process, built on first use from the product configuration and
// destroyed at exit. The first call must come before any other thread uses the engine.
// Throws what the constructor throws; a later call tries again. Defined by the
// application, which owns the configuration.
UpdateEngine& GetUpdateEngine();

}  // namespace Engine
