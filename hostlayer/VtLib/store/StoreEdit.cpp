#include "store/StoreEdit.h"

#include <toml++/toml.h>

#include <algorithm>
#include <string_view>

namespace hostlayer {
namespace {

// Returns the text as a basic string (TOML 1.0, "String").
std::string inQuotes(std::string_view text) {
    std::string literal = "\"";
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (character == '"' || character == '\\') {
            literal.append(1, '\\').append(1, character);
        } else if (code < 0x20 || code == 0x7F) {
            constexpr const char* kDigits = "0123456789ABCDEF";
            literal.append("\\u00").append(1, kDigits[code >> 4]).append(1, kDigits[code & 15]);
        } else {
            literal += character;
        }
    }
    return literal + '"';
}

// Returns the name as a key (TOML 1.0, "Keys") in the most readable form: bare, else as a literal string,
// else as a basic string.
std::string nameText(std::string_view name) {
    const auto isBare = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
               c == '-';
    };
    const auto isPlain = [](char c) {
        return static_cast<unsigned char>(c) >= 0x20 && c != 0x7F && c != '\'';
    };
    if (!name.empty() && std::all_of(name.begin(), name.end(), isBare)) return std::string(name);
    if (std::all_of(name.begin(), name.end(), isPlain)) return "'" + std::string(name) + "'";
    return inQuotes(name);
}

std::string valueText(const StoreValue& value) {
    const auto* text = std::get_if<std::string>(&value);
    return text != nullptr ? inQuotes(*text) : textOf(value);
}

// Byte offset of a parser position, whose column counts characters.
std::size_t offsetOf(std::string_view text, const toml::source_position& position) {
    std::size_t offset = 0;
    for (toml::source_index line = 1; line < position.line && offset < text.size(); ++line)
        offset = std::min(text.find('\n', offset), text.size() - 1) + 1;
    for (toml::source_index column = 1; column < position.column && offset < text.size(); ++column) {
        ++offset;
        while (offset < text.size() && (static_cast<unsigned char>(text[offset]) & 0xC0) == 0x80) ++offset;
    }
    return offset;
}

// A change of one value. Each way of making it yields a candidate text; the first one that parses to the
// wanted document is the result.
class Edit {
  public:
    Edit(const std::string& text, const std::vector<std::string>& tables, const std::string& name,
         const StoreValue& value)
        : m_text(text), m_tables(tables), m_name(name), m_value(value), m_document(toml::parse(text)) {}

    bool apply(std::string& edited) const {
        toml::table wanted = m_document;
        if (!setIn(wanted)) return false;
        for (const std::string& candidate : {withValueReplaced(), withLineInserted(), withTableAppended()}) {
            if (!candidate.empty() && parsesTo(candidate, wanted)) {
                edited = candidate;
                return true;
            }
        }
        return false;
    }

  private:
    bool setIn(toml::table& document) const {
        toml::table* table = &document;
        for (const std::string& name : m_tables) {
            table = table->emplace<toml::table>(name).first->second.as_table();
            if (table == nullptr) return false;
        }
        std::visit([&](const auto& value) { table->insert_or_assign(m_name, value); }, m_value);
        return true;
    }

    static bool parsesTo(const std::string& candidate, const toml::table& wanted) {
        try {
            return toml::parse(candidate) == wanted;
        } catch (const toml::parse_error&) {
            return false;
        }
    }

    const toml::table* existingTable() const {
        const toml::table* table = &m_document;
        for (const std::string& name : m_tables) {
            if (table != nullptr) table = table->get_as<toml::table>(name);
        }
        return table;
    }

    // Empty when the value does not exist.
    std::string withValueReplaced() const {
        const toml::table* table = existingTable();
        const toml::node* existing = table != nullptr ? table->get(m_name) : nullptr;
        if (existing == nullptr) return "";
        const std::size_t begin = offsetOf(m_text, existing->source().begin);
        const std::size_t end = offsetOf(m_text, existing->source().end);
        return end < begin ? "" : m_text.substr(0, begin) + valueText(m_value) + m_text.substr(end);
    }

    // Adds a line after the table's last value, or after its header. Empty when the table does not exist.
    std::string withLineInserted() const {
        const toml::table* table = existingTable();
        if (table == nullptr) return "";
        toml::source_position last = table->source().end;
        for (const auto& [name, node] : *table) {
            const bool isLater = !node.is_table() && last < node.source().end;
            if (isLater) last = node.source().end;
        }
        const std::size_t end = m_text.find('\n', offsetOf(m_text, last));
        const std::string line = nameText(m_name) + " = " + valueText(m_value) + "\n";
        if (end == std::string::npos) return m_text + "\n" + line;
        return m_text.substr(0, end + 1) + line + m_text.substr(end + 1);
    }

    std::string withTableAppended() const {
        std::string header;
        for (const std::string& name : m_tables) header += (header.empty() ? "" : ".") + nameText(name);
        const bool lacksLineEnd = !m_text.empty() && m_text.back() != '\n';
        return m_text + (lacksLineEnd ? "\n" : "") + (m_text.empty() ? "" : "\n") + "[" + header + "]\n" +
               nameText(m_name) + " = " + valueText(m_value) + "\n";
    }

    const std::string& m_text;
    const std::vector<std::string>& m_tables;
    const std::string& m_name;
    const StoreValue& m_value;
    toml::table m_document;
};

}  // namespace

bool editStore(const std::string& text, const std::vector<std::string>& table, const std::string& valueName,
               const StoreValue& value, std::string& edited, std::string& problem) {
    StoreContent content;
    if (!parseStore(text, content, problem)) return false;
    if (Edit(text, table, valueName, value).apply(edited)) {
        if (parseStore(edited, content, problem)) return true;
        problem = "the value [" + valueName +
                  "] is not set, because the store could not be read with it: " + problem;
        return false;
    }
    problem = "the value [" + valueName +
              "] is not UTF-8, or cannot be set without changing other values; edit the file by hand";
    return false;
}

}  // namespace hostlayer
