// T-SQL's date functions, as SQLite functions.
#include "functions/Functions.h"

namespace tsql {
namespace {

template <bool utc = false>
Value runNow(const SqlCall& call) {
    const DateTime& now = call.session().now();
    return toStorage(utc ? DateTime{now.utc()} : now, call.type(0));
}

// (part, start, end)
template <typename Number>
Value runDateDiff(const SqlCall& call) {
    const std::int64_t difference = dateDiff(call.datePart(), call.dateTime(1), call.dateTime(2));
    if (!std::in_range<Number>(difference)) throw sqlError(kDateDiffOverflow);
    return difference;
}

// YEAR(value) is DATEPART(year, value).
std::string writePart(const FunctionInfo& function, Pieces pieces, const SqlType&) {
    const auto part = static_cast<std::int64_t>(*findDatePart(function.name));
    const Typed whole[] = {literal({part, simpleType(TypeId::Int)}), pieces[0]};
    checkDatePart(whole, function.name);
    return "ts_datepart(" + whole[0].sql + "," + whole[1].sql + ")";
}

// (value[, months])
Value runEndOfMonth(const SqlCall& call) {
    const SqlType type = simpleType(TypeId::Date);
    const std::int64_t months = call.count() > 1 ? call.integer(1) : 0;
    const CivilDate date(dateAdd(DatePart::Month, months, call.dateTime(0), type).day());
    return toStorage({LocalDay(date.year() / date.month() / std::chrono::last)}, type);
}

// Type of which the last argument is the scale.
template <TypeId id>
SqlType scaledType(Pieces pieces) {
    const auto scale = pieces.back().integer;
    if (!scale) throw sqlError(kScaleNotConstant, {baseName(id)});
    const int argument[] = {static_cast<int>(std::clamp<std::int64_t>(*scale, -1, 8))};
    return makeType(baseName(id), argument, TypeUse::Declaration);
}

// ([year, month, day][, hour, minute, second, fraction[, scale]], type)
Value runFromParts(const SqlCall& call) {
    const SqlType type = call.resultType();
    const auto part = [&](std::size_t i) { return i + 1 < call.count() ? call.integer(i) : 0; };
    const std::size_t clock = type.id == TypeId::Time ? 0 : 3;  // index of the hour
    const auto day = clock ? dayOf(part(0), part(1), part(2)) : kDay1900;
    const std::int64_t units[] = {24, 60, 60, powerOfTen(type.scale)};
    std::int64_t fractions = 0;
    bool valid = day.has_value();
    for (std::size_t i = 0; i < std::size(units); ++i) {
        valid = valid && part(clock + i) >= 0 && part(clock + i) < units[i];
        fractions = valid ? fractions * units[i] + part(clock + i) : 0;
    }
    const DateTime value{day.value_or(kDay1900) + Ticks(fractions * powerOfTen(7 - type.scale))};
    if (!valid || !isInRange(value, type)) throw sqlError(kInvalidDateParts, {baseName(type.id)});
    return toStorage(value, type);
}

// datetimeoffset with the scale of the first argument
SqlType zonedType(Pieces pieces) {
    const SqlType& type = pieces[0].type;
    return {TypeId::DateTimeOffset, 0, 0, isDateTime(type.id) ? type.scale : std::uint8_t{7}};
}

// (value, offset, its type, result type). The offset is "+hh:mm" or a number of minutes.
template <bool isSwitch>
Value runOffset(const SqlCall& call) {
    const SqlType type = call.resultType(), given = call.type(2);
    const std::string text = textOf(call[1], given);
    const Value time =
        convertValue("00:00" + text, nvarcharType(SqlType::kMax), type, kNoStyle, Conversion::Try);
    const bool isOffset = !isNull(time) && text.find_first_of("+-") == 0;
    const std::chrono::minutes offset(isInteger(given.id) ? call.integer(1)
                                      : isOffset ? fromStorage(std::get<std::string>(time)).offset.count()
                                                 : INT64_MAX);
    const std::string_view name = isSwitch ? "switchoffset" : "todatetimeoffset";
    if (offset > kMostOffset || offset < -kMostOffset) throw sqlError(kInvalidOffset, {name});
    const DateTime before = call.dateTime(0), result{isSwitch ? before.utc() + offset : before.at, offset};
    if (!isInRange(result, type)) throw sqlError(kOffsetOutOfRange, {name});
    return toStorage(result, type);
}

// (value, type, pattern[, culture])
Value runFormat(const SqlCall& call) {
    const SqlType type = call.type(1);
    if (!isDateTime(type.id) || type.id == TypeId::Time || type.id == TypeId::DateTimeOffset)
        throw unsupported("FORMAT of " + std::string(baseName(type.id)));
    if (call.count() > 3 && !sameText(call.text(3), "en-US"))
        throw unsupported("FORMAT for the culture '" + std::string(call.text(3)) + "'");
    constexpr std::size_t kLongest = 4000;  // characters of the result
    return orNull(formatted(call.dateTime(0), call.text(2)),
                  [](const std::string& text) { return std::string(characters(text, 0, kLongest)); });
}

}  // namespace

const std::vector<FunctionInfo> kDateFunctions = {
    {"getdate", "~=", TypeId::DateTime, runNow<>},
    {"current_timestamp", "~=", TypeId::DateTime, runNow<>},
    {"getutcdate", "~=", TypeId::DateTime, runNow<true>},
    {"sysdatetime", "~=", TypeId::DateTime2, runNow<>},
    {"sysutcdatetime", "~=", TypeId::DateTime2, runNow<true>},
    {"sysdatetimeoffset", "~=", TypeId::DateTimeOffset, runNow<>},
    {"switchoffset", "RA#=", zonedType, runOffset<true>},
    {"todatetimeoffset", "RA#=", zonedType, runOffset<false>},
    {"dateadd", "PJE=", [](Pieces pieces) { return pieces.back().type; },
     [](const SqlCall& call) -> Value {  // (part, number, value, type)
         const SqlType type = call.type(3);
         return toStorage(dateAdd(call.datePart(), call.integer(1), call.dateTime(2), type), type);
     }},
    {"datediff", "PDD", TypeId::Int, runDateDiff<std::int32_t>},
    {"datediff_big", "PDD", TypeId::BigInt, runDateDiff<std::int64_t>},
    {"datepart", "PD", TypeId::Int,
     [](const SqlCall& call) -> Value { return datePart(call.datePart(), call.dateTime(1)); }},
    {"datename", "PD", nvarcharType(30),
     [](const SqlCall& call) -> Value { return dateName(call.datePart(), call.dateTime(1)); }},
    {"year", "D", TypeId::Int, writePart},
    {"month", "D", TypeId::Int, writePart},
    {"day", "D", TypeId::Int, writePart},
    {"eomonth", "M[I", TypeId::Date, runEndOfMonth},
    {"datefromparts", "III=", TypeId::Date, runFromParts},
    {"datetimefromparts", "IIIIIII=", TypeId::DateTime, runFromParts},
    {"smalldatetimefromparts", "IIIII=", TypeId::SmallDateTime, runFromParts},
    {"datetime2fromparts", "IIIIIIII=", scaledType<TypeId::DateTime2>, runFromParts},
    {"timefromparts", "IIIII=", scaledType<TypeId::Time>, runFromParts},
    {"format", "X#T[T", nvarcharType(4000), runFormat},
    {"isdate", "H", TypeId::Int,
     [](const FunctionInfo&, Pieces pieces, const SqlType&) {
         const Typed date = emitConvert(pieces[0], simpleType(TypeId::DateTime), nullptr, Conversion::Try);
         return "(" + date.sql + " IS NOT NULL AND ts_len(" + pieces[0].sql + ") > 0)";
     }},
};

void checkDatePart(Pieces arguments, std::string_view function) {
    const auto part = static_cast<DatePart>(*arguments[0].integer);
    const TypeId type = arguments.back().type.id;
    const bool isDiff = function.starts_with("datediff"), changes = isDiff || function == "dateadd";
    const bool isZone = part == DatePart::TzOffset;
    if ((part == DatePart::IsoWeek || isZone) && changes)
        throw sqlError(kDatePartNotSupported, {nameOf(part), isDiff ? "datediff" : function});
    if (isDiff) return;
    const bool tooFine = changes && part > DatePart::Millisecond && isClassicDate(type);
    const bool zoneless = isZone && type != TypeId::DateTimeOffset && type != TypeId::DateTime2;
    if (tooFine || zoneless || (part >= DatePart::Hour ? type == TypeId::Date : type == TypeId::Time))
        throw sqlError(kDatePartNotSupportedForType, {nameOf(part), function, baseName(type)});
}

}  // namespace tsql
