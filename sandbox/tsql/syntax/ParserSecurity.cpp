// Statements on schemas, users, roles, logins and permissions, which system procedures execute.
#include "syntax/Parser.h"

namespace tsql {

std::optional<Statement::Node> parsePrincipal(Parser& in, const std::string& verb) {
    const std::string kind = toLower(in.near());
    if (!hasWord(verb == "alter" ? "role" : "schema user role login", kind)) return std::nullopt;
    in.takeToken();
    const std::string object = kind == "schema" ? kind : "principal";
    SystemStatement node{{kind == "login" ? "master" : "", "sys", "sp_" + verb + "_" + object}};
    auto& values = node.calls.emplace_back();
    values["@kind"] = kind;
    if (in.accept("IF EXISTS")) values["@if"] = "exists";
    std::string& name = values["@name"] = in.at("AUTHORIZATION") ? unquoted(in.peek(1)) : in.expectName();
    if (name.empty()) in.throwError(kMissingColumnName, {}, in.faulty().line, 4);
    for (;;) {  // clauses with a value; the parameters of the procedures are named for their first words
        const bool goesOn = in.acceptAny({"WITH", ","});
        const auto clause =
            in.acceptFirst({"FOR LOGIN", "FROM LOGIN", "FROM", "WITHOUT", "AUTHORIZATION", "ADD MEMBER",
                            "DROP MEMBER", "DEFAULT_SCHEMA =", "DEFAULT_DATABASE =", "DEFAULT_LANGUAGE =",
                            "PASSWORD =", "CHECK_POLICY =", "CHECK_EXPIRATION ="});
        if (clause.empty() && !goesOn) break;
        if (clause.empty()) in.throwUnsupported(toUpper(verb + " " + kind) + " WITH " + toUpper(in.near()));
        values["@" + lowerAscii(clause.substr(0, clause.find(' ')))] =
            in.isString(in.peek()) ? in.expectString() : unquoted(in.takeToken());
        in.acceptAny({"HASHED", "MUST_CHANGE"});
    }
    for (const auto word : {"CREATE", "GRANT", "REVOKE", "DENY"})
        if (kind == "schema") in.throwIfAt(word, std::string(word) + " within CREATE SCHEMA");
    return node;
}

// permission, ... [ON [class ::] name] TO | FROM principal, ...
Statement::Node parsePermissions(Parser& in, const std::string& state) {
    in.throwIfAt("GRANT OPTION FOR", "GRANT OPTION FOR");
    const auto permissions = in.list([&] {
        std::string words;
        while (in.peek().kind == TokenKind::Word && !in.at("ON") && !in.at("TO") && !in.at("FROM"))
            words += (words.empty() ? "" : " ") + toUpper(in.takeToken().raw);
        if (words.empty()) in.throwSyntaxError();
        in.throwIfAt("(", "permissions on columns");
        return words == "EXEC" ? "EXECUTE" : words;
    });
    std::map<std::string, std::string> values{{"@state", state}, {"@class", "DATABASE"}};
    if (in.accept("ON")) {
        values["@class"] = in.at("::", 1) ? toUpper(in.takeToken().raw) : "OBJECT";
        in.accept("::");
        const ObjectName securable = in.objectName();
        if (!securable.database.empty()) in.throwUnsupported("permissions in another database");
        if (!securable.schema.empty()) values["@schema"] = securable.schema;
        values["@name"] = securable.name;
        in.throwIfAt("(", "permissions on columns");
    }
    in.expectAny({"TO", "FROM"});
    const auto grantees = in.list([&] { return in.accept("PUBLIC") ? "public" : in.expectName(); });
    if (state == "G" && in.accept("WITH GRANT OPTION")) values["@state"] = "W";
    if (in.accept("CASCADE")) values["@cascade"] = "yes";
    in.throwIfAt("AS", "AS of a permission");
    if (permissions.size() * grantees.size() > 10'000) in.throwUnsupported("more than 10,000 permissions");
    SystemStatement node{{{}, "sys", "sp_grant_permission"}};
    for (const auto& permission : permissions)
        for (const auto& grantee : grantees) {
            values["@permission"] = permission;
            values["@grantee"] = grantee;
            node.calls.push_back(values);
        }
    return node;
}

}  // namespace tsql
