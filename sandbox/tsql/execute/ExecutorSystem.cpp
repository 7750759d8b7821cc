// System procedures. Each has a parameter list in T-SQL, to which arguments are bound, and a body in C++ or
// T-SQL.
#include <span>

#include "execute/CatalogueProcedures.h"
#include "execute/Executor.h"
#include "execute/PropertyProcedures.h"

namespace tsql {

const SystemProcedure* Executor::systemProcedure(std::string_view name) {
    constexpr int kAppLockFailed = -999;
    static constexpr SystemProcedure kProcedures[] = {
        {"sp_rename", "@objname nvarchar(1035), @newname sysname, @objtype varchar(13) = NULL", "RETURN",
         &Executor::rename},
        {"sp_getapplock",
         "@Resource nvarchar(255), @LockMode varchar(32), @LockOwner varchar(32) = 'Transaction', "
         "@LockTimeout int = NULL, @DbPrincipal sysname = 'public'",
         "RETURN", &Executor::getAppLock, kAppLockFailed},
        {"sp_releaseapplock",
         "@Resource nvarchar(255), @LockOwner varchar(32) = 'Transaction', @DbPrincipal sysname = 'public'",
         "RETURN", &Executor::releaseAppLock, kAppLockFailed},
    };
    for (const auto& procedures :
         {std::span<const SystemProcedure>(kProcedures), {kCatalogueProcedures}, {kPropertyProcedures}})
        for (const SystemProcedure& each : procedures)
            if (sameWord(each.name, name)) return &each;
    return nullptr;
}

// Returns the lock that the arguments of both lock procedures describe.
AppLocks::Lock Executor::appLock(const Frame& frame, std::string_view mode) {
    const std::string owner = frame.text("@lockowner");
    const auto known = lockModeNamed(mode);
    const bool ofTransaction = sameWord(owner, "Transaction");
    const int wrong = !known                                            ? kInvalidAppLockMode
                      : !ofTransaction && !sameWord(owner, "Session")   ? kInvalidAppLockOwner
                      : !sameWord(frame.text("@dbprincipal"), "public") ? kInvalidAppLockPrincipal
                      : ofTransaction && m_transactions == 0            ? kTransactionRequired
                                                                        : 0;
    if (wrong) throw sqlError(wrong, {frame.procedure});
    return {databaseKey(frame.database) + ":" + frame.text("@resource"), *known, this, ofTransaction};
}

int Executor::getAppLock(const Frame& frame) {
    const auto* given = std::get_if<std::int64_t>(&frame.variables.at("@locktimeout").value);
    return m_locks.acquire(appLock(frame, frame.text("@lockmode")),
                           std::chrono::milliseconds(given ? *given : m_settings.lockTimeout),
                           [this] { return isCancelled(); });
}

int Executor::releaseAppLock(const Frame& frame) {
    const auto lock = appLock(frame, "Exclusive");
    if (m_locks.release(lock.resource, this, lock.ofTransaction)) return 0;
    throw sqlError(kAppLockNotHeld, {frame.text("@resource")});
}

}  // namespace tsql
