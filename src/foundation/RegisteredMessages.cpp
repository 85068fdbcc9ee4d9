#include "foundation/RegisteredMessages.h"

#include <cwctype>
#include <map>
#include <mutex>
#include <string>

namespace Reporting {
namespace {

struct MessageTable {
    std::mutex lock;
    std::map<std::wstring, unsigned> ids;
    unsigned next = 0xC000;
};

MessageTable& Table() {
    static MessageTable table;
    return table;
}

}  // namespace

unsigned RegisterWindowMessage(std::wstring_view name) {
    std::wstring key(name);
    for (auto& ch : key) ch = static_cast<wchar_t>(std::towupper(static_cast<wint_t>(ch)));
    MessageTable& table = Table();
    std::lock_guard guard(table.lock);
    auto [it, inserted] = table.ids.emplace(std::move(key), table.next);
    if (inserted) ++table.next;
    return it->second;
}

namespace {
// Two separate static initialisers register the same name; each keeps its identifier.
const unsigned sinkMessageA = RegisterWindowMessage(L"QzNotificationSinkMTOnEvent");
const unsigned sinkMessageB = RegisterWindowMessage(L"QzNotificationSinkMTOnEvent");
}  // namespace

unsigned NotificationSinkMessage(int which) {
    return which == 0 ? sinkMessageA : sinkMessageB;
}

}  // namespace Reporting
