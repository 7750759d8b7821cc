// Results larger than memory: the server keeps one block, whatever the speed of the reader.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "ByteReader.h"
#include "ServerProcess.h"

namespace support {
namespace {

constexpr std::size_t kDigits = 10;  // rows of the table Digits
constexpr std::size_t kFlat = 8 * kMebibyte;

// 10 to the power of `digits` rows of a number and a text.
std::string manyRows(int digits) {
    std::string tables = "Digits d0";
    for (int i = 1; i < digits; ++i) tables += " CROSS JOIN Digits d" + std::to_string(i);
    return "SELECT d0.i, d0.text FROM " + tables;
}

class StreamingTest : public testing::Test {
  protected:
    StreamingTest() {
        std::string batch = "CREATE TABLE Digits (i int, text varchar(40))";
        for (std::size_t i = 0; i < kDigits; ++i)
            batch += " INSERT INTO Digits VALUES (" + std::to_string(i) + ", 'a text of usual length')";
        ask(*reader, batch);
        EXPECT_EQ(answer(*reader) & 2U, 0U);
    }

    TsqlBox box;
    std::unique_ptr<RawClient> reader = loggedIn(box);
};

// Row count of the DONE token that ends a response.
std::uint64_t rowCount(std::string_view lastPacket) {
    tds::ByteReader reader(lastPacket.substr(lastPacket.size() - 8));
    return reader.number(8);
}

TEST_F(StreamingTest, AMillionRowsNeedNoMemory) {
    const ServerMemory memory(box);
    ask(*reader, manyRows(6));
    std::string body;
    for (bool last = false; !last;) body = reader->packetBody(last);
    ASSERT_GE(body.size(), 13U);
    EXPECT_EQ(rowCount(body), 1'000'000U);
    EXPECT_LT(memory.peakGrowth(), kFlat);
}

TEST_F(StreamingTest, WaitsForAReaderThatStopsUntilItDisconnects) {
    const std::size_t threads = threadsOf(box);
    {
        const auto stuck = loggedIn(box);
        const ServerMemory memory(box);
        ask(*stuck, manyRows(9));
        bool last = false;
        stuck->packetBody(last);
        EXPECT_FALSE(last);
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        EXPECT_LT(memory.peakGrowth(), kFlat);
        EXPECT_TRUE(isServed(*reader));
        EXPECT_EQ(threadsOf(box), threads + 1);
    }
    EXPECT_TRUE(becomesTrue([&] { return threadsOf(box) == threads; }));
    EXPECT_TRUE(isServed(*reader));
}

}  // namespace
}  // namespace support
