// What a configuration store's text says.
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
    std::vector<std::string> oddities;  // what stands at a place where no value is looked for, with its line
};

// True and the content, or false and the problem with its line and column.
bool parseStore(std::string_view text, StoreContent& content, std::string& problem);

// A text as it is, a number in decimal digits.
std::string textOf(const StoreValue& value);

// The value of that name; null when there is none.
const StoreValue* findValue(const StoreKey& key, std::string_view valueName);

}  // namespace hostlayer
