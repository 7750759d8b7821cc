#include "values/ColumnFormat.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <charconv>

#include "text/Utf.h"

namespace sqlcmd {
namespace {

// ODBC type numbers of SQL Server's own types.
constexpr int kVariant = -150;
constexpr int kUserDefined = -151;
constexpr int kXml = -152;
constexpr int kTime2 = -154;
constexpr int kDateTimeOffset = -155;

constexpr std::size_t kLongestDeclared = 8000;  // characters or bytes; a longer column is a (max) type

using Form = ColumnFormat::Form;

struct FixedType {
    int odbcType;
    std::string_view typeName;  // empty: any
    std::size_t width;
    bool rightAligned;
    Form form;
};

// The first matching row applies. Width 0: the column's size plus sign and decimal point.
constexpr FixedType kFixedTypes[] = {
    {SQL_BIT, "", 1, true, Form::AsIs},
    {SQL_TINYINT, "", 3, true, Form::AsIs},
    {SQL_SMALLINT, "", 6, true, Form::AsIs},
    {SQL_INTEGER, "", 11, true, Form::AsIs},
    {SQL_BIGINT, "", 21, true, Form::AsIs},
    {SQL_REAL, "", 14, true, Form::Real},
    {SQL_FLOAT, "", 24, true, Form::AsIs},
    {SQL_DOUBLE, "", 24, true, Form::AsIs},
    {SQL_DECIMAL, "smallmoney", 14, true, Form::Decimal},
    {SQL_DECIMAL, "money", 24, true, Form::Decimal},
    {SQL_DECIMAL, "", 0, true, Form::Decimal},
    {SQL_NUMERIC, "", 0, true, Form::Decimal},
    {SQL_TYPE_DATE, "", 16, false, Form::AsIs},
    {SQL_TYPE_TIME, "", 16, false, Form::AsIs},
    {kTime2, "", 16, false, Form::AsIs},
    {SQL_TYPE_TIMESTAMP, "smalldatetime", 19, false, Form::AsIs},
    {SQL_TYPE_TIMESTAMP, "datetime", 23, false, Form::AsIs},
    {SQL_TYPE_TIMESTAMP, "", 38, false, Form::AsIs},
    {kDateTimeOffset, "", 45, false, Form::AsIs},
    {SQL_GUID, "", 36, false, Form::UpperCase},
};

const FixedType* findFixedType(const ColumnInfo& column) {
    for (const FixedType& type : kFixedTypes)
        if (type.odbcType == column.odbcType && (type.typeName.empty() || type.typeName == column.typeName))
            return &type;
    return nullptr;
}

bool isBinary(int odbcType) {
    return odbcType == SQL_BINARY || odbcType == SQL_VARBINARY || odbcType == SQL_LONGVARBINARY;
}

bool isLong(const ColumnInfo& column) {
    switch (column.odbcType) {
        case SQL_LONGVARCHAR:
        case SQL_WLONGVARCHAR:
        case SQL_LONGVARBINARY:
        case kVariant:
        case kUserDefined:
        case kXml:
            return true;
        default:
            return column.size == 0 || column.size > kLongestDeclared;
    }
}

// Sets the format of a character or binary type.
void setTextFormat(const ColumnInfo& column, const Layout& layout, ColumnFormat& format) {
    format.isLong = isLong(column);
    format.form = isBinary(column.odbcType) ? Form::Binary : Form::AsIs;
    const auto maxWidth =
        static_cast<std::size_t>(format.isLong ? layout.longTypeWidth : layout.shortTypeWidth);
    if (format.isLong) {
        format.width = maxWidth;
    } else {
        format.width = format.form == Form::Binary ? 2 * column.size + 2 : column.size;
        if (maxWidth != 0) format.width = std::min(format.width, maxWidth);
    }
    format.limit = format.width;
}

// Replaces the number at the end of `line` by the shortest decimal that reads back as the same number.
// Drivers return more digits than a number has.
template <typename Number>
void shorten(TextBuffer& line, std::size_t start) {
    Number value = 0;
    const std::string_view number = line.from(start);
    if (std::from_chars(number.begin(), number.end(), value).ec != std::errc{}) return;
    char digits[32];
    line.truncate(start);
    line.append(std::string_view(digits, std::to_chars(digits, digits + sizeof digits, value).ptr));
}

}  // namespace

ColumnFormat formatOf(const ColumnInfo& column, const Layout& layout) {
    ColumnFormat format;
    format.name = column.name;
    if (const FixedType* type = findFixedType(column)) {
        format.width = type->width != 0 ? type->width : column.size + 2;
        format.rightAligned = type->rightAligned;
        format.form = type->form;
        format.isAscii = true;
    } else {
        setTextFormat(column, layout, format);
    }
    const bool isUnlimited = format.isLong && format.width == 0;
    if (!isUnlimited) format.width = std::max(format.width, utf8Length(column.name));
    return format;
}

ColumnFormat exactFormatOf(const ColumnInfo& column) {
    ColumnFormat format = formatOf(column, Layout{});
    format.limit = 0;
    const bool isDouble = column.odbcType == SQL_FLOAT || column.odbcType == SQL_DOUBLE;
    if (isDouble) format.form = Form::Double;
    if (format.form == Form::Decimal) format.form = Form::AsIs;
    return format;
}

void reshapeValue(TextBuffer& line, std::size_t start, const ColumnFormat& format) {
    switch (format.form) {
        case Form::AsIs:
            break;
        case Form::Decimal:  // printed without a zero before the point: .50 and -.50
            if (line.from(start).starts_with("0.")) line.erase(start);
            if (line.from(start).starts_with("-0.")) line.erase(start + 1);
            break;
        case Form::Real:
            shorten<float>(line, start);
            break;
        case Form::Double:
            shorten<double>(line, start);
            break;
        case Form::Binary:
            line.insertBlanks(start, 2);
            std::copy_n("0x", 2, line.data() + start);
            [[fallthrough]];
        case Form::UpperCase:
            for (char* c = line.data() + start; c < line.data() + line.size(); ++c)
                if (*c >= 'a' && *c <= 'f') *c = static_cast<char>(*c - 'a' + 'A');
            break;
    }
    if (format.limit != 0) line.truncate(start + utf8Prefix(line.from(start), format.limit).size());
}

void replaceControlCharacters(TextBuffer& line, std::size_t start, ControlCharacters mode) {
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
    std::string result;
    bool isInRun = false;
    for (const char c : line.from(start)) {
        const bool isDropped = isControl(c) && mode == ControlCharacters::RunToBlank && isInRun;
        isInRun = isControl(c);
        if (!isDropped) result += isInRun ? ' ' : c;
    }
    line.truncate(start);
    line.append(result);
}

void appendPadded(TextBuffer& line, std::string_view text, std::size_t width, bool rightAligned) {
    const std::size_t start = line.size();
    line.append(text);
    ColumnFormat format;
    format.width = width;
    format.rightAligned = rightAligned;
    padValue(line, start, format);
}

}  // namespace sqlcmd
