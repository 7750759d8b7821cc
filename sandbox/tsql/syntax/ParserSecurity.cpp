// CREATE, ALTER and DROP of schemas, users, roles and logins, which system procedures execute.
#include "syntax/Parser.h"

namespace tsql {

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
    for (;;) {  // clauses with a value; the parameters of the procedures are named for their first words
        const bool goesOn = in.acceptAny({"WITH", ","});
        const auto clause =
            in.acceptFirst({"FOR LOGIN", "FROM LOGIN", "FROM", "WITHOUT", "AUTHORIZATION", "ADD MEMBER",
                            "DROP MEMBER", "DEFAULT_SCHEMA =", "DEFAULT_DATABASE =", "DEFAULT_LANGUAGE =",
                            "PASSWORD =", "CHECK_POLICY =", "CHECK_EXPIRATION ="});
        if (clause.empty() && !goesOn) break;
        if (clause.empty()) in.throwUnsupported(toUpper(verb + " " + kind) + " WITH " + toUpper(in.near()));
        node.values["@" + lowerAscii(clause.substr(0, clause.find(' ')))] =
            in.isString(in.peek()) ? in.expectString() : unquoted(in.takeToken());
        in.acceptAny({"HASHED", "MUST_CHANGE"});
    }
    for (const auto word : {"CREATE", "GRANT", "REVOKE", "DENY"})
        if (kind == "schema") in.throwIfAt(word, std::string(word) + " within CREATE SCHEMA");
    return node;
}

}  // namespace tsql
