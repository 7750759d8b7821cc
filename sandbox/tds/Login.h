// LOGIN7, the message that asks for a session: [MS-TDS] 2.2.6.4.
#pragma once

#include "ByteReader.h"
#include "Protocol.h"

namespace tds {

struct Login {
    Version version = Version::V74;
    std::size_t packetSize = 4096;
    bool integrated = false;  // a login without a password, by the operating system
    std::string hostName;     // the client's, as it says
    std::string programName;  // empty: it says none, as of its host
    std::string userName;
    std::string password;
    std::string database;  // empty: the server's choice
};

// Throws ProtocolError for a field that leaves the message or is longer than 128 characters,
// and for a version of the protocol before 7.1.
Login parseLogin(ByteView request);

}  // namespace tds
