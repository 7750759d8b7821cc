// Layout of a result column: width, alignment and the form of its values.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "options/Options.h"
#include "text/TextBuffer.h"
#include "text/Utf.h"
#include "values/ColumnInfo.h"

namespace sqlcmd {

struct ColumnFormat {
    // Conversion of the driver's string to the printed one.
    enum class Form { AsIs, Decimal, Real, Double, UpperCase, Binary };

    std::string name;
    std::size_t width = 0;  // characters; 0: no padding
    std::size_t limit = 0;  // characters of a value that are printed; 0: all
    bool rightAligned = false;
    bool isAscii = false;  // values have ASCII characters only
    bool isLong = false;   // values have no length limit and are read in pieces
    Form form = Form::AsIs;
};

ColumnFormat formatOf(const ColumnInfo& column, const Layout& layout);

// Returns the format of whole values with the digits that they need: 0.50 and 0.1.
ColumnFormat exactFormatOf(const ColumnInfo& column);

// Part of shapeValue() for values that may change.
void reshapeValue(TextBuffer& line, std::size_t start, const ColumnFormat& format);

// Converts the driver's string, the end of `line` from `start`, to the printed form and cuts it at the
// column's limit. It may be the beginning of a value that is longer than the limit.
inline void shapeValue(TextBuffer& line, std::size_t start, const ColumnFormat& format) {
    const bool isShort = format.limit == 0 || line.size() - start <= format.limit;
    if (format.form != ColumnFormat::Form::AsIs || !isShort) reshapeValue(line, start, format);
}

// Replaces the control characters of the value at the end of `line`, from `start`, by blanks.
void replaceControlCharacters(TextBuffer& line, std::size_t start, ControlCharacters mode);

// Appends a string, padded with spaces to `width` characters.
void appendPadded(TextBuffer& line, std::string_view text, std::size_t width, bool rightAligned);

// Pads the value at the end of `line`, from `start`, to the column's width.
inline void padValue(TextBuffer& line, std::size_t start, const ColumnFormat& format) {
    const std::string_view value = line.from(start);
    const std::size_t length = format.isAscii ? value.size() : utf8Length(value);
    if (length >= format.width) return;
    if (format.rightAligned)
        line.insertBlanks(start, format.width - length);
    else
        line.appendBlanks(format.width - length);
}

}  // namespace sqlcmd
