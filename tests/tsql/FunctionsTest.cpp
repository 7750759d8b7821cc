#include "Functions.h"

#include <gtest/gtest.h>

#include "FunctionBench.h"

namespace {

using namespace tsql;

Typed t(std::string_view text) {
    return literal(textLiteral(text, false));
}
Typed n(std::string_view number) {
    const bool negative = number[0] == '-';
    const Typed typed = literal(numericLiteral(number.substr(negative)));
    return negative ? emitNegate(typed) : typed;
}
Typed as(std::string_view text, const SqlType& type) {
    return coerce(t(text), type);
}
const SqlType kMoney = simpleType(TypeId::Money), kTiny = simpleType(TypeId::TinyInt),
              kBig = simpleType(TypeId::BigInt);
const SqlType kDate = simpleType(TypeId::Date), kDateTime = simpleType(TypeId::DateTime);

template <typename Emit>
std::string shown(FunctionBench& bench, Emit emit) {
    try {
        return bench.show(emit());
    } catch (const SqlError& error) {
        return "error " + std::to_string(error.number);
    }
}

TEST(Functions, Operators) {
    FunctionBench bench;
    struct Case {
        Typed left;
        BinaryOp op;
        Typed right;
        const char* expected;
    };
    using enum BinaryOp;
    const Case cases[] = {
        {n("7"), Divide, n("2"), "int: 3"},
        {n("-7"), Modulo, n("3"), "int: -1"},
        {n("2147483647"), Add, n("1"), "error 8115"},
        {as("200", kTiny), Add, as("100", kTiny), "error 8115"},
        {as("200", kTiny), Add, n("100"), "int: 300"},
        {n("1"), Divide, n("0"), "error 8134"},
        {n("1.0"), Modulo, n("0"), "error 8134"},
        {n("1.0"), Divide, n("3"), "decimal(7,6): 0.333333"},
        {n("2.0"), Divide, n("3"), "decimal(7,6): 0.666666"},
        {n("1.5"), Multiply, n("-2.25"), "decimal(6,3): -3.375"},
        {n("0.1"), Add, n("0.22"), "decimal(3,2): 0.32"},
        {as("123456789.12", decimalType(18, 2)), Divide, as("7", decimalType(18, 2)),
         "decimal(38,20): 17636684.16000000000000000000"},
        {as("999999999999999999", decimalType(18, 0)), Multiply, n("10"),
         "decimal(21,0): 9999999999999999990"},
        {n("99999999999999999999999999999999999999"), Multiply, n("10"), "error 8115"},
        {as("2", kMoney), Divide, as("3", kMoney), "money: 0.67"},
        {n("1e308"), Multiply, n("10"), "error 8115"},
        {t("3"), Multiply, n("4"), "int: 12"},
        {t("x"), Add, n("4"), "error 245"},
        {t("ab"), Add, t("c"), "varchar(3): abc"},
        {t("ab"), Add, nullLiteral(), "varchar(4): NULL"},
        {t("a"), Subtract, t("b"), "error 8117"},
        {as("2026-11-21", kDateTime), Add, n("1.5"), "datetime: Nov 22 2026 12:00PM"},
        {as("2026-11-21", kDate), Add, n("1"), "error 206"},
        {literal(binaryLiteral("01")), Add, literal(binaryLiteral("FF")), "varbinary(2): 0x01FF"},
        {n("6"), BitAnd, n("3"), "int: 2"},
        {n("6.0"), BitAnd, n("3"), "error 402"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(shown(bench, [&] { return emitBinary(c.op, c.left, c.right); }), c.expected)
            << c.left.sql << ' ' << c.right.sql;
}

TEST(Functions, Comparisons) {
    FunctionBench bench;
    const auto truth = [&](CompareOp op, const Typed& left, const Typed& right) {
        return shown(bench, [&] {
            return Typed{emitCompare(op, left, right), simpleType(TypeId::Int), false, {}, {}};
        });
    };
    EXPECT_EQ(truth(CompareOp::Equal, t("Abc "), t("aBC")), "int: 1");
    EXPECT_EQ(truth(CompareOp::Equal, n("1.10"), n("1.1")), "int: 1");
    EXPECT_EQ(truth(CompareOp::Less, n("1.1"), n("2")), "int: 1");
    EXPECT_EQ(truth(CompareOp::Greater, as("1.5", kMoney), n("1")), "int: 1");
    EXPECT_EQ(truth(CompareOp::Equal, t("10"), n("10")), "int: 1");
    EXPECT_EQ(truth(CompareOp::Less, as("2026-11-21", kDate), as("2026-11-21 00:00:00.003", kDateTime)),
              "int: 1");
    EXPECT_EQ(truth(CompareOp::Equal, t("x"), n("10")), "error 245");
    EXPECT_EQ(truth(CompareOp::Equal, n("1"), nullLiteral()), "int: NULL");
}

TEST(Functions, Calls) {
    FunctionBench bench;
    struct Case {
        const char* name;
        std::vector<Typed> arguments;
        const char* expected;
    };
    const auto w = wordArgument;
    const Typed null = nullLiteral(), day = as("2026-01-31 13:05:07.123", kDateTime);
    const Case cases[] = {
        {"LEN", {t("äb  ")}, "int: 2"},
        {"LEN", {n("1234")}, "int: 4"},
        {"LEN", {}, "error 174"},
        {"DATALENGTH", {literal(textLiteral("äb", true))}, "int: 4"},
        {"SUBSTRING", {t("hello"), n("2"), n("3")}, "varchar(3): ell"},
        {"SUBSTRING", {t("hello"), n("0"), n("3")}, "varchar(3): he"},
        {"SUBSTRING", {t("hello"), n("2"), n("-1")}, "error 537"},
        {"SUBSTRING", {literal(binaryLiteral("010203")), n("2"), n("9")}, "varbinary(3): 0x0203"},
        {"RIGHT", {t("größe"), n("2")}, "varchar(2): ße"},
        {"UPPER", {t("äb")}, "varchar(2): ÄB"},
        {"REPLACE", {t("aXbxc"), t("x"), t("--")}, "varchar(8000): a--b--c"},
        {"STUFF", {t("abcdef"), n("2"), n("3"), t("X")}, "varchar(8000): aXef"},
        {"CHARINDEX", {t("L"), t("hello"), n("4")}, "int: 4"},
        {"CHARINDEX", {t("z"), t("hello")}, "int: 0"},
        {"PATINDEX", {t("%[0-9]%"), t("ab3")}, "int: 3"},
        {"REPLICATE", {t("ab"), n("3")}, "varchar(8000): ababab"},
        {"STR", {n("3.147"), n("6"), n("2")}, "varchar(6):   3.15"},
        {"STR", {n("12345"), n("3")}, "varchar(3): ***"},
        {"CONCAT", {t("a"), null, n("7")}, "varchar(61): a7"},
        {"CONCAT_WS", {t(","), t("a"), null, t("b")}, "varchar(33): a,b"},
        {"QUOTENAME", {t("a]b")}, "nvarchar(258): [a]]b]"},
        {"ABS", {n("-1.50")}, "decimal(3,2): 1.50"},
        {"CEILING", {n("-1.5")}, "decimal(2,0): -1"},
        {"FLOOR", {n("-1.5")}, "decimal(2,0): -2"},
        {"ROUND", {n("2.567"), n("2")}, "decimal(4,3): 2.570"},
        {"ROUND", {n("1256"), n("-2")}, "int: 1300"},
        {"ROUND", {n("2.567"), n("2"), n("1")}, "decimal(4,3): 2.560"},
        {"POWER", {n("2"), n("10")}, "int: 1024"},
        {"POWER", {n("2"), n("31")}, "error 232"},
        {"SQRT", {n("-1")}, "error 3623"},
        {"ISNULL", {null, n("5")}, "int: 5"},
        {"ISNULL", {t("ab"), t("long")}, "varchar(2): ab"},
        {"COALESCE", {null, n("1"), n("2.5")}, "decimal(11,1): 1.0"},
        {"COALESCE", {emitConvert(null, kDate, nullptr, Conversion::Cast), null}, "date: NULL"},
        {"NULLIF", {t("a"), t("A ")}, "varchar(1): NULL"},
        {"CHOOSE", {n("2"), t("a"), t("bc")}, "varchar(2): bc"},
        {"ISNUMERIC", {t("1.5e3")}, "int: 1"},
        {"ISNUMERIC", {t("abc")}, "int: 0"},
        {"ISDATE", {t("2026-02-30")}, "int: 0"},
        {"DATEADD", {w("month"), n("1"), day}, "datetime: Feb 28 2026  1:05PM"},
        {"DATEADD", {w("mi"), n("-66"), t("2026-01-31 00:05")}, "datetime: Jan 30 2026 10:59PM"},
        {"DATEADD", {w("yy"), n("9000"), day}, "error 517"},
        {"DATEADD", {w("foo"), n("1"), day}, "error 155"},
        {"DATEDIFF", {w("dd"), t("2026-01-31 23:59"), t("2026-02-01")}, "int: 1"},
        {"DATEDIFF", {w("week"), t("2026-11-21"), t("2026-11-22")}, "int: 1"},
        {"DATEDIFF", {w("yyyy"), t("2026-12-31"), t("2027-01-01")}, "int: 1"},
        {"DATEDIFF", {w("ms"), t("1900-01-01"), day}, "error 535"},
        {"DATEPART", {w("dw"), day}, "int: 7"},
        {"DATEPART", {w("isowk"), t("2027-01-01")}, "int: 53"},
        {"DATENAME", {w("month"), day}, "nvarchar(30): January"},
        {"YEAR", {day}, "int: 2026"},
        {"EOMONTH", {t("2024-01-31"), n("1")}, "date: 2024-02-29"},
        {"DATEFROMPARTS", {n("2026"), n("2"), n("30")}, "error 289"},
    };
    for (const Case& c : cases) {
        const FunctionInfo* function = findFunction(c.name);
        ASSERT_NE(function, nullptr) << c.name;
        EXPECT_EQ(shown(bench, [&] { return emitCall(*function, c.arguments); }), c.expected) << c.name;
    }
    EXPECT_EQ(findFunction("no_such_function"), nullptr);
}

TEST(Functions, Aggregates) {
    FunctionBench bench;
    execute(bench.connection(),
            "CREATE TABLE v(i, d, t, big); INSERT INTO v VALUES (1, 150, 'a', 2147483647), "
            "(2, 250, 'A', 2147483647), (2, NULL, 'b', 1), (NULL, 251, NULL, NULL)");
    const auto column = [](const char* name, const SqlType& type) {
        return Typed{name, type, false, {}, {}};
    };
    const Typed i = column("i", simpleType(TypeId::Int)), d = column("d", decimalType(5, 2)),
                text = column("t", varcharType(3));
    const auto shownCall = [&](const char* name, const std::vector<Typed>& arguments, bool distinct = false) {
        return bench.show(emitCall(*findFunction(name), arguments, distinct), " FROM v");
    };
    EXPECT_EQ(shownCall("COUNT", {wordArgument("*")}), "int: 4");
    EXPECT_EQ(shownCall("COUNT", {text}, true), "int: 2");
    EXPECT_EQ(shownCall("SUM", {i}), "int: 5");
    EXPECT_EQ(shownCall("SUM", {i}, true), "int: 3");
    EXPECT_EQ(shownCall("SUM", {d}), "decimal(38,2): 6.51");
    EXPECT_EQ(shownCall("SUM", {column("big", simpleType(TypeId::Int))}), "error 8115");
    EXPECT_EQ(shownCall("AVG", {i}), "int: 1");
    EXPECT_EQ(shownCall("AVG", {d}), "decimal(38,6): 2.170000");
    EXPECT_EQ(shownCall("MAX", {text}), "varchar(3): b");
    EXPECT_EQ(shownCall("STDEV", {i}), "float: 0.57735");
    EXPECT_EQ(shownCall("STRING_AGG", {text, t(", ")}), "varchar(8000): a, A, b");
    EXPECT_EQ(bench.show(emitCall(*findFunction("SUM"), std::vector<Typed>{i}), " FROM v WHERE i > 9"),
              "int: NULL");
    EXPECT_THROW(emitCall(*findFunction("SUM"), std::vector<Typed>{text}), SqlError);
}

TEST(Functions, AssignmentNamesTheColumn) {
    FunctionBench bench;
    EXPECT_EQ(bench.show(emitAssign(t("abc"), varcharType(2), "db.dbo.t", "c")), "error 2628");
    EXPECT_EQ(bench.show(emitAssign(n("5"), varcharType(2), "db.dbo.t", "c")), "varchar(2): 5");
}

}  // namespace
