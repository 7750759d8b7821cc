// The values of the configuration store that the library, the host layer and this tool read.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

enum class ValueKind { kText, kNumber, kPath, kPublicKeys, kEncryption };

struct KnownValue {
    std::string_view key;  // "host", "programs" or a key of an instance
    std::string_view name;
    ValueKind kind;
    std::int64_t least = 0;  // of a number
    std::int64_t most = 0x7FFFFFFF;

    // The number that the text is; empty if it is none, or out of range.
    std::optional<std::int64_t> numberIn(std::string_view text) const;
    // Whether the text can be a value of this kind; true for every kText and kPath.
    bool accepts(std::string_view text) const;
    // What a value that is refused has to be: "a whole number from 0 to 3".
    std::string description() const;
};

std::span<const KnownValue> knownValues();

// Returns null for an unknown value.
const KnownValue* findKnownValue(std::string_view key, std::string_view name);
