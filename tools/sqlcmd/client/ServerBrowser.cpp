#include "client/ServerBrowser.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "text/Text.h"

namespace sqlcmd {
namespace {

constexpr std::uint16_t kBrowserPort = 1434;
constexpr auto kWait = std::chrono::seconds(2);
constexpr std::size_t kMaxServers = 3000;

// First bytes of the messages.
constexpr char kBroadcast = 2;          // CLNT_BCAST_EX
constexpr char kAdminPort = 15;         // CLNT_UCAST_DAC
constexpr char kResponse = 5;           // SVR_RESP
constexpr std::size_t kHeaderSize = 3;  // and the length in two bytes, little-endian

constexpr std::string_view kDefaultInstance = "MSSQLSERVER";

// UDP socket. Without a socket, nothing is sent and no answer arrives.
class Socket {
  public:
    Socket() : m_socket(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        const int on = 1;
        setsockopt(m_socket, SOL_SOCKET, SO_BROADCAST, &on, sizeof on);
    }
    ~Socket() {
        if (m_socket >= 0) close(m_socket);
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    void send(in_addr address, std::string_view message) const {
        sockaddr_in target{};
        target.sin_family = AF_INET;
        target.sin_port = htons(kBrowserPort);
        target.sin_addr = address;
        sendto(m_socket, message.data(), message.size(), 0, reinterpret_cast<const sockaddr*>(&target),
               sizeof target);
    }

    // Returns the next answer, or an empty string at the deadline.
    std::string receive(std::chrono::steady_clock::time_point deadline) const {
        using namespace std::chrono;
        std::string answer(65'535, '\0');
        for (;;) {
            const auto left = duration_cast<milliseconds>(deadline - steady_clock::now()).count();
            pollfd entry{m_socket, POLLIN, 0};
            if (left <= 0 || poll(&entry, 1, static_cast<int>(left)) <= 0) return {};
            const ssize_t size = recv(m_socket, answer.data(), answer.size(), 0);
            if (size <= 0) continue;  // ECONNREFUSED: a host without the service
            answer.resize(static_cast<std::size_t>(size));
            return answer;
        }
    }

  private:
    int m_socket;
};

// Returns the addresses to which a broadcast must be sent to reach every network and this host.
std::vector<in_addr> broadcastAddresses() {
    std::vector<in_addr> addresses{{htonl(INADDR_LOOPBACK)}, {htonl(INADDR_BROADCAST)}};
    ifaddrs* interfaces = nullptr;
    if (getifaddrs(&interfaces) != 0) return addresses;
    for (const ifaddrs* i = interfaces; i != nullptr; i = i->ifa_next) {
        const bool isBroadcast = (i->ifa_flags & IFF_BROADCAST) != 0 && i->ifa_broadaddr != nullptr &&
                                 i->ifa_addr != nullptr && i->ifa_addr->sa_family == AF_INET;
        if (isBroadcast)
            addresses.push_back(reinterpret_cast<const sockaddr_in*>(i->ifa_broadaddr)->sin_addr);
    }
    freeifaddrs(interfaces);
    return addresses;
}

std::optional<in_addr> addressOf(const std::string& host) {
    addrinfo hints{};
    hints.ai_family = AF_INET;
    addrinfo* found = nullptr;
    if (getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0) return std::nullopt;
    const in_addr address = reinterpret_cast<const sockaddr_in*>(found->ai_addr)->sin_addr;
    freeaddrinfo(found);
    return address;
}

int numberAt(std::string_view bytes, std::size_t offset) {
    return static_cast<unsigned char>(bytes[offset]) | static_cast<unsigned char>(bytes[offset + 1]) << 8;
}

bool isPrintable(std::string_view name) {
    return std::all_of(name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) > 0x20; });
}

std::string_view takeToken(std::string_view& text) {
    const std::string_view token = text.substr(0, text.find(';'));
    text.remove_prefix(std::min(token.size() + 1, text.size()));
    return token;
}

}  // namespace

// The data is "ServerName;HOST;InstanceName;NAME;…;;" for each instance.
std::vector<std::string> serversIn(std::string_view response) {
    if (response.size() < kHeaderSize || response[0] != kResponse) return {};
    std::string_view data = response.substr(kHeaderSize, static_cast<std::size_t>(numberAt(response, 1)));
    std::vector<std::string> servers;
    std::string host;
    while (!data.empty()) {
        const std::string_view key = takeToken(data);
        if (key.empty()) continue;  // between two instances
        const std::string_view value = takeToken(data);
        if (!isPrintable(value)) continue;
        if (equalsIgnoringCase(key, "ServerName")) host = value;
        if (!equalsIgnoringCase(key, "InstanceName") || host.empty()) continue;
        const bool isDefault = equalsIgnoringCase(value, kDefaultInstance);
        servers.push_back(isDefault ? host : host + "\\" + std::string(value));
    }
    return servers;
}

std::vector<std::string> findServers() {
    const Socket socket;
    for (const in_addr address : broadcastAddresses()) socket.send(address, {&kBroadcast, 1});
    const auto deadline = std::chrono::steady_clock::now() + kWait;
    std::vector<std::string> servers;
    for (std::string answer; servers.size() < kMaxServers && !(answer = socket.receive(deadline)).empty();)
        for (std::string& server : serversIn(answer)) servers.push_back(std::move(server));
    std::sort(servers.begin(), servers.end());
    servers.erase(std::unique(servers.begin(), servers.end()), servers.end());
    return servers;
}

std::optional<int> findAdminPort(const std::string& host, const std::string& instance) {
    constexpr char kVersion = 1;
    constexpr std::size_t kAnswerSize = 6;
    const std::optional<in_addr> address = addressOf(host);
    if (!address) return std::nullopt;
    const Socket socket;
    socket.send(*address, std::string{kAdminPort, kVersion} + instance + '\0');
    const std::string answer = socket.receive(std::chrono::steady_clock::now() + kWait);
    const bool isValid = answer.size() == kAnswerSize && answer[0] == kResponse && answer[3] == kVersion;
    return isValid ? std::optional(numberAt(answer, 4)) : std::nullopt;
}

}  // namespace sqlcmd
