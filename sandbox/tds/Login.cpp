#include "Login.h"

#include "ByteWriter.h"

namespace tds {
namespace {

enum PreloginOption : std::uint8_t { kVersion, kEncryption, kInstance, kThread, kMars, kTerminator = 0xFF };
constexpr char kMarsOff = 0;

constexpr std::size_t kMaxFieldCharacters = 128;
constexpr std::uint8_t kIntegratedSecurity = 0x80;

// The newest supported version that is not newer than the client's.
Version negotiatedVersion(std::uint32_t requested) {
    // The lower half is a build number, which differs between clients.
    for (const Version version : {Version::V74, Version::V73B, Version::V73A, Version::V72, Version::V71})
        if (requested >> 16 >= static_cast<std::uint32_t>(version) >> 16) return version;
    throw ProtocolError("TDS versions before 7.1 are not supported");
}

// Reads the next pair of offset and length and returns the string they point to.
ByteView readField(ByteReader& reader) {
    const std::size_t offset = reader.u16();
    const std::size_t characters = reader.u16();
    if (characters > kMaxFieldCharacters)
        throw ProtocolError("a login field is longer than " + std::to_string(kMaxFieldCharacters) +
                            " characters");
    return reader.at(offset, 2 * characters);
}

// Reads the field of the client's first token, whose length is in bytes. A longer one than 16 bits can count
// has its length behind the fields of the attached database and the new password.
Bytes readSspi(ByteReader& reader) {
    constexpr std::size_t kLongToken = 0xFFFF;
    const std::size_t offset = reader.u16();
    std::size_t length = reader.u16();
    if (length == kLongToken) {
        reader.skip(8);
        if (const std::size_t longLength = reader.u32(); longLength != 0) length = longLength;
    }
    return Bytes(reader.at(offset, length));
}

// Clients obfuscate the password: they swap the halves of each byte, then XOR it with 0xA5.
std::string plainPassword(ByteView field) {
    Bytes wire(field);
    for (char& c : wire) {
        const unsigned byte = static_cast<unsigned char>(c) ^ 0xA5U;
        c = static_cast<char>((byte << 4 | byte >> 4) & 0xFF);
    }
    return utf8FromUtf16(wire);
}

}  // namespace

Encryption parsePrelogin(ByteView request) {
    constexpr std::uint8_t kEncryptionValues = 0x03;  // the bits above ask for a client certificate
    Encryption encryption = Encryption::None;
    ByteReader reader(request);
    for (std::uint8_t option = reader.u8(); option != kTerminator; option = reader.u8()) {
        const std::size_t offset = reader.u16BigEndian();
        const std::size_t length = reader.u16BigEndian();
        const ByteView value = reader.at(offset, length);
        if (option == kEncryption && !value.empty())
            encryption = static_cast<Encryption>(value.front() & kEncryptionValues);
    }
    return encryption;
}

Encryption negotiate(Encryption server, Encryption client) {
    using enum Encryption;
    if (server == None || (client == None && server != Required)) return None;
    if (client == On || client == Required) return On;
    return server == Login ? Login : Required;
}

Bytes preloginReply(Encryption encryption) {
    ByteWriter version;
    version.bigEndian(std::uint64_t{kServerVersion} << 16, 6);  // and the sub-build, 0
    const std::pair<PreloginOption, Bytes> options[] = {{kVersion, version.data()},
                                                        {kEncryption, {static_cast<char>(encryption)}},
                                                        {kInstance, {'\0'}},
                                                        {kThread, {}},
                                                        {kMars, {kMarsOff}}};
    constexpr std::size_t kOptionEntrySize = 5;  // option, offset, length
    const std::size_t headSize = std::size(options) * kOptionEntrySize + sizeof kTerminator;
    ByteWriter head;
    Bytes data;
    for (const auto& [option, value] : options) {
        head.u8(option);
        head.bigEndian(headSize + data.size(), 2);
        head.bigEndian(value.size(), 2);
        data += value;
    }
    head.u8(kTerminator);
    return head.data() + data;
}

Login parseLogin(ByteView request) {
    ByteReader reader(request);
    if (reader.u32() != request.size())
        throw ProtocolError("the length field of the login differs from the length of its message");
    Login login;
    login.version = negotiatedVersion(reader.u32());
    const std::size_t packetSize = reader.u32();
    if (packetSize != 0) login.packetSize = std::clamp(packetSize, kMinPacketSize, kMaxPacketSize);
    reader.skip(13);  // client program version, process id, connection id, first option flags
    const bool isIntegrated = (reader.u8() & kIntegratedSecurity) != 0;
    reader.skip(10);  // type flags, third option flags, time zone, locale
    login.hostName = utf8FromUtf16(readField(reader));
    login.userName = utf8FromUtf16(readField(reader));
    login.password = plainPassword(readField(reader));
    login.programName = utf8FromUtf16(readField(reader));
    readField(reader);  // server name
    reader.skip(4);     // feature extensions: not acknowledged, hence not in effect
    readField(reader);  // client library
    readField(reader);  // language
    login.database = utf8FromUtf16(readField(reader));
    reader.skip(6);  // client id
    if (isIntegrated) login.sspi = readSspi(reader);
    return login;
}

}  // namespace tds
