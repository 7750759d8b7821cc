// LOGIN7, the login message: [MS-TDS] 2.2.6.4.
#pragma once

#include "ByteReader.h"
#include "Protocol.h"

namespace tds {

struct Login {
    Version version = Version::V74;
    std::size_t packetSize = kDefaultPacketSize;
    bool integrated = false;  // Windows authentication
    Bytes sspi;               // with it, the client's first token
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
