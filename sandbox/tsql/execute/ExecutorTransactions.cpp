// Transactions: BEGIN, SAVE, COMMIT and ROLLBACK, and the start of SQLite's transaction before a change.
#include "execute/Executor.h"

namespace tsql {

// Begins SQLite's transaction before the first change, and its savepoint. Reading before that does not fix a
// snapshot.
void Executor::beforeWrite() {
    if (m_doomed) throw sqlError(kTransactionDoomed);
    if (m_transactions == 0 || m_connection.inTransaction()) return;
    m_connection.run("BEGIN");
    if (m_connection.hasSeveral()) forget();  // they are not seen as of the same moment
    m_connection.run("SAVEPOINT tsqlbox_begin");
    m_givenIdentities.clear();
    m_begun = true;
    changeEntry([](SessionEntry& entry) { entry.hasTransaction = true; });
}

void Executor::endTransaction(TransactionEvent event) {
    if (std::exchange(m_defined, false))
        m_storage.noteCatalogueChange();  // other sessions see it from now on
    m_doomed = m_begun = m_outlivedReset = false;
    m_locks.releaseAll(this, /*ofTransaction=*/true);
    if (std::exchange(m_transactions, 0) > 0 && !m_ownTransaction) m_sink->transactionChanged(event);
}

void Executor::begin(const std::string& name) {
    if (++m_transactions > 1) return;
    m_transactionName = name;
    m_sink->transactionChanged(TransactionEvent::Began);
}

// INSERT ... EXECUTE and a change with triggers run in a transaction. Without an open one it has its own,
// which the client does not see.
void Executor::inTransaction(const std::function<void()>& work) {
    const bool begins = m_transactions == 0;
    const Temporarily own(m_ownTransaction, m_ownTransaction || begins);
    if (begins) m_transactions = 1;
    const Temporarily fewest(m_fewestTransactions, m_transactions);
    try {
        work();
    } catch (...) {
        if (begins) rollBack();
        throw;
    }
    if (begins && m_transactions > 0) commit();
}

void Executor::commit() {
    if (m_transactions == 0) throw sqlError(kCommitWithoutBegin);
    if (m_doomed) throw sqlError(kTransactionDoomed);
    if (m_transactions > 1) return static_cast<void>(--m_transactions);
    if (m_defined) m_storage.noteCatalogueChange();
    if (m_connection.inTransaction()) m_connection.run("COMMIT");
    endTransaction(TransactionEvent::Committed);
}

// Generated identities are not reused.
void Executor::rollBack() {
    const bool older = m_outlivedReset;
    endTransaction(TransactionEvent::RolledBack);
    const auto undo = [this] {
        if (!m_givenIdentities.empty()) try {
                m_connection.run("ROLLBACK TO tsqlbox_begin");
                skipIdentities();
                return m_connection.run("COMMIT");
            } catch (const SqliteFailure&) {  // the disk is full: identities may be reused
            }
        m_connection.run("ROLLBACK");
    };
    if (m_connection.inTransaction()) keepTables(undo);
    if (older) dropTemporary();
}

bool Executor::resetAroundTransaction(std::string_view database) {
    if (m_transactions == 0) return false;
    m_outlivedReset = true;
    m_database = m_storage.canonicalName(database);
    m_connection.attach(m_database);
    set({});
    m_locks.releaseAll(this, /*ofTransaction=*/false);
    dropTemporary();
    m_cursors.clear();
    m_prepared.clear();
    m_identity.reset();
    m_batchIdentity.reset();
    m_rowCount = m_cursorRows = m_error = m_fetchStatus = 0;
    return true;
}

void Executor::run(const Transaction& transaction) {
    const std::string name = transaction.name ? evaluateText(*transaction.name) : "";
    if (transaction.verb == TransactionVerb::Begin) beginImplicitly();
    if (transaction.verb == TransactionVerb::Begin) return begin(name);
    if (transaction.verb == TransactionVerb::Commit) {
        if (m_transactions > 0 && m_transactions == m_fewestTransactions) throw sqlError(kCommitInInsertExec);
        return commit();
    }
    if (transaction.verb == TransactionVerb::Save) {
        if (m_transactions == 0) throw sqlError(kSaveWithoutTransaction);
        beforeWrite();
        return m_connection.run("SAVEPOINT " + quotedName(name));
    }
    if (m_rowHandler) throw sqlError(kRollbackInInsertExec);
    if (m_transactions == 0) throw sqlError(kRollbackWithoutBegin);
    if (name.empty() || sameWord(name, m_transactionName)) return rollBack();
    if (m_doomed) throw sqlError(kSavepointInDoomedTransaction);
    forget();
    bool done = false;
    keepTables([&] {
        done = m_connection.tryRun("ROLLBACK TO " + quotedName(name));
        skipIdentities();
    });
    if (!done) throw sqlError(kSavepointNotFound, {name});
}

}  // namespace tsql
