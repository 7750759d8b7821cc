// Values of the configuration store by their names: which there are, which are secret, what they may hold.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

struct StoreEntry {
    std::vector<std::string> table;  // instance and key, or "host", or "host" and "programs"
    std::string name;
    std::variant<std::string, std::int64_t> value;

    std::string fullName() const;
    std::string text() const;
    bool isSecret() const;
};

// All of them, in the order of their names.
std::vector<StoreEntry> storeEntries();

// Takes "KEY.VALUE", "INSTANCE.KEY.VALUE", "host.SETTING" or "host.programs.TOOL" apart; the value is empty.
// Throws Failure (usage) for anything else.
StoreEntry entryNamed(const std::string& fullName);

// The value that the text means for this entry. Throws Failure (usage) for a name that neither the suite
// knows nor the store has, a secret, or a text that such a value cannot be.
std::variant<std::string, std::int64_t> checkedValue(const StoreEntry& entry, const std::string& text);
