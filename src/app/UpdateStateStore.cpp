#include "app/UpdateStateStore.h"

#include "system/RegistryKey.h"

namespace {

int64_t Seconds(const std::wstring& text) {
    if (text.empty() || text.size() > 18) return 0;
    int64_t value = 0;
    for (const wchar_t ch : text) {
        if (ch < L'0' || ch > L'9') return 0;
        value = value * 10 + (ch - L'0');
    }
    return value;
}

}  // namespace

StoredUpdateState ReadUpdateState(ProductConfiguration& configuration) {
    StoredUpdateState stored;
    stored.keyPath = configuration.GetUserProductKeyPath() + L"\\Update";
    Registry::Key key(stored.keyPath);
    constexpr uint32_t kNone = 0xFFFFFFFF;
    const uint32_t group = key.ReadDword(L"RolloutGroup", kNone);
    stored.groupDrawn = group < Feed::kRolloutGroups;
    stored.state.rolloutGroup = stored.groupDrawn ? group : 0;
    const std::wstring skipped = key.ReadString(L"SkippedVersion", L"");
    stored.state.skippedVersion = std::string(skipped.begin(), skipped.end());
    stored.state.remindAfter = Seconds(key.ReadString(L"RemindAfter", L""));
    stored.state.newestPubDateSeen = Seconds(key.ReadString(L"NewestPubDate", L""));
    return stored;
}
