// Accepts clients and gives each a thread of its own, until told to stop.
#pragma once

#include <atomic>
#include <list>
#include <string>
#include <thread>

#include "ClientConnection.h"
#include "Engine.h"
#include "Options.h"
#include "Socket.h"

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
    struct Client {
        Client(Socket connected, int id) : socket(std::move(connected)), sessionId(id) {}

        Socket socket;
        int sessionId;
        std::atomic<bool> ended = false;
        std::thread thread;
    };

    bool waitForEvent(bool& clientWaits);
    void acceptClient();
    void serve(Client& client);
    void joinEnded();
    int freeSessionId() const;

    const Options& m_options;
    tsql::Engine& m_engine;
    tds::ConnectionSettings m_settings;
    Socket m_socket;
    Socket m_signals;      // a signalfd
    Socket m_clientEnded;  // an eventfd, so that a thread that has ended is joined at once
    std::list<Client> m_clients;
};

}  // namespace server
