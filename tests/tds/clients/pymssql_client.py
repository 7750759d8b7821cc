"""The server through pymssql: python3 pymssql_client.py <port> <login> <password>"""
import datetime
import decimal
import sys
import unittest
import uuid

import pymssql

PORT, LOGIN, PASSWORD = sys.argv[1], sys.argv[2], sys.argv[3]


def connect(password=PASSWORD, **options):
    return pymssql.connect(server="127.0.0.1", port=PORT, user=LOGIN, password=password, **options)


class Pymssql(unittest.TestCase):
    def setUp(self):
        self.connection = connect()
        self.cursor = self.connection.cursor()

    def tearDown(self):
        self.connection.close()

    def value(self, statement, parameters=()):
        self.cursor.execute(statement, parameters)
        return self.cursor.fetchone()[0]

    def test_a_wrong_password_is_refused(self):
        with self.assertRaises(pymssql.OperationalError) as refused:
            connect(password="no such password")
        self.assertIn("Login failed for user", str(refused.exception))

    def test_every_version_of_the_protocol(self):
        for version in ("7.1", "7.2", "7.3"):
            with self.subTest(version), connect(tds_version=version) as connection:
                cursor = connection.cursor()
                cursor.execute("SELECT CAST(N'\u00e4\u20ac' AS nvarchar(max)), CAST(7 AS bigint), CAST(0x0102 AS varbinary(max))")
                self.assertEqual(cursor.fetchone(), ("\u00e4\u20ac", 7, b"\x01\x02"))

    def test_every_type_arrives_and_so_does_its_null(self):
        cases = [
            ("bit", "1", True),
            ("tinyint", "255", 255),
            ("smallint", "-32768", -32768),
            ("int", "-2147483648", -2147483648),
            ("bigint", "9223372036854775807", 9223372036854775807),
            ("decimal(18,4)", "-12345678901234.5678", decimal.Decimal("-12345678901234.5678")),
            ("decimal(38,19)", "-1234567890123456789.5", decimal.Decimal("-1234567890123456789.5")),
            ("money", "-123456789.1234", decimal.Decimal("-123456789.1234")),
            ("smallmoney", "1.5", decimal.Decimal("1.5000")),
            ("real", "0.5", 0.5),
            ("float", "-2.5e100", -2.5e100),
            ("char(5)", "'ab'", "ab   "),
            ("varchar(20)", "'it''s'", "it's"),
            ("nvarchar(20)", "N'Gr\u00f6\u00dfe \u20ac'", "Gr\u00f6\u00dfe \u20ac"),
            ("nvarchar(max)", "REPLICATE(CAST(N'\u00e4' AS nvarchar(max)), 100000)", "\u00e4" * 100000),
            ("text", "'long'", "long"),
            ("datetime", "'2024-02-29 23:59:59.997'", datetime.datetime(2024, 2, 29, 23, 59, 59, 997000)),
            ("smalldatetime", "'2024-02-29 23:59'", datetime.datetime(2024, 2, 29, 23, 59)),
            ("date", "'2024-02-29'", datetime.date(2024, 2, 29)),
            ("time(6)", "'23:59:59.123'", datetime.time(23, 59, 59, 123000)),  # it reads milliseconds
            ("datetime2(6)", "'0001-01-01 23:00:00.120'", datetime.datetime(1, 1, 1, 23, 0, 0, 120000)),
            ("uniqueidentifier", "'6F9619FF-8B86-D011-B42D-00C04FC964FF'", uuid.UUID("6F9619FF-8B86-D011-B42D-00C04FC964FF")),
            ("binary(4)", "0x0A0B", b"\x0a\x0b\0\0"),
            ("varbinary(max)", "0x00FF", b"\x00\xff"),
        ]
        for name, literal, expected in cases:
            with self.subTest(name):
                self.cursor.execute(f"SELECT CAST({literal} AS {name}), CAST(NULL AS {name})")
                self.assertEqual(self.cursor.fetchone(), (expected, None))

    def test_parameters_keep_their_values(self):
        moment = datetime.datetime(2024, 2, 29, 12, 30, 15)
        self.cursor.execute(
            "SELECT %s, %d, %s, %s, %s",
            ("it's 100% \u20ac", -7, None, decimal.Decimal("1.25"), moment))
        text, number, nothing, amount, _ = self.cursor.fetchone()
        self.assertEqual((text, number, nothing, amount), ("it's 100% \u20ac", -7, None, decimal.Decimal("1.25")))
        self.assertEqual(self.value("SELECT CAST(%s AS datetime)", (moment,)), moment)

    def test_a_procedure_gives_back_status_outputs_and_rows(self):
        self.cursor.execute("CREATE OR ALTER PROCEDURE AddTo @base int, @text nvarchar(40), @sum int OUTPUT, "
                            "@shout nvarchar(50) OUTPUT AS SET @sum = @base + 10 SET @shout = UPPER(@text) + N'!' RETURN 4")
        outputs = self.cursor.callproc("AddTo", (5, "gr\u00fcn", pymssql.output(int), pymssql.output(str)))
        self.assertEqual(outputs, (5, "gr\u00fcn", 15, "GR\u00dcN!"))
        self.assertEqual(self.cursor.returnvalue, 4)
        self.cursor.execute("CREATE OR ALTER PROCEDURE Twice @value int AS SELECT @value AS once SELECT 2 * @value AS twice")
        self.cursor.callproc("Twice", (21,))
        self.assertTrue(self.cursor.nextset())
        self.assertEqual(self.cursor.fetchall(), [(21,)])
        self.assertTrue(self.cursor.nextset())
        self.assertEqual(self.cursor.fetchall(), [(42,)])

    def test_an_error_has_its_facts_and_the_connection_goes_on(self):
        messages = []
        self.connection._conn.set_msghandler(
            lambda state, severity, server, procedure, line, text: messages.append((state, severity, line, text)))
        with self.assertRaises(pymssql.OperationalError) as failed:
            self.cursor.execute("SELECT 1\nSELECT * FROM Nowhere")
            while self.cursor.nextset():
                pass
        self.assertEqual(failed.exception.args[0], 208)
        self.assertIn((1, 16, 2, b"Invalid object name 'Nowhere'."), messages)
        with self.assertRaises(pymssql.DatabaseError) as raised:
            self.cursor.execute("RAISERROR('own %d', 16, 3, 42)")
        self.assertEqual(raised.exception.args[0], 50000)
        self.assertIn(b"own 42", raised.exception.args[1])
        self.assertEqual(self.value("SELECT 'goes on'"), "goes on")

    def test_several_result_sets_and_row_counts(self):
        self.cursor.execute("DECLARE @t int SELECT 1 AS a SELECT 2 AS b, 3 AS c SELECT 4 WHERE 1 = 0")
        self.assertEqual(self.cursor.fetchall(), [(1,)])
        self.assertTrue(self.cursor.nextset())
        self.assertEqual([column[0] for column in self.cursor.description], ["b", "c"])
        self.assertEqual(self.cursor.fetchall(), [(2, 3)])
        self.assertTrue(self.cursor.nextset())
        self.assertEqual(self.cursor.fetchall(), [])
        self.assertFalse(self.cursor.nextset())
        self.cursor.execute("CREATE TABLE #n (i int) INSERT INTO #n VALUES (1), (2), (3)")
        self.cursor.execute("UPDATE #n SET i = 0 WHERE i > 1")
        self.assertEqual(self.cursor.rowcount, 2)

    def test_commit_rollback_and_autocommit(self):
        self.cursor.execute("IF OBJECT_ID('Kept') IS NOT NULL DROP TABLE Kept CREATE TABLE Kept (i int)")
        self.connection.commit()
        self.cursor.execute("INSERT INTO Kept VALUES (1)")
        self.connection.rollback()
        self.cursor.execute("INSERT INTO Kept VALUES (2)")
        self.connection.commit()
        self.connection.autocommit(True)
        self.cursor.execute("INSERT INTO Kept VALUES (3)")
        with connect() as other:
            cursor = other.cursor()
            cursor.execute("SELECT i FROM Kept ORDER BY i")
            self.assertEqual(cursor.fetchall(), [(2,), (3,)])

    def test_executemany_and_many_rows(self):
        self.cursor.execute("CREATE TABLE #m (i int, t nvarchar(20))")
        self.cursor.executemany("INSERT INTO #m VALUES (%d, %s)", [(i, f"row {i}") for i in range(200)])
        self.assertEqual(self.value("SELECT COUNT(*) FROM #m"), 200)
        self.cursor.execute("SELECT a.i, b.t FROM #m a CROSS JOIN #m b")
        self.assertEqual(sum(1 for _ in self.cursor), 40000)

    def test_a_time_out_ends_the_batch_only(self):
        with connect(timeout=1) as connection:
            cursor = connection.cursor()
            with self.assertRaises(pymssql.OperationalError):
                cursor.execute("WAITFOR DELAY '00:01:00'")
        self.assertEqual(self.value("SELECT 1"), 1)


unittest.main(argv=[sys.argv[0]], verbosity=0)
