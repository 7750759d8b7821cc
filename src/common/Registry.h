// Single values of the configuration, as texts of their own. What the exported readers are made of.
#pragma once

#include <string>

// The bound of every text that the exported readers hand out, its NUL included.
inline constexpr unsigned int kRegistryTextSize = 8192;

// The default instance's value as it leaves the reader: interpreted as a format string, so that "%%" is "%",
// and cut to 8,191 bytes. Callers rely on the former. On failure `errorText` names the value.
bool readRegistryText(const char* key, const char* valueName, std::string& text, std::string& errorText);

// The low 32 bits of the default instance's value. On failure `number` is untouched.
bool readRegistryNumber(const char* key, const char* valueName, unsigned int& number, std::string& errorText);
