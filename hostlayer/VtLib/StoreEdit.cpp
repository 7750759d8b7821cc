#include "StoreEdit.h"

#include <toml++/toml.h>

#include <algorithm>
#include <string_view>

namespace hostlayer {
namespace {

// A basic string (TOML 1.0, "String").
std::string quoted(std::string_view text) {
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

// A name as people write it: bare where it can be, in single quotes where they do.
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
    return quoted(name);
}

std::string valueText(const StoreValue& value) {
    const auto* text = std::get_if<std::string>(&value);
    return text != nullptr ? quoted(*text) : textOf(value);
}

// Columns count characters, not bytes.
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

// One change: tried in several ways, of which the first that has the wanted effect, and no other, is taken.
class Edit {
  public:
    Edit(const std::string& text, const std::vector<std::string>& tables, const std::string& name,
         const StoreValue& value)
        : m_text(text), m_tables(tables), m_name(name), m_value(value), m_document(toml::parse(text)) {}

    bool apply(std::string& edited) const {
        toml::table wanted = m_document;
        if (!setIn(wanted)) return false;
        for (const std::string& candidate : {replaced(), inserted(), appended()}) {
            if (!candidate.empty() && isSame(candidate, wanted)) {
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

    static bool isSame(const std::string& candidate, const toml::table& wanted) {
        try {
            return toml::parse(candidate) == wanted;
        } catch (const toml::parse_error&) {
            return false;
        }
    }

    const toml::table* presentTable() const {
        const toml::table* table = &m_document;
        for (const std::string& name : m_tables) {
            if (table != nullptr) table = table->get_as<toml::table>(name);
        }
        return table;
    }

    std::string replaced() const {
        const toml::table* table = presentTable();
        const toml::node* present = table != nullptr ? table->get(m_name) : nullptr;
        if (present == nullptr) return "";
        const std::size_t begin = offsetOf(m_text, present->source().begin);
        const std::size_t end = offsetOf(m_text, present->source().end);
        return end < begin ? "" : m_text.substr(0, begin) + valueText(m_value) + m_text.substr(end);
    }

    // A line of its own after the table's last value, or after its heading.
    std::string inserted() const {
        const toml::table* table = presentTable();
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

    std::string appended() const {
        std::string heading;
        for (const std::string& name : m_tables) heading += (heading.empty() ? "" : ".") + nameText(name);
        const bool isLineOpen = !m_text.empty() && m_text.back() != '\n';
        return m_text + (isLineOpen ? "\n" : "") + (m_text.empty() ? "" : "\n") + "[" + heading + "]\n" +
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
    if (Edit(text, table, valueName, value).apply(edited)) return true;
    problem = "the value [" + valueName +
              "] cannot be set without changing more than it, or is no UTF-8 text; set it by hand";
    return false;
}

}  // namespace hostlayer
