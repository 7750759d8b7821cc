// A connection to a server that ends before the login, to find out how the server encrypts, and why a login
// fails: FreeTDS reports every failed handshake and certificate with the same words. No name or password is
// sent.
#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>
#include <string>

namespace hostlayer {

struct ProbeTarget {
    // What a login with these settings demands of the server.
    enum class Demand : std::uint8_t {
        kNoEncryption,  // the client supports it only if the server requires it
        kNone,          // the client supports it
        kEncryption,
        kVerifiedServer
    };

    std::string host{};
    std::string port{};
    Demand demand = Demand::kNone;
    std::string caFile{};  // empty: the host's trusted authorities
    std::chrono::milliseconds limit{3000};
};

struct ServerReport {
    enum class Encrypted : std::uint8_t { kNothing, kLogin, kConnection };

    // Why no login that meets the demand can follow, as a clause; empty: it can. A failure other than that of
    // the certificate leaves the other members unknown.
    std::string problem;
    bool isLoopback = false;
    Encrypted encrypted = Encrypted::kNothing;
    std::string protocol;            // "TLSv1.2"; empty without encryption
    std::string certificateProblem;  // "has expired on 2021-01-01"; empty: valid, also if not demanded
    std::time_t validUntil = 0;      // end of the certificate's validity
};

// Takes at most the target's limit and the time to resolve the name. Never throws for what the server does.
ServerReport probeServer(const ProbeTarget& target);

// Returns the reason, as a clause, for which FreeTDS could not log in to the target: the report's problem, or
// TLS 1.3, which FreeTDS 1.3 does not complete. Empty: not known. Takes no longer than the login was allowed
// to (0: no limit), and the time to resolve the name.
std::string reasonOfFailedLogin(ProbeTarget target, std::chrono::seconds loginLimit);

}  // namespace hostlayer
