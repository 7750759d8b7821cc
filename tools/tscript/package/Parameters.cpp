#include "package/Parameters.h"

#include <strings.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <limits>

#include "package/PackageLines.h"

namespace {

constexpr std::size_t kLongestName = 64;
constexpr const char* kTypes =
    "int, bigint, smallint, tinyint, bit, decimal, date, datetime, string and choice";

constexpr std::string_view kOptionsOfRun[] = {
    "parameter", "allow-missing", "follow", "input",    "db",      "lock",
    "timeout",   "dry-run",       "check",  "output",   "data",    "quiet",
    "json",      "store",         "help",   "no-input", "version", "allow-tool-commands"};

struct Range {
    std::int64_t least = std::numeric_limits<std::int64_t>::min();
    std::int64_t most = std::numeric_limits<std::int64_t>::max();
};

struct IntegerType {
    std::string_view name;
    Range range;
};

constexpr IntegerType kIntegerTypes[] = {
    {"int", {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()}},
    {"bigint", {}},
    {"smallint", {std::numeric_limits<std::int16_t>::min(), std::numeric_limits<std::int16_t>::max()}},
    {"tinyint", {0, std::numeric_limits<std::uint8_t>::max()}},
};

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool areDigits(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), isDigit);
}

std::optional<std::int64_t> integerOf(std::string_view text) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole ? std::optional(number) : std::nullopt;
}

// ---- Types --------------------------------------------------------------------------------------------

struct TypeText {
    std::string_view name;
    std::optional<std::string_view> limits;  // what is between the parentheses
};

std::optional<TypeText> splitType(std::string_view type) {
    const std::size_t open = type.find('(');
    if (open == type.npos) return TypeText{type, std::nullopt};
    if (type.back() != ')') return std::nullopt;
    return TypeText{type.substr(0, open), type.substr(open + 1, type.size() - open - 2)};
}

const IntegerType* findIntegerType(std::string_view name) {
    const auto* found = std::find_if(std::begin(kIntegerTypes), std::end(kIntegerTypes),
                                     [name](const IntegerType& type) { return type.name == name; });
    return found == std::end(kIntegerTypes) ? nullptr : found;
}

// "1..365", "1.." or "..365" within the range of the type.
std::optional<Range> rangeOf(std::string_view limits, Range range) {
    const std::size_t dots = limits.find("..");
    if (dots == limits.npos || limits == "..") return std::nullopt;
    for (const auto& [text, bound] :
         {std::pair{limits.substr(0, dots), &range.least}, std::pair{limits.substr(dots + 2), &range.most}}) {
        if (text.empty()) continue;
        const std::optional<std::int64_t> number = integerOf(text);
        if (!number || *number < range.least || *number > range.most) return std::nullopt;
        *bound = *number;
    }
    return range;
}

std::vector<std::string> choicesOf(std::string_view limits) {
    std::vector<std::string> choices;
    for (std::size_t at = 0; at <= limits.size();) {
        const std::size_t end = std::min(limits.find('|', at), limits.size());
        choices.emplace_back(limits.substr(at, end - at));
        at = end + 1;
    }
    return choices;
}

bool isType(std::string_view text) {
    const std::optional<TypeText> type = splitType(text);
    if (!type) return false;
    if (const IntegerType* integer = findIntegerType(type->name))
        return !type->limits || rangeOf(*type->limits, integer->range);
    if (type->name == "string")
        return !type->limits || (areDigits(*type->limits) && integerOf(*type->limits).value_or(0) > 0);
    if (type->name == "choice") {
        const std::vector<std::string> choices = choicesOf(type->limits.value_or(""));
        return std::find(choices.begin(), choices.end(), "") == choices.end();
    }
    const bool isPlain = text == "bit" || text == "decimal" || text == "date" || text == "datetime";
    return isPlain;
}

// ---- Values -------------------------------------------------------------------------------------------

std::string integerProblem(const IntegerType& type, std::optional<std::string_view> limits,
                           std::string_view value) {
    const std::optional<std::int64_t> number = integerOf(value);
    if (!number || *number < type.range.least || *number > type.range.most)
        return "is no " + std::string(type.name);
    const Range range = limits ? rangeOf(*limits, type.range).value_or(type.range) : type.range;
    if (range.least <= *number && *number <= range.most) return {};
    return "is not in " + std::string(*limits);
}

bool isDecimal(std::string_view value) {
    if (!value.empty() && (value.front() == '-' || value.front() == '+')) value.remove_prefix(1);
    const std::size_t point = std::min(value.find('.'), value.size());
    const std::string_view fraction = value.substr(std::min(point + 1, value.size()));
    const auto isEmptyOrDigits = [](std::string_view text) { return text.empty() || areDigits(text); };
    return isEmptyOrDigits(value.substr(0, point)) && isEmptyOrDigits(fraction) && value != "." &&
           !value.empty();
}

// "YYYY-MM-DD", a day of the calendar.
bool isDate(std::string_view value) {
    constexpr std::size_t kLength = 10;
    if (value.size() != kLength || value[4] != '-' || value[7] != '-') return false;
    const std::string_view year = value.substr(0, 4);
    const std::string_view month = value.substr(5, 2);
    const std::string_view day = value.substr(8, 2);
    if (!areDigits(year) || !areDigits(month) || !areDigits(day) || year == "0000") return false;
    return std::chrono::year_month_day(std::chrono::year(static_cast<int>(*integerOf(year))),
                                       std::chrono::month(static_cast<unsigned>(*integerOf(month))),
                                       std::chrono::day(static_cast<unsigned>(*integerOf(day))))
        .ok();
}

// "hh:mm" or "hh:mm:ss".
bool isTimeOfDay(std::string_view value) {
    if (value.size() != 5 && value.size() != 8) return false;
    for (std::size_t at = 0; at < value.size(); at += 3) {
        const std::string_view part = value.substr(at, 2);
        if (!areDigits(part) || *integerOf(part) > (at == 0 ? 23 : 59)) return false;
        if (at > 0 && value[at - 1] != ':') return false;
    }
    return true;
}

bool isDateTime(std::string_view value) {
    constexpr std::size_t kDate = 10;
    return value.size() > kDate && isDate(value.substr(0, kDate)) &&
           (value[kDate] == ' ' || value[kDate] == 'T') && isTimeOfDay(value.substr(kDate + 1));
}

std::int64_t characters(std::string_view text) {
    return std::count_if(text.begin(), text.end(),
                         [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; });
}

// ---- Declarations -------------------------------------------------------------------------------------

void skipBlanks(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
}

std::string_view takeWord(std::string_view& text) {
    const std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(word.size());
    skipBlanks(text);
    return word;
}

// Takes a quoted string, in which two quotes are one. Nothing if it does not end.
std::optional<std::string> takeQuoted(std::string_view& text) {
    const char quote = text.front();
    std::string value;
    text.remove_prefix(1);
    while (!text.empty()) {
        const char c = text.front();
        text.remove_prefix(1);
        if (c == quote && (text.empty() || text.front() != quote)) {
            skipBlanks(text);
            return value;
        }
        if (c == quote) text.remove_prefix(1);
        value += c;
    }
    return std::nullopt;
}

bool isName(std::string_view name) {
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    return !name.empty() && name.size() <= kLongestName && isLetter(name.front()) &&
           std::all_of(name.begin(), name.end(),
                       [&](char c) { return isLetter(c) || isDigit(c) || c == '-' || c == '_'; });
}

}  // namespace

std::string parseParameter(std::string_view text, Parameter& parameter) {
    parameter = {};
    if (text.empty() || text.front() == ' ') return "a name must follow the colon";
    parameter.name = takeWord(text);
    if (!isName(parameter.name))
        return "a name has at most 64 letters, digits, hyphens and underscores, and begins with a letter";
    parameter.type = takeWord(text);
    if (!isType(parameter.type))
        return "'" + parameter.type + "' is no type; the types are " + kTypes + ", with limits like " +
               "int(1..365), string(20) and choice(low|high)";
    std::optional<std::string> part;
    if (!text.empty() && text.front() != '"') {
        part = text.front() == '\'' ? takeQuoted(text) : std::optional<std::string>(takeWord(text));
        if (!part) return "the default's closing quote is missing";
        parameter.defaultValue = part;
    }
    if (!text.empty() && text.front() == '"') {
        part = takeQuoted(text);
        if (!part) return "the description's closing quote is missing";
        parameter.description = *part;
    }
    if (!text.empty()) return "nothing may follow the description, and it is in double quotes";
    if (!parameter.defaultValue) return {};
    const std::string problem = valueProblem(parameter, *parameter.defaultValue);
    return problem.empty() ? "" : "the default " + problem;
}

std::string valueProblem(const Parameter& parameter, const std::string& value) {
    const std::optional<TypeText> type = splitType(parameter.type);
    if (!type) return {};
    if (const IntegerType* integer = findIntegerType(type->name))
        return integerProblem(*integer, type->limits, value);
    const std::vector<std::string> values = valuesOf(parameter);
    if (!values.empty() && std::find(values.begin(), values.end(), value) == values.end())
        return "is none of " + std::string(type->name == "bit" ? "0|1" : *type->limits);
    if (type->name == "decimal" && !isDecimal(value)) return "is no decimal";
    if (type->name == "date" && !isDate(value)) return "is no date (YYYY-MM-DD)";
    if (type->name == "datetime" && !isDateTime(value)) return "is no datetime (YYYY-MM-DD hh:mm:ss)";
    if (type->name == "string" && type->limits && characters(value) > integerOf(*type->limits))
        return "is longer than " + std::string(*type->limits) + " characters";
    return {};
}

std::vector<std::string> valuesOf(const Parameter& parameter) {
    const std::optional<TypeText> type = splitType(parameter.type);
    if (type && type->name == "bit") return {"0", "1"};
    if (type && type->name == "choice" && type->limits) return choicesOf(*type->limits);
    return {};
}

const Parameter* findParameter(const std::vector<Parameter>& parameters, std::string_view name) {
    const auto found = std::find_if(parameters.begin(), parameters.end(), [name](const Parameter& each) {
        return each.name.size() == name.size() &&
               strncasecmp(each.name.data(), name.data(), name.size()) == 0;
    });
    return found == parameters.end() ? nullptr : &*found;
}

bool isOptionOfRun(std::string_view name) {
    return std::any_of(std::begin(kOptionsOfRun), std::end(kOptionsOfRun), [name](std::string_view option) {
        return option.size() == name.size() && strncasecmp(option.data(), name.data(), name.size()) == 0;
    });
}

ParameterList readParameters(const std::string& packageFile) {
    ParameterList list;
    for (const PackageLine& line : headerLines(packageFile)) {
        if (line.text.compare(0, kParameterKey.size(), kParameterKey) != 0) continue;
        Parameter parameter;
        list.problem = parseParameter(std::string_view(line.text).substr(kParameterKey.size()), parameter);
        if (list.problem.empty() && findParameter(list.parameters, parameter.name) != nullptr)
            list.problem = "the name " + parameter.name + " is declared twice";
        if (!list.problem.empty()) {
            list.problem = "line " + std::to_string(line.number) + ": " + list.problem;
            list.parameters.clear();
            return list;
        }
        list.parameters.push_back(std::move(parameter));
    }
    return list;
}
