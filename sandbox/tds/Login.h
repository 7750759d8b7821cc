// The messages before a session: PRELOGIN, [MS-TDS] 2.2.6.5, and LOGIN7, 2.2.6.4.
#pragma once

#include "ByteReader.h"
#include "Protocol.h"

namespace tds {

// ---- PRELOGIN

// Values of the option ENCRYPTION.
enum class EncryptionOption : std::uint8_t { Off = 0, On = 1, NotSupported = 2, Required = 3 };

// What a server offers.
enum class EncryptionMode : std::uint8_t {
    None,      // not supported
    Login,     // only the login is encrypted, unless the client asks for more
    On,        // everything is encrypted for clients that support it
    Required,  // like On; other clients are refused
};

// Returns the client's option, NotSupported if the message has none. Throws ProtocolError for an option that
// points outside the message.
EncryptionOption parsePrelogin(ByteView request);

// Returns the server's reply. NotSupported: nothing is encrypted, Off: only the login is, else everything.
EncryptionOption negotiate(EncryptionMode server, EncryptionOption client);

// Returns the reply to a PRELOGIN message. MARS is not supported.
Bytes preloginReply(EncryptionOption encryption);

// ---- LOGIN7

struct Login {
    Version version = Version::V74;
    std::size_t packetSize = kDefaultPacketSize;
    Bytes sspi;               // first token of Windows authentication; empty: there is a password
    std::string hostName;     // as the client reports it
    std::string programName;  // as the client reports it; may be empty
    std::string userName;
    std::string password;
    std::string database;  // empty: the default database
};

// Parses a LOGIN7 message and limits version and packet size to what the server supports.
// Throws ProtocolError for a field outside the message or longer than 128 characters, and for a protocol
// version before 7.1.
Login parseLogin(ByteView request);

}  // namespace tds
