// How one column of a result is laid out: its width, its alignment, and the form of its values.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "Options.h"

namespace sqlcmd {

// What the driver says about a column.
struct ColumnInfo {
    std::string name;      // empty for an expression without one
    std::string typeName;  // the server's, in lower case
    int odbcType = 0;
    std::size_t size = 0;  // characters, bytes or digits, by type; 0 without a limit
};

struct ColumnFormat {
    // How a value's text from the driver becomes what is shown.
    enum class Form { AsIs, Decimal, Real, UpperCase, Binary };

    std::string name;
    std::size_t width = 0;  // characters; 0 without a limit and without padding
    std::size_t limit = 0;  // characters of a value that are shown; 0 all
    bool rightAligned = false;
    bool isLong = false;  // may be of any length: read in pieces
    Form form = Form::AsIs;
};

ColumnFormat formatOf(const ColumnInfo& column, const Layout& layout);

// A value in its form, cut at the column's limit. The text is that of the whole value, or at least as much of
// it as the limit asks for.
void shapeValue(std::string& text, const ColumnFormat& format);

// Appends a text, padded to the width on the side that the alignment leaves.
void appendPadded(std::string& line, std::string_view text, std::size_t width, bool rightAligned);

}  // namespace sqlcmd
