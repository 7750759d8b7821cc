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
