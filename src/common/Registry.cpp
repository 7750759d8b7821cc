#include "Registry.h"

#include <cstdint>

#include "CallerText.h"
#include "CommonMessages.h"
#include "DVUtilities/commonFunc.h"
#include "ExceptionGuard.h"
#include "FX.h"
#include "TextAsFormat.h"
#include "VTPlatformInfo.h"

bool readRegistryText(const char* key, const char* valueName, std::string& text, std::string& errorText) {
    std::string value;
    if (VTPlatformInfo().getString(textOrEmpty(key), textOrEmpty(valueName), &value) == 0) {
        errorText = FXString::Format(common_messages::kNoTextValue, textOrEmpty(valueName));
        return false;
    }
    text = textAsFormat(value.c_str(), kRegistryTextSize - 1);
    return true;
}

bool readRegistryNumber(const char* key, const char* valueName, unsigned int& number,
                        std::string& errorText) {
    std::uint64_t value = 0;
    if (VTPlatformInfo().getNumber(textOrEmpty(key), textOrEmpty(valueName), &value) == 0) {
        errorText = FXString::Format(common_messages::kNoNumberValue, textOrEmpty(valueName));
        return false;
    }
    number = static_cast<std::uint32_t>(value);
    return true;
}

// Reads the platform's default instance, whatever instance the caller names. Callers rely on it.
bool GetRegistryItemValue(const char* /*instance*/, const char* key, const char* valueName,
                          unsigned int* number, char* text, std::string& errorText) {
    return guarded(false, [&] {
        if (text != nullptr) {
            std::string value;
            const bool read = readRegistryText(key, valueName, value, errorText);
            if (read) copyWhole(text, value);
            return read;
        }
        if (number != nullptr) return readRegistryNumber(key, valueName, *number, errorText);
        errorText = common_messages::kInvalidArgument;
        return false;
    });
}
