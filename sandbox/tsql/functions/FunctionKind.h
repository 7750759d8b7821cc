// How a built-in function of T-SQL is called.
#pragma once

namespace tsql {

// Ranking: needs OVER with an ORDER BY. Framed: the same, and takes a frame.
enum class FunctionKind { Scalar, Aggregate, Ranking, Framed };

}  // namespace tsql
