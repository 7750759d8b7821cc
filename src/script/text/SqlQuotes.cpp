#include "text/SqlQuotes.h"

#include "DVUtilities/DBBase.h"

std::string quotesDoubled(DBBase& db, std::string_view text) {
    std::string escaped(text);
    db.fixTheString(escaped);
    return escaped;
}

std::string quotesDoubledInPlace(DBBase& db, std::string_view text) {
    std::string buffer(text.substr(0, text.find('\0')));
    buffer.resize(2 * buffer.size() + 1);  // enough for quotes only, and a NUL
    db.fixTheString(buffer.data());
    buffer.resize(buffer.find('\0'));
    return buffer;
}
