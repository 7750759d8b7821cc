// Accepts clients and gives each a thread of its own, until told to stop.
#pragma once

#include <condition_variable>
#include <map>
#include <mutex>
#include <string>

#include "ClientConnection.h"
#include "Descriptor.h"
#include "Engine.h"
#include "Options.h"

namespace server {

// SIGTERM and SIGINT, before any thread starts, so that the listener alone takes them, between two clients.
void blockStopSignals();

class Listener {
  public:
    // Binds and listens, once the stop signals are blocked. Throws std::runtime_error.
    Listener(const Options& options, const tds::Credentials& credentials, tsql::Engine& engine);
    ~Listener();  // ends all sessions
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    std::string address() const;  // "127.0.0.1:14330"
    // Serves until SIGTERM or SIGINT comes, or standard input ends where the options ask for that.
    void run();

  private:
    bool waitForEvent(bool& clientWaits);
    void acceptClient();
    void startSession(Descriptor client);
    void serve(int client, int sessionId);

    const Options& m_options;
    tsql::Engine& m_engine;
    tds::ConnectionSettings m_settings;
    Descriptor m_socket;
    Descriptor m_signals;  // a signalfd
    std::mutex m_mutex;
    std::condition_variable m_sessionEnded;
    std::map<int, Descriptor> m_clients;  // by session; each is its thread's, which removes it last of all
};

}  // namespace server
