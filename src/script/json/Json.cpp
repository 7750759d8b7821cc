#include "json/Json.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

namespace {

using Library = nlohmann::json;

constexpr std::size_t kDeepest = 100;  // levels of a text that is parsed; values are destroyed recursively

// Builds the value of a text from the events of the library's parser.
class Builder : public nlohmann::json_sax<Library> {
  public:
    const Json& value() const { return m_root; }

    bool null() override { return add(Json()); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(number_integer_t value) override { return add(value); }
    bool number_unsigned(number_unsigned_t value) override { return add(value); }
    bool number_float(number_float_t value, const string_t&) override { return add(value); }
    bool string(string_t& value) override { return add(std::move(value)); }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return open(Json::object()); }
    bool start_array(std::size_t) override { return open(Json::array()); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool key(string_t& name) override {
        m_name = std::move(name);
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override {
        return false;
    }

  private:
    Json& placed(Json value) {
        if (m_open.empty()) return m_root = std::move(value);
        if (m_open.back()->isArray()) return m_open.back()->push_back(std::move(value));
        return m_open.back()->append(std::move(m_name), std::move(value));
    }
    bool add(Json value) {
        placed(std::move(value));
        return true;
    }
    bool open(Json container) {
        if (m_open.size() == kDeepest) return false;
        m_open.push_back(&placed(std::move(container)));
        return true;
    }
    bool close() {
        m_open.pop_back();
        return true;
    }

    Json m_root;
    std::vector<Json*> m_open;  // from m_root to the container that gets the next value
    std::string m_name;         // of the next member
};

// Writes a value's text. The library formats scalars only: its trees need memory when they are destroyed,
// and lack of it would end the program.
class Writer {
  public:
    explicit Writer(bool isIndented) : m_isIndented(isIndented) {}

    void write(const Json& value) { std::visit(*this, value.value()); }
    std::string text() { return std::move(m_text); }

    void operator()(const Json::Elements& elements) {
        writeList('[', ']', elements, [this](const Json& element) { write(element); });
    }
    void operator()(const Json::Members& members) {
        writeList('{', '}', members, [this](const auto& member) {
            (*this)(member.first);
            m_text += m_isIndented ? ": " : ":";
            write(member.second);
        });
    }
    void operator()(const auto& scalar) {
        m_text += Library(scalar).dump(-1, ' ', /*ensure_ascii=*/false, Library::error_handler_t::replace);
    }

  private:
    template <typename List, typename WriteItem>
    void writeList(char first, char last, const List& list, WriteItem writeItem) {
        m_text += first;
        m_indentation += 2;
        bool isFirst = true;
        for (const auto& item : list) {
            if (!std::exchange(isFirst, false)) m_text += ',';
            breakLine();
            writeItem(item);
        }
        m_indentation -= 2;
        if (!list.empty()) breakLine();
        m_text += last;
    }
    void breakLine() {
        if (m_isIndented) m_text.append(1, '\n').append(m_indentation, ' ');
    }

    bool m_isIndented;
    std::size_t m_indentation = 0;
    std::string m_text;
};

std::string textOf(const Json& value, bool isIndented) {
    Writer writer(isIndented);
    writer.write(value);
    return writer.text();
}

}  // namespace

Json::Json(std::initializer_list<std::pair<const char*, Json>> members) : m_value(Members()) {
    for (const auto& [name, value] : members) (*this)[name] = value;
}

Json& Json::operator[](std::string_view name) {
    if (isNull()) m_value = Members();
    if (const Json* const known = find(name)) return const_cast<Json&>(*known);
    return append(std::string(name), Json());
}

Json& Json::push_back(Json element) {
    return std::get<Elements>(m_value).emplace_back(std::move(element));
}

Json& Json::append(std::string name, Json member) {
    return std::get<Members>(m_value).emplace_back(std::move(name), std::move(member)).second;
}

const Json* Json::find(std::string_view name) const {
    const auto* const members = std::get_if<Members>(&m_value);
    if (members == nullptr) return nullptr;
    const auto found = std::find_if(members->begin(), members->end(),
                                    [&](const auto& member) { return member.first == name; });
    return found != members->end() ? &found->second : nullptr;
}

std::string Json::memberText(std::string_view name) const {
    const Json* const member = find(name);
    const auto* const text = member != nullptr ? std::get_if<std::string>(&member->m_value) : nullptr;
    return text != nullptr ? *text : std::string();
}

std::int64_t Json::memberNumber(std::string_view name, std::int64_t unknown) const {
    const Json* const member = find(name);
    if (member == nullptr) return unknown;
    if (const auto* const number = std::get_if<std::int64_t>(&member->m_value)) return *number;
    const auto* const number = std::get_if<std::uint64_t>(&member->m_value);
    return number != nullptr && std::in_range<std::int64_t>(*number) ? static_cast<std::int64_t>(*number)
                                                                     : unknown;
}

bool Json::memberIsTrue(std::string_view name) const {
    const Json* const member = find(name);
    const auto* const isTrue = member != nullptr ? std::get_if<bool>(&member->m_value) : nullptr;
    return isTrue != nullptr && *isTrue;
}

std::optional<Json> jsonOfText(std::string_view text) {
    Builder builder;
    if (!Library::sax_parse(text, &builder)) return {};
    return builder.value();
}

std::string jsonText(const Json& value) {
    return textOf(value, /*isIndented=*/true);
}

std::string jsonLine(const Json& value) {
    return textOf(value, /*isIndented=*/false);
}
