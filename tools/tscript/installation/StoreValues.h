// Values of the configuration store: listing, names, checks of new values.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

struct StoreEntry {
    std::vector<std::string> table;  // {instance, key}, {"host"} or {"host", "programs"}
    std::string name;
    std::variant<std::string, std::int64_t> value;

    std::string fullName() const;  // the parts of the table and the name, joined by dots
    std::string text() const;
    bool isSecret() const;  // holds credentials or a password
};

// All values of the store, sorted by name.
std::vector<StoreEntry> storeEntries();

// Parses "KEY.VALUE", "INSTANCE.KEY.VALUE", "host.SETTING" or "host.programs.TOOL" into an entry without a
// value. Throws Failure (kUsage).
StoreEntry parseEntryName(const std::string& fullName);

// Converts the text to a value of the entry's type. Throws Failure (kUsage) if the name is neither known nor
// in the store, the entry is secret, or the text is not valid for it.
std::variant<std::string, std::int64_t> parseValue(const StoreEntry& entry, const std::string& text);
