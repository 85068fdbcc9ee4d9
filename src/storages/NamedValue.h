// Process-wide named values: one small heap record per name that every module of the
// process shares, although each module has its own copy of every static. The first module
// that needs a value creates the record and publishes its address in an environment
// variable of the process ("<pid>_<type tag>_<name>", made a valid file name); the others
// find it there and take a reference. The last reference removes the variable and frees
// the record.
//
// Errors: the constructor throws ErrorHandling::ErrorException (check "((m_pVal))") when
// three attempts found no usable record, e.g. when the variable names memory that holds
// no record; each such attempt is first reported as "((_AddRef_Guarded(_pVal)))".
//
// Thread safety: the value changes only by atomic operations, so any thread of any module
// may use it. A registry serialises its own list. Two modules attaching at the same moment
// are not serialised: each may publish a record, and the last one published wins.
#pragma once

#include <cstdint>
#include <mutex>
#include <set>
#include <string>

#include "foundation/AtomicNumber.h"

namespace StorageSystem {

// The value type of every named value of this system.
using SharedNumber = Synchronization::AtomicNumberT<int, Synchronization::AtomicAutoPolicy<int>>;

namespace internal {
struct SharedRecord;
}

// The records a module created. Each entry holds one reference, released when the registry
// is destroyed (at module exit for the module's own registry), so a record lives at least
// as long as the module that created it.
class NamedValueRegistry {
public:
    NamedValueRegistry() = default;
    NamedValueRegistry(const NamedValueRegistry&) = delete;
    NamedValueRegistry& operator=(const NamedValueRegistry&) = delete;
    ~NamedValueRegistry();

    // Takes one more reference on `record`.
    void Add(internal::SharedRecord* record);

    // The registry of this module; null once it has been destroyed at exit.
    static NamedValueRegistry* OfModule();

private:
    std::mutex lock;
    std::set<internal::SharedRecord*> records;
};

class NamedValue {
public:
    // Attaches to the record the environment names, or creates and publishes one holding
    // `initialValue`. Records this holder creates are registered in `registry` (the
    // module's when null). Throws as described above.
    NamedValue(const std::wstring& name, int initialValue, NamedValueRegistry* registry = nullptr);
    NamedValue(const NamedValue&) = delete;
    NamedValue& operator=(const NamedValue&) = delete;
    ~NamedValue();

    // The shared value; use only its atomic operations.
    SharedNumber* Value() const;

    // The environment variable that publishes the value `name` in this process.
    static std::wstring VariableName(const std::wstring& name);

private:
    internal::SharedRecord* m_pVal = nullptr;
};

// The two values of this system, built once per module on first use. Null after the
// module's holders were destroyed at exit. Throw as the NamedValue constructor.
// "xmlFileInstanceCount": the number of live FileSystem::XmlFile objects (first value 0).
SharedNumber* XmlFileInstanceCount();
// "defaultCOMModel": the model every XmlFile records (first value 2).
SharedNumber* DefaultCOMModel();

}  // namespace StorageSystem
