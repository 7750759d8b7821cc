#include "functions/FunctionInfo.h"

namespace tsql {

SqlType sameAsFirst(Pieces pieces) {
    return pieces[pieces[0].nullLiteral ? 1 : 0].type;
}

SqlType numberType(Pieces pieces) {
    const SqlType& type = pieces[0].type;
    if (type.id < TypeId::Int) return simpleType(TypeId::Int);
    if (type.id == TypeId::SmallMoney) return simpleType(TypeId::Money);
    return type.id == TypeId::Real ? simpleType(TypeId::Float) : type;
}

std::string listed(std::string_view name, const FunctionInfo& function, Pieces pieces,
                   const SqlType& result) {
    std::string sql(name);
    const auto add = [&](const std::string& text) { sql.append(sql.back() == '(' ? "" : ",").append(text); };
    sql += '(';
    std::size_t next = 0;
    for (const char letter : function.arguments) {
        if (letter == '#') add(std::to_string(encodeType(pieces[next - 1].type)));
        if (isArgument(letter) && next < pieces.size()) add(pieces[next++].sql);
    }
    while (next < pieces.size()) add(pieces[next++].sql);
    if (function.arguments.ends_with('=')) add(std::to_string(encodeType(result)));
    return sql + ')';
}

std::string writeOwn(const FunctionInfo& function, Pieces pieces, const SqlType& result) {
    return listed("ts_" + std::string(function.name), function, pieces, result);
}

}  // namespace tsql
