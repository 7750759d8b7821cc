// SQLite functions for the SQL of the translator and the system views.

#include <boost/algorithm/string/finder.hpp>
#include <boost/algorithm/string/iter_find.hpp>
#include <cstring>

#include "functions/SqliteFunction.h"
#include "syntax/Parser.h"

namespace tsql {
namespace {

// The values as one string without characters that JSON escapes: for each one its kind, as the index in the
// variant, and its bytes in hexadecimal digits, with commas between them.
std::string packed(Cells cells) {
    const auto bytesOf = []<typename T>(const T& value) -> std::string {
        if constexpr (requires { value.size(); }) return hexDigits(std::as_bytes(std::span(value)));
        return hexDigits(std::as_bytes(std::span(&value, 1)));
    };
    std::string row;
    for (const auto& cell : cells)
        row += (row.empty() ? "" : ",") + std::to_string(cell.index()) + std::visit(bytesOf, cell);
    return row;
}

// (packed row, place of a value in it)
Value runUnpack(const SqlCall& call) {
    std::string_view cell = call.text(0);
    for (auto before = call.integer(1); before > 0; --before) cell.remove_prefix(cell.find(',') + 1);
    const Bytes bytes = *parseHex(cell.substr(0, cell.find(',')).substr(1));
    const auto copied = [&](auto number) {
        std::memcpy(&number, bytes.data(), sizeof number);
        return Value(number);
    };
    if (cell[0] == '0') return Null{};
    if (cell[0] == '1') return copied(std::int64_t{});
    if (cell[0] == '2') return copied(double{});
    if (cell[0] == '4') return bytes;
    return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

// (string, separator); a packed row for each part, in a JSON array
Value runSplit(const SqlCall& call) {
    if (characterCount(call.text(1)) != 1)
        throw sqlError(kWrongParameterType, {"separator", "nchar(1)/nvarchar(1)"});
    std::vector<std::string_view> parts;
    boost::iter_split(parts, call.text(0), boost::first_finder(call.text(1)));
    return "[" + commaList(parts, [](CellView part) { return '"' + packed({&part, 1}) + '"'; }) + "]";
}

constexpr struct Entity {
    std::string_view text;
    char character;
    bool onlyInAttributes = false;
} kEntities[] = {{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"', true}, {"&#x0D;", '\r'}};

// (value, type, is in an attribute)
Value runXml(const SqlCall& call) {
    const SqlType type = call.type(1);
    Value value = convertValue(call[0], type, nvarcharType(SqlType::kMax), /*style=*/126);
    if (type.id == TypeId::Xml) return value;
    const bool attribute = call.integer(2) != 0;
    std::string result;
    for (const char c : std::get<std::string>(value)) {
        const auto* entity = std::ranges::find(kEntities, c, &Entity::character);
        const auto code = std::byte(c);
        if (entity != std::end(kEntities) && (attribute || !entity->onlyInAttributes))
            result += entity->text;
        else if (code < std::byte{' '} && (attribute || (c != '\n' && c != '\t')))
            result += "&#x" + hexDigits({&code, 1}) + ";";
        else
            result += c;
    }
    return result;
}

// (xml, include text of elements); the text content of the XML
Value runXmlValue(const SqlCall& call) {
    std::string result;
    for (std::string_view rest = call.text(0); !rest.empty();) {
        if (rest.front() == '<') {
            if (call.integer(1) == 0) throw unsupported(".value('text()[1]', ...) of xml with elements");
            rest.remove_prefix(std::min(rest.find('>'), rest.size() - 1) + 1);
            continue;
        }
        const auto* entity =
            std::ranges::find_if(kEntities, [&](const Entity& each) { return rest.starts_with(each.text); });
        const bool plain = entity == std::end(kEntities);
        result += plain ? rest.front() : entity->character;
        rest.remove_prefix(plain ? 1 : entity->text.size());
    }
    return result;
}

Value runFamily(const SqlCall& call) {
    const SqlType type = call.type(0);
    return std::string(isNumber(type.id)     ? isExact(type.id) ? "n" : "f"
                       : isText(type.id)     ? "t"
                       : isDateTime(type.id) ? "d"
                                             : "");
}

Value runCharacters(const SqlCall& call) {
    const SqlType type = call.type(0);
    constexpr std::int64_t kLongest = 2'147'483'647;
    if (!isText(type.id) && !isBinary(type.id)) return Null{};
    if (type.id == TypeId::Text || type.id == TypeId::Image) return kLongest;
    if (type.id == TypeId::NText) return kLongest / 2;
    return std::int64_t{type.id == TypeId::Xml ? SqlType::kMax : type.length};
}

}  // namespace

const std::vector<ScalarFunction> kQueryFunctions = {
    {"ts_variable", "~0", [](const SqlCall& call) { return call.session().variableValue(call.text(0)); }},
    {"ts_call", "~0",  // (database, key, argument...); a user-defined function
     [](const SqlCall& call) {
         return call.session().callFunction(call.text(0), call.text(1), call.arguments().subspan(2));
     }},
    {"ts_next_value", "~0",  // (database, id of a sequence)
     [](const SqlCall& call) { return call.session().nextValue(call.text(0), call.integer(1)); }},
    {"ts_next_identity", "~0",  // (schema, table, increment)
     [](const SqlCall& call) -> Value {
         return call.session().nextIdentity(call.text(0), call.text(1), call.integer(2));
     }},
    {"ts_identity", "",  // (number, type of the column)
     [](const SqlCall& call) -> Value {
         if (fits(call.integer(0), call.type(1))) return call.integer(0);
         throw sqlError(kArithmeticOverflow, {"IDENTITY", baseName(call.type(1).id)}, 1);
     }},
    {"ts_sequence_value", "",  // (its text, number of values given)
     [](const SqlCall& call) {
         return orNull(Sequence::read(std::string(call.text(0))).value(call.integer(1)));
     }},
    {"ts_noted", "~0",  // (value); returns it, and notes a NULL that an aggregate skips
     [](const SqlCall& call) {
         if (isNull(call[0])) call.session().noteNullLeftOut();
         return ownedValue(call[0]);
     }},
    {"ts_single", "0",  // (rows, value); the value of a subquery, which may have one row at most
     [](const SqlCall& call) {
         if (call.integer(0) > 1) throw sqlError(kSubqueryWithSeveralRows);
         return ownedValue(call[1]);
     }},
    {"ts_deeper", "",  // (depth, limit); depth + 1; limit 0: none
     [](const SqlCall& call) -> Value {
         if (call.integer(1) > 0 && call.integer(0) >= call.integer(1))
             throw sqlError(kRecursionExhausted, {std::to_string(call.integer(1))});
         return call.integer(0) + 1;
     }},
    {"ts_rows", "0",  // (requested rows, least, error)
     [](const SqlCall& call) -> Value {
         if (isNull(call[0])) throw sqlError(kRowCountNotInteger);
         if (call.integer(0) < call.integer(1)) throw sqlError(static_cast<int>(call.integer(2)));
         return call.integer(0);
     }},
    {"ts_pack", "0", [](const SqlCall& call) -> Value { return packed(call.arguments()); }},
    {"ts_unpack", "", runUnpack},
    {"ts_split", "", runSplit},
    {"ts_xml", "", runXml},
    {"ts_xml_value", "", runXmlValue},
    {"ts_schema_of", "", [](const SqlCall& call) -> Value { return std::string(schemaOf(call.text(0))); }},
    {"ts_bare_name", "", [](const SqlCall& call) -> Value { return std::string(bareName(call.text(0))); }},
    {"ts_referenced", "0",  // (text of a foreign key, primary key); names of the columns that it references
     [](const SqlCall& call) {
         const auto names = parseConstraint(call.text(0)).referencedColumns;
         return names.empty() ? ownedValue(call[1]) : Value(commaList(names));
     }},
    {"ts_on_delete", "", [](const SqlCall& call) -> Value { return parseConstraint(call.text(0)).onDelete; }},
    {"ts_on_update", "", [](const SqlCall& call) -> Value { return parseConstraint(call.text(0)).onUpdate; }},
    {"ts_type_base", "", [](const SqlCall& call) -> Value { return std::string(baseName(call.type(0).id)); }},
    {"ts_type_number", "", [](const SqlCall& call) -> Value { return systemId(call.type(0).id); }},
    {"ts_type_family", "", runFamily},
    {"ts_type_length", "", [](const SqlCall& call) -> Value { return maxLength(call.type(0)); }},
    {"ts_type_characters", "", runCharacters},
    {"ts_type_precision", "",  // as in sys.columns; of a date or time, the length of its string form
     [](const SqlCall& call) -> Value {
         const SqlType type = call.type(0);
         return precisionOf(type) + (isDateTime(type.id) && type.scale > 0 ? type.scale + 1 : 0);
     }},
    {"ts_type_scale", "", [](const SqlCall& call) -> Value { return std::int64_t{call.type(0).scale}; }},
};

}  // namespace tsql
