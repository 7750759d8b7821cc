#include "VTPlatformInfo.h"

#include <charconv>
#include <cstring>
#include <string_view>

#include "Store.h"
#include "VTPI.h"

namespace {

using hostlayer::StoreValue;
using StatePointer = std::shared_ptr<const hostlayer::StoreState>;

constexpr std::string_view kDefaultInstance = "Instance001";
constexpr std::string_view kInstallationRoot = "SOFTWARE\\Veltrane Systems\\Zephra";

std::string instanceOrDefault(const std::string& named) {
    if (!named.empty()) return named;
    std::string focus = VTPI_Focus::getFocus();
    return focus.empty() ? std::string(kDefaultInstance) : focus;
}

// The key's values in that state of the store; null when there is no such key.
const hostlayer::StoreKey* findKey(const StatePointer& state, const std::string& instance, const char* key) {
    if (!state->content || key == nullptr) return nullptr;
    const auto keys = state->content->instances.find(instanceOrDefault(instance));
    if (keys == state->content->instances.end()) return nullptr;
    const auto values = keys->second.find(std::string_view(key));
    return values != keys->second.end() ? &values->second : nullptr;
}

const StoreValue* findIn(const StatePointer& state, const std::string& instance, const char* key,
                         const char* valueName) {
    const hostlayer::StoreKey* values = findKey(state, instance, key);
    return values != nullptr && valueName != nullptr ? hostlayer::findValue(*values, valueName) : nullptr;
}

// A text that is wholly a decimal or 0x number.
bool numberOf(std::string_view text, std::uint64_t& number) {
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    if (isHex) text.remove_prefix(2);
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, isHex ? 16 : 10);
    return error == std::errc() && stop == end;
}

// A number takes 4 bytes when it fits into them, else 8; text is counted without its NUL.
std::string_view bytesOf(const StoreValue& value, std::uint64_t& room) {
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    room = static_cast<std::uint64_t>(std::get<std::int64_t>(value));
    const std::size_t width = room <= 0xFFFFFFFFU ? 4 : 8;
    unsigned char little[8];
    for (std::size_t i = 0; i < sizeof little; ++i) little[i] = static_cast<unsigned char>(room >> (8 * i));
    std::memcpy(&room, little, sizeof little);
    return {reinterpret_cast<const char*>(&room), width};
}

}  // namespace

VTPlatformInfo::VTPlatformInfo() = default;

VTPlatformInfo::VTPlatformInfo(const char* instance) : m_instance(instance != nullptr ? instance : "") {}

int VTPlatformInfo::getString(const char* key, const char* valueName, std::string* value) const {
    const StatePointer state = hostlayer::currentStore();
    const StoreValue* found = findIn(state, m_instance, key, valueName);
    if (found == nullptr || value == nullptr) return 0;
    *value = hostlayer::textOf(*found);
    return 1;
}

int VTPlatformInfo::getNumber(const char* key, const char* valueName, std::uint64_t* value) const {
    const StatePointer state = hostlayer::currentStore();
    const StoreValue* found = findIn(state, m_instance, key, valueName);
    if (found == nullptr || value == nullptr) return 0;
    if (const auto* number = std::get_if<std::int64_t>(found)) {
        *value = static_cast<std::uint64_t>(*number);
        return 1;
    }
    std::uint64_t number = 0;
    if (!numberOf(std::get<std::string>(*found), number)) return 0;
    *value = number;
    return 1;
}

int VTPlatformInfo::getRegValue(const char* key, const char* valueName, unsigned long* type, char* buffer,
                                unsigned long size) const {
    const StatePointer state = hostlayer::currentStore();
    const StoreValue* found = findIn(state, m_instance, key, valueName);
    if (found == nullptr || buffer == nullptr) return 0;
    std::uint64_t room = 0;
    const std::string_view bytes = bytesOf(*found, room);
    if (bytes.size() > size) return 0;
    const bool isText = std::holds_alternative<std::string>(*found);
    std::memcpy(buffer, bytes.data(), bytes.size());
    if (isText && bytes.size() < size) buffer[bytes.size()] = '\0';
    if (type != nullptr) *type = isText ? kText : kNumber;
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
