// Batches of T-SQL: parsed, or rejected with an error number and a line of the batch. Parsed batches run,
// too: in one engine, each in a new session and in a transaction that is rolled back.
#include <algorithm>
#include <chrono>

#include "Fuzz.h"
#include "TempDir.h"
#include "execute/Engine.h"
#include "syntax/Parser.h"
#include "types/Text.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kBatchTimeout{500};

// Checks results and discards them. Cancels a batch after kBatchTimeout.
class Sink final : public tsql::ResultSink {
  public:
    void columns(std::span<const tsql::Column> columns) override { m_columns = columns.size(); }
    void row(std::span<const tsql::CellView> cells) override { fuzz::require(cells.size() == m_columns); }
    void statementDone(std::int64_t, tsql::StatementKind) override {}
    void message(const tsql::Message& message) override { fuzz::require(message.line >= 0); }
    void databaseChanged(std::string_view, std::string_view) override {}
    bool cancelled() override { return Clock::now() > m_end; }

  private:
    std::size_t m_columns = 0;
    Clock::time_point m_end = Clock::now() + kBatchTimeout;
};

class Sandbox {
  public:
    Sandbox() {
        run("COMMIT", R"(
CREATE TABLE t (id int IDENTITY PRIMARY KEY, a int NULL, b varchar(20) NULL, c datetime NULL, d decimal(9, 2) NULL)
CREATE TABLE u (id int REFERENCES t (id), f float NULL, g uniqueidentifier NULL, h varbinary(9) NULL)
INSERT t VALUES (1, 'one', '20200102', 1.5), (NULL, NULL, NULL, NULL), (3, 'three', GETDATE(), -3)
INSERT u VALUES (1, 0.5, NEWID(), 0x01))");
        run("COMMIT", "CREATE VIEW v AS SELECT id, a, b FROM t WHERE a > 0");
        run("COMMIT",
            "CREATE PROCEDURE p @a int = 1, @b varchar(20) OUTPUT AS SELECT @b = b FROM t WHERE a = @a "
            "RETURN 2");
        run("COMMIT", "CREATE FUNCTION f (@a int) RETURNS int AS BEGIN RETURN @a + 1 END");
        run("COMMIT", "CREATE FUNCTION g (@a int) RETURNS TABLE AS RETURN (SELECT * FROM t WHERE a = @a)");
    }

    // Runs a batch in a transaction, and `end` (COMMIT or ROLLBACK) after it.
    void run(std::string_view end, std::string_view batch) {
        const auto session = tsql::openSession(m_engine, {"sa"}, "master", 51);
        Sink sink;
        session->runBatch("BEGIN TRANSACTION", sink);
        if (session->runBatch(batch, sink)) session->runBatch(end, sink);
    }

  private:
    support::TempDir m_folder;
    tsql::Engine m_engine{m_folder.path()};
};

// False if the batch may create files or databases, which a rollback would not remove.
bool canBeRolledBack(std::string_view text) {
    for (const std::string_view word : {"BACKUP", "RESTORE", "DATABASE"})
        if (tsql::findText(text, word) != std::string::npos) return false;
    return true;
}

// Returns whether the batch is syntactically correct.
bool parses(std::string_view text, bool quotedIdentifiers) {
    const auto lines = std::count(text.begin(), text.end(), '\n') + 1;
    try {
        tsql::parseBatch(text, quotedIdentifiers);
        return true;
    } catch (const tsql::SyntaxError& error) {
        fuzz::require(error.number > 0 && error.line >= 1 && error.line <= lines);
        return false;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Sandbox sandbox;
    const std::string_view text = fuzz::textOf(data, size);
    parses(text, /*quotedIdentifiers=*/false);
    if (parses(text, /*quotedIdentifiers=*/true) && canBeRolledBack(text)) sandbox.run("ROLLBACK", text);
    return 0;
}
