// T-SQL that maintains a server's databases.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "DVUtilities/DBBase.h"
#include "DVUtilities/Diagnostics.h"
#include "installation/Diagnosis.h"
#include "system/Interrupt.h"

// Both throw Failure (kUsage) for a name, or a path on the server's host, that is empty, too long or has
// quotes, percent signs or control characters: the library inserts it into T-SQL without quoting.
void checkServerName(const std::string& what, const std::string& name);
void checkServerPath(const std::string& what, const std::string& path);

// Runs `work` with an InterruptGuard, so that Ctrl-C ends the query tool too. Throws Failure with `advice` if
// it was interrupted, and if a query tool that wrote no output counted as a success; otherwise returns what
// `work` returned.
template <typename Work>
bool runInterruptibly(const std::string& advice, Work&& work) {
    const InterruptGuard guard;
    const DVUCauses collector;
    const bool done = std::forward<Work>(work)();
    if (!done && guard.interrupted()) throw Failure(ExitCode::kInterrupted, "interrupted", advice);
    std::vector<DVUCause_t> causes;
    collector.get(causes);
    if (hasSilentTool(causes)) throw silentTool().failure();
    return done;
}

struct ServerReply {
    bool succeeded;
    std::string output;  // the first 64 KiB
};

// Runs statements in the database master. The query tool reads them from a file: on its command line they
// would be truncated. Throws Failure with `advice` if it was interrupted.
ServerReply runOnServer(DBBase& db, const std::string& sql, const std::string& advice);

std::string sqlName(const std::string& name);     // [name]
std::string sqlLiteral(const std::string& text);  // N'text'
