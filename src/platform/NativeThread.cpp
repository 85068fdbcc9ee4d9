#include "platform/NativeThread.h"

#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <condition_variable>
#include <map>
#include <mutex>

#include "platform/SystemMessages.h"

namespace Platform {

class NativeThread {
public:
    std::mutex mutex;
    std::condition_variable changed;
    uint32_t id = 0;
    uint32_t suspendCount = 0;
    bool started = false;  // the body has begun (or was discarded)
    bool discarded = false;
    bool finished = false;
    uint32_t exitCode = 0;
    std::function<uint32_t()> body;

    // The thread is joinable so that a waiter can be sure it has fully gone, thread-local
    // clean-up included, before it goes on (for instance to end the process).
    std::mutex joinMutex;
    pthread_t native{};
    bool joined = false;

    void JoinOnce();
    ~NativeThread();
};

namespace {

// Identifier to thread, for OpenNativeThread. Never destroyed: threads may still end while
// static objects are being destroyed.
struct ThreadTable {
    std::mutex mutex;
    std::map<uint32_t, std::weak_ptr<NativeThread>> threads;
};

ThreadTable& Table() {
    static ThreadTable* table = new ThreadTable;
    return *table;
}

struct StartBlock {
    NativeThreadHandle self;
};

void* ThreadMain(void* argument) {
    NativeThreadHandle self = std::move(static_cast<StartBlock*>(argument)->self);
    delete static_cast<StartBlock*>(argument);

    const auto tid = static_cast<uint32_t>(::gettid());
    {
        std::lock_guard guard(Table().mutex);
        Table().threads[tid] = self;
    }
    std::function<uint32_t()> body;
    {
        std::unique_lock lock(self->mutex);
        self->id = tid;
        self->changed.notify_all();
        self->changed.wait(lock, [&] { return self->suspendCount == 0 || self->discarded; });
        self->started = true;
        if (!self->discarded) body = std::move(self->body);
    }
    const uint32_t exitCode = body ? body() : 0;
    {
        std::lock_guard lock(self->mutex);
        if (!self->discarded) self->exitCode = exitCode;
        self->finished = true;
        self->changed.notify_all();
    }
    return nullptr;
}

}  // namespace

// Called once the body has finished: what is left of the thread is quick to end.
void NativeThread::JoinOnce() {
    std::lock_guard lock(joinMutex);
    if (joined || pthread_equal(native, pthread_self())) return;
    pthread_join(native, nullptr);
    joined = true;
}

// The entry goes with the last handle, so a thread that has ended can still be opened by its
// identifier while someone holds it. A newer thread may have taken the identifier meanwhile.
NativeThread::~NativeThread() {
    // The thread holds a handle while it runs, so the last one goes either on the thread
    // itself (which cannot join itself) or after it has finished.
    if (!joined) {
        if (pthread_equal(native, pthread_self()))
            pthread_detach(native);
        else
            pthread_join(native, nullptr);
    }
    if (id == 0) return;
    std::lock_guard guard(Table().mutex);
    auto it = Table().threads.find(id);
    if (it != Table().threads.end() && it->second.expired()) Table().threads.erase(it);
}

NativeThreadHandle CreateNativeThread(std::function<uint32_t()> body, uint32_t stackSize,
                                      bool suspended, uint32_t* threadId, uint32_t* win32Error) {
    auto thread = std::make_shared<NativeThread>();
    thread->body = std::move(body);
    thread->suspendCount = suspended ? 1 : 0;

    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    if (stackSize != 0) {
        const long page = ::sysconf(_SC_PAGESIZE) > 0 ? ::sysconf(_SC_PAGESIZE) : 4096;
        size_t size = stackSize < PTHREAD_STACK_MIN ? PTHREAD_STACK_MIN : stackSize;
        size = (size + page - 1) / page * page;
        pthread_attr_setstacksize(&attributes, size);
    }
    auto* start = new StartBlock{thread};
    // The native handle is stored before the thread can look at it (it waits for its
    // identifier to be taken below, under the same mutex).
    std::unique_lock lock(thread->mutex);
    const int error = pthread_create(&thread->native, &attributes, &ThreadMain, start);
    pthread_attr_destroy(&attributes);
    if (error != 0) {
        delete start;
        thread->joined = true;  // there is no thread to join
        if (win32Error) *win32Error = error == EAGAIN ? 8 : Win32ErrorFromErrno(error);
        return nullptr;
    }
    // The identifier is the kernel's, known only once the thread runs.
    thread->changed.wait(lock, [&] { return thread->id != 0; });
    if (threadId) *threadId = thread->id;
    if (win32Error) *win32Error = 0;
    return thread;
}

NativeThreadHandle OpenNativeThread(uint32_t threadId) {
    if (threadId == 0) return nullptr;
    std::lock_guard guard(Table().mutex);
    auto it = Table().threads.find(threadId);
    return it == Table().threads.end() ? nullptr : it->second.lock();
}

uint32_t ResumeNativeThread(const NativeThreadHandle& thread) {
    if (!thread) return 0xFFFFFFFFu;
    std::lock_guard lock(thread->mutex);
    const uint32_t previous = thread->suspendCount;
    if (previous > 0 && --thread->suspendCount == 0) thread->changed.notify_all();
    return previous;
}

WaitResult WaitNativeThread(const NativeThreadHandle& thread, uint32_t timeoutMs) {
    if (!thread) return WaitResult::Failed;
    {
        std::unique_lock lock(thread->mutex);
        if (timeoutMs == kInfinite) {
            thread->changed.wait(lock, [&] { return thread->finished; });
        } else if (!thread->changed.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                                             [&] { return thread->finished; })) {
            return WaitResult::TimedOut;
        }
    }
    thread->JoinOnce();
    return WaitResult::Signaled;
}

bool DiscardSuspendedNativeThread(const NativeThreadHandle& thread, uint32_t exitCode) {
    if (!thread) return false;
    std::lock_guard lock(thread->mutex);
    if (thread->started) return false;
    thread->discarded = true;
    thread->exitCode = exitCode;
    thread->body = nullptr;
    thread->changed.notify_all();
    return true;
}

bool GetNativeThreadExitCode(const NativeThreadHandle& thread, uint32_t* exitCode) {
    if (!thread) return false;
    std::lock_guard lock(thread->mutex);
    if (!thread->finished) return false;
    if (exitCode) *exitCode = thread->exitCode;
    return true;
}

uint32_t CurrentNativeThreadId() {
    return static_cast<uint32_t>(::gettid());
}

}  // namespace Platform
