// Exact numbers of up to 38 digits: integers, money and decimal, all stored as scaled integers.
#pragma once

#include "types/SqlTypes.h"

namespace tsql {

__extension__ typedef __int128 Int128;

inline constexpr int kMostDigits = 38;

template <typename Number = std::int64_t>
constexpr Number powerOfTen(int exponent) {
    Number power = 1;
    while (exponent-- > 0) power *= 10;
    return power;
}

// Conversion from and to the storage form. A cell of a wide type may also be an INTEGER.
Int128 exactOf(const CellView& cell);
Value exactCell(Int128 number, const SqlType& type);

// Results are clamped to 10^38, which exceeds every exact type.
enum class Rounding { Truncate, HalfAway };
Int128 rescaled(Int128 value, int fromScale, int toScale, Rounding rounding);
Int128 rescaled(double value, int toScale);
// `left op right` with `scale` digits after the point, at most as many as the operands yield. Quotients are
// truncated, other results rounded. Throws 8134 (division by zero).
Int128 exactResult(BinaryOp op, Int128 left, const SqlType& leftType, Int128 right, const SqlType& rightType,
                   int scale);

bool fits(Int128 value, const SqlType& type);     // any exact type except bit
std::string scaledText(Int128 value, int scale);  // 1250, 2: "12.50"

}  // namespace tsql
