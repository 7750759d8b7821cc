// Listening socket of tsqlbox. Serves each client in a thread of its own.
#pragma once

#include "ClientConnection.h"
#include "FileDescriptor.h"
#include "Options.h"

namespace server {

// Blocks SIGTERM and SIGINT for the calling thread and those that it starts, so that only the Listener
// receives them, and ignores SIGXFSZ. To be called before any thread starts.
void blockStopSignals();

class Listener {
  public:
    // Starts to listen. The stop signals must be blocked. The arguments must outlive the object. Throws
    // std::runtime_error.
    Listener(const Options& options, const tds::Credentials& credentials, tsql::Engine& engine);
    ~Listener();  // ends all sessions and waits for their threads

    std::string address() const;  // for example "127.0.0.1:14330"
    // Serves clients until SIGTERM, SIGINT or, if the options say so, the end of standard input.
    void run();

  private:
    void acceptClient();
    void startSession(FileDescriptor client, std::uint32_t address);
    bool makePlace();
    void serve(int client, int sessionId);

    enum class State { AwaitsLogin, Served, Dropped };
    struct Client {
        FileDescriptor socket;
        std::uint32_t address;
        std::chrono::steady_clock::time_point arrival = std::chrono::steady_clock::now();
        State state = State::AwaitsLogin;
    };

    const Options& m_options;
    tds::ConnectionSettings m_settings;
    FileDescriptor m_socket;
    FileDescriptor m_signals;  // a signalfd
    std::mutex m_mutex;
    std::condition_variable m_sessionEnded;
    std::map<int, Client> m_clients;  // by session id; a session's thread deletes its entry as its last step
};

}  // namespace server
