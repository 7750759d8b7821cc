// T-SQL's numeric functions, as SQLite functions.
#include <cmath>
#include <numbers>
#include <random>

#include "functions/Functions.h"

namespace tsql {
namespace {

// Result type of CEILING and FLOOR.
SqlType wholeType(Pieces pieces) {
    const SqlType type = numberType(pieces);
    return type.id == TypeId::Decimal ? decimalType(type.precision, 0) : type;
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

// (number, type)
template <double (*ofReal)(double), Int128 (*ofExact)(Int128, const SqlType&)>
Value runNumber(const SqlCall& call) {
    const SqlType type = call.type(1);
    if (isApproximate(type.id)) return ofReal(call.real(0));
    const Int128 result = ofExact(exactOf(call[0]), type);
    return isInteger(type.id) ? checkedCell(result, type) : exactCell(result, type);  // SIGN(0.5) is 1.0
}

constexpr auto signOf = [](auto value) { return decltype(value)((value > 0) - (value < 0)); };

// Money keeps its scale, other numbers have none.
template <bool up>
Int128 whole(Int128 value, const SqlType& type) {
    const Int128 unit = powerOfTen<Int128>(type.scale), part = value % unit;
    const Int128 rounded = value - part + (signOf(part) == (up ? 1 : -1) ? signOf(part) * unit : 0);
    return isMoney(type.id) ? rounded : rounded / unit;
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

// (number, type[, second number], result type)
template <double (*function)(double, double)>
Value runInFloat(const SqlCall& call) {
    const SqlType real = simpleType(TypeId::Float);
    const double first = std::get<double>(convertValue(call[0], call.type(1), real));
    const double second = call.count() > 3 ? call.real(2) : 0;
    return convertValue(checked(function(first, second)), real, call.resultType());
}

Value runIsNumeric(const SqlCall& call) {
    if (isNull(call[0])) return std::int64_t{0};
    const SqlType type = call.type(1);
    if (!isText(type.id)) return std::int64_t{isNumber(type.id)};
    const auto reads = [&](const SqlType& target) {
        return !isNull(convertValue(call[0], type, target, kNoStyle, Conversion::Try));
    };
    return std::int64_t{!trimmed(call.text(0)).empty() &&
                        (reads(simpleType(TypeId::Float)) || reads(simpleType(TypeId::Money)))};
}

}  // namespace

const std::vector<FunctionInfo> kMathFunctions = {
    {"abs", "N=", numberType, runNumber<std::fabs, [](Int128 x, auto&) { return x * signOf(x); }>},
    {"sign", "N=", numberType,
     runNumber<signOf, [](Int128 x, auto& type) { return signOf(x) * powerOfTen<Int128>(type.scale); }>},
    {"ceiling", "N#", wholeType, runNumber<std::ceil, whole<true>>},
    {"floor", "N#", wholeType, runNumber<std::floor, whole<false>>},
    {"round", "N#W[W", numberType, runRound},
    {"power", "N#F=", totalType<0>, runInFloat<std::pow>},
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
    {"degrees", "N#=", totalType<18>,
     runInFloat<[](double x, double) { return x * 180 / std::numbers::pi; }>},
    {"radians", "N#=", totalType<18>,
     runInFloat<[](double x, double) { return x * std::numbers::pi / 180; }>},
    {"rand", "~[I", TypeId::Float,
     [](const SqlCall& call) -> Value {
         thread_local std::mt19937_64 engine{std::random_device{}()};
         if (call.count() > 0) engine.seed(static_cast<std::uint64_t>(call.integer(0)));
         return std::uniform_real_distribution<double>(0, 1)(engine);
     }},
    {"isnumeric", "0A#", TypeId::Int, runIsNumeric},
};

}  // namespace tsql
