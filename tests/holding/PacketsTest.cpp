// Clients that violate the protocol: their connection is closed, others are not affected.
#include <gtest/gtest.h>

#include "ByteWriter.h"
#include "ServerProcess.h"

namespace support {
namespace {

using namespace std::string_literals;

constexpr std::uint8_t kMoreFollows = 0;
constexpr std::size_t kLoginPairs = 36, kLoginPairCount = 9, kUnreadPair = 5;

struct Case {
    std::string what;
    bool loggedIn;
    std::string bytes;
};

std::string littleEndian(std::uint64_t number, std::size_t width) {
    tds::ByteWriter out;
    out.number(number, width);
    return out.data();
}

std::string changed(std::string bytes, std::size_t offset, const std::string& part) {
    return bytes.replace(offset, part.size(), part);
}

std::string header(std::size_t length) {
    return {kSqlBatch, 1, static_cast<char>(length >> 8), static_cast<char>(length), 0, 0, 1, 0};
}

// A call of sp_executesql with one parameter: its bytes after the name and the flags.
std::string call(const std::string& parameter) {
    return packet(kRpc, batchPacket("") + "\xFF\xFF\x0A\0\0\0\0\0"s + parameter);
}

const std::string kCollation = "\x09\x04\xD0\0\x34"s;

std::vector<Case> packetCases() {
    std::vector<Case> cases = {
        {"an unknown type", false, packet(0x47, "GET / HTTP/1.1")},
        {"an unknown type later", true, packet(0x47, "GET / HTTP/1.1")},
        {"a response", true, packet(4, "\xFD\0\0\0\0\0\0\0\0\0\0\0\0"s)},
        {"a packet longer than was agreed", true, packet(kSqlBatch, batchPacket(std::string(4000, ' ')))},
        {"packets of two types in a message", true,
         packet(kSqlBatch, batchPacket("SELECT"), kMoreFollows) + packet(kRpc, "")},
        {"an attention with a body", true, packet(kAttention, "body")},
    };
    for (const std::size_t length : {0U, 7U, 32768U, 65535U})
        for (const bool in : {false, true})
            cases.push_back({"a packet of " + std::to_string(length) + " bytes", in, header(length)});
    return cases;
}

std::vector<Case> loginCases() {
    const std::string login = loginPacket("sa", "x");
    const std::string part = packet(kLogin7, std::string(32000, 'x'), kMoreFollows);
    std::vector<Case> cases = {
        {"a batch before the login", false, packet(kSqlBatch, batchPacket("SELECT 1"))},
        {"a call before the login", false, call("")},
        {"an attention before the login", false, packet(kAttention, "")},
        {"an option outside of the prelogin", false, packet(kPrelogin, "\x00\x7F\x00\x00\x06\xFF"s)},
        {"an option longer than the prelogin", false, packet(kPrelogin, "\x00\x00\x06\xFF\xFF\xFF"s)},
        {"a prelogin without an end", false, packet(kPrelogin, "\x00\x00\x05\x00\x00"s)},
        {"a prelogin of nothing", false, packet(kPrelogin, "")},
        {"a long prelogin", false, packet(kPrelogin, std::string(5000, '\xFF'))},
        {"a prelogin after the login", true, preloginPacket()},
        {"a second login", true, packet(kLogin7, loginPacket("sa", "x"))},
        {"a login cut short", false, packet(kLogin7, login.substr(0, 40))},
        {"a login of nothing", false, packet(kLogin7, "")},
        {"a login of an old version", false, packet(kLogin7, changed(login, 4, "\0\0\0\x70"s))},
        {"a login without an end", false, part + part + part + part + part},
    };
    for (const std::uint64_t length : {0UL, 94UL, login.size() - 1, login.size() + 1, 0xFFFFFFFFUL})
        cases.push_back({"a login that calls itself " + std::to_string(length) + " bytes long", false,
                         packet(kLogin7, changed(login, 0, littleEndian(length, 4)))});
    for (std::size_t i = 0; i < kLoginPairCount; ++i) {
        if (i == kUnreadPair) continue;
        const std::string which = std::to_string(i);
        const std::size_t place = kLoginPairs + 4 * i;
        const auto with = [&](const char* pair) { return packet(kLogin7, changed(login, place, {pair, 4})); };
        cases.push_back({"login field " + which + " far away", false, with("\xFF\x7F\x01\x00")});
        cases.push_back({"login field " + which + " over the end", false, with("\x5E\x00\x40\x00")});
        cases.push_back({"login field " + which + " without bounds", false, with("\x00\x00\xFF\xFF")});
    }
    return cases;
}

std::vector<Case> requestCases() {
    const std::string unicode = "\xE7\x10\0"s + kCollation, unbounded = "\xE7\xFF\xFF"s + kCollation;
    std::vector<Case> cases = {
        {"no headers", true, packet(kSqlBatch, "")},
        {"a call whose name leaves the packet", true, packet(kRpc, batchPacket("") + "\xF0\x7F"s)},
        {"a call without its options", true, packet(kRpc, batchPacket("") + "\xFF\xFF\x0A\0"s)},
        {"a parameter's name that leaves the packet", true,
         packet(kRpc, batchPacket("") + "\xFF\xFF\x0A\0\0\0\xFF"s + "name")},
        {"a transaction request cut short", true, packet(kTransaction, batchPacket("") + "\x05"s)},
        {"a transaction's name that leaves the packet", true,
         packet(kTransaction, batchPacket("") + "\x05\0\x02\xFF"s)},
    };
    for (const std::uint64_t length : {0UL, 3UL, 4096UL, 0x7FFFFFFFUL, 0xFFFFFFFFUL})
        cases.push_back({"headers of " + std::to_string(length) + " bytes", true,
                         packet(kSqlBatch, changed(batchPacket("SELECT 1"), 0, littleEndian(length, 4)))});
    const std::pair<const char*, std::string> parameters[] = {
        {"no type", ""},
        {"an integer of three bytes", "\x26\x03\x03\x01\x02\x03"},
        {"an integer longer than any", "\x26\x04\x05\x01\x02\x03\x04\x05"},
        {"an integer cut short", "\x26\x04\x04\x01"},
        {"a bit of two bytes", "\x68\x01\x02\x01\x01"},
        {"a decimal of 39 digits", "\x6A\x11\x27\0\0"s},
        {"a decimal with more places than digits", "\x6A\x11\x05\x06\0"s},
        {"a decimal of 18 bytes", "\x6A\x11\x26\0\x12"s + std::string(18, '\1')},
        {"a time of eight digits", "\x29\x08\0"s},
        {"a time of one byte", "\x29\x07\x01\x01"},
        {"text that leaves the packet", unicode + "\xF0\x7F"},
        {"long text that leaves the packet", "\x63\xFF\xFF\xFF\x7F"s + kCollation + "\xF0\xFF\xFF\x7F"},
        {"chunks of text that leave the packet",
         unbounded + "\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s + "\xF0\xFF\xFF\x7F"},
        {"chunks of text without an end", unbounded + "\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x02\0\0\0a\0"s},
    };
    for (const auto& [what, bytes] : parameters) cases.push_back({what, true, call(bytes)});
    return cases;
}

void expectClosed(const TsqlBox& box, const Case& each) {
    SCOPED_TRACE(each.what);
    RawClient client(box.port());
    if (each.loggedIn) {
        ASSERT_TRUE(client.logIn(box.login(), box.password()));
    }
    client.send(each.bytes);
    EXPECT_NO_THROW(EXPECT_TRUE(client.isClosed()));
}

TEST(Packets, MalformedOnesCloseTheirConnectionOnly) {
    const TsqlBox box;
    const auto bystander = loggedIn(box);
    const auto all = {packetCases(), loginCases(), requestCases()};
    const auto round = [&] {
        for (const auto& cases : all)
            for (const Case& each : cases) expectClosed(box, each);
    };
    round();  // memory allocated once and kept
    const ServerMemory memory(box);
    round();
    EXPECT_LT(memory.growth(), 8 * kMebibyte);
    EXPECT_TRUE(isServed(*bystander));
    EXPECT_TRUE(stillServes(box));
}

TEST(Packets, UnsupportedTypesAndValuesGetAnError) {
    const TsqlBox box;
    const auto client = loggedIn(box);
    // An unknown type, a date of a table out of range, an offset of 14:01, a schema, a date and a decimal out
    // of range.
    for (const std::string& parameter :
         {"\x01"s, "\xF3\0\0\x01t\0\x01\0\0\0\0\0\0\0\x28\0\0\x01\x03\xFF\xFF\xFF\0"s,
          "\x2B\x07\x0A"s + std::string(8, '\0') + "\x49\x03"s, "\xF1\x01"s, "\x28\x03\xFF\xFF\xFF"s,
          "\x6C\x11\x26\x00\x11\x01"s + std::string(16, '\xFF')}) {
        client->send(call(parameter));
        EXPECT_EQ(answer(*client), 2U);
        EXPECT_TRUE(isServed(*client));
    }
}

// Bytes beyond the limit are read and discarded, so that the client gets the error.
TEST(Packets, EndlessRequestsAreKeptUpToALimit) {
    const TsqlBox box;
    const auto bystander = loggedIn(box);
    const ServerMemory memory(box);
    const std::string chunk = littleEndian(4000, 4) + std::string(4000, 'x');
    const std::string callStart = call("\xE7\xFF\xFF"s + kCollation + "\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s);
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"a batch", packet(kSqlBatch, batchPacket("SELECT 1"), kMoreFollows),
         packet(kSqlBatch, std::string(4000, ' '), kMoreFollows)},
        {"chunks of a parameter", changed(callStart, 1, "\0"s), packet(kRpc, chunk, kMoreFollows)},
        {"a transaction request", packet(kTransaction, "", kMoreFollows),
         packet(kTransaction, "x", kMoreFollows)},
    };
    constexpr std::size_t kEnough = 100 * kMebibyte;
    for (const auto& [what, first, more] : cases) {
        SCOPED_TRACE(what);
        const auto client = loggedIn(box);
        client->send(first);
        std::string block;
        while (block.size() < kMebibyte) block += more;
        for (std::size_t sent = 0; sent < kEnough; sent += block.size()) client->send(block);
        client->send(packet(static_cast<std::uint8_t>(first[0]), ""));
        EXPECT_EQ(answer(*client), 2U);
        EXPECT_TRUE(isServed(*client));
        EXPECT_TRUE(isServed(*bystander));
    }
    EXPECT_LT(memory.peakGrowth(), 256 * kMebibyte);
    EXPECT_TRUE(becomesTrue([&] { return memory.growth() < 32 * kMebibyte; }));
}

}  // namespace
}  // namespace support
