#include "ServerProbe.h"

#include <algorithm>

#include "PacketStream.h"
#include "TlsHandshake.h"

namespace hostlayer {
namespace {

using Demand = ProbeTarget::Demand;
using Encrypted = ServerReport::Encrypted;

constexpr const char* kNewestOfFreeTds = "TLSv1.2";

// Of a PRELOGIN message: [MS-TDS] 2.2.6.5.
enum Option : unsigned char { kVersion = 0, kEncryption = 1, kTerminator = 0xFF };
enum class Offer : char { kOff = 0, kOn = 1, kNotSupported = 2, kRequired = 3 };
constexpr std::size_t kEntrySize = 5;  // option, offset, length

std::string preloginMessage(Offer offer) {
    constexpr char kVersionSize = 6;
    constexpr char kVersionAt = 2 * kEntrySize + 1;
    constexpr char kEncryptionAt = kVersionAt + kVersionSize;
    std::string message = {kVersion, 0, kVersionAt, 0, kVersionSize, kEncryption, 0, kEncryptionAt, 0, 1};
    message += static_cast<char>(kTerminator);
    message.resize(message.size() + kVersionSize);
    return message += static_cast<char>(offer);
}

Offer offerFor(Demand demand) {
    if (demand == Demand::kNoEncryption) return Offer::kNotSupported;
    return demand == Demand::kNone ? Offer::kOff : Offer::kOn;
}

// Returns kNotSupported if the message does not hold the option.
Offer encryptionOf(const std::string& message) {
    const auto byte = [&](std::size_t i) { return std::size_t{static_cast<unsigned char>(message[i])}; };
    for (std::size_t at = 0; at + kEntrySize <= message.size() && byte(at) != kTerminator; at += kEntrySize) {
        const std::size_t offset = byte(at + 1) << 8 | byte(at + 2);
        if (byte(at) == kEncryption && offset < message.size()) return static_cast<Offer>(message[offset]);
    }
    return Offer::kNotSupported;
}

// Returns what client and server agree on. A client without encryption follows a server that requires it.
// Throws ProbeFailure if they do not agree.
Encrypted agreement(Demand demand, Offer server) {
    const bool isDemanded = demand == Demand::kEncryption || demand == Demand::kVerifiedServer;
    if (server == Offer::kNotSupported && isDemanded)
        throw ProbeFailure("the server does not support encryption");
    if (server == Offer::kOn || server == Offer::kRequired) return Encrypted::kConnection;
    const bool isOffered = server == Offer::kOff && demand != Demand::kNoEncryption;
    return isOffered ? Encrypted::kLogin : Encrypted::kNothing;
}

void examine(const ProbeTarget& target, ServerReport& report) {
    const PacketStream stream(target.host, target.port, target.limit);
    report.isLoopback = stream.isLoopback();
    stream.send(preloginMessage(offerFor(target.demand)));
    const Offer reply = encryptionOf(stream.receive("its answer to the first message"));
    report.encrypted = agreement(target.demand, reply);
    if (report.encrypted == Encrypted::kNothing) return;
    const TlsResult tls = shakeHands(stream, target.host, target.caFile);
    report.protocol = tls.protocol;
    report.certificateProblem = tls.certificateProblem;
    report.validUntil = tls.validUntil;
    if (target.demand == Demand::kVerifiedServer && !tls.certificateProblem.empty())
        report.problem = "the server's certificate " + tls.certificateProblem;
}

}  // namespace

ServerReport probeServer(const ProbeTarget& target) {
    ServerReport report;
    try {
        examine(target, report);
    } catch (const ProbeFailure& failure) {
        report.problem = failure.what();
    }
    return report;
}

std::string reasonOfFailedLogin(ProbeTarget target, std::chrono::seconds loginLimit) {
    if (loginLimit.count() > 0) target.limit = std::min<std::chrono::milliseconds>(target.limit, loginLimit);
    const ServerReport report = probeServer(target);
    const bool isTooNew = report.protocol > kNewestOfFreeTds;
    return report.problem.empty() && isTooNew
               ? "the server chooses TLS 1.3, which FreeTDS does not complete: limit the server to TLS 1.2"
               : report.problem;
}

}  // namespace hostlayer
