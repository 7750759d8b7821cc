// T-SQL's numeric functions, as SQLite functions.
#include <cmath>
#include <numbers>
#include <random>

#include "functions/Functions.h"

namespace tsql {
namespace {

// Result type of CEILING and FLOOR, which have scale 0, and of POWER.
template <bool isWhole>
SqlType resultOf(Pieces pieces) {
    const SqlType type = numberType(pieces);
    if (type.id != TypeId::Decimal) return type;
    return isWhole ? decimalType(type.precision, 0) : decimalType(38, type.scale);
}

// Throws SqlError 3623 for a result outside of the function's domain.
double checked(double result) {
    if (std::isnan(result)) throw sqlError(kInvalidFloatOperation);
    if (std::isinf(result)) throwOverflow(simpleType(TypeId::Float));
    return result;
}

template <double (*function)(double)>
Value runFloat(const SqlCall& call) {
    return checked(function(call.real(0)));
}

Value runAbs(const SqlCall& call) {
    if (isApproximate(call.type(1).id)) return std::fabs(call.real(0));
    const Int128 value = exactOf(call[0]);
    return checkedCell(value < 0 ? -value : value, call.type(1));
}

// (value, type); result of the same type
Value runSign(const SqlCall& call) {
    const SqlType type = call.type(1);
    const auto sign = [](auto value) { return value > 0 ? 1 : value < 0 ? -1 : 0; };
    if (isApproximate(type.id)) return static_cast<double>(sign(call.real(0)));
    return exactCell(sign(exactOf(call[0])) * powerOfTen<Int128>(type.scale), type);
}

// (value, type); money keeps its scale, decimal results in decimal(p,0)
template <bool up>
Value runWhole(const SqlCall& call) {
    const SqlType type = call.type(1);
    if (isApproximate(type.id)) return up ? std::ceil(call.real(0)) : std::floor(call.real(0));
    const Int128 value = exactOf(call[0]), unit = powerOfTen<Int128>(type.scale);
    Int128 whole = value / unit;
    if (value % unit != 0 && (value > 0) == up) whole += up ? 1 : -1;
    return exactCell(isMoney(type.id) ? whole * unit : whole, type);
}

// (value, type, places[, truncate]); of the same type, at least int; negative places: before the point
Value runRound(const SqlCall& call) {
    const SqlType type = call.type(1);
    const std::int64_t places = call.integer(2);
    const bool cut = call.count() > 3 && call.integer(3) != 0;
    if (isApproximate(type.id)) {
        const double power = std::pow(10.0, static_cast<double>(places)), scaled = call.real(0) * power;
        if (!std::isfinite(power) || !std::isfinite(scaled) || power == 0)
            return places < 0 ? 0.0 : call.real(0);
        return (cut ? std::trunc(scaled) : std::round(scaled)) / power;
    }
    const Int128 value = exactOf(call[0]);
    const int dropped = static_cast<int>(std::clamp<std::int64_t>(type.scale - places, 0, kMostDigits + 1));
    const Int128 kept = rescaled(value, dropped, 0, cut ? Rounding::Truncate : Rounding::HalfAway);
    const SqlType result = isInteger(type.id) ? simpleType(std::max(type.id, TypeId::Int)) : type;
    return checkedCell(rescaled(kept, 0, dropped, Rounding::Truncate), result);
}

// (base, type, exponent, result type)
Value runPower(const SqlCall& call) {
    const SqlType real = simpleType(TypeId::Float);
    const Value base = convertValue(call[0], call.type(1), real);
    return convertValue(checked(std::pow(std::get<double>(base), call.real(2))), real, call.resultType());
}

Value runRand(const SqlCall& call) {
    thread_local std::mt19937_64 engine{std::random_device{}()};
    if (call.count() > 0) engine.seed(static_cast<std::uint64_t>(call.integer(0)));
    return std::uniform_real_distribution<double>(0, 1)(engine);
}

Value runIsNumeric(const SqlCall& call) {
    if (isNull(call[0])) return std::int64_t{0};
    const SqlType type = call.type(1);
    if (!isText(type.id)) return std::int64_t{isNumber(type.id)};
    const std::string_view text = trimmed(call.text(0));
    if (text.empty()) return std::int64_t{0};
    constexpr std::string_view kSigns = "+-$.,";  // a sign alone is valid money
    if (text.size() == 1 && kSigns.find(text[0]) != kSigns.npos) return std::int64_t{1};
    for (const TypeId id : {TypeId::Float, TypeId::Money})
        if (!isNull(convertValue(call[0], type, simpleType(id), kNoStyle, Conversion::Try))) return 1;
    return 0;
}

}  // namespace

const std::vector<FunctionInfo> kMathFunctions = {
    {"abs", "N=", numberType, runAbs},
    {"sign", "N=", numberType, runSign},
    {"ceiling", "N#", resultOf<true>, runWhole<true>},
    {"floor", "N#", resultOf<true>, runWhole<false>},
    {"round", "N#I[I", numberType, runRound},
    {"power", "N#F=", resultOf<false>, runPower},
    {"log", "F[F", TypeId::Float,
     [](const SqlCall& call) -> Value {
         const double base = call.count() > 1 ? std::log(call.real(1)) : 1;
         return checked(call.real(0) > 0 ? std::log(call.real(0)) / base : NAN);
     }},
    {"log10", "F", TypeId::Float, runFloat<[](double x) { return 0 < x ? std::log10(x) : NAN; }>},
    {"atn2", "FF", TypeId::Float,
     [](const SqlCall& call) -> Value { return checked(std::atan2(call.real(0), call.real(1))); }},
    {"sqrt", "F", TypeId::Float, runFloat<std::sqrt>},
    {"exp", "F", TypeId::Float, runFloat<std::exp>},
    {"square", "F", TypeId::Float, runFloat<[](double x) { return x * x; }>},
    {"sin", "F", TypeId::Float, runFloat<std::sin>},
    {"cos", "F", TypeId::Float, runFloat<std::cos>},
    {"tan", "F", TypeId::Float, runFloat<std::tan>},
    {"cot", "F", TypeId::Float, runFloat<[](double x) { return 1 / std::tan(x); }>},
    {"asin", "F", TypeId::Float, runFloat<std::asin>},
    {"acos", "F", TypeId::Float, runFloat<std::acos>},
    {"atan", "F", TypeId::Float, runFloat<std::atan>},
    {"pi", "", TypeId::Float, [](const SqlCall&) -> Value { return std::numbers::pi; }},
    {"degrees", "F", TypeId::Float, runFloat<[](double x) { return x * 180 / std::numbers::pi; }>},
    {"radians", "F", TypeId::Float, runFloat<[](double x) { return x * std::numbers::pi / 180; }>},
    {"rand", "~[I", TypeId::Float, runRand},
    {"isnumeric", "0A#", TypeId::Int, runIsNumeric},
};

}  // namespace tsql
