// basic_litestring: a non-owning reference to a text, mostly a literal. The length
// kUnmeasured means "not yet counted": the first call to size() counts up to the
// terminating NUL and keeps the result in the reference. Resource names, XPath texts,
// check texts and log writer names travel in this form.
//
// Thread safety: a reference that is still unmeasured must not be shared between threads
// (measuring writes to it); a measured one may be read from any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace STLHelpers {

template <class CharT>
class basic_litestring {
public:
    static constexpr uint32_t kUnmeasured = 0xFFFFFFFFu;

    constexpr basic_litestring() = default;
    // A zero-terminated text whose length is measured on first use.
    constexpr basic_litestring(const CharT* text) : m_text(text) {}
    constexpr basic_litestring(const CharT* text, uint32_t length)
        : m_text(text), m_length(length) {}
    // From a literal: the length is known at compile time.
    template <std::size_t N>
    static constexpr basic_litestring FromLiteral(const CharT (&literal)[N]) {
        return basic_litestring(literal, static_cast<uint32_t>(N - 1));
    }

    const CharT* data() const { return m_text; }
    bool measured() const { return m_length != kUnmeasured; }
    uint8_t flags() const { return m_flags; }

    uint32_t size() const {
        if (m_length == kUnmeasured) {
            uint32_t n = 0;
            if (m_text != nullptr)
                while (m_text[n] != CharT()) ++n;
            m_length = n;
        }
        return m_length;
    }
    bool empty() const { return size() == 0; }

    std::basic_string_view<CharT> view() const { return {m_text ? m_text : EmptyText(), size()}; }
    std::basic_string<CharT> str() const { return std::basic_string<CharT>(view()); }

private:
    static const CharT* EmptyText() {
        static constexpr CharT empty[1] = {};
        return empty;
    }

    const CharT* m_text = nullptr;
    mutable uint32_t m_length = kUnmeasured;
    uint8_t m_flags = 1;  // always 1 in this system
};

using litestring = basic_litestring<wchar_t>;
using litestring_a = basic_litestring<char>;

}  // namespace STLHelpers
