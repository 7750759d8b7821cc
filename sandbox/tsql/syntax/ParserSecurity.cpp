// CREATE, ALTER and DROP of schemas, users, roles and logins, which system procedures execute.
#include "syntax/Parser.h"

namespace tsql {

// Clauses with a value. The parameters of the procedures are named for their first words.
constexpr std::string_view kClauses[] = {
    "FOR LOGIN",          "FROM LOGIN",         "FROM",        "WITHOUT",
    "AUTHORIZATION",      "ADD MEMBER",         "DROP MEMBER", "DEFAULT_SCHEMA =",
    "DEFAULT_DATABASE =", "DEFAULT_LANGUAGE =", "PASSWORD =",  "CHECK_POLICY =",
    "CHECK_EXPIRATION ="};

std::optional<Statement::Node> parsePrincipal(Parser& in, const std::string& verb) {
    const std::string kind = toLower(in.near());
    if (!hasWord(verb == "alter" ? "role" : "schema user role login", kind)) return std::nullopt;
    in.takeToken();
    const std::string object = kind == "schema" ? kind : "principal";
    SystemStatement node{{kind == "login" ? "master" : "", "sys", "sp_" + verb + "_" + object}};
    node.values["@kind"] = kind;
    if (in.accept("IF EXISTS")) node.values["@if"] = "exists";
    std::string& name = node.values["@name"] =
        in.at("AUTHORIZATION") ? unquoted(in.peek(1)) : in.expectName();
    if (name.empty()) in.throwError(kMissingColumnName, {}, in.faulty().line, 4);
    for (;;) {
        const bool goesOn = in.acceptAny({"WITH", ","});
        const auto* clause = std::ranges::find_if(kClauses, [&](auto each) { return in.accept(each); });
        if (clause == std::end(kClauses) && !goesOn) break;
        if (clause == std::end(kClauses))
            in.throwUnsupported(toUpper(verb + " " + kind) + " WITH " + toUpper(in.near()));
        node.values["@" + lowerAscii(clause->substr(0, clause->find(' ')))] =
            in.isString(in.peek()) ? in.expectString() : unquoted(in.takeToken());
        in.acceptAny({"HASHED", "MUST_CHANGE"});
    }
    for (const auto word : {"CREATE", "GRANT", "REVOKE", "DENY"})
        if (kind == "schema") in.throwIfAt(word, std::string(word) + " within CREATE SCHEMA");
    return node;
}

}  // namespace tsql
