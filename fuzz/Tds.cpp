// What a client sends to the server: its messages cut into packets, and the content of each.
#include <sys/socket.h>
#include <unistd.h>

#include "Fuzz.h"
#include "Login.h"
#include "PacketChannel.h"
#include "Rpc.h"
#include "messages/SqlError.h"
#include "types/Utf16.h"

namespace {

constexpr std::size_t kMostBytes = 64 << 10;  // what the socket takes without a reader

// Runs a step that may refuse its input, and in no other way than the protocol's own.
template <typename Step>
void refusable(Step step) {
    try {
        step();
    } catch (const tds::ProtocolError&) {
    } catch (const tsql::SqlError&) {
    } catch (const tds::ConnectionClosed&) {
    }
}

void readContent(tds::ByteView content) {
    refusable([&] { tds::preloginReply(content); });
    refusable([&] { tds::parseLogin(content); });
    refusable([&] {
        tds::PreparedStatements statements;
        for (tsql::ProcedureCall& call : tds::parseRpc(content)) statements.plan(std::move(call));
    });
    tsql::utf16FromUtf8(tsql::utf8FromUtf16(content));
}

void readPackets(tds::ByteView stream, bool loggedIn) {
    int ends[2];
    fuzz::require(socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0);
    fuzz::require(send(ends[0], stream.data(), stream.size(), 0) == static_cast<ssize_t>(stream.size()));
    close(ends[0]);
    tds::PacketChannel channel(ends[1], 1);
    if (!loggedIn) channel.setLoginDeadline(tds::PacketChannel::Clock::now() + std::chrono::seconds(60));
    refusable([&] {
        for (;;) {
            channel.attentionArrived();
            readContent(channel.readRequest().data);
        }
    });
    close(ends[1]);
}

}  // namespace

// The first byte says how the rest is taken.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0 || size > kMostBytes) return 0;
    const tds::ByteView rest = fuzz::textOf(data + 1, size - 1);
    if (data[0] % 3 == 0)
        readContent(rest);
    else
        readPackets(rest, data[0] % 3 == 1);
    return 0;
}
