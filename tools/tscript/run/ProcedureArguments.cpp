#include "run/ProcedureArguments.h"

#include <algorithm>
#include <map>
#include <string_view>

#include "DVUtilities/TScriptApi.h"
#include "console/IgnoringCase.h"
#include "console/Outcome.h"
#include "console/Pattern.h"
#include "installation/Account.h"
#include "installation/Diagnosis.h"
#include "installation/ServerQuery.h"

namespace {

constexpr char kRowSeparator = '\x12';  // of the library's rows

using Types = std::map<std::string, std::string, IgnoringCase>;  // "@name" -> type

enum class Literal { kNumber, kHex, kString, kUnicodeString };

struct TypeLiteral {
    std::string_view type;
    Literal literal;
};

// Types that are not listed take a string.
constexpr TypeLiteral kLiterals[] = {
    {"int", Literal::kNumber},
    {"bigint", Literal::kNumber},
    {"smallint", Literal::kNumber},
    {"tinyint", Literal::kNumber},
    {"bit", Literal::kNumber},
    {"decimal", Literal::kNumber},
    {"numeric", Literal::kNumber},
    {"float", Literal::kNumber},
    {"real", Literal::kNumber},
    {"money", Literal::kNumber},
    {"smallmoney", Literal::kNumber},
    {"binary", Literal::kHex},
    {"varbinary", Literal::kHex},
    {"image", Literal::kHex},
    {"timestamp", Literal::kHex},
    {"nchar", Literal::kUnicodeString},
    {"nvarchar", Literal::kUnicodeString},
    {"ntext", Literal::kUnicodeString},
    {"xml", Literal::kUnicodeString},
    {"sysname", Literal::kUnicodeString},
    {"sql_variant", Literal::kUnicodeString},
};

Literal literalOf(std::string_view type) {
    const auto found = std::find_if(std::begin(kLiterals), std::end(kLiterals),
                                    [type](const TypeLiteral& entry) { return entry.type == type; });
    return found == std::end(kLiterals) ? Literal::kString : found->literal;
}

std::string quoted(const std::string& value) {
    std::string literal = "'";
    for (const char c : value) literal += c == '\'' ? "''" : std::string(1, c);
    return literal + "'";
}

std::string literalText(const std::string& name, const std::string& type, const std::string& value) {
    static const Pattern number("[+-]?([0-9]+(\\.[0-9]*)?|\\.[0-9]+)([eE][+-]?[0-9]+)?");
    static const Pattern hex("0[xX]([0-9A-Fa-f]{2})*");
    const Literal literal = literalOf(type);
    if (literal == Literal::kString) return quoted(value);
    if (literal == Literal::kUnicodeString) return "N" + quoted(value);
    if (!(literal == Literal::kNumber ? number : hex).matches(value))
        throw Failure(ExitCode::kUsage, "the value of " + name + " is no " + type);
    return value;
}

// Types of the parameters by their names.
Types readTypes(const std::string& procedure, std::string database) {
    std::string name = procedure;
    TS_IsTscriptSP(&name, &database);  // chooses the database if none is given
    DBBase db(/*flag=*/false);
    if (!openAccount(db, suiteDatabase(database.empty() ? "Dorvas" : database)))
        throw diagnoseDatabase(database).failure();
    const std::string sql =
        "SELECT PARAMETER_NAME, DATA_TYPE FROM INFORMATION_SCHEMA.PARAMETERS WHERE SPECIFIC_NAME = " +
        quoted(procedure);
    std::vector<std::string> rows;
    if (!db.GetDBValueList(sql.c_str(), rows, 2))
        throw Failure(ExitCode::kInstallation,
                      withCauses("the parameters of " + procedure + " cannot be read", db),
                      "Give the arguments as T-SQL instead.");
    Types types;
    for (const std::string& row : rows) {
        const std::size_t end = std::min(row.find(kRowSeparator), row.size());
        types.emplace(row.substr(0, end), row.substr(std::min(end + 1, row.size())));
    }
    return types;
}

}  // namespace

std::string namedArguments(const std::string& procedure, const std::string& database,
                           const std::vector<std::string>& words) {
    const Types types = readTypes(procedure, database);
    std::string text;
    for (const std::string& word : words) {
        const std::size_t end = word.find('=');
        if (end == word.npos) throw Failure(ExitCode::kUsage, "'" + word + "' is not of the form NAME=VALUE");
        const std::string name = (word[0] == '@' ? "" : "@") + word.substr(0, end);
        const auto type = types.find(name);
        if (type == types.end())
            throw Failure(ExitCode::kUsage, procedure + " has no parameter " + name,
                          "tscript params " + procedure + " lists its parameters.");
        text += (text.empty() ? "" : ", ") + type->first + " = " +
                literalText(name, type->second, word.substr(end + 1));
    }
    return text;
}
