// What a batch may leave behind, judged by its words.
#pragma once

#include <string_view>

namespace hostlayer {

enum class SqlEffect {
    // One query, UPDATE or DELETE, also after SET NOCOUNT: the session is afterwards as it was, except for
    // NOCOUNT, which decides only whether the server sends row counts.
    kNone,
    kSession,  // may change the session: its options, variables, temporary objects, @@IDENTITY
    kServer,   // anything else, which may need exclusive use of a database
};

// Returns the least effect that is certain. A batch that is not understood counts as kServer.
SqlEffect effectOf(std::string_view sql);

}  // namespace hostlayer
