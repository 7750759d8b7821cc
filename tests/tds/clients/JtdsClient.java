// The server through jTDS: java -cp jtds.jar JtdsClient.java <port> <login> <password>
import java.math.BigDecimal;
import java.sql.*;
import java.util.*;

public class JtdsClient {
    static void expect(Object expected, Object actual) {
        if (!expected.equals(actual)) throw new AssertionError("expected " + expected + ", got " + actual);
    }

    /** Returns the rows: columns separated by '|' (the named ones, or all), each row ended by a blank. */
    static String rows(ResultSet result, String... names) throws SQLException {
        StringBuilder text = new StringBuilder();
        ResultSetMetaData columns = result.getMetaData();
        int count = names.length > 0 ? names.length : columns.getColumnCount();
        while (result.next())
            for (int i = 0; i < count; ++i)
                text.append(names.length > 0 ? result.getString(names[i]) : result.getString(i + 1))
                    .append(i + 1 < count ? "|" : " ");
        return text.toString();
    }

    interface Step {
        void run() throws SQLException;
    }

    static void expectError(int number, Step step) throws SQLException {
        try {
            step.run();
        } catch (SQLException error) {
            expect(number, error.getErrorCode());
            return;
        }
        throw new AssertionError("no error " + number);
    }

    static void values(Connection connection) throws SQLException {
        String text = "Gr\u00fcn \u20ac \uD83D\uDE00";
        Timestamp taken = Timestamp.valueOf("2024-02-29 23:59:58.123");
        try (PreparedStatement insert = connection.prepareStatement(
                 "INSERT INTO reading (name, amount, taken, note, raw, good) VALUES (?, ?, ?, ?, ?, ?)",
                 Statement.RETURN_GENERATED_KEYS)) {
            insert.setString(1, text);
            insert.setBigDecimal(2, new BigDecimal("12.375"));
            insert.setTimestamp(3, taken);
            insert.setString(4, "\u20ac".repeat(9000));
            insert.setBytes(5, new byte[9000]);
            insert.setBoolean(6, true);
            expect(1, insert.executeUpdate());
            expect("10 ", rows(insert.getGeneratedKeys()));
        }
        try (PreparedStatement insert = connection.prepareStatement("INSERT INTO reading (name) VALUES (?)")) {
            for (String name : List.of("first", "second")) {
                insert.setString(1, name);
                insert.addBatch();
            }
            expect("[1, 1]", Arrays.toString(insert.executeBatch()));
        }
        try (Statement select = connection.createStatement()) {
            ResultSet row = select.executeQuery("SELECT * FROM reading WHERE id = 10");
            expect(true, row.next());
            expect(text, row.getString("name"));
            expect(new BigDecimal("12.375"), row.getBigDecimal("amount"));
            expect(taken, row.getTimestamp("taken"));
            expect(9000L, row.getClob("note").length());
            expect(9000, row.getBytes("raw").length);
            expect(true, row.getBoolean("good"));
            expect("none|null|12 ", rows(select.executeQuery(
                "SELECT code, taken, (SELECT MAX(id) FROM reading) FROM reading WHERE name = 'second'")));
            expect("A|2024-01-02 03:04:05.0|3 ", rows(select.executeQuery(
                "SELECT {fn UCASE('a')}, {ts '2024-01-02 03:04:05'}, {fn LENGTH('abc ')}")));
        }
    }

    static void calls(Connection connection) throws SQLException {
        try (Statement statement = connection.createStatement()) {
            statement.execute("CREATE PROCEDURE twice @n int, @text nvarchar(20) OUTPUT AS "
                              + "SET @text = @text + N'\u00e4' SELECT 2 * @n AS doubled RETURN 7");
            statement.execute("PRINT 'done'");
            expect("done", statement.getWarnings().getMessage());
            expectError(208, () -> statement.execute("SELECT * FROM nowhere"));
            expectError(2627, () -> statement.execute("INSERT INTO reading (name) VALUES ('first')"));
        }
        try (CallableStatement call = connection.prepareCall("{? = call twice(?, ?)}")) {
            call.registerOutParameter(1, Types.INTEGER);
            call.setInt(2, 21);
            call.setString(3, "v");
            call.registerOutParameter(3, Types.VARCHAR);
            expect(true, call.execute());
            expect("42 ", rows(call.getResultSet()));
            expect(false, call.getMoreResults());
            expect(7, call.getInt(1));
            expect("v\u00e4", call.getString(3));
        }
    }

    static void cursors(Connection connection) throws SQLException {
        int scroll = ResultSet.TYPE_SCROLL_INSENSITIVE, fixed = ResultSet.CONCUR_READ_ONLY;
        try (Statement statement = connection.createStatement(scroll, fixed)) {
            statement.setFetchSize(2);
            statement.execute("CREATE TABLE scrolled (i int)");
            statement.execute("INSERT scrolled VALUES (1), (2), (3), (4), (5)");
            ResultSet result = statement.executeQuery("SELECT i, 0 AS zero FROM scrolled ORDER BY i");
            expect("1|0 2|0 3|0 4|0 5|0 ", rows(result));
            expect(true, result.last());
            expect(5, result.getInt("i"));
            expect(5, result.getRow());
            expect(true, result.absolute(2));
            expect(true, result.relative(2));
            expect(4, result.getInt(1));
            expect(true, result.previous());
            expect(3, result.getInt(1));
            expect(true, result.first());
            expect(false, result.previous());
            expect(true, result.absolute(-2));
            expect(4, result.getInt(1));
            result.afterLast();
            expect(false, result.next());
            result.close();
        }
        try (PreparedStatement statement =
                 connection.prepareStatement("SELECT i FROM scrolled WHERE i > ? ORDER BY i", scroll, fixed)) {
            for (int least = 2; least < 4; ++least) {
                statement.setInt(1, least);
                ResultSet result = statement.executeQuery();
                expect(true, result.last());
                expect(5 - least, result.getRow());
                result.beforeFirst();
                expect(least == 2 ? "3 4 5 " : "4 5 ", rows(result));
            }
        }
        int changes = ResultSet.CONCUR_UPDATABLE;
        try (Statement statement = connection.createStatement(ResultSet.TYPE_SCROLL_SENSITIVE, changes)) {
            ResultSet result = statement.executeQuery("SELECT i FROM scrolled WHERE i = 1");
            expect(fixed, result.getConcurrency());
            expect("1 ", rows(result));
        }
    }

    static void transactions(Connection connection) throws SQLException {
        connection.setAutoCommit(false);
        try (Statement statement = connection.createStatement()) {
            expect(3, statement.executeUpdate("UPDATE reading SET amount = 1"));
            Savepoint savepoint = connection.setSavepoint("s");
            expect(3, statement.executeUpdate("DELETE FROM reading"));
            connection.rollback(savepoint);
            connection.commit();
            statement.executeUpdate("DELETE FROM reading");
            connection.rollback();
            expect("3|3.000 ", rows(statement.executeQuery("SELECT COUNT(*), SUM(amount) FROM reading")));
        }
        connection.setAutoCommit(true);
    }

    static void metadata(Connection connection) throws SQLException {
        DatabaseMetaData data = connection.getMetaData();
        try (Statement statement = connection.createStatement()) {
            statement.execute("CREATE TABLE remark (number smallint, reading int CONSTRAINT fk_reading FOREIGN KEY "
                              + "REFERENCES reading (id) ON DELETE CASCADE)");
            statement.execute("CREATE INDEX ix_number ON remark (number DESC, reading)");
        }
        String[] tables = {"TABLE"};
        expect("jtds|dbo|reading|TABLE jtds|dbo|remark|TABLE ",
               rows(data.getTables(null, null, "re%", tables), "TABLE_CAT", "TABLE_SCHEM", "TABLE_NAME", "TABLE_TYPE"));
        expect("id|4|int identity|10|0|1 name|12|nvarchar|40|0|2 code|1|char|4|1|3 amount|3|decimal|12|1|4 "
                   + "taken|93|datetime|23|1|5 note|12|nvarchar|0|1|6 raw|-3|varbinary|0|1|7 good|-7|bit|1|1|8 ",
               rows(data.getColumns(null, null, "reading", null), "COLUMN_NAME", "DATA_TYPE", "TYPE_NAME", "COLUMN_SIZE",
                    "NULLABLE", "ORDINAL_POSITION"));
        expect("('none') ", rows(data.getColumns(null, null, "reading", "code"), "COLUMN_DEF"));
        expect("id|1|pk_reading ", rows(data.getPrimaryKeys(null, null, "reading"), "COLUMN_NAME", "KEY_SEQ", "PK_NAME"));
        String[] key = {"PKTABLE_NAME", "PKCOLUMN_NAME", "FKTABLE_NAME", "FKCOLUMN_NAME", "DELETE_RULE", "FK_NAME"};
        expect("reading|id|remark|reading|0|fk_reading ", rows(data.getImportedKeys(null, null, "remark"), key));
        expect("reading|id|remark|reading|0|fk_reading ", rows(data.getExportedKeys(null, null, "reading"), key));
        expect("1|ix_number|number|D 1|ix_number|reading|A ",
               rows(data.getIndexInfo(null, null, "remark", false, true), "NON_UNIQUE", "INDEX_NAME", "COLUMN_NAME",
                    "ASC_OR_DESC"));
        expect("twice ", rows(data.getProcedures(null, null, "tw%"), "PROCEDURE_NAME"));
        expect("@RETURN_VALUE|5|int @n|1|int @text|2|nvarchar ",
               rows(data.getProcedureColumns(null, null, "twice", null), "COLUMN_NAME", "COLUMN_TYPE", "TYPE_NAME"));
        expect("id|4|1 ", rows(data.getBestRowIdentifier(null, null, "reading", DatabaseMetaData.bestRowSession, true),
                               "COLUMN_NAME", "DATA_TYPE", "PSEUDO_COLUMN"));
        expect(true, rows(data.getCatalogs()).contains("jtds "));
        expect(true, rows(data.getSchemas(), "TABLE_SCHEM").contains("dbo "));
    }

    public static void main(String[] arguments) throws Exception {
        Class.forName("net.sourceforge.jtds.jdbc.Driver");
        String url = "jdbc:jtds:sqlserver://127.0.0.1:" + arguments[0] + "/jtds";
        try (Connection connection = DriverManager.getConnection(url, arguments[1], arguments[2])) {
            try (Statement statement = connection.createStatement()) {
                statement.execute("CREATE TABLE reading (id int IDENTITY(10, 1) CONSTRAINT pk_reading PRIMARY KEY, "
                                  + "name nvarchar(40) NOT NULL UNIQUE, code char(4) DEFAULT 'none', "
                                  + "amount decimal(12, 3), taken datetime, note nvarchar(max), raw varbinary(max), "
                                  + "good bit)");
            }
            values(connection);
            calls(connection);
            cursors(connection);
            transactions(connection);
            metadata(connection);
        }
    }
}
