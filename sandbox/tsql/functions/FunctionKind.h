// Kinds of built-in functions.
#pragma once

namespace tsql {

// Ranking: requires OVER with ORDER BY. Framed: as Ranking, and allows a frame.
enum class FunctionKind { Scalar, Aggregate, Ranking, Framed };

}  // namespace tsql
