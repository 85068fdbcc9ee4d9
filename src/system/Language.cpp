#include "system/Language.h"

#include <optional>

#include "platform/Environment.h"

namespace System {
namespace {

constexpr uint16_t kEnglishUnitedStates = 0x0409;

thread_local uint16_t threadUILanguage = 0;
thread_local uint32_t threadLocale = 0;

struct LanguageEntry {
    std::string_view code;  // ISO 639 code
    uint16_t primary;       // the Windows primary language
};

constexpr LanguageEntry kLanguages[] = {
    {"ar", 0x01}, {"bg", 0x02},  {"ca", 0x03}, {"zh", 0x04}, {"cs", 0x05}, {"da", 0x06},
    {"de", 0x07}, {"el", 0x08},  {"en", 0x09}, {"es", 0x0A}, {"fi", 0x0B}, {"fr", 0x0C},
    {"he", 0x0D}, {"hu", 0x0E},  {"is", 0x0F}, {"it", 0x10}, {"ja", 0x11}, {"ko", 0x12},
    {"nl", 0x13}, {"nb", 0x14},  {"no", 0x14}, {"nn", 0x14}, {"pl", 0x15}, {"pt", 0x16},
    {"rm", 0x17}, {"ro", 0x18},  {"ru", 0x19}, {"hr", 0x1A}, {"sr", 0x1A}, {"bs", 0x1A},
    {"sk", 0x1B}, {"sq", 0x1C},  {"sv", 0x1D}, {"th", 0x1E}, {"tr", 0x1F}, {"ur", 0x20},
    {"id", 0x21}, {"uk", 0x22},  {"be", 0x23}, {"sl", 0x24}, {"et", 0x25}, {"lv", 0x26},
    {"lt", 0x27}, {"tg", 0x28},  {"fa", 0x29}, {"vi", 0x2A}, {"hy", 0x2B}, {"az", 0x2C},
    {"eu", 0x2D}, {"mk", 0x2F},  {"af", 0x36}, {"ka", 0x37}, {"fo", 0x38}, {"hi", 0x39},
    {"mt", 0x3A}, {"ga", 0x3C},  {"ms", 0x3E}, {"kk", 0x3F}, {"ky", 0x40}, {"sw", 0x41},
    {"uz", 0x43}, {"tt", 0x44},  {"bn", 0x45}, {"pa", 0x46}, {"gu", 0x47}, {"ta", 0x49},
    {"te", 0x4A}, {"kn", 0x4B},  {"ml", 0x4C}, {"mr", 0x4E}, {"mn", 0x50}, {"cy", 0x52},
    {"km", 0x53}, {"lo", 0x54},  {"gl", 0x56}, {"am", 0x5E}, {"ne", 0x61}, {"fy", 0x62},
    {"ps", 0x63}, {"fil", 0x64}, {"yo", 0x6A}, {"zu", 0x35}, {"xh", 0x34}, {"lb", 0x6E},
};

// Full identifiers where the country changes the sublanguage; any other country of a known
// language gets the default sublanguage.
struct LocaleEntry {
    std::string_view language;
    std::string_view country;
    uint16_t langId;
};

constexpr LocaleEntry kLocales[] = {
    {"de", "DE", 0x0407}, {"de", "CH", 0x0807}, {"de", "AT", 0x0C07}, {"de", "LU", 0x1007},
    {"de", "LI", 0x1407}, {"fr", "FR", 0x040C}, {"fr", "BE", 0x080C}, {"fr", "CA", 0x0C0C},
    {"fr", "CH", 0x100C}, {"fr", "LU", 0x140C}, {"fr", "MC", 0x180C}, {"en", "US", 0x0409},
    {"en", "GB", 0x0809}, {"en", "AU", 0x0C09}, {"en", "CA", 0x1009}, {"en", "NZ", 0x1409},
    {"en", "IE", 0x1809}, {"en", "ZA", 0x1C09}, {"en", "IN", 0x4009}, {"en", "SG", 0x4809},
    {"es", "ES", 0x0C0A}, {"es", "MX", 0x080A}, {"es", "AR", 0x2C0A}, {"es", "CO", 0x240A},
    {"es", "CL", 0x340A}, {"es", "US", 0x540A}, {"pt", "BR", 0x0416}, {"pt", "PT", 0x0816},
    {"zh", "TW", 0x0404}, {"zh", "CN", 0x0804}, {"zh", "HK", 0x0C04}, {"zh", "SG", 0x1004},
    {"zh", "MO", 0x1404}, {"it", "IT", 0x0410}, {"it", "CH", 0x0810}, {"nl", "NL", 0x0413},
    {"nl", "BE", 0x0813}, {"sv", "SE", 0x041D}, {"sv", "FI", 0x081D}, {"nn", "NO", 0x0814},
    {"sr", "RS", 0x241A}, {"bs", "BA", 0x141A}, {"hr", "BA", 0x101A},
};

// Sublanguages for a language without a country.
uint16_t DefaultLangId(std::string_view language, uint16_t primary) {
    if (language == "es") return 0x0C0A;
    if (language == "nn") return 0x0814;
    if (language == "sr") return 0x241A;
    if (language == "bs") return 0x141A;
    return static_cast<uint16_t>((1u << 10) | primary);
}

std::string Lower(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return out;
}

std::string Upper(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return out;
}

std::optional<std::string> FirstSetLocale() {
    for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
        auto value = Platform::GetEnvironment(name);
        if (!value || value->empty()) continue;
        if (std::string_view(name) == "LANGUAGE") {
            // A priority list "de_CH:de:en"; its first entry counts.
            const auto colon = value->find(':');
            if (colon == 0) continue;
            value->resize(std::min(colon, value->size()));
        }
        return value;
    }
    return std::nullopt;
}

}  // namespace

std::wstring GetCultureName(uint32_t langId) {
    switch (langId & 0x3FF) {
        case 6:
            return L"da-dk";
        case 7:
            return L"de-de";
        case 12:
            return L"fr-fr";
        case 17:
            return L"ja-jp";
        default:
            return L"en-us";
    }
}

uint16_t LanguageIdFromLocaleName(std::string_view localeName) {
    // language[_territory][.codeset][@modifier]; "-" is taken like "_".
    const size_t end = localeName.find_first_of(".@");
    if (end != std::string_view::npos) localeName = localeName.substr(0, end);
    const size_t sep = localeName.find_first_of("_-");
    const std::string language = Lower(localeName.substr(0, sep));
    const std::string country =
        sep == std::string_view::npos ? std::string() : Upper(localeName.substr(sep + 1));
    for (const auto& entry : kLocales)
        if (entry.language == language && entry.country == country) return entry.langId;
    for (const auto& entry : kLanguages)
        if (entry.code == language) return DefaultLangId(language, entry.primary);
    return kEnglishUnitedStates;
}

uint16_t GetUserDefaultUILanguage() {
    const auto locale = FirstSetLocale();
    return locale ? LanguageIdFromLocaleName(*locale) : kEnglishUnitedStates;
}

uint32_t GetUserDefaultLCID() {
    return GetUserDefaultUILanguage();
}

uint16_t GetThreadUILanguage() {
    return threadUILanguage != 0 ? threadUILanguage : GetUserDefaultUILanguage();
}

uint16_t SetThreadUILanguage(uint16_t langId) {
    threadUILanguage = langId;
    return GetThreadUILanguage();
}

uint32_t GetThreadLocale() {
    return threadLocale != 0 ? threadLocale : GetUserDefaultLCID();
}

bool SetThreadLocale(uint32_t lcid) {
    threadLocale = lcid;
    return true;
}

std::wstring GetUILanguageName() {
    // The thread's language is always available here; the user default is the fallback
    // built into GetThreadUILanguage.
    return GetCultureName(GetThreadUILanguage() & 0xFFFF);
}

}  // namespace System
