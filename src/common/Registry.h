// Readers of single configuration values; the exported readers use them.
#pragma once

#include <string>

// Buffer size of every string that the exported readers return, the NUL included.
inline constexpr unsigned int kRegistryTextSize = 8192;

// Reads a string of the default instance. It is interpreted as a format string, so that "%%" becomes "%",
// which callers rely on, and cut to 8,191 bytes. On failure `errorText` names the value.
bool readRegistryText(const char* key, const char* valueName, std::string& text, std::string& errorText);

// Reads the low 32 bits of a number of the default instance. On failure `number` is unchanged and `errorText`
// names the value.
bool readRegistryNumber(const char* key, const char* valueName, unsigned int& number, std::string& errorText);
