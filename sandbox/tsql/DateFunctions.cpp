// T-SQL's date functions and those that ask the session, as SQLite functions.
#include <sodium.h>

#include <array>

#include "FunctionImpl.h"

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
        throw SqlError(517, "Adding a value to a '" + std::string(baseName(call.type(3).id)) +
                                "' column caused an overflow.");
    }
}

// (part, start, end)
Value runDateDiffBig(const Call& call) {
    return dateDiff(partArgument(call), call.dateTime(1), call.dateTime(2));
}

Value runDateDiff(const Call& call) {
    const std::int64_t difference = dateDiff(partArgument(call), call.dateTime(1), call.dateTime(2));
    if (difference > INT32_MAX || difference < INT32_MIN)
        throw SqlError(
            535,
            "The datediff function resulted in an overflow. The number of dateparts separating two "
            "date/time instances is too large. Try to use datediff with a less precise datepart.");
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
    CivilDate date = civilFromDays(moved.days);
    for (date.day = 31; !isValidDate(date);) --date.day;
    return toStorage({daysFromCivil(date), 0}, simpleType(TypeId::Date));
}

// (year, month, day[, hour, minute, second, millisecond], type)
Value runFromParts(const Call& call) {
    const auto part = [&](std::size_t i) {
        const std::int64_t value = i + 1 < call.count() ? call.integer(i) : 0;
        return value < 0 || value > 9999 ? -1 : static_cast<int>(value);
    };
    const CivilDate date{part(0), part(1), part(2)};
    const bool clock = part(3) >= 0 && part(3) < 24 && part(4) >= 0 && part(4) < 60 && part(5) >= 0 &&
                       part(5) < 60 && part(6) >= 0 && part(6) < 1000;
    if (!isValidDate(date) || !clock)
        throw SqlError(289, "Cannot construct data type " +
                                std::string(baseName(call.type(call.count() - 1).id)) +
                                ", some of the arguments have values which are not valid.");
    const std::int64_t milliseconds = ((part(3) * 60LL + part(4)) * 60 + part(5)) * 1000 + part(6);
    return toStorage({daysFromCivil(date), milliseconds * 10'000}, call.type(call.count() - 1));
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
