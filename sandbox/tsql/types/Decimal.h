// Exact numbers of up to 38 digits: the integers, money and decimal, all of them integers that a power of ten
// scales.
#pragma once

#include <cstdint>
#include <string>

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

// The two ways between an exact number and its storage form. A wide type's cell may be an INTEGER, too.
Int128 exactOf(const CellView& cell);
Value exactCell(Int128 number, const SqlType& type);

// All results are bounded by 10^38, which stands for every larger number and fits no type.
enum class Rounding { Truncate, HalfAway };
Int128 rescaled(Int128 value, int fromScale, int toScale, Rounding rounding);
Int128 rescaled(double value, int toScale);
// `left op right` with `scale` digits after the point: at most as many as the operands
// give; quotients are cut, all else is rounded. Throws 8134.
Int128 exactResult(BinaryOp op, Int128 left, const SqlType& leftType, Int128 right, const SqlType& rightType,
                   int scale);
// Order of two exact numbers: below 0, 0, above 0.
int compareExact(Int128 left, const SqlType& leftType, Int128 right, const SqlType& rightType);

bool fits(Int128 value, const SqlType& type);     // any exact type but bit
std::string scaledText(Int128 value, int scale);  // 1250, 2: "12.50"

}  // namespace tsql
