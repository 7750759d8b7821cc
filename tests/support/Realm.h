// A Kerberos realm, EXAMPLE.TEST, with a KDC on loopback and everything else in a temporary folder.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "TempDir.h"

namespace support {

// The realm of this process and its children while the object lives (KRB5_CONFIG, KRB5CCNAME). Its clients
// are person and other.
class Realm {
  public:
    Realm();  // starts the KDC; throws std::runtime_error
    ~Realm();
    Realm(const Realm&) = delete;
    Realm& operator=(const Realm&) = delete;

    std::string keytab() const { return m_folder / "server.keytab"; }
    std::string clientKeytab() const { return m_folder / "client.keytab"; }  // person's keys come first
    // Selects the file of tickets that this process and its children use from now on.
    void useTickets(const std::string& name) const;
    // Adds a service principal and its keys in the keytab, which a running server reads at its next login.
    void addService(int port) const;
    void changeServiceKeys(int port) const;  // in the KDC only
    void deleteService(int port) const;
    // Gets a ticket with kinit, whose options may follow, and makes it the one that clients use.
    void logIn(const std::string& client, std::vector<std::string> options = {}) const;
    void logOut() const;
    void stopKdc();

  private:
    void run(std::vector<std::string> command, const std::string& input = {}) const;
    void startKdc();

    TempDir m_folder;
    pid_t m_kdc = -1;
};

}  // namespace support
