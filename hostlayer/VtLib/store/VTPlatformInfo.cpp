#include "VTPlatformInfo.h"

#include <charconv>
#include <string_view>

#include "VTPI.h"
#include "VtCauses.h"
#include "store/Store.h"

namespace {

using hostlayer::StoreValue;
using StatePointer = std::shared_ptr<const hostlayer::StoreState>;

constexpr std::string_view kDefaultInstance = "Instance001";
constexpr std::string_view kInstallationRoot = "SOFTWARE\\Veltrane Systems\\Zephra";

std::string instanceOrDefault(const std::string& instance) {
    if (!instance.empty()) return instance;
    std::string focus = VTPI_Focus::getFocus();
    return focus.empty() ? std::string(kDefaultInstance) : focus;
}

// Returns the key's values, owned by the state, or null.
const hostlayer::StoreKey* findKey(const StatePointer& state, const std::string& instance, const char* key) {
    if (!state->content)
        VtNoteCause({.place = VtCause::kConfiguration, .subject = state->path, .text = state->problem});
    if (!state->content || key == nullptr) return nullptr;
    const auto keys = state->content->instances.find(instanceOrDefault(instance));
    if (keys == state->content->instances.end()) return nullptr;
    const auto values = keys->second.find(std::string_view(key));
    return values != keys->second.end() ? &values->second : nullptr;
}

// Returns the value, owned by the state, or null.
const StoreValue* findValueOf(const StatePointer& state, const std::string& instance, const char* key,
                              const char* valueName) {
    const hostlayer::StoreKey* values = findKey(state, instance, key);
    return values != nullptr && valueName != nullptr ? hostlayer::findValue(*values, valueName) : nullptr;
}

// Parses a decimal or 0x number. False if the text is anything else.
bool parseNumber(std::string_view text, std::uint64_t& number) {
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    if (isHex) text.remove_prefix(2);
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, isHex ? 16 : 10);
    return error == std::errc() && stop == end;
}

// Little-endian bytes of a number: 4 if it fits into them, else 8.
std::string littleEndian(std::uint64_t number) {
    const std::size_t width = number <= 0xFFFFFFFFU ? 4 : 8;
    std::string bytes;
    for (std::size_t i = 0; i < width; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xFF);
    return bytes;
}

}  // namespace

VTPlatformInfo::VTPlatformInfo() = default;

VTPlatformInfo::VTPlatformInfo(const char* instance) : m_instance(instance != nullptr ? instance : "") {}

int VTPlatformInfo::getString(const char* key, const char* valueName, std::string* value) const {
    const StatePointer state = hostlayer::currentStore();
    const StoreValue* found = findValueOf(state, m_instance, key, valueName);
    if (found == nullptr || value == nullptr) return 0;
    *value = hostlayer::textOf(*found);
    return 1;
}

int VTPlatformInfo::getNumber(const char* key, const char* valueName, std::uint64_t* value) const {
    const StatePointer state = hostlayer::currentStore();
    const StoreValue* found = findValueOf(state, m_instance, key, valueName);
    if (found == nullptr || value == nullptr) return 0;
    if (const auto* number = std::get_if<std::int64_t>(found)) {
        *value = static_cast<std::uint64_t>(*number);
        return 1;
    }
    std::uint64_t number = 0;
    if (!parseNumber(std::get<std::string>(*found), number)) return 0;
    *value = number;
    return 1;
}

int VTPlatformInfo::getRegValue(const char* key, const char* valueName, unsigned long* type, char* buffer,
                                unsigned long size) const {
    const StatePointer state = hostlayer::currentStore();
    const StoreValue* found = findValueOf(state, m_instance, key, valueName);
    if (found == nullptr || buffer == nullptr) return 0;
    const auto* number = std::get_if<std::int64_t>(found);
    const std::string bytes =
        number != nullptr ? littleEndian(static_cast<std::uint64_t>(*number)) : std::get<std::string>(*found);
    if (bytes.size() > size) return 0;  // the NUL of a string is optional
    bytes.copy(buffer, bytes.size());
    if (number == nullptr && bytes.size() < size) buffer[bytes.size()] = '\0';
    if (type != nullptr) *type = number == nullptr ? kText : kNumber;
    return 1;
}

int VTPlatformInfo::getRegValues(const char* key, std::map<std::string, std::string>* values) const {
    const StatePointer state = hostlayer::currentStore();
    if (!state->content || key == nullptr || values == nullptr) return 0;
    std::map<std::string, std::string> found;
    if (key == kInstallationRoot) {
        for (const auto& [instance, keys] : state->content->instances) found.emplace(instance, "");
    } else if (const hostlayer::StoreKey* named = findKey(state, m_instance, key)) {
        for (const auto& [valueName, value] : *named) found.emplace(valueName, hostlayer::textOf(value));
    } else {
        return 0;
    }
    *values = std::move(found);
    return 1;
}
