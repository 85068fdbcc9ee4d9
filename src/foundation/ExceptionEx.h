// STLHelpers::exception_ex: an exception whose message lives in a fixed buffer inside the
// object, so that building, copying and throwing it never allocate. The message is written
// with operator<< (narrow text as it is, wide text converted to UTF-8, numbers in decimal).
// The message is always a prefix of what was written: once a piece does not fit in
// Capacity - 1 bytes, it is cut before the first character that does not fit whole, and
// everything written later is dropped too, without error.
//
// Thread safety: a plain value; one object must not be written from two threads at once.
#pragma once

#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstring>
#include <exception>
#include <string>
#include <string_view>
#include <type_traits>

#include "foundation/TextConversion.h"

namespace STLHelpers {

template <std::size_t Capacity, unsigned CodePage>
class exception_ex : public std::exception {
    static_assert(CodePage == 65001, "messages are kept in UTF-8 only");
    static_assert(Capacity >= 2);

public:
    exception_ex() noexcept { m_buffer[0] = '\0'; }
    exception_ex(const exception_ex& other) noexcept : std::exception(other) {
        m_buffer[0] = '\0';
        AppendNarrow(other.what());
        m_full = other.m_full;
    }
    exception_ex& operator=(const exception_ex& other) noexcept {
        if (this != &other) {
            m_used = 0;
            m_buffer[0] = '\0';
            m_full = false;
            AppendNarrow(other.what());
            m_full = other.m_full;
        }
        return *this;
    }
    ~exception_ex() override = default;

    const char* what() const noexcept override { return m_buffer; }

    void AppendNarrow(std::string_view text) noexcept {
        if (m_full) return;
        const std::size_t room = Capacity - 1 - m_used;
        std::size_t n = text.size();
        if (n > room) {
            m_full = true;
            n = room;
            // The first dropped byte continues a sequence: drop the sequence's start too.
            for (int back = 0;
                 back < 3 && n > 0 && (static_cast<unsigned char>(text[n]) & 0xC0) == 0x80; ++back)
                --n;
        }
        std::memcpy(m_buffer + m_used, text.data(), n);
        m_used += n;
        m_buffer[m_used] = '\0';
    }
    void AppendWide(std::wstring_view text) noexcept {
        if (m_full) return;
        for (wchar_t ch : text) {
            if (!AppendUtf8(ch, m_buffer, Capacity - 1, &m_used)) {
                m_full = true;
                break;
            }
        }
        m_buffer[m_used] = '\0';
    }
    template <std::integral N>
    void AppendNumber(N value) noexcept {
        char digits[24];
        const auto result = std::to_chars(digits, digits + sizeof(digits), value);
        AppendNarrow(std::string_view(digits, static_cast<std::size_t>(result.ptr - digits)));
    }

private:
    char m_buffer[Capacity];
    std::size_t m_used = 0;
    bool m_full = false;  // something was cut: later pieces would leave a gap
};

namespace internal {
template <class E>
concept InlineMessageException = requires(E& e, std::string_view s, std::wstring_view w) {
    e.AppendNarrow(s);
    e.AppendWide(w);
};
}  // namespace internal

// The stream operators keep the derived type, so `throw ErrorException() << "text";`
// throws an ErrorException.
template <internal::InlineMessageException E>
E& operator<<(E& e, std::string_view text) noexcept {
    e.AppendNarrow(text);
    return e;
}
template <internal::InlineMessageException E>
E& operator<<(E& e, const char* text) noexcept {
    e.AppendNarrow(text ? std::string_view(text) : std::string_view());
    return e;
}
template <internal::InlineMessageException E>
E& operator<<(E& e, std::wstring_view text) noexcept {
    e.AppendWide(text);
    return e;
}
template <internal::InlineMessageException E>
E& operator<<(E& e, const wchar_t* text) noexcept {
    e.AppendWide(text ? std::wstring_view(text) : std::wstring_view());
    return e;
}
template <internal::InlineMessageException E>
E& operator<<(E& e, const std::string& text) noexcept {
    return e << std::string_view(text);
}
template <internal::InlineMessageException E>
E& operator<<(E& e, const std::wstring& text) noexcept {
    return e << std::wstring_view(text);
}
template <internal::InlineMessageException E>
E& operator<<(E& e, wchar_t ch) noexcept {
    e.AppendWide(std::wstring_view(&ch, 1));
    return e;
}
template <internal::InlineMessageException E, std::integral N>
requires(!std::is_same_v<N, char> && !std::is_same_v<N, wchar_t> && !std::is_same_v<N, bool>) E&
operator<<(E& e, N value) noexcept {
    e.AppendNumber(value);
    return e;
}
template <internal::InlineMessageException E, class T>
requires(!std::is_reference_v<E>) E && operator<<(E&& e, T&& value) noexcept {
    static_cast<E&>(e) << std::forward<T>(value);
    return std::move(e);
}

}  // namespace STLHelpers
