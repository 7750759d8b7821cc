// PRELOGIN, the negotiation before a login: [MS-TDS] 2.2.6.5.
#pragma once

#include <cstdint>

#include "ByteReader.h"

namespace tds {

// Values of the option ENCRYPTION.
enum class EncryptionOption : std::uint8_t { Off = 0, On = 1, NotSupported = 2, Required = 3 };

// What a server offers.
enum class EncryptionMode : std::uint8_t {
    None,      // not supported
    Login,     // only the login is encrypted, unless the client asks for more
    On,        // everything is encrypted for clients that support it
    Required,  // like On; other clients are refused
};

// Result of the negotiation.
struct Encryption {
    enum class Extent : std::uint8_t { None, Login, Connection };
    EncryptionOption reply = EncryptionOption::NotSupported;
    Extent extent = Extent::None;
};

// Returns the client's option, NotSupported if the message has none. Throws ProtocolError for an option that
// points outside the message.
EncryptionOption parsePrelogin(ByteView request);

// The table of [MS-TDS] 2.2.6.5.
Encryption negotiate(EncryptionMode server, EncryptionOption client);

// Returns the reply to a PRELOGIN message. MARS is not supported.
Bytes preloginReply(EncryptionOption encryption);

}  // namespace tds
