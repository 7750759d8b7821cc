// Refused, slow and missing logins; addresses the server listens on.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "ServerProcess.h"

namespace support {
namespace {

using Clients = std::vector<std::unique_ptr<RawClient>>;

constexpr std::chrono::milliseconds kLeastRefusal{250};

// Response to a refused login, without the user name in it.
std::string refusal(const TsqlBox& box, const std::string& user, const std::string& password) {
    RawClient client(box.port());
    client.send(preloginPacket());
    client.response();
    client.send(packet(kLogin7, loginPacket(user, password)));
    std::string text = client.response();
    EXPECT_TRUE(client.isClosed());
    const std::string name = loginPacket(user, "").substr(94);
    if (const auto place = text.find(name); place != std::string::npos) text.erase(place, name.size());
    return text;
}

TEST(Logins, ThatAreRefusedGetTheSameAnswerAfterADelay) {
    const TsqlBox box;
    const auto start = std::chrono::steady_clock::now();
    const std::string wrongPassword = refusal(box, box.login(), "wrong");
    EXPECT_GE(std::chrono::steady_clock::now() - start, kLeastRefusal);
    EXPECT_EQ(finalStatus(wrongPassword), 2U);
    const auto again = std::chrono::steady_clock::now();
    EXPECT_EQ(refusal(box, "nn", "wrong").substr(8), wrongPassword.substr(8));
    EXPECT_GE(std::chrono::steady_clock::now() - again, kLeastRefusal);
    EXPECT_EQ(refusal(box, "nn", box.password()), refusal(box, "nn", ""));
}

TEST(Logins, InAFloodAreCheckedAFewAtATime) {
    constexpr int kFlood = 500;
    const TsqlBox box({"--max-connections", "600", "--login-timeout", "60"});
    const auto bystander = loggedIn(box);
    const ServerMemory memory(box);
    Clients flood;
    for (int i = 0; i < kFlood; ++i) {
        flood.push_back(std::make_unique<RawClient>(box.port()));
        flood.back()->send(preloginPacket());
        flood.back()->send(packet(kLogin7, loginPacket(i % 2 ? box.login() : "nobody", "guess")));
    }
    EXPECT_TRUE(isServed(*bystander));
    EXPECT_TRUE(stillServes(box));
    for (const auto& client : flood) {
        client->response();  // to the prelogin
        EXPECT_EQ(finalStatus(client->response()), 2U);
        EXPECT_TRUE(client->isClosed());
    }
    EXPECT_LT(memory.peakGrowth(), 192 * kMebibyte);
    EXPECT_TRUE(becomesTrue([&] { return memory.growth() < 32 * kMebibyte; }));
}

TEST(Logins, MustEndInTime) {
    const TsqlBox box({"--login-timeout", "1"});
    const auto slow = loggedIn(box);
    Clients silent;
    const std::string starts[] = {"", "\x12", preloginPacket(), packet(kPrelogin, "", /*status=*/0)};
    for (std::size_t i = 0; i < 100; ++i) {
        silent.push_back(std::make_unique<RawClient>(box.port()));
        silent.back()->send(starts[i % std::size(starts)]);
    }
    RawClient dripping(box.port());
    const std::string login = packet(kLogin7, loginPacket(box.login(), box.password()));
    ASSERT_GT(login.size(), 100U);
    dripping.send(preloginPacket());
    std::thread drip([&] {
        for (const char byte : login.substr(0, login.size() - 1)) {
            dripping.send({&byte, 1});
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    });
    EXPECT_TRUE(stillServes(box));
    for (const auto& client : silent) EXPECT_TRUE(client->isClosed());
    EXPECT_TRUE(dripping.isClosed());
    drip.join();
    // No time limit after the login.
    for (const char byte : packet(kSqlBatch, batchPacket("SELECT 1"))) {
        slow->send({&byte, 1});
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    EXPECT_EQ(answer(*slow), 0x10U);
}

// A full server drops the client whose login it has awaited for the longest.
TEST(Logins, SilentClientsKeepNobodyOut) {
    const TsqlBox box({"--max-connections", "8", "--login-timeout", "3600"});
    const auto first = loggedIn(box);
    Clients silent;
    for (int i = 0; i < 20; ++i) silent.push_back(std::make_unique<RawClient>(box.port()));
    EXPECT_TRUE(stillServes(box));
    for (std::size_t i = 0; i < 12; ++i) EXPECT_TRUE(silent[i]->isClosed()) << i;
    EXPECT_TRUE(isServed(*first));
    const auto second = loggedIn(box);
    EXPECT_TRUE(isServed(*second));
}

TEST(Logins, AreAcceptedFromThisHostUnlessRemoteIsAllowed) {
    const TempDir folder;
    writeFile(folder / "password", "secret\n");
    const auto listenOn = [&](const std::string& address, const std::vector<std::string>& more) {
        std::vector<std::string> command = {tsqlboxProgram(), "--port=0", "--login=sa", "--stop-at-eof"};
        command.insert(command.end(), {"--data", folder / "data", "--password-file", folder / "password"});
        command.insert(command.end(), {"--listen", address});
        command.insert(command.end(), more.begin(), more.end());
        return runProgram(command);
    };
    EXPECT_EQ(listenOn("127.0.0.2", {}).exitCode, 0);
    for (const char* address : {"0.0.0.0", "192.0.2.1"}) {
        const ProgramResult refused = listenOn(address, {});
        EXPECT_EQ(refused.exitCode, 1) << address;
        EXPECT_NE(refused.errors.find("--allow-remote"), std::string::npos) << refused.errors;
    }
    const ProgramResult told = listenOn("0.0.0.0", {"--allow-remote"});
    EXPECT_EQ(told.exitCode, 0) << told.errors;
    EXPECT_NE(told.output.find("listening on 0.0.0.0:"), std::string::npos) << told.output;
}

}  // namespace
}  // namespace support
