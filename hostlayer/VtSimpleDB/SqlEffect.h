// What a batch may leave behind, judged by its words.
#pragma once

#include <string_view>

namespace hostlayer {

enum class SqlEffect {
    // One query, UPDATE or DELETE, also after SET NOCOUNT: the session is afterwards as it was, except for
    // NOCOUNT, which decides only whether the server sends row counts.
    kNone,
    kIdentity,  // one INSERT: leaves @@IDENTITY and SCOPE_IDENTITY()
    kSession,   // may change the session: its options, variables, temporary objects
    kServer,    // anything else, which may need exclusive use of a database
};

// Returns the least effect that is certain. A batch that is not understood counts as kServer.
SqlEffect effectOf(std::string_view sql);

// False if no word of the batch reads the identity that an INSERT before it has left.
bool mayReadIdentity(std::string_view sql);

// False if the batches of a script for the query tool only read and change rows, so that another session may
// use the database meanwhile. Batches are separated by GO.
bool mayNeedDatabaseAlone(std::string_view script);

}  // namespace hostlayer
