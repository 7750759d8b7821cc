#include "store/StoreContent.h"

#include <toml++/toml.h>

#include <algorithm>
#include <cctype>
#include <sstream>

namespace hostlayer {
namespace {

constexpr std::string_view kHostTable = "host";
constexpr std::string_view kProgramsTable = "programs";

std::string joined(std::string_view outer, std::string_view inner) {
    return std::string(outer).append(1, '.').append(inner);
}

// Converts the tables of a TOML document into instances, keys and values.
class DocumentReader {
  public:
    explicit DocumentReader(StoreContent& content) : m_content(content) {}

    void readDocument(const toml::table& document) {
        for (const auto& [name, node] : document) {
            const std::string path(name.str());
            if (!node.is_table()) {
                reportIgnored(node, path, "is outside every instance");
            } else if (path == kHostTable) {
                readHost(*node.as_table());
            } else {
                readInstance(path, *node.as_table());
            }
        }
    }

  private:
    void readHost(const toml::table& host) {
        for (const auto& [name, node] : host) {
            const std::string path(name.str());
            if (path == kProgramsTable && node.is_table()) {
                readKey(path, *node.as_table(), m_content.programs);
            } else {
                readValue(path, node, m_content.settings, joined(kHostTable, path));
            }
        }
    }

    void readInstance(const std::string& instance, const toml::table& keys) {
        StoreInstance& content = m_content.instances[instance];
        for (const auto& [name, node] : keys) {
            const std::string key(name.str());
            if (const toml::table* values = node.as_table()) {
                readKey(joined(instance, key), *values, content[key]);
            } else {
                reportIgnored(node, joined(instance, key), "is outside every key");
            }
        }
    }

    void readKey(const std::string& path, const toml::table& values, StoreKey& key) {
        for (const auto& [name, node] : values) {
            const std::string valueName(name.str());
            readValue(valueName, node, key, joined(path, valueName));
        }
    }

    void readValue(const std::string& valueName, const toml::node& node, StoreKey& key,
                   const std::string& path) {
        if (const auto* text = node.as_string()) {
            key.insert_or_assign(valueName, text->get());
        } else if (const auto* number = node.as_integer()) {
            key.insert_or_assign(valueName, number->get());
        } else if (const auto* truth = node.as_boolean()) {
            key.insert_or_assign(valueName, std::int64_t{truth->get()});
        } else if (node.is_table() || node.is_array()) {
            reportIgnored(node, path, "is a table or list where a text or number is expected");
        } else {  // fractions, dates and times become strings
            std::ostringstream written;
            node.visit([&](const auto& value) {
                if constexpr (toml::is_value<decltype(value)>) written << value;
            });
            key.insert_or_assign(valueName, written.str());
        }
    }

    void reportIgnored(const toml::node& node, const std::string& path, const char* reason) {
        m_content.oddities.push_back("line " + std::to_string(node.source().begin.line) + ": " + path + " " +
                                     reason + " and is not read");
    }

    StoreContent& m_content;
};

constexpr int kMostLevels = 100;

// Length of the string or the comment at the beginning of `text`, 0 if there is none. Those that are not
// closed end with their line, strings in three quotation marks with the text.
std::size_t lengthOfStringOrComment(std::string_view text) {
    const char first = text.front();
    if (first == '#') return std::min(text.find('\n'), text.size());
    if (first != '"' && first != '\'') return 0;
    const bool isLong = text.starts_with(std::string(3, first));
    const std::string mark(isLong ? 3 : 1, first);
    for (std::size_t i = mark.size(); i < text.size(); ++i) {
        if (!isLong && text[i] == '\n') return i;
        // A long string may itself end in quotation marks: the last three of a row close it.
        if (text.substr(i).starts_with(mark))
            return isLong ? std::min(text.find_first_not_of(first, i), text.size()) : i + 1;
        if (text[i] == '\\' && first == '"') ++i;
    }
    return text.size();
}

// Line in which a key has too many levels ("a.b.c"), or 0. The parser would recurse into each of them.
int lineOfDeepKey(std::string_view text) {
    constexpr std::string_view kBetweenLevels = "_- \t";
    std::size_t levels = 0;
    for (std::size_t at = 0; at < text.size();) {
        if (const std::size_t length = lengthOfStringOrComment(text.substr(at)); length > 0) {
            at += length;
            continue;
        }
        const char c = text[at++];
        const bool continuesKey = std::isalnum(static_cast<unsigned char>(c)) != 0 ||
                                  kBetweenLevels.find(c) != std::string_view::npos;
        if (c == '.' && ++levels > kMostLevels)
            return 1 + static_cast<int>(std::ranges::count(text.substr(0, at), '\n'));
        if (c != '.' && !continuesKey) levels = 0;
    }
    return 0;
}

}  // namespace

bool parseStore(std::string_view text, StoreContent& content, std::string& problem) {
    if (const int line = lineOfDeepKey(text); line > 0) {
        problem = "line " + std::to_string(line) + ": a key has more than " + std::to_string(kMostLevels) +
                  " levels";
        return false;
    }
    try {
        DocumentReader(content).readDocument(toml::parse(text));
        return true;
    } catch (const toml::parse_error& error) {
        const toml::source_position& where = error.source().begin;
        problem = "line " + std::to_string(where.line) + ", column " + std::to_string(where.column) + ": " +
                  std::string(error.description());
        return false;
    }
}

std::string textOf(const StoreValue& value) {
    if (const auto* number = std::get_if<std::int64_t>(&value)) return std::to_string(*number);
    return std::get<std::string>(value);
}

const StoreValue* findValue(const StoreKey& key, std::string_view valueName) {
    const auto found = key.find(valueName);
    return found != key.end() ? &found->second : nullptr;
}

}  // namespace hostlayer
