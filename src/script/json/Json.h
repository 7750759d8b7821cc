// JSON values and their text. Json.cpp alone includes the library that parses and formats JSON, which takes
// long to compile.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

// A JSON value. An object keeps its members in insertion order.
class Json {
  public:
    using Elements = std::vector<Json>;
    using Members = std::vector<std::pair<std::string, Json>>;
    using Value = std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double, std::string,
                               Elements, Members>;

    Json() = default;  // null; the first member makes an object of it
    Json(std::nullptr_t) {}
    Json(bool value) : m_value(value) {}
    template <std::signed_integral Integer>
    Json(Integer value) : m_value(static_cast<std::int64_t>(value)) {}
    template <std::unsigned_integral Integer>
    Json(Integer value) : m_value(static_cast<std::uint64_t>(value)) {}
    Json(double value) : m_value(value) {}
    Json(const char* text) : m_value(std::string(text)) {}
    Json(std::string text) : m_value(std::move(text)) {}
    // An object: {{"name", value}, ...}.
    Json(std::initializer_list<std::pair<const char*, Json>> members);
    static Json array() { return Json(Value(Elements())); }
    static Json object() { return Json(Value(Members())); }

    Json& operator[](std::string_view name);  // adds the member if there is none
    // Adds an element, or a member that the object does not have. Returns it in its place.
    Json& push_back(Json element);
    Json& append(std::string name, Json member);
    bool isArray() const { return std::holds_alternative<Elements>(m_value); }
    bool isObject() const { return std::holds_alternative<Members>(m_value); }
    bool isText() const { return std::holds_alternative<std::string>(m_value); }
    bool isNull() const { return std::holds_alternative<std::nullptr_t>(m_value); }
    const Value& value() const { return m_value; }
    const Elements& elements() const { return std::get<Elements>(m_value); }
    const Members& members() const { return std::get<Members>(m_value); }
    // Return an object's member. Null, an empty string, `unknown`, false: it has none of that name and type.
    const Json* find(std::string_view name) const;
    std::string memberText(std::string_view name) const;
    std::int64_t memberNumber(std::string_view name, std::int64_t unknown = 0) const;
    bool memberIsTrue(std::string_view name) const;

  private:
    explicit Json(Value value) : m_value(std::move(value)) {}
    Value m_value;
};

// Returns the value of a JSON text. Empty: the text is not JSON, or nested deeper than 100 levels.
std::optional<Json> jsonOfText(std::string_view text);
// Return the value as indented JSON, and as one line of it. Invalid UTF-8 becomes U+FFFD.
std::string jsonText(const Json& value);
std::string jsonLine(const Json& value);
