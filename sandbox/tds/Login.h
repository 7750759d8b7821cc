// The messages before a session: PRELOGIN, [MS-TDS] 2.2.6.5, and LOGIN7, 2.2.6.4.
#pragma once

#include "ByteReader.h"
#include "Protocol.h"

namespace tds {

// Values of the option ENCRYPTION, and what a server offers.
enum class Encryption : std::uint8_t {
    Login = 0,     // only the login is encrypted, unless the client asks for more
    On = 1,        // everything is encrypted for clients that support it
    None = 2,      // not supported
    Required = 3,  // like On; other clients are refused
};

// Returns the client's option, None if the message has none. Throws ProtocolError for an option that points
// outside the message.
Encryption parsePrelogin(ByteView request);

// Returns the server's reply. None: nothing is encrypted, Login: only the login is, else everything.
Encryption negotiate(Encryption server, Encryption client);

// Returns the reply to a PRELOGIN message. MARS is not supported.
Bytes preloginReply(Encryption encryption);

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
