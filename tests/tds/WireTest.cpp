// Formats of the protocol: strings, login packets, parameters, calls.
#include <gtest/gtest.h>

#include "ByteWriter.h"
#include "Credentials.h"
#include "Login.h"
#include "RawClient.h"
#include "Requests.h"
#include "WireType.h"

namespace tds {
namespace {

TEST(Utf16, InvalidBytesBecomeReplacementCharacters) {
    using namespace std::string_literals;
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"aö€", "a\0\xF6\0\xAC\x20"s, "aö€"},
        {"😀", "\x3D\xD8\x00\xDE"s, "😀"},
        {"\xC3", "\xFD\xFF", "\xEF\xBF\xBD"},                                                  // cut short
        {"\xC0\xAF", "\xFD\xFF\xFD\xFF", "\xEF\xBF\xBD\xEF\xBF\xBD"},                          // overlong
        {"\xED\xA0\x80", "\xFD\xFF\xFD\xFF\xFD\xFF", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},  // a surrogate
    };
    for (const auto& [utf8, wire, back] : cases) {
        EXPECT_EQ(utf16FromUtf8(utf8), wire);
        EXPECT_EQ(utf8FromUtf16(wire), back);
    }
    EXPECT_EQ(utf8FromUtf16("\x3D\xD8"), "\xEF\xBF\xBD") << "a high surrogate at the end";
    EXPECT_EQ(utf8FromUtf16("\x00\xDE\x41\x00"s), "\xEF\xBF\xBD\x41") << "a low one alone";
    EXPECT_EQ(utf8FromCodePage1252("\x80\xE4"), "€ä");
}

TEST(Login, ReadsItsFields) {
    const Login login = parseLogin(support::loginPacket("sa", "päss;", "db1"));
    EXPECT_EQ(login.userName, "sa");
    EXPECT_EQ(login.password, "päss;");
    EXPECT_EQ(login.database, "db1");
    EXPECT_EQ(login.version, Version::V74);
}

TEST(Login, ComparesTheNameWithoutCaseAndThePasswordExactly) {
    const Credentials credentials("Sa", "secretä");
    EXPECT_TRUE(credentials.match("sA", "secretä"));
    for (const auto& [name, password] : {std::pair("sa", "Secretä"), {"sa", ""}, {"nobody", "secretä"}})
        EXPECT_FALSE(credentials.match(name, password)) << name;
}

// Type name and value, in storage form, of a parameter on the wire.
std::string parameterOf(const Bytes& typeAndValue) {
    ByteReader in(typeAndValue);
    const WireType type = readTypeInfo(in);
    const tsql::Value value = readValue(in, type);
    EXPECT_TRUE(in.atEnd());
    return tsql::displayName(type.type) + " " +
           (tsql::isNull(value) ? "NULL" : tsql::textOf(tsql::viewOf(value), type.type));
}

TEST(Parameter, ReadsEveryTypeExactly) {
    using namespace std::string_literals;
    const Bytes collation("\x09\x04\xD0\x00\x34", 5);
    const std::pair<Bytes, const char*> cases[] = {
        {"\x38\xFE\xFF\xFF\xFF"s, "int -2"},
        {"\x26\x01\x01\xC8"s, "tinyint 200"},
        {"\x26\x08\x08\0\0\0\0\0\0\0\x80"s, "bigint -9223372036854775808"},
        {"\x68\x01\x01\x01"s, "bit 1"},
        {"\x26\x04\x00"s, "int NULL"},
        {"\x1F"s, "int NULL"},
        {"\x6D\x08\x08\0\0\0\0\0\0\xF8\x3F"s, "float 1.5"},
        {"\x6E\x08\x08\xFF\xFF\xFF\xFF\xC7\xCF\xFF\xFF"s, "money -1.23"},
        {"\x6C\x09\x12\x04\x09\x00\x05\0\0\0\0\0\0\0"s, "decimal(18,4) -0.0005"},
        {"\x6A\x0D\x1C\x00\x0D\x01\0\0\0\0\0\0\0\0\x01\0\0\0"s, "decimal(28,0) 18446744073709551616"},
        {"\x6C\x11\x26\x26\x11\x00\x01"s + Bytes(15, '\0'),
         "decimal(38,38) -0.00000000000000000000000000000000000001"},
        {"\x6F\x08\x08\x01\0\0\0\x2C\x01\0\0"s, "datetime Jan  2 1900 12:00AM"},
        {"\x28\x03\x5B\x95\x0A"s, "date 1900-01-01"},
        {"\x29\x00\x03\x7F\x51\x01"s, "time(0) 23:59:59"},
        {"\x2A\x02\x06\x01\x00\x00\x5B\x95\x0A"s, "datetime2(2) 1900-01-01 00:00:00.01"},
        {"\x2B\x03\x09\x40\x77\x1B\x00\x5B\x95\x0A\x4A\x01"s,
         "datetimeoffset(3) 1900-01-01 06:00:00.000 +05:30"},
        {"\x24\x10\x10\xFF\x19\x96\x6F\x86\x8B\x11\xD0\xB4\x2D\x00\xC0\x4F\xC9\x64\xFF"s,
         "uniqueidentifier 6F9619FF-8B86-D011-B42D-00C04FC964FF"},
        {"\xE7\x08\x00"s + collation + "\x06\x00'\0\n\0\xE4\0"s, "nvarchar(4) '\nä"},
        {"\xA7\x05\x00"s + collation + "\x01\x00\x80"s, "varchar(5) €"},
        {"\xE7\xFF\xFF"s + collation + Bytes(8, '\xFF'), "nvarchar(max) NULL"},
        {"\xA7\xFF\xFF"s + collation + "\xFE" + Bytes(7, '\xFF') + "\x01\0\0\0a\x01\0\0\0b\0\0\0\0"s,
         "varchar(max) ab"},
        {"\x63\xFE\xFF\xFF\x7F"s + collation + "\x02\0\0\0A\0"s, "nvarchar(max) A"},
    };
    for (const auto& [wire, parameter] : cases) EXPECT_EQ(parameterOf(wire), parameter);
}

TEST(Parameter, RejectsValuesOutsideTheirType) {
    using namespace std::string_literals;
    const std::pair<Bytes, std::string> cases[] = {
        {"\x6F\x08\x08\xFF\xFF\xFF\x7F\0\0\0\0"s, "datetime"},  // past the year 9999
        {"\x6F\x08\x08\0\0\xF6\xFF\0\0\0\0"s, "datetime"},      // before 1753
        {"\x28\x03\xFF\xFF\xFF"s, "date"},
        {"\x29\x00\x03\xFF\xFF\xFF"s, "time"},                          // past midnight
        {"\x2B\x00\x08\0\0\0\x5B\x95\x0A\x49\x03"s, "datetimeoffset"},  // 14:01
        {"\x6D\x08\x08\0\0\0\0\0\0\xF0\x7F"s, "float"},                 // infinity
    };
    for (const auto& [wire, type] : cases) try {
            parseRpc("\1\0p\0\0\0\0\0\x1F\2@\0a\0\0"s + wire);
            ADD_FAILURE() << "accepted: " << testing::PrintToString(wire);
        } catch (const tsql::SqlError& error) {
            EXPECT_EQ(error.number, 8023);
            EXPECT_NE(std::string(error.what()).find("Parameter 2 (\"@a\")"), std::string::npos);
            EXPECT_NE(std::string(error.what()).find("data type " + type), std::string::npos) << error.what();
        }
}

}  // namespace
}  // namespace tds
