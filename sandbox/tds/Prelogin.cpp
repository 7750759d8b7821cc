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
constexpr char kMarsOff = 0;

}  // namespace

EncryptionOption parsePrelogin(ByteView request) {
    constexpr std::uint8_t kEncryptionValues = 0x03;  // the bits above ask for a client certificate
    EncryptionOption encryption = EncryptionOption::NotSupported;
    ByteReader reader(request);
    for (std::uint8_t option = reader.u8(); option != kOptionTerminator; option = reader.u8()) {
        const std::size_t offset = reader.u16BigEndian();
        const std::size_t length = reader.u16BigEndian();
        const ByteView value = reader.at(offset, length);
        if (option == kOptionEncryption && !value.empty())
            encryption = static_cast<EncryptionOption>(value.front() & kEncryptionValues);
    }
    return encryption;
}

Encryption negotiate(EncryptionMode server, EncryptionOption client) {
    using enum EncryptionOption;
    using Extent = Encryption::Extent;
    const bool clientSupports = client != NotSupported;
    const bool serverInsists = server == EncryptionMode::Required;
    if (server == EncryptionMode::None || (!clientSupports && !serverInsists))
        return {NotSupported, Extent::None};
    if (client == On || client == Required) return {On, Extent::Connection};
    if (server == EncryptionMode::Login) return {Off, Extent::Login};
    return {Required, Extent::Connection};
}

Bytes preloginReply(EncryptionOption encryption) {
    ByteWriter version;
    version.bigEndian(kServerVersion, 4);
    version.u16(0);  // sub-build
    const std::pair<PreloginOption, Bytes> options[] = {{kOptionVersion, version.data()},
                                                        {kOptionEncryption, {static_cast<char>(encryption)}},
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
