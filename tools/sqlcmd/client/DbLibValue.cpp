#include "client/DbLibValue.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "text/Text.h"

namespace sqlcmd {
namespace {

using Bytes = std::string_view;  // a value as DB-Library stores it

// Types for which DB-Library has no names.
constexpr int kUniqueType = 36;
constexpr int kVariantType = 98;

constexpr int kTime2 = -154;  // ODBC type numbers of SQL Server's own types
constexpr int kDateTimeOffset = -155;
constexpr int kVariant = -150;

constexpr std::size_t kBytesPerCharacter =
    4;                                  // DB-Library's lengths of strings are those of the longest UTF-8
constexpr int kUnlimited = 0x3FFFFFFF;  // bytes; a longer column has no limit

// The type that a column of a DB-Library type has in ODBC.
struct TypeName {
    int type;
    int odbcType;
    const char* name;
};

constexpr TypeName kTypes[] = {
    {SYBBIT, SQL_BIT, "bit"},
    {SYBINT1, SQL_TINYINT, "tinyint"},
    {SYBINT2, SQL_SMALLINT, "smallint"},
    {SYBINT4, SQL_INTEGER, "int"},
    {SYBINT8, SQL_BIGINT, "bigint"},
    {SYBREAL, SQL_REAL, "real"},
    {SYBFLT8, SQL_FLOAT, "float"},
    {SYBMONEY4, SQL_DECIMAL, "smallmoney"},
    {SYBMONEY, SQL_DECIMAL, "money"},
    {SYBDECIMAL, SQL_DECIMAL, "decimal"},
    {SYBNUMERIC, SQL_NUMERIC, "numeric"},
    {SYBMSDATE, SQL_TYPE_DATE, "date"},
    {SYBMSTIME, kTime2, "time"},
    {SYBMSDATETIME2, SQL_TYPE_TIMESTAMP, "datetime2"},
    {SYBMSDATETIMEOFFSET, kDateTimeOffset, "datetimeoffset"},
    {SYBDATETIME4, SQL_TYPE_TIMESTAMP, "smalldatetime"},
    {SYBDATETIME, SQL_TYPE_TIMESTAMP, "datetime"},
    {kUniqueType, SQL_GUID, "uniqueidentifier"},
    {SYBBINARY, SQL_VARBINARY, "varbinary"},
    {SYBVARBINARY, SQL_VARBINARY, "varbinary"},
    {SYBIMAGE, SQL_LONGVARBINARY, "image"},
    {SYBTEXT, SQL_LONGVARCHAR, "text"},
    {kVariantType, kVariant, "sql_variant"},
};

TypeName typeOf(DBPROCESS* process, int number) {
    const int type = dbcoltype(process, number);
    for (const TypeName& known : kTypes)
        if (known.type == type) return known;
    return {type, SQL_VARCHAR, "varchar"};
}

// Reads a value of a type whose values have one length, or a part of it.
template <typename T>
T read(const char* value, std::size_t offset = 0) {
    T part;
    std::memcpy(&part, value + offset, sizeof part);
    return part;
}

template <typename T>
void appendNumber(TextBuffer& text, T number) {
    constexpr std::size_t kMost = 20;  // characters of 64 bits
    text.appendWritten(kMost,
                       [&](char* target) { return std::to_chars(target, target + kMost, number).ptr; });
}

// Writes the last `count` digits of a number, with leading zeros.
char* writeDigits(char* target, std::uint64_t number, int count) {
    int i = count;
    for (; i > 9; number /= 10) target[--i] = static_cast<char>('0' + number % 10);
    auto rest = static_cast<std::uint32_t>(number % 1'000'000'000);  // divided faster than 64 bits
    for (; i > 0; rest /= 10) target[--i] = static_cast<char>('0' + rest % 10);
    return target + count;
}

void appendDigits(TextBuffer& text, std::uint64_t number, std::size_t count) {
    text.appendWritten(count,
                       [&](char* target) { return writeDigits(target, number, static_cast<int>(count)); });
}

// Writes the digits of an integer of `size` bytes, the highest one first.
char* writeBigEndian(char* target, std::size_t room, const unsigned char* bytes, int size) {
    __extension__ using Integer = unsigned __int128;
    constexpr std::uint64_t kHalf = 10'000'000'000'000'000'000U;  // the largest power of ten in 64 bits
    constexpr int kHalfDigits = 19;
    if (size <= 8) {
        std::uint64_t number = 0;
        for (int i = 0; i < size; ++i) number = number << 8 | bytes[i];
        return std::to_chars(target, target + room, number).ptr;
    }
    Integer number = 0;
    for (int i = 0; i < size; ++i) number = number << 8 | bytes[i];
    const auto high = static_cast<std::uint64_t>(number >= kHalf ? number / kHalf : number);
    char* end = std::to_chars(target, target + room, high).ptr;
    return number >= kHalf ? writeDigits(end, static_cast<std::uint64_t>(number % kHalf), kHalfDigits) : end;
}

// Appends a decimal or numeric value: a sign and a big-endian integer, of which `scale` digits are decimal
// places.
void appendDecimal(TextBuffer& text, const DBNUMERIC& value) {
    constexpr int kMostDigits = 38;
    constexpr int kMostBytes = 16;
    const int size = std::min(value.precision * 415'242 / 1'000'000 + 1, kMostBytes);  // 0.415242 a digit
    const int places = std::min<int>(value.scale, kMostDigits);
    if (value.array[0] != 0) text.append('-');
    std::array<char, kMostDigits + 2> digits;
    char* end = writeBigEndian(digits.data(), digits.size(), value.array + 1, size);
    const auto whole = static_cast<int>(end - digits.data()) - places;  // digits before the point
    if (whole <= 0) {
        text.append("0.");
        for (int zeros = whole; zeros < 0; ++zeros) text.append('0');
        return text.append(std::string_view(digits.data(), end));
    }
    text.append({digits.data(), static_cast<std::size_t>(whole)});
    if (places == 0) return;
    text.append('.');
    text.append(std::string_view(end - places, end));
}

// Appends an amount that is stored in ten-thousandths.
void appendMoney(TextBuffer& text, std::int64_t amount) {
    constexpr std::uint64_t kUnit = 10'000;
    const auto absolute =
        amount < 0 ? 0 - static_cast<std::uint64_t>(amount) : static_cast<std::uint64_t>(amount);
    if (amount < 0) text.append('-');
    appendNumber(text, absolute / kUnit);
    text.append('.');
    appendDigits(text, absolute, 4);
}

// Writes two digits.
char* writePair(char* target, unsigned number) {
    target[0] = static_cast<char>('0' + number / 10);
    target[1] = static_cast<char>('0' + number % 10);
    return target + 2;
}

constexpr std::size_t kDateLength = 10;
constexpr std::size_t kTimeLength = 8;

using DateText = std::array<char, kDateLength>;

DateText dateText(int daysSince1900) {
    using namespace std::chrono;
    const year_month_day date(sys_days(1900y / January / 1) + days(daysSince1900));
    const auto year = static_cast<unsigned>(static_cast<int>(date.year()));
    DateText text;
    char* end = writePair(writePair(text.data(), year / 100 % 100), year % 100);
    *end++ = '-';
    end = writePair(end, static_cast<unsigned>(date.month()));
    *end++ = '-';
    writePair(end, static_cast<unsigned>(date.day()));
    return text;
}

// Writes a date.
char* writeDate(char* target, int daysSince1900) {
    static int lastDay = 0;  // a column often repeats its day
    static DateText lastText = dateText(lastDay);
    if (daysSince1900 != lastDay) lastText = dateText(lastDay = daysSince1900);
    return std::copy(lastText.begin(), lastText.end(), target);
}

// Writes a time of day.
char* writeTime(char* target, std::uint64_t seconds) {
    const auto time = static_cast<unsigned>(seconds);
    target = writePair(target, time / 3600 % 100);
    *target++ = ':';
    target = writePair(target, time / 60 % 60);
    *target++ = ':';
    return writePair(target, time % 60);
}

void appendDate(TextBuffer& text, int daysSince1900) {
    text.appendWritten(kDateLength, [&](char* target) { return writeDate(target, daysSince1900); });
}

void appendTime(TextBuffer& text, std::uint64_t seconds) {
    text.appendWritten(kTimeLength, [&](char* target) { return writeTime(target, seconds); });
}

// Appends a value of date, time, datetime2 or datetimeoffset, the last of which DB-Library returns in UTC.
void appendNewDateTime(TextBuffer& text, int type, const DBDATETIMEALL& value, int scale) {
    constexpr std::uint64_t kTicks = 10'000'000;  // a second
    constexpr std::size_t kFractionDigits = 7;
    constexpr std::int64_t kTicksPerMinute = 60 * static_cast<std::int64_t>(kTicks);
    constexpr std::int64_t kTicksPerDay = 24 * 60 * kTicksPerMinute;
    std::int64_t time = static_cast<std::int64_t>(value.time);
    int date = value.date;
    if (type == SYBMSDATETIMEOFFSET) {
        time += value.offset * kTicksPerMinute;
        if (time < 0) time += kTicksPerDay, --date;
        if (time >= kTicksPerDay) time -= kTicksPerDay, ++date;
    }
    if (type != SYBMSTIME) appendDate(text, date);
    if (type == SYBMSDATE) return;
    if (type != SYBMSTIME) text.append(' ');
    const auto ticks = static_cast<std::uint64_t>(time);
    appendTime(text, ticks / kTicks);
    if (scale > 0) {
        text.append('.');
        appendDigits(text, ticks % kTicks, kFractionDigits);
        text.truncate(text.size() - kFractionDigits + static_cast<std::size_t>(scale));
    }
    if (type != SYBMSDATETIMEOFFSET) return;
    text.append(value.offset < 0 ? " -" : " +");
    const auto minutes = static_cast<unsigned>(std::abs(value.offset));
    appendDigits(text, minutes / 60, 2);
    text.append(':');
    appendDigits(text, minutes % 60, 2);
}

// Appends a value of datetime: days since 1900 and 300ths of a second.
void appendDateTime(TextBuffer& text, const char* value) {
    const auto ticks = read<std::uint32_t>(value, 4);
    const std::uint64_t milliseconds = (static_cast<std::uint64_t>(ticks) * 1000 + 150) / 300;
    const auto fraction = static_cast<unsigned>(milliseconds % 1000);
    constexpr std::size_t kLength = kDateLength + kTimeLength + std::string_view(" .000").size();
    text.appendWritten(kLength, [&](char* target) {
        char* end = writeDate(target, read<std::int32_t>(value));
        *end++ = ' ';
        end = writeTime(end, milliseconds / 1000);
        *end++ = '.';
        *end++ = static_cast<char>('0' + fraction / 100);
        return writePair(end, fraction % 100);
    });
}

// Appends a value of smalldatetime: days since 1900 and minutes.
void appendSmallDateTime(TextBuffer& text, const char* value) {
    appendDate(text, read<std::uint16_t>(value));
    text.append(' ');
    appendTime(text, std::uint64_t{60} * read<std::uint16_t>(value, 2));
}

void appendHex(TextBuffer& text, Bytes value) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (const char c : value) {
        const auto byte = static_cast<unsigned char>(c);
        text.append(kDigits[byte >> 4]);
        text.append(kDigits[byte & 15]);
    }
}

void appendGuid(TextBuffer& text, Bytes value) {
    // The first three groups are stored as little-endian integers.
    constexpr int kOrder[] = {3, 2, 1, 0, -1, 5, 4, -1, 7, 6, -1, 8, 9, -1, 10, 11, 12, 13, 14, 15};
    for (const int index : kOrder)
        if (index < 0)
            text.append('-');
        else
            appendHex(text, value.substr(static_cast<std::size_t>(index), 1));
}

// Appends a value as DB-Library converts it: floats and types that this file does not know.
void appendConverted(TextBuffer& text, DBPROCESS* process, int type, Bytes value) {
    char buffer[256] = {};
    constexpr DBINT kNulTerminated = -1;
    const auto* bytes = reinterpret_cast<const BYTE*>(value.data());
    const DBINT length = dbconvert(process, type, bytes, static_cast<DBINT>(value.size()), SYBCHAR,
                                   reinterpret_cast<BYTE*>(buffer), kNulTerminated);
    if (length > 0) text.append(buffer);
}

// Appends an integer or an amount of money. False for a value of another type.
bool appendNumberOfType(TextBuffer& text, int type, const char* data) {
    switch (type) {
        case SYBBIT:
        case SYBINT1:
            appendNumber(text, read<std::uint8_t>(data));
            return true;
        case SYBINT2:
            appendNumber(text, read<std::int16_t>(data));
            return true;
        case SYBINT4:
            appendNumber(text, read<std::int32_t>(data));
            return true;
        case SYBINT8:
            appendNumber(text, read<std::int64_t>(data));
            return true;
        case SYBMONEY4:
            appendMoney(text, read<std::int32_t>(data));
            return true;
        case SYBMONEY:  // the high half is stored first
            appendMoney(text, static_cast<std::int64_t>(std::uint64_t{read<std::uint32_t>(data)} << 32 |
                                                        read<std::uint32_t>(data, 4)));
            return true;
        default:
            return false;
    }
}

}  // namespace

ColumnInfo describeColumn(DBPROCESS* process, int number) {
    const TypeName type = typeOf(process, number);
    ColumnInfo column{dbcolname(process, number), type.name, type.odbcType, 0};
    const int length = dbcollen(process, number);
    const bool isUnlimited = length < 0 || length >= kUnlimited;
    switch (type.type) {
        case SYBDECIMAL:
        case SYBNUMERIC:
            if (const DBTYPEINFO* info = dbcoltypeinfo(process, number))
                column.size = static_cast<std::size_t>(info->precision);
            break;
        case SYBCHAR:
        case SYBVARCHAR:
            if (!isUnlimited) column.size = static_cast<std::size_t>(length) / kBytesPerCharacter;
            break;
        default:
            if (!isUnlimited) column.size = static_cast<std::size_t>(length);
    }
    return column;
}

ValueType valueTypeOf(DBPROCESS* process, int number) {
    constexpr int kMostDigits = 7;
    const DBTYPEINFO* info = dbcoltypeinfo(process, number);
    return {dbcoltype(process, number), info != nullptr ? std::min(info->scale, kMostDigits) : kMostDigits};
}

bool appendColumnValue(DBPROCESS* process, int number, const ValueType& type, std::size_t enough,
                       TextBuffer& text) {
    const auto* data = reinterpret_cast<const char*>(dbdata(process, number));
    if (data == nullptr) return false;
    const auto whole = [&] {
        return Bytes(data, static_cast<std::size_t>(std::max(dbdatlen(process, number), 0)));
    };
    const auto start = [&] {
        return enough == RunningBatch::kWholeValue ? whole() : whole().substr(0, enough);
    };
    switch (type.type) {
        case SYBCHAR:
        case SYBVARCHAR:
        case SYBTEXT:
            text.append(start());
            break;
        case SYBBINARY:
        case SYBVARBINARY:
        case SYBIMAGE:
            appendHex(text, start());
            break;
        case SYBMSDATE:
        case SYBMSTIME:
        case SYBMSDATETIME2:
        case SYBMSDATETIMEOFFSET:
            appendNewDateTime(text, type.type, read<DBDATETIMEALL>(data), type.scale);
            break;
        case SYBDECIMAL:
        case SYBNUMERIC:
            appendDecimal(text, *reinterpret_cast<const DBNUMERIC*>(data));
            break;
        case SYBDATETIME:
            appendDateTime(text, data);
            break;
        case SYBDATETIME4:
            appendSmallDateTime(text, data);
            break;
        case kUniqueType:
            appendGuid(text, whole());
            break;
        default:
            if (!appendNumberOfType(text, type.type, data))
                appendConverted(text, process, type.type, whole());
    }
    return true;
}

}  // namespace sqlcmd
