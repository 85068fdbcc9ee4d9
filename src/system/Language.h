// The user-interface language: Windows language identifiers (LANGID, primary language in the
// low 10 bits, sublanguage above) taken from the POSIX locale variables, a per-thread
// override in the manner of SetThreadUILanguage, and the culture names the updater offers.
//
// Thread safety: any thread. The thread setters affect only the calling thread.
// Nothing here throws except std::bad_alloc.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace System {

// "da-dk", "de-de", "fr-fr", "ja-jp" by the primary language of `langId` (6, 7, 12, 17);
// "en-us" for any other.
std::wstring GetCultureName(uint32_t langId);

// The culture name of the calling thread's user-interface language.
std::wstring GetUILanguageName();

// The language identifier of a POSIX locale name: "de_CH.UTF-8" gives 0x0807, "fr" 0x040C.
// "C", "POSIX", the empty name and unknown languages give 0x0409 (English, United States).
uint16_t LanguageIdFromLocaleName(std::string_view localeName);

// The user's language from LANGUAGE (its first entry), LC_ALL, LC_MESSAGES, LANG: the first
// that is set and not empty.
uint16_t GetUserDefaultUILanguage();
uint32_t GetUserDefaultLCID();

// The thread's user-interface language: its override, else the user's language.
uint16_t GetThreadUILanguage();
// Sets the calling thread's override; 0 removes it. Returns the language now in effect.
uint16_t SetThreadUILanguage(uint16_t langId);

// The thread's locale: its override, else the user's (as GetUserDefaultLCID).
uint32_t GetThreadLocale();
// Sets the calling thread's locale override; 0 removes it. Always succeeds.
bool SetThreadLocale(uint32_t lcid);

}  // namespace System
