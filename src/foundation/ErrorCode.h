// ErrorCode: a result in HRESULT layout. Zero and positive values are success, negative
// values failure. Operating-system failures travel as ErrorCode values; a failed code is
// turned into the caller's failure value (false, null, an empty object) with FailureAs.
//
// Thread safety: plain values; every function here may be called from any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <type_traits>
#include <typeinfo>

using HRESULT = int32_t;

constexpr HRESULT S_OK = 0;
constexpr HRESULT S_FALSE = 1;
constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001u);
constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002u);
constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003u);
constexpr HRESULT E_ABORT = static_cast<HRESULT>(0x80004004u);
constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005u);
constexpr HRESULT E_UNEXPECTED = static_cast<HRESULT>(0x8000FFFFu);
constexpr HRESULT E_ACCESSDENIED = static_cast<HRESULT>(0x80070005u);
constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000Eu);
constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057u);
constexpr HRESULT RPC_E_CHANGED_MODE = static_cast<HRESULT>(0x80010106u);

// A Win32 error number as GetLastError or a registry function gives it. Kept apart from
// HRESULT so that a check knows which rule turns it into an ErrorCode.
struct Win32Error {
    uint32_t value = 0;
};

// Thrown when a code that is not a failure is asked for a failure value: a programming
// error in the caller.
class ErrorCodeBadCast : public std::bad_cast {
public:
    const char* what() const noexcept override {
        return "ErrorCode to non-empty object or pointer";
    }
};

class ErrorCode {
public:
    constexpr ErrorCode() = default;
    constexpr explicit ErrorCode(HRESULT value) : m_value(value) {}

    // HRESULT_FROM_WIN32: a positive number keeps its lower 16 bits under 0x80070000;
    // 0 (and anything that already looks like an HRESULT) stands unchanged.
    static constexpr ErrorCode FromWin32(uint32_t error) {
        const auto asSigned = static_cast<int32_t>(error);
        return ErrorCode(asSigned <= 0 ? asSigned
                                       : static_cast<HRESULT>((error & 0xFFFFu) | 0x80070000u));
    }

    constexpr HRESULT Value() const { return m_value; }
    constexpr bool Failed() const { return m_value < 0; }
    constexpr bool Succeeded() const { return m_value >= 0; }

    // The failure value of a function returning T: false, null, T{} or the code itself.
    // Throws ErrorCodeBadCast when this code is not a failure.
    template <class T>
    T FailureAs() const {
        if constexpr (std::is_same_v<T, ErrorCode>) {
            return *this;
        } else {
            if (!Failed()) throw ErrorCodeBadCast();
            if constexpr (std::is_same_v<T, bool>)
                return false;
            else if constexpr (std::is_pointer_v<T>)
                return nullptr;
            else
                return T{};
        }
    }

    friend constexpr bool operator==(ErrorCode, ErrorCode) = default;

private:
    HRESULT m_value = 0;
};

// The rules that turn a checked result into an ErrorCode.
constexpr ErrorCode ToErrorCode(ErrorCode code) {
    return code;
}
constexpr ErrorCode ToErrorCode(Win32Error error) {
    return ErrorCode::FromWin32(error.value);
}
constexpr ErrorCode ToErrorCode(bool condition) {
    return ErrorCode(condition ? S_OK : E_FAIL);
}
constexpr ErrorCode ToErrorCode(HRESULT hr) {
    return ErrorCode(hr);
}
constexpr ErrorCode ToErrorCode(std::nullptr_t) {
    return ErrorCode(E_FAIL);
}
template <class T>
constexpr ErrorCode ToErrorCode(T* pointer) {
    return ToErrorCode(pointer != nullptr);
}
template <class T>
ErrorCode ToErrorCode(const std::shared_ptr<T>& pointer) {
    return ToErrorCode(pointer != nullptr);
}
template <class T, class D>
ErrorCode ToErrorCode(const std::unique_ptr<T, D>& pointer) {
    return ToErrorCode(pointer != nullptr);
}
// Other integer widths would be ambiguous between a condition and a code: say which.
template <class T>
requires(std::is_integral_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, HRESULT>) ErrorCode
    ToErrorCode(T)
= delete;
