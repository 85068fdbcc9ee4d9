#include "engine/UpdateEngine.h"

namespace Engine {

UpdateEngine::UpdateEngine(ProductSettings settings, std::wstring setupFilePath)
    : settings(std::move(settings)),
      worker(this->settings.downloadURL, this->settings.silent, &broadcaster,
             std::move(setupFilePath), this->settings.publicKey) {}

UpdateEngine::~UpdateEngine() {
    worker.Cancel();
}

bool UpdateEngine::AddListener(IUpdateEvents* listener) {
    return listeners.Add(listener);
}

bool UpdateEngine::RemoveListener(IUpdateEvents* listener) {
    return listeners.Remove(listener);
}

bool UpdateEngine::Start() {
    return worker.Start(false, 0);
}

bool UpdateEngine::Cancel() {
    worker.Cancel();
    return true;
}

}  // namespace Engine
