// Messages of a TDS client: the packets of a stream, and the content of each kind of message.
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

#include "Fuzz.h"
#include "Login.h"
#include "PacketChannel.h"
#include "Requests.h"
#include "messages/Messages.h"
#include "types/Text.h"

namespace {

constexpr std::size_t kMaxInput = 64 << 10;  // bytes that a socket buffers without a reader
constexpr std::chrono::seconds kLoginTimeout{60};

// Runs a step that may reject its input. Exceptions other than these three are findings.
template <typename Step>
void allowRejection(Step step) {
    try {
        step();
    } catch (const tds::ProtocolError&) {
    } catch (const tsql::SqlError&) {
    } catch (const tds::ConnectionClosed&) {
    }
}

void readContent(tds::ByteView content) {
    allowRejection([&] { tds::parsePrelogin(content); });
    allowRejection([&] { tds::parseLogin(content); });
    const auto discard = [](std::span<const tsql::Column>, std::span<const tsql::CellView>) {};
    allowRejection([&] {
        for (const auto& call : tds::parseRpc(content))
            for (const auto& argument : call.arguments)
                if (argument.rows) argument.rows(discard);  // reads the rows of a table again
    });
    for (const tds::Version version : {tds::Version::V71, tds::Version::V74})
        allowRejection([&] { tds::sendBulkRows(content, version, discard); });
    tsql::utf16FromUtf8(tsql::utf8FromUtf16(content));
}

void readPackets(tds::ByteView stream, bool loggedIn) {
    int ends[2];
    fuzz::require(socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0);
    fuzz::require(send(ends[0], stream.data(), stream.size(), 0) == static_cast<ssize_t>(stream.size()));
    close(ends[0]);
    tds::PacketChannel channel(ends[1], 1);
    if (!loggedIn) channel.setLoginDeadline(tds::PacketChannel::Clock::now() + kLoginTimeout);
    allowRejection([&] {
        for (;;) {
            channel.attentionArrived();
            readContent(channel.readRequest().data);
        }
    });
    close(ends[1]);
}

}  // namespace

// The first byte selects the reader of the others: message content, or packets before or after the login.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0 || size > kMaxInput) return 0;
    const tds::ByteView rest = fuzz::textOf(data + 1, size - 1);
    const int reader = data[0] % 3;
    if (reader == 0)
        readContent(rest);
    else
        readPackets(rest, /*loggedIn=*/reader == 1);
    return 0;
}
