// What a session has looked up in the catalogues and translated. All of it is forgotten when the session
// defines something and, outside transactions, when the version of the catalogues has changed.
#pragma once

#include "execute/Frame.h"

namespace tsql {

// What a translation depends on besides its node, whose text has the types of its variables: Known::number,
// the database and schema of unqualified names, QUOTED_IDENTIFIER (in the texts of views and functions),
// ROWCOUNT, and the type to which an expression is converted.
using Circumstances =
    std::tuple<std::uint64_t, std::string, std::string, bool, std::int64_t, std::optional<SqlType>>;

// A translated query, change or expression. An expression is the only column of its query.
struct Translated {
    Circumstances circumstances;
    Translator translator;
    QueryText text = {};
    std::vector<Column> columns = {};  // of the text
};
using TranslatedPtr = std::shared_ptr<const Translated>;

struct Known {
    std::uint64_t number = 0;
    using Name = std::array<std::string, 6>;  // with what decides its meaning
    std::map<Name, TableInfo> tables = {};
    std::map<Name, StoredModule> modules = {};
    std::vector<TranslatedPtr> translations = {};

    bool isFull() const { return std::max({tables.size(), modules.size(), translations.size()}) >= 1000; }
};

}  // namespace tsql
