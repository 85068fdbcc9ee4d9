#include "storages/NamedValue.h"

#include <atomic>
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <type_traits>
#include <typeinfo>

#include "foundation/Check.h"
#include "foundation/ProcessWideObject.h"
#include "foundation/TextConversion.h"
#include "platform/OwnProcess.h"
#include "system/Environment.h"
#include "system/FileHelpers.h"

namespace StorageSystem {
namespace internal {

constexpr uint32_t kLiveMagic = 0xAFFECEEDu;
constexpr uint32_t kDeadMagic = 0xCFCFCFCFu;

// Shared by every module of one build, so its layout is the same for all of them. The
// magic comes first: a foreign address is judged by reading just that word safely.
struct SharedRecord {
    SharedRecord(const std::wstring& name, int initialValue)
        : refCount(1), value(initialValue), name(name) {}

    std::atomic<uint32_t> magic{kLiveMagic};
    std::atomic<uint32_t> refCount;
    SharedNumber value;
    std::wstring name;
};
static_assert(std::is_standard_layout_v<SharedRecord>, "the magic is found by its offset");

}  // namespace internal

namespace {

using internal::SharedRecord;

std::wstring AddressText(const SharedRecord* record) {
    return std::to_wstring(reinterpret_cast<std::uintptr_t>(record));
}

// A whole unsigned decimal number that fits an address; anything else is no address.
bool ParseAddress(const std::wstring& text, std::uintptr_t& address) {
    if (text.empty()) return false;
    std::uintptr_t value = 0;
    constexpr std::uintptr_t kMax = std::numeric_limits<std::uintptr_t>::max();
    for (const wchar_t ch : text) {
        if (ch < L'0' || ch > L'9') return false;
        const auto digit = static_cast<std::uintptr_t>(ch - L'0');
        if (value > (kMax - digit) / 10) return false;
        value = value * 10 + digit;
    }
    address = value;
    return true;
}

// The variable may name freed or foreign memory: the record is only touched once a safe
// read found it readable, aligned and carrying the live magic.
bool AddRefGuarded(SharedRecord* record) {
    if (reinterpret_cast<std::uintptr_t>(record) % alignof(SharedRecord) != 0) return false;
    unsigned char copy[sizeof(SharedRecord)];
    if (!Platform::ReadOwnMemory(record, copy, sizeof(copy))) return false;
    uint32_t magic = 0;
    std::memcpy(&magic, copy + offsetof(SharedRecord, magic), sizeof(magic));
    if (magic != internal::kLiveMagic) return false;
    record->refCount.fetch_add(1, std::memory_order_acq_rel);
    // The last holder may have been releasing it meanwhile.
    return record->magic.load(std::memory_order_acquire) == internal::kLiveMagic;
}

// AddRefGuarded, reporting a failure as the guarded check of this step.
bool TakeReference(SharedRecord* record) {
    if (AddRefGuarded(record)) return true;
    const ErrorCode failed(E_FAIL);
    Reporting::ReportGuarded(STLHelpers::litestring_a("((_AddRef_Guarded(_pVal)))"), &failed);
    return false;
}

void Release(SharedRecord* record) {
    if (record->refCount.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    record->magic.store(internal::kDeadMagic, std::memory_order_release);
    const std::wstring envName = NamedValue::VariableName(record->name);
    // Only while it still names this record: a record that lost a publishing race must not
    // take the winner's variable with it.
    std::wstring published;
    if (System::GetEnvironmentValue(envName, published) && published == AddressText(record))
        CHECK_WARNING(System::RemoveEnvironmentVariable(envName));
    delete record;
}

// The type tag as the run-time type information spells it; the same in every module of
// one build. Never destroyed: the registry releases its records at exit, after statics
// made later than it (this one) are gone, and still needs the tag to name them.
const std::wstring& TypeTag() {
    static const std::wstring* const tag =
        new std::wstring(STLHelpers::Utf8ToWide(typeid(SharedNumber).name()));
    return *tag;
}

}  // namespace

// --- Registry ---------------------------------------------------------------------------

NamedValueRegistry::~NamedValueRegistry() {
    for (SharedRecord* record : records) Release(record);
}

void NamedValueRegistry::Add(SharedRecord* record) {
    const std::lock_guard<std::mutex> guard(lock);
    if (records.insert(record).second) record->refCount.fetch_add(1, std::memory_order_acq_rel);
}

NamedValueRegistry* NamedValueRegistry::OfModule() {
    static Synchronization::ProcessWideObject<NamedValueRegistry> registry;
    return registry.Get();
}

// --- Holder -----------------------------------------------------------------------------

std::wstring NamedValue::VariableName(const std::wstring& name) {
    std::wstring envName =
        std::to_wstring(Platform::CurrentProcessId()) + L"_" + TypeTag() + L"_" + name;
    System::SanitizeFileName(envName, L'_');
    return envName;
}

NamedValue::NamedValue(const std::wstring& name, int initialValue, NamedValueRegistry* registry) {
    if (registry == nullptr) registry = NamedValueRegistry::OfModule();
    const auto keep = [&](SharedRecord* record) {
        // The reference taken for this holder is already counted; the registry adds its own.
        if (registry != nullptr) registry->Add(record);
        m_pVal = record;
    };
    const std::wstring envName = VariableName(name);

    for (int attempt = 0; attempt < 3 && m_pVal == nullptr; ++attempt) {
        std::wstring published;
        std::uintptr_t address = 0;
        if (System::GetEnvironmentValue(envName, published) && ParseAddress(published, address)) {
            auto* _pVal = reinterpret_cast<SharedRecord*>(address);
            if (TakeReference(_pVal)) m_pVal = _pVal;
            continue;
        }

        // Absent, or not a number: publish a record of our own.
        auto created = std::make_unique<SharedRecord>(name, initialValue);
        if (System::SetEnvironmentValue(envName, AddressText(created.get()))) {
            keep(created.release());
            break;
        }
        std::wstring _pValRaw;
        CHECK_ERROR(System::GetEnvironmentValue(envName, _pValRaw));
        created.reset();
        if (ParseAddress(_pValRaw, address)) {
            auto* _pVal = reinterpret_cast<SharedRecord*>(address);
            if (TakeReference(_pVal)) keep(_pVal);
        }
    }
    CHECK_ERROR(m_pVal);
}

NamedValue::~NamedValue() {
    if (m_pVal != nullptr) Release(m_pVal);
}

SharedNumber* NamedValue::Value() const {
    return m_pVal != nullptr ? &m_pVal->value : nullptr;
}

// --- The values of this system -----------------------------------------------------------

namespace {

struct XmlFileInstanceCountHolder : NamedValue {
    XmlFileInstanceCountHolder() : NamedValue(L"xmlFileInstanceCount", 0) {}
};
struct DefaultCOMModelHolder : NamedValue {
    DefaultCOMModelHolder() : NamedValue(L"defaultCOMModel", 2) {}
};

template <class Holder>
SharedNumber* ValueOf(Synchronization::ProcessWideObject<Holder>& holder) {
    Holder* built = holder.Get();
    return built != nullptr ? built->Value() : nullptr;
}

}  // namespace

SharedNumber* XmlFileInstanceCount() {
    static Synchronization::ProcessWideObject<XmlFileInstanceCountHolder> holder;
    return ValueOf(holder);
}

SharedNumber* DefaultCOMModel() {
    static Synchronization::ProcessWideObject<DefaultCOMModelHolder> holder;
    return ValueOf(holder);
}

}  // namespace StorageSystem
