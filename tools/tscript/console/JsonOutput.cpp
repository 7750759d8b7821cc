#include "console/JsonOutput.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "console/Console.h"

namespace {

using Library = nlohmann::ordered_json;

// Makes a value of the library.
struct Converter {
    Library operator()(const Json::Elements& elements) const {
        Library array = Library::array();
        for (const Json& element : elements) array.push_back(std::visit(*this, element.value()));
        return array;
    }
    Library operator()(const Json::Members& members) const {
        Library object = Library::object();
        for (const auto& [name, value] : members) object[name] = std::visit(*this, value.value());
        return object;
    }
    Library operator()(const auto& scalar) const { return scalar; }
};

// The other direction.
Json valueOf(const Library& value) {
    if (value.is_object()) {
        Json object = Json::object();
        for (const auto& [name, member] : value.items()) object[name] = valueOf(member);
        return object;
    }
    if (value.is_array()) {
        Json array = Json::array();
        for (const Library& element : value) array.push_back(valueOf(element));
        return array;
    }
    if (value.is_string()) return value.get<std::string>();
    if (value.is_boolean()) return value.get<bool>();
    if (value.is_number_unsigned()) return value.get<std::uint64_t>();
    if (value.is_number_integer()) return value.get<std::int64_t>();
    if (value.is_number()) return value.get<double>();
    return {};
}

std::string textOf(const Json& value, int indentation) {
    return std::visit(Converter(), value.value())
        .dump(indentation, ' ', /*ensure_ascii=*/false, Library::error_handler_t::replace);
}

}  // namespace

Json::Json(std::initializer_list<std::pair<const char*, Json>> members) : m_value(Members()) {
    for (const auto& [name, value] : members) (*this)[name] = value;
}

Json& Json::operator[](std::string_view name) {
    if (is_null()) m_value = Members();
    auto& members = std::get<Members>(m_value);
    const auto known = std::find_if(members.begin(), members.end(),
                                    [&](const auto& member) { return member.first == name; });
    if (known != members.end()) return known->second;
    return members.emplace_back(std::string(name), Json()).second;
}

std::string Json::memberText(std::string_view name) const {
    for (const auto& [known, value] : members())
        if (known == name)
            if (const auto* text = std::get_if<std::string>(&value.value())) return *text;
    return {};
}

Json jsonOfText(std::string_view text) {
    return valueOf(Library::parse(text));
}

std::string jsonText(const Json& value) {
    constexpr int kIndentation = 2;
    return textOf(value, kIndentation);
}

std::string jsonLine(const Json& value) {
    constexpr int kOneLine = -1;
    return textOf(value, kOneLine);
}

void writeJson(const Json& value) {
    writeResult(jsonText(value));
}
