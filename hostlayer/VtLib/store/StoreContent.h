// Content of a configuration store: a TOML 1.0 document with one table per instance and one subtable per key.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace hostlayer {

using StoreValue = std::variant<std::string, std::int64_t>;
using StoreKey = std::map<std::string, StoreValue, std::less<>>;     // value name -> value
using StoreInstance = std::map<std::string, StoreKey, std::less<>>;  // key -> its values
using StoreInstances = std::map<std::string, StoreInstance, std::less<>>;

struct StoreContent {
    StoreInstances instances;
    StoreKey settings;                  // [host]
    StoreKey programs;                  // [host.programs]
    std::vector<std::string> oddities;  // entries ignored because of their place or type, with their line
};

// Parses a store into `content`. False, with line and column of the syntax error in `problem`, if the text is
// not TOML.
bool parseStore(std::string_view text, StoreContent& content, std::string& problem);

// Returns a string value unchanged, a number as decimal digits.
std::string textOf(const StoreValue& value);

// Returns the key's value of that name, owned by the key, or null.
const StoreValue* findValue(const StoreKey& key, std::string_view valueName);

}  // namespace hostlayer
