#include "Prelogin.h"

#include <utility>

#include "ByteWriter.h"
#include "Protocol.h"

namespace tds {
namespace {

enum PreloginOption : std::uint8_t {
    kOptionVersion = 0,
    kOptionEncryption = 1,
    kOptionInstance = 2,
    kOptionThread = 3,
    kOptionMars = 4,
    kOptionTerminator = 0xFF,
};
constexpr char kEncryptionNotSupported = 2;
constexpr char kMarsOff = 0;

// Throws ProtocolError for an option outside the message. Values are ignored: whatever the client asks for,
// the reply is the same.
void checkPrelogin(ByteView request) {
    ByteReader reader(request);
    while (reader.u8() != kOptionTerminator) {
        const std::size_t offset = reader.u16BigEndian();
        const std::size_t length = reader.u16BigEndian();
        static_cast<void>(reader.at(offset, length));
    }
}

}  // namespace

Bytes preloginReply(ByteView request) {
    checkPrelogin(request);
    ByteWriter version;
    version.bigEndian(kServerVersion, 4);
    version.u16(0);  // sub-build
    const std::pair<PreloginOption, Bytes> options[] = {{kOptionVersion, version.data()},
                                                        {kOptionEncryption, {kEncryptionNotSupported}},
                                                        {kOptionInstance, {'\0'}},
                                                        {kOptionThread, {}},
                                                        {kOptionMars, {kMarsOff}}};
    constexpr std::size_t kOptionEntrySize = 5;  // option, offset, length
    const std::size_t headSize = std::size(options) * kOptionEntrySize + sizeof kOptionTerminator;
    ByteWriter head;
    Bytes data;
    for (const auto& [option, value] : options) {
        head.u8(option);
        head.bigEndian(headSize + data.size(), 2);
        head.bigEndian(value.size(), 2);
        data += value;
    }
    head.u8(kOptionTerminator);
    return head.data() + data;
}

}  // namespace tds
