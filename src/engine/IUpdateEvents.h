// Engine::IUpdateEvents: what an observer of the update learns. Both events carry no data;
// the observer reads the engine's getters. They are called on the worker thread (or on the
// thread that cancels) and must return quickly: a blocking observer blocks the update.
// Observers are not owned; nobody deletes one through this interface.
#pragma once

namespace Engine {

struct IUpdateEvents {
    virtual void OnStateChanged() = 0;
    virtual void OnProgress() = 0;

protected:
    ~IUpdateEvents() = default;
};

}  // namespace Engine
