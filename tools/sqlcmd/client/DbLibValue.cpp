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

template <typename T>
T read(Bytes bytes, std::size_t offset = 0) {
    T value{};
    if (offset + sizeof value <= bytes.size()) std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

template <typename T>
void appendNumber(std::string& text, T number) {
    char digits[32];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

// Appends the last `count` digits of a number, with leading zeros.
void appendDigits(std::string& text, std::uint64_t number, int count) {
    std::array<char, 20> digits;
    int i = count;
    for (; i > 9; number /= 10) digits[static_cast<std::size_t>(--i)] = static_cast<char>('0' + number % 10);
    auto rest = static_cast<std::uint32_t>(number % 1'000'000'000);  // divided faster than 64 bits
    for (; i > 0; rest /= 10) digits[static_cast<std::size_t>(--i)] = static_cast<char>('0' + rest % 10);
    text.append(digits.data(), static_cast<std::size_t>(count));
}

// Appends a decimal or numeric value: a sign and a big-endian integer, of which `scale` digits are decimal
// places.
void appendDecimal(std::string& text, const DBNUMERIC& value) {
    __extension__ using Integer = unsigned __int128;
    constexpr std::uint64_t kHalf = 10'000'000'000'000'000'000U;  // the largest power of ten in 64 bits
    constexpr int kHalfDigits = 19;
    const int size = value.precision * 415'242 / 1'000'000 + 1;  // a digit has 0.415242 bytes
    Integer number = 0;
    for (int i = 1; i <= size; ++i) number = number << 8 | value.array[i];
    if (value.array[0] != 0) text += '-';
    const std::size_t start = text.size();
    if (number >= kHalf) {
        appendNumber(text, static_cast<std::uint64_t>(number / kHalf));
        appendDigits(text, static_cast<std::uint64_t>(number % kHalf), kHalfDigits);
    } else {
        appendNumber(text, static_cast<std::uint64_t>(number));
    }
    const auto scale = static_cast<std::size_t>(value.scale);
    const std::size_t digits = text.size() - start;
    if (digits <= scale) text.insert(start, scale + 1 - digits, '0');
    if (scale > 0) text.insert(text.size() - scale, 1, '.');
}

// Appends an amount that is stored in ten-thousandths.
void appendMoney(std::string& text, std::int64_t amount) {
    constexpr std::uint64_t kUnit = 10'000;
    const auto absolute =
        amount < 0 ? 0 - static_cast<std::uint64_t>(amount) : static_cast<std::uint64_t>(amount);
    if (amount < 0) text += '-';
    appendNumber(text, absolute / kUnit);
    text += '.';
    appendDigits(text, absolute, 4);
}

// Writes two digits.
char* writePair(char* target, unsigned number) {
    target[0] = static_cast<char>('0' + number / 10);
    target[1] = static_cast<char>('0' + number % 10);
    return target + 2;
}

using DateText = std::array<char, 10>;

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

// Writes a date: 10 characters.
char* writeDate(char* target, int daysSince1900) {
    static int lastDay = 0;  // a column often repeats its day
    static DateText lastText = dateText(lastDay);
    if (daysSince1900 != lastDay) lastText = dateText(lastDay = daysSince1900);
    return std::copy(lastText.begin(), lastText.end(), target);
}

// Writes a time of day: 8 characters.
char* writeTime(char* target, std::uint64_t seconds) {
    const auto time = static_cast<unsigned>(seconds);
    target = writePair(target, time / 3600 % 100);
    *target++ = ':';
    target = writePair(target, time / 60 % 60);
    *target++ = ':';
    return writePair(target, time % 60);
}

void appendDate(std::string& text, int daysSince1900) {
    DateText date;
    writeDate(date.data(), daysSince1900);
    text.append(date.data(), date.size());
}

void appendTime(std::string& text, std::uint64_t seconds) {
    std::array<char, 8> time;
    writeTime(time.data(), seconds);
    text.append(time.data(), time.size());
}

// Appends a value of date, time, datetime2 or datetimeoffset, the last of which DB-Library returns in UTC.
void appendNewDateTime(std::string& text, int type, const DBDATETIMEALL& value, int scale) {
    constexpr std::uint64_t kTicks = 10'000'000;  // a second
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
    if (type != SYBMSTIME) text += ' ';
    const auto ticks = static_cast<std::uint64_t>(time);
    appendTime(text, ticks / kTicks);
    if (scale > 0) {
        std::string fraction;
        appendDigits(fraction, ticks % kTicks, 7);
        text += '.';
        text.append(fraction, 0, static_cast<std::size_t>(std::min(scale, 7)));
    }
    if (type != SYBMSDATETIMEOFFSET) return;
    text += value.offset < 0 ? " -" : " +";
    const auto minutes = static_cast<unsigned>(std::abs(value.offset));
    appendDigits(text, minutes / 60, 2);
    text += ':';
    appendDigits(text, minutes % 60, 2);
}

// Appends a value of datetime: days since 1900 and 300ths of a second.
void appendDateTime(std::string& text, Bytes value) {
    const auto ticks = read<std::uint32_t>(value, 4);
    const std::uint64_t milliseconds = (static_cast<std::uint64_t>(ticks) * 1000 + 150) / 300;
    const auto fraction = static_cast<unsigned>(milliseconds % 1000);
    std::array<char, 23> buffer;
    char* end = writeDate(buffer.data(), read<std::int32_t>(value));
    *end++ = ' ';
    end = writeTime(end, milliseconds / 1000);
    *end++ = '.';
    *end++ = static_cast<char>('0' + fraction / 100);
    writePair(end, fraction % 100);
    text.append(buffer.data(), buffer.size());
}

// Appends a value of smalldatetime: days since 1900 and minutes.
void appendSmallDateTime(std::string& text, Bytes value) {
    appendDate(text, read<std::uint16_t>(value));
    text += ' ';
    appendTime(text, std::uint64_t{60} * read<std::uint16_t>(value, 2));
}

void appendHex(std::string& text, Bytes value) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (const char c : value) {
        const auto byte = static_cast<unsigned char>(c);
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
}

void appendGuid(std::string& text, Bytes value) {
    // The first three groups are stored as little-endian integers.
    constexpr int kOrder[] = {3, 2, 1, 0, -1, 5, 4, -1, 7, 6, -1, 8, 9, -1, 10, 11, 12, 13, 14, 15};
    for (const int index : kOrder)
        if (index < 0)
            text += '-';
        else
            appendHex(text, value.substr(static_cast<std::size_t>(index), 1));
}

// Converts with DB-Library: floats and types that this file does not know.
std::string converted(DBPROCESS* process, int type, Bytes value) {
    char buffer[256] = {};
    constexpr DBINT kNulTerminated = -1;
    const auto* bytes = reinterpret_cast<const BYTE*>(value.data());
    const DBINT length = dbconvert(process, type, bytes, static_cast<DBINT>(value.size()), SYBCHAR,
                                   reinterpret_cast<BYTE*>(buffer), kNulTerminated);
    return length > 0 ? buffer : "";
}

// Appends a value of an integer or money type.
void appendInteger(std::string& text, int type, Bytes value) {
    switch (type) {
        case SYBBIT:
        case SYBINT1:
            appendNumber(text, read<std::uint8_t>(value));
            break;
        case SYBINT2:
            appendNumber(text, read<std::int16_t>(value));
            break;
        case SYBINT4:
            appendNumber(text, read<std::int32_t>(value));
            break;
        case SYBINT8:
            appendNumber(text, read<std::int64_t>(value));
            break;
        case SYBMONEY4:
            appendMoney(text, read<std::int32_t>(value));
            break;
        case SYBMONEY:  // the high half is stored first
            appendMoney(text, static_cast<std::int64_t>(std::uint64_t{read<std::uint32_t>(value)} << 32 |
                                                        read<std::uint32_t>(value, 4)));
            break;
        default:
            break;
    }
}

// Types whose values converted() converts.
bool isConvertedType(int type) {
    constexpr int kOwnTypes[] = {SYBCHAR,
                                 SYBVARCHAR,
                                 SYBTEXT,
                                 SYBBINARY,
                                 SYBVARBINARY,
                                 SYBIMAGE,
                                 SYBMSDATE,
                                 SYBMSTIME,
                                 SYBDECIMAL,
                                 SYBNUMERIC,
                                 SYBINT1,
                                 SYBMSDATETIME2,
                                 SYBMSDATETIMEOFFSET,
                                 SYBDATETIME4,
                                 kUniqueType,
                                 SYBBIT,
                                 SYBINT2,
                                 SYBINT4,
                                 SYBINT8,
                                 SYBDATETIME,
                                 SYBMONEY4,
                                 SYBMONEY};
    return std::find(std::begin(kOwnTypes), std::end(kOwnTypes), type) == std::end(kOwnTypes);
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

CellType cellTypeOf(DBPROCESS* process, int number) {
    constexpr int kMostDigits = 7;
    const DBTYPEINFO* info = dbcoltypeinfo(process, number);
    const int type = dbcoltype(process, number);
    return {type, info != nullptr ? std::min(info->scale, kMostDigits) : kMostDigits, isConvertedType(type)};
}

void appendColumnCell(DBPROCESS* process, int number, const CellType& type, std::size_t enough,
                      std::string& row) {
    const auto* data = reinterpret_cast<const char*>(dbdata(process, number));
    if (data == nullptr) return appendCellLength(row, kNullCell);
    const Bytes value(data, static_cast<std::size_t>(std::max(dbdatlen(process, number), 0)));
    if (type.isConverted) return appendCell(row, converted(process, type.type, value));
    appendCell(row, enough == RunningBatch::kWholeValue ? value : value.substr(0, enough));
}

void appendCellValue(const CellType& type, std::string_view cell, std::string& text) {
    if (type.isConverted) {
        text += cell;
        return;
    }
    switch (type.type) {
        case SYBCHAR:
        case SYBVARCHAR:
        case SYBTEXT:
            text += cell;
            break;
        case SYBBINARY:
        case SYBVARBINARY:
        case SYBIMAGE:
            appendHex(text, cell);
            break;
        case SYBMSDATE:
        case SYBMSTIME:
        case SYBMSDATETIME2:
        case SYBMSDATETIMEOFFSET:
            appendNewDateTime(text, type.type, read<DBDATETIMEALL>(cell), type.scale);
            break;
        case SYBDECIMAL:
        case SYBNUMERIC:
            appendDecimal(text, read<DBNUMERIC>(cell));
            break;
        case SYBDATETIME:
            appendDateTime(text, cell);
            break;
        case SYBDATETIME4:
            appendSmallDateTime(text, cell);
            break;
        case kUniqueType:
            appendGuid(text, cell);
            break;
        default:
            appendInteger(text, type.type, cell);
    }
}

}  // namespace sqlcmd
