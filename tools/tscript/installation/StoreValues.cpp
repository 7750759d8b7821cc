#include "installation/StoreValues.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "DVUtilities/commonFunc.h"
#include "HostSetup.h"
#include "console/Outcome.h"
#include "installation/Credentials.h"
#include "installation/KnownValues.h"

namespace {

constexpr std::size_t kLongestText = 1023;
constexpr std::size_t kLongestPart = 128;
constexpr std::string_view kHost = "host";
constexpr std::string_view kPrograms = "programs";

bool holdsIgnoringCase(std::string_view text, std::string_view part) {
    const auto same = [](char a, char b) { return (a | 0x20) == (b | 0x20); };
    return std::search(text.begin(), text.end(), part.begin(), part.end(), same) != text.end();
}

// ODBC allows blanks before the "=" of an attribute.
bool holdsPassword(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    return holdsIgnoringCase(text, "pwd=") || holdsIgnoringCase(text, "password=");
}

[[noreturn]] void throwUsage(const std::string& what, const std::string& advice = {}) {
    throw Failure(ExitCode::kUsage, what, advice);
}

const StoreEntry* findEntry(const std::vector<StoreEntry>& entries, const StoreEntry& wanted) {
    const auto found = std::find_if(entries.begin(), entries.end(), [&wanted](const StoreEntry& entry) {
        return entry.table == wanted.table && entry.name == wanted.name;
    });
    return found == entries.end() ? nullptr : &*found;
}

// Returns the known value of that name, else one of the type that the value in the store has. Throws Failure
// (kUsage) if there is neither.
KnownValue knownValueOf(const StoreEntry& entry) {
    if (const KnownValue* known = findKnownValue(entry.table.back(), entry.name)) return *known;
    const std::vector<StoreEntry> entries = storeEntries();
    const StoreEntry* present = findEntry(entries, entry);
    if (present == nullptr)
        throwUsage(
            "'" + entry.fullName() + "' is not a value of the store",
            "docs/configuration.md lists the known values; tscript config show lists those of the store.");
    const bool isNumber = std::holds_alternative<std::int64_t>(present->value);
    return {entry.table.back(), entry.name, isNumber ? ValueKind::kNumber : ValueKind::kText};
}

// The library expands percent signs in an instance's strings, so that they have to be doubled.
void checkString(const StoreEntry& entry, const std::string& text, ValueKind kind) {
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
    if (text.size() > kLongestText)
        throwUsage("the value is longer than " + std::to_string(kLongestText) + " bytes");
    if (std::any_of(text.begin(), text.end(), isControl)) throwUsage("the value holds a control character");
    if (kind == ValueKind::kPath && (text.empty() || text.front() != '/'))
        throwUsage(entry.fullName() + " is an absolute path");
    if (entry.table.front() == kHost) return;
    for (std::size_t at = 0; (at = text.find('%', at)) != std::string::npos; at += 2)
        if (text.compare(at, 2, "%%") != 0) throwUsage("a percent sign must be written twice: %%");
}

}  // namespace

std::string StoreEntry::fullName() const {
    std::string full;
    for (const std::string& part : table) full += part + ".";
    return full + name;
}

std::string StoreEntry::text() const {
    if (const auto* number = std::get_if<std::int64_t>(&value)) return std::to_string(*number);
    return std::get<std::string>(value);
}

// Names of encrypted values start with a lower-case p; ODBC attributes may hold a password.
bool StoreEntry::isSecret() const {
    const bool isEncrypted = name.size() > 1 && name[0] == 'p' && name[1] >= 'A' && name[1] <= 'Z';
    const std::string content = text();
    return isEncrypted || isStoredCredentials(content) || holdsIgnoringCase(name, "password") ||
           holdsPassword(content);
}

std::vector<StoreEntry> storeEntries() {
    const hostlayer::StoreReport store = hostlayer::inspectStore();
    std::vector<StoreEntry> entries;
    for (const auto& [name, text] : store.settings) entries.push_back({{std::string(kHost)}, name, text});
    for (const auto& [name, text] : store.programs)
        entries.push_back({{std::string(kHost), std::string(kPrograms)}, name, text});
    for (const auto& [instance, keys] : store.instances)
        for (const auto& [key, values] : keys)
            for (const auto& [name, value] : values) entries.push_back({{instance, key}, name, value});
    return entries;
}

StoreEntry parseEntryName(const std::string& fullName) {
    std::vector<std::string> parts(1);
    for (const char c : fullName.substr(0, 4 * kLongestPart)) {
        if (c == '.') {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    const bool areValid = std::all_of(parts.begin(), parts.end(), [](const std::string& part) {
        return !part.empty() && part.size() <= kLongestPart;
    });
    if (!areValid || parts.size() < 2 || parts.size() > 3)
        throwUsage("'" + fullName.substr(0, kLongestPart) + "' is not the name of a value",
                   "Write KEY.VALUE, INSTANCE.KEY.VALUE, host.SETTING or host.programs.TOOL.");
    if (parts.size() == 2 && parts.front() != kHost) {
        std::array<char, 1024> instance{};
        GetInstanceName(instance.data());
        parts.insert(parts.begin(), instance.data());
    }
    StoreEntry entry;
    entry.name = parts.back();
    parts.pop_back();
    entry.table = parts;
    return entry;
}

std::variant<std::string, std::int64_t> parseValue(const StoreEntry& entry, const std::string& text) {
    if (StoreEntry{entry.table, entry.name, text}.isSecret())
        throwUsage("'" + entry.fullName() + "' is a secret", "tscript credentials set stores credentials.");
    const KnownValue known = knownValueOf(entry);
    if (!known.accepts(text)) throwUsage(entry.fullName() + " is " + known.description());
    if (const auto number = known.numberIn(text); known.kind == ValueKind::kNumber && number) return *number;
    checkString(entry, text, known.kind);
    return text;
}
