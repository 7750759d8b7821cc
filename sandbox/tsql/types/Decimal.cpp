#include "types/Decimal.h"

#include <algorithm>
#include <boost/multiprecision/cpp_int.hpp>
#include <cmath>

#include "messages/Messages.h"

namespace tsql {
namespace {

__extension__ typedef unsigned __int128 Bits128;
using Wide = boost::multiprecision::int512_t;  // holds every intermediate result for operands of 38 digits

constexpr Int128 kTooLarge = powerOfTen<Int128>(kMostDigits);
constexpr Bits128 kSign = Bits128{1} << 127;

Int128 bounded(const Wide& value) {
    return static_cast<Int128>(std::clamp<Wide>(value, -kTooLarge, kTooLarge));
}

template <typename Number>
Number divided(const Number& value, const Number& divisor, Rounding rounding) {
    if (rounding == Rounding::Truncate) return value / divisor;
    return (value + (value < 0 ? -divisor : divisor) / 2) / divisor;
}

}  // namespace

Int128 exactOf(const CellView& cell) {
    if (const auto* integer = std::get_if<std::int64_t>(&cell)) return *integer;
    Bits128 bits = 0;
    for (const std::byte each : std::get<Blob>(cell)) bits = bits << 8 | std::to_integer<unsigned>(each);
    return static_cast<Int128>(bits ^ kSign);
}

Value exactCell(Int128 number, const SqlType& type) {
    if (!isWide(type)) return static_cast<std::int64_t>(number);
    Bytes bytes(sizeof number, std::byte{0});
    Bits128 bits = static_cast<Bits128>(number) ^ kSign;
    for (auto each = bytes.rbegin(); each != bytes.rend(); ++each, bits >>= 8)
        *each = static_cast<std::byte>(bits);
    return bytes;
}

Int128 rescaled(Int128 value, int fromScale, int toScale, Rounding rounding) {
    const int dropped = fromScale - toScale;
    if (dropped > kMostDigits) return 0;
    if (dropped >= 0) return divided(value, powerOfTen<Int128>(dropped), rounding);
    const Int128 power = powerOfTen<Int128>(std::min(-dropped, kMostDigits));
    return std::clamp(value, -kTooLarge / power, kTooLarge / power) * power;
}

// Rounds the exact value of the binary number.
Int128 rescaled(double value, int toScale) {
    using boost::multiprecision::cpp_int, boost::multiprecision::cpp_rational;
    if (!(std::fabs(value) < 1e38)) return value < 0 ? -kTooLarge : kTooLarge;
    const cpp_rational scaled = cpp_rational(value) * powerOfTen<cpp_int>(toScale);
    return bounded(Wide(divided<cpp_int>(numerator(scaled), denominator(scaled), Rounding::HalfAway)));
}

Int128 exactResult(BinaryOp op, Int128 left, const SqlType& leftType, Int128 right, const SqlType& rightType,
                   int scale) {
    if (right == 0 && (op == BinaryOp::Divide || op == BinaryOp::Modulo)) throw sqlError(kDivideByZero);
    const auto power = [](int exponent) { return powerOfTen<Wide>(exponent); };
    const int s1 = leftType.scale, s2 = rightType.scale, shift = scale + s2 - s1;
    if (op == BinaryOp::Divide) return bounded(left * power(shift) / (right * power(-shift)));
    const bool isProduct = op == BinaryOp::Multiply;
    const int common = isProduct ? s1 + s2 : std::max(s1, s2);
    const Wide a = left * power(isProduct ? 0 : common - s1), b = right * power(isProduct ? 0 : common - s2);
    const Wide result = isProduct                  ? Wide(a * b)
                        : op == BinaryOp::Add      ? Wide(a + b)
                        : op == BinaryOp::Subtract ? Wide(a - b)
                                                   : Wide(a % b);
    return bounded(divided<Wide>(result, power(common - scale), Rounding::HalfAway));
}

bool fits(Int128 value, const SqlType& type) {
    if (type.id == TypeId::Decimal) {
        const Int128 limit = powerOfTen<Int128>(type.precision);
        return value < limit && value > -limit;
    }
    if (type.id == TypeId::TinyInt) return value >= 0 && value < 256;
    const Int128 limit = Int128{1} << (maxLength(type) * 8 - 1);
    return value >= -limit && value < limit;
}

std::string scaledText(Int128 value, int scale) {
    if (value < 0) return "-" + scaledText(-value, scale);
    std::string digits =
        value <= INT64_MAX ? std::to_string(static_cast<std::int64_t>(value)) : Wide(value).str();
    const auto places = static_cast<std::size_t>(scale);
    if (digits.size() <= places) digits.insert(0, places + 1 - digits.size(), '0');
    if (places > 0) digits.insert(digits.size() - places, 1, '.');
    return digits;
}

}  // namespace tsql
