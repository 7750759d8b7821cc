// T-SQL's date functions and those that ask the session, as SQLite functions.
#include <sodium.h>

#include <array>

#include "FunctionImpl.h"
#include "Messages.h"

namespace tsql {
namespace {

DatePart partArgument(const Call& call) {
    return static_cast<DatePart>(call.integer(0));
}

// (type)
Value runNow(const Call& call) {
    return toStorage(call.context().now(), call.type(0));
}
Value runNowUtc(const Call& call) {
    return toStorage(call.context().nowUtc(), call.type(0));
}

// (part, number, value, type)
Value runDateAdd(const Call& call) {
    const DateTime result = dateAdd(partArgument(call), call.integer(1), call.dateTime(2));
    try {
        return toStorage(result, call.type(3));
    } catch (const SqlError&) {
        throw sqlError(517, {baseName(call.type(3).id)});
    }
}

// (part, start, end)
Value runDateDiffBig(const Call& call) {
    return dateDiff(partArgument(call), call.dateTime(1), call.dateTime(2));
}

Value runDateDiff(const Call& call) {
    const std::int64_t difference = dateDiff(partArgument(call), call.dateTime(1), call.dateTime(2));
    if (difference > INT32_MAX || difference < INT32_MIN) throw sqlError(535);
    return difference;
}

Value runDatePart(const Call& call) {
    return datePart(partArgument(call), call.dateTime(1));
}
Value runDateName(const Call& call) {
    return dateName(partArgument(call), call.dateTime(1));
}

// (value[, months])
Value runEndOfMonth(const Call& call) {
    const DateTime moved = dateAdd(DatePart::Month, call.count() > 1 ? call.integer(1) : 0, call.dateTime(0));
    const CivilDate date = civilFromDays(moved.days);
    return toStorage({daysFromCivil(date.year() / date.month() / std::chrono::last), 0},
                     simpleType(TypeId::Date));
}

// (year, month, day[, hour, minute, second, millisecond], type)
Value runFromParts(const Call& call) {
    const SqlType type = call.type(call.count() - 1);
    const auto part = [&](std::size_t i) { return i + 1 < call.count() ? call.integer(i) : 0; };
    const auto days = daysFromParts(part(0), part(1), part(2));
    constexpr std::int64_t kClock[] = {24, 60, 60, 1000};
    std::int64_t milliseconds = 0;
    bool valid = days.has_value();
    for (std::size_t i = 0; i < std::size(kClock); ++i) {
        valid = valid && part(3 + i) >= 0 && part(3 + i) < kClock[i];
        milliseconds = valid ? milliseconds * kClock[i] + part(3 + i) : 0;
    }
    if (!valid) throw sqlError(289, {baseName(type.id)});
    return toStorage({*days, milliseconds * 10'000}, type);
}

Value runIsDate(const Call& call) {
    if (isNull(call[0])) return std::int64_t{0};
    return std::int64_t{!isNull(convertValue(call[0], varcharType(SqlType::kMax),
                                             simpleType(TypeId::DateTime), kNoStyle, Conversion::Try)) &&
                        !call.text(0).empty()};
}

// A random (version 4) identifier.
Value runNewId(const Call&) {
    std::array<std::byte, 16> bytes{};
    randombytes_buf(bytes.data(), bytes.size());
    bytes[7] = (bytes[7] & std::byte{0x0F}) | std::byte{0x40};
    bytes[8] = (bytes[8] & std::byte{0x3F}) | std::byte{0x80};
    SqlType binary = simpleType(TypeId::Binary);
    binary.length = 16;
    return convertValue(Blob(bytes.data(), bytes.size()), binary, simpleType(TypeId::UniqueIdentifier));
}

// (function, argument...)
Value runSession(const Call& call) {
    return call.context().facts().sessionValue(static_cast<SessionFunction>(call.integer(0)),
                                               call.arguments().subspan(1));
}

constexpr ScalarFunction kDateFunctions[] = {
    {"ts_now", runNow, Nulls::GiveNull, Purity::Varying},
    {"ts_now_utc", runNowUtc, Nulls::GiveNull, Purity::Varying},
    {"ts_dateadd", runDateAdd},
    {"ts_datediff", runDateDiff},
    {"ts_datediff_big", runDateDiffBig},
    {"ts_datepart", runDatePart},
    {"ts_datename", runDateName},
    {"ts_eomonth", runEndOfMonth},
    {"ts_fromparts", runFromParts},
    {"ts_isdate", runIsDate, Nulls::Reach},
};

constexpr ScalarFunction kSessionFunctions[] = {
    {"ts_newid", runNewId, Nulls::GiveNull, Purity::Varying},
    {"ts_session", runSession, Nulls::Reach, Purity::Varying},
};

}  // namespace

std::span<const ScalarFunction> dateFunctions() {
    return kDateFunctions;
}
std::span<const ScalarFunction> sessionFunctions() {
    return kSessionFunctions;
}

}  // namespace tsql
