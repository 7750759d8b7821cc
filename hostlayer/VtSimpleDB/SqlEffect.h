// What a batch may leave behind, judged by its words.
#pragma once

#include <string_view>

namespace hostlayer {

enum class SqlEffect {
    kNone,     // one query, UPDATE or DELETE: the session is afterwards as it was
    kSession,  // may change the session: its options, variables, temporary objects, @@IDENTITY
    kServer,   // anything else, which may need exclusive use of a database
};

// Returns the least effect that is certain. A batch that is not understood counts as kServer.
SqlEffect effectOf(std::string_view sql);

}  // namespace hostlayer
