// The wire's own formats: text, login packets, parameters, calls.
#include <gtest/gtest.h>

#include <functional>

#include "ByteWriter.h"
#include "Login.h"
#include "Parameter.h"
#include "RawClient.h"
#include "Rpc.h"
#include "WireTime.h"

namespace tds {
namespace {

TEST(Utf16, BrokenTextBecomesTheReplacementCharacter) {
    struct Case {
        std::string utf8, wire, back;
    };
    using namespace std::string_literals;
    const Case cases[] = {
        {"a\xC3\xB6\xE2\x82\xAC", "a\0\xF6\0\xAC\x20"s, "a\xC3\xB6\xE2\x82\xAC"},
        {"\xF0\x9F\x98\x80", "\x3D\xD8\x00\xDE"s, "\xF0\x9F\x98\x80"},
        {"\xC3", "\xFD\xFF", "\xEF\xBF\xBD"},                          // cut short
        {"\xC0\xAF", "\xFD\xFF\xFD\xFF", "\xEF\xBF\xBD\xEF\xBF\xBD"},  // longer than needed
        {"\xED\xA0\x80", "\xFD\xFF\xFD\xFF\xFD\xFF", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},  // a surrogate
    };
    for (const Case& c : cases) {
        EXPECT_EQ(utf16FromUtf8(c.utf8), c.wire);
        EXPECT_EQ(utf8FromUtf16(c.wire), c.back);
    }
    EXPECT_EQ(utf8FromUtf16("\x3D\xD8"), "\xEF\xBF\xBD") << "a high surrogate at the end";
    EXPECT_EQ(utf8FromUtf16("\x00\xDE\x41\x00"s), "\xEF\xBF\xBD\x41") << "a low one alone";
    EXPECT_EQ(utf8FromCodePage1252("\x80\xE4"), "\xE2\x82\xAC\xC3\xA4");
}

TEST(Login, FieldsAreReadAndThoseOutsideOfThePacketRefused) {
    const Bytes good = support::loginPacket("sa", "p\xC3\xA4ss;", "db1");
    const Login login = parseLogin(good);
    EXPECT_EQ(login.userName, "sa");
    EXPECT_EQ(login.password, "p\xC3\xA4ss;");
    EXPECT_EQ(login.database, "db1");
    EXPECT_EQ(login.version, Version::V74);

    struct Damage {
        const char* what;
        std::function<void(Bytes&)> apply;
    };
    const Damage cases[] = {
        {"length too large", [](Bytes& p) { p[0] = static_cast<char>(p[0] + 1); }},
        {"cut in its fixed part", [](Bytes& p) { p.resize(40), p[0] = 40; }},
        {"offset outside", [](Bytes& p) { p[41] = '\x7F'; }},
        {"field longer than 128 characters", [](Bytes& p) { p[42] = '\x81'; }},
        {"field leaves the end", [](Bytes& p) { p[70] = '\x40'; }},
        {"a version before 7.1", [](Bytes& p) { p[7] = '\x70'; }},
    };
    for (const Damage& damage : cases) {
        Bytes packet = good;
        damage.apply(packet);
        EXPECT_THROW(parseLogin(packet), ProtocolError) << damage.what;
    }
}

// A parameter without a name: no flags, then its type and value.
Parameter parameterOf(const Bytes& typeAndValue) {
    const Bytes wire = Bytes(2, '\0') + typeAndValue;
    ByteReader in(wire);
    Parameter parameter = readParameter(in);
    EXPECT_TRUE(in.atEnd());
    return parameter;
}

TEST(Parameter, EachWireTypeBecomesATypeAndAnExactLiteral) {
    using namespace std::string_literals;
    const Bytes collation("\x09\x04\xD0\x00\x34", 5);
    struct Case {
        Bytes wire;
        const char* type;
        const char* literal;
    };
    const Case cases[] = {
        {"\x38\xFE\xFF\xFF\xFF"s, "int", "-2"},
        {"\x26\x01\x01\xC8"s, "tinyint", "200"},
        {"\x26\x08\x08\0\0\0\0\0\0\0\x80"s, "bigint", "CAST('-9223372036854775808' AS bigint)"},
        {"\x68\x01\x01\x01"s, "bit", "1"},
        {"\x26\x04\x00"s, "int", "NULL"},
        {"\x6D\x08\x08\0\0\0\0\0\0\xF8\x3F"s, "float", "1.5000000000000000e+00"},
        {"\x6E\x08\x08\xFF\xFF\xFF\xFF\xC7\xCF\xFF\xFF"s, "money", "-1.2345"},
        {"\x6C\x09\x12\x04\x09\x00\x05\0\0\0\0\0\0\0"s, "decimal(18,4)", "-0.0005"},
        {"\x6F\x08\x08\x01\0\0\0\x2C\x01\0\0"s, "datetime", "'1900-01-02 00:00:01.000'"},
        {"\x28\x03\x5B\x95\x0A"s, "date", "'1900-01-01'"},
        {"\x29\x00\x03\x7F\x51\x01"s, "time(0)", "'23:59:59'"},
        {"\x2B\x00\x08\x00\x00\x00\x5B\x95\x0A\xC4\xFF"s, "datetimeoffset(0)",
         "'1899-12-31 23:00:00 -01:00'"},
        {"\x24\x10\x10\xFF\x19\x96\x6F\x86\x8B\x11\xD0\xB4\x2D\x00\xC0\x4F\xC9\x64\xFF"s, "uniqueidentifier",
         "'6F9619FF-8B86-D011-B42D-00C04FC964FF'"},
        {"\xE7\x08\x00"s + collation + "\x06\x00'\0\n\0\xE4\0"s, "nvarchar(4)",
         "N'''"
         "'+NCHAR(10)+N'\xC3\xA4'"},
        {"\xA7\x05\x00"s + collation + "\x01\x00\x80"s, "varchar(5)", "N'\xE2\x82\xAC'"},
        {"\xE7\xFF\xFF"s + collation + Bytes(8, '\xFF'), "nvarchar(max)", "NULL"},
        {"\xA5\xFF\xFF"s + "\xFE" + Bytes(7, '\xFF') + "\x01\0\0\0\xAB\x01\0\0\0\x0C\0\0\0\0"s,
         "varbinary(max)", "0xAB0C"},
        {"\x63\xFE\xFF\xFF\x7F"s + collation + "\x02\0\0\0A\0"s, "nvarchar(max)", "N'A'"},
    };
    for (const Case& c : cases) {
        const Parameter parameter = parameterOf(c.wire);
        EXPECT_EQ(typeName(parameter.type), c.type);
        EXPECT_EQ(literal(parameter), c.literal);
    }
}

TEST(Parameter, ImpossibleOnesAreRefused) {
    using namespace std::string_literals;
    const Bytes cases[] = {
        "\x26\x03\x00"s,                          // an integer of three bytes
        "\x26\x04\x04\x01"s,                      // shorter than it says
        "\x6C\x11\x40\x00\x00"s,                  // precision 64
        "\x6F\x08\x08\xFF\xFF\xFF\x7F\0\0\0\0"s,  // past the year 9999
        "\x29\x00\x03\xFF\xFF\xFF"s,              // past midnight
        "\x29\x08\x00"s,                          // eight digits of a second
        "\xE7\x08\x00\x09\x04\xD0\x00\x34\xF0\x7F"s,
        "\x63\xFF\xFF\xFF\x7F\x09\x04\xD0\x00\x34\xF0\xFF\xFF\x7F"s,
        "\xF3\x00"s,                          // a table
        "\x6D\x08\x08\0\0\0\0\0\0\xF0\x7F"s,  // infinity
    };
    for (const Bytes& wire : cases)
        EXPECT_THROW(parameterOf(wire), ProtocolError) << testing::PrintToString(wire);
}

TEST(PreparedStatements, DeclarationsStandInTheStatementsFirstLine) {
    const auto text = [](std::string value) {
        return Parameter{"", false, {tsql::TypeId::NVarChar, 10, 0, 0}, std::move(value)};
    };
    const Parameter two{"", false, {tsql::TypeId::Int, 0, 0, 0}, "2"};
    const Parameter out{"@b", true, {tsql::TypeId::Int, 0, 0, 0}, {}};
    PreparedStatements statements;
    RpcBatch batch = statements.batchFor(
        {"sp_executesql", {text("SELECT\n@a"), text("@a decimal(9,2), @b int OUTPUT"), two, out}});
    EXPECT_EQ(batch.text,
              "DECLARE @a decimal(9,2) = 2 DECLARE @b int = NULL SELECT\n@a\nSELECT @b AS [<tds output>]");
    EXPECT_THROW(statements.batchFor({"sp_executesql", {text("SELECT @a"), text("@a int")}}), RpcError);

    batch = statements.batchFor({"sp_prepare", {out, text("@a int"), text("SELECT @a")}});
    EXPECT_EQ(batch.text, "");
    const Parameter handle{"", false, {tsql::TypeId::Int, 0, 0, 0}, batch.known.at(0).value};
    EXPECT_EQ(statements.batchFor({"SP_EXECUTE", {handle, two}}).text, "DECLARE @a int = 2 SELECT @a");
    statements.batchFor({"sp_unprepare", {handle}});
    EXPECT_THROW(statements.batchFor({"sp_execute", {handle, two}}), RpcError);
    EXPECT_THROW(statements.batchFor({"sp_prepexec", {}}), RpcError);
}

}  // namespace
}  // namespace tds
