// Built-in functions by name, and the SQL of their calls.
#pragma once

#include <array>
#include <span>
#include <string_view>

#include "functions/Typed.h"

namespace tsql {

// Kind of a built-in function. Ranking: requires OVER with ORDER BY. Framed: as Ranking, and allows a frame.
enum class FunctionKind { Scalar, Aggregate, Ranking, Framed };
struct FunctionInfo;
// Returns null for an unknown function. Case-insensitive.
const FunctionInfo* findFunction(std::string_view name);
std::array<std::span<const FunctionInfo>, 5> allFunctions();
FunctionKind kindOf(const FunctionInfo& function);
bool takesDatePart(const FunctionInfo& function);  // the first argument is a name; see wordArgument()
// Throws SqlError 174 or 189 for a wrong number of arguments, 8116 for an argument type that is not allowed.
Typed emitCall(const FunctionInfo& function, std::span<const Typed> arguments, bool distinct = false);

}  // namespace tsql
