#include "Login.h"

#include <algorithm>

#include "ByteWriter.h"

namespace tds {
namespace {

constexpr std::size_t kMostFieldCharacters = 128;
constexpr std::uint8_t kIntegratedSecurity = 0x80;
constexpr std::size_t kLeastPacket = 512;
constexpr std::size_t kMostPacket = 32767;
constexpr std::size_t kUsualPacket = 4096;

Version versionFor(std::uint32_t asked) {
    for (const Version version : {Version::V74, Version::V73B, Version::V73A, Version::V72, Version::V71}) {
        // Clients differ in the build part of the number.
        if (asked >> 16 >= static_cast<std::uint32_t>(version) >> 16) return version;
    }
    throw ProtocolError("the client speaks a version of the protocol before 7.1");
}

std::size_t packetSizeFor(std::uint32_t asked) {
    return asked == 0 ? kUsualPacket : std::clamp<std::size_t>(asked, kLeastPacket, kMostPacket);
}

// The next offset and length pair of the fixed part, and the field it points to.
ByteView field(ByteReader& reader) {
    const std::size_t offset = reader.u16();
    const std::size_t characters = reader.u16();
    if (characters > kMostFieldCharacters) throw ProtocolError("a field of the login is too long");
    return reader.at(offset, 2 * characters);
}

// The client swaps each byte's halves, then turns over some of the bits: no secret, the undoing is public.
std::string clearPassword(ByteView field) {
    Bytes wire(field);
    for (char& c : wire) {
        const unsigned byte = static_cast<unsigned char>(c) ^ 0xA5U;
        c = static_cast<char>((byte << 4 | byte >> 4) & 0xFF);
    }
    return utf8FromUtf16(wire);
}

}  // namespace

Login parseLogin(ByteView request) {
    ByteReader reader(request);
    if (reader.u32() != request.size()) throw ProtocolError("the login's length is not that of its message");
    Login login;
    login.version = versionFor(reader.u32());
    login.packetSize = packetSizeFor(reader.u32());
    reader.skip(13);  // program version, process, connection, first option flags
    login.integrated = (reader.u8() & kIntegratedSecurity) != 0;
    reader.skip(10);  // type flags, third option flags, time zone, locale
    login.hostName = utf8FromUtf16(field(reader));
    login.userName = utf8FromUtf16(field(reader));
    login.password = clearPassword(field(reader));
    login.programName = utf8FromUtf16(field(reader));
    field(reader);   // server name
    reader.skip(4);  // feature extensions: none is acknowledged, so none is in force
    field(reader);   // client library
    field(reader);   // language
    login.database = utf8FromUtf16(field(reader));
    return login;
}

}  // namespace tds
