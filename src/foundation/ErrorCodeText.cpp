#include "foundation/ErrorCodeText.h"

#include <cstdio>

#include "foundation/TextConversion.h"
#include "platform/SystemMessages.h"

namespace ErrorHandling {

std::wstring ErrorCodeText(ErrorCode code) {
    int32_t number = code.Value();
    if (number < 0 && (static_cast<uint32_t>(number) >> 16) == 0x8007u) number &= 0xFFFF;

    char head[32];
    if (number < 0)
        std::snprintf(head, sizeof(head), "Code 0x%x: ", static_cast<unsigned>(number));
    else
        std::snprintf(head, sizeof(head), "Code %d: ", number);
    std::wstring text = STLHelpers::Utf8ToWide(head);

    if (const char* message = Platform::SystemMessageText(static_cast<uint32_t>(number))) {
        std::wstring body = STLHelpers::Utf8ToWide(message);
        while (!body.empty() && (body.back() == L'\n' || body.back() == L'\r')) body.pop_back();
        text += body;
    }
    return text;
}

}  // namespace ErrorHandling
