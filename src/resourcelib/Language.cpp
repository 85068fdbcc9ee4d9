#include "resourcelib/Language.h"

#include <utility>

namespace ResourceLib {

Language::Language(std::wstring name, std::wstring title, int32_t locale)
    : name(std::move(name)), title(std::move(title)), locale(locale) {}

std::wstring Language::GetName() const {
    return name;
}

std::wstring Language::GetTitle() const {
    return title;
}

int32_t Language::GetLocale() const {
    return locale;
}

}  // namespace ResourceLib
