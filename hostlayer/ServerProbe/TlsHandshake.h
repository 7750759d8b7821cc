// The TLS handshake inside PRELOGIN packets: [MS-TDS] 2.2.6.5.
#pragma once

#include <ctime>
#include <string>

#include "PacketStream.h"

namespace hostlayer {

struct TlsResult {
    std::string protocol;  // "TLSv1.2"
    std::string
        certificateProblem;      // a clause about the certificate: "has expired on 2021-01-01"; empty: valid
    std::time_t validUntil = 0;  // end of the certificate's validity
};

// Shakes hands with TLS 1.2 or later, whatever the certificate, which is verified with the CA file (empty:
// the host's trusted authorities) and the host's name or address. Throws ProbeFailure.
TlsResult shakeHands(const PacketStream& stream, const std::string& host, const std::string& caFile);

}  // namespace hostlayer
