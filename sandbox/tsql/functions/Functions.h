// T-SQL's built-in functions by their names: how a call is written in SQLite, and the type of its result.
#pragma once

#include <array>
#include <span>
#include <string_view>

#include "functions/FunctionKind.h"
#include "functions/Typed.h"

namespace tsql {

struct FunctionInfo;
// Null when T-SQL has no such built-in function here. Any case.
const FunctionInfo* findFunction(std::string_view name);
std::array<std::span<const FunctionInfo>, 5> allFunctions();
FunctionKind kindOf(const FunctionInfo& function);
bool takesDatePart(const FunctionInfo& function);  // the first argument is a bare name: wordArgument()
// Throws SqlError 174/189 for a wrong number of arguments, 8116 for a type that the function does not take.
Typed emitCall(const FunctionInfo& function, std::span<const Typed> arguments, bool distinct = false);

}  // namespace tsql
