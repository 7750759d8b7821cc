#include "Realm.h"

#include <signal.h>
#include <stdlib.h>

#include <chrono>
#include <stdexcept>
#include <thread>

#include "Program.h"
#include "Proxy.h"

namespace support {
namespace {

std::string serviceOf(int port) {
    return "MSSQLSvc/localhost:" + std::to_string(port);
}

}  // namespace

Realm::Realm() {
    setenv("KRB5_CONFIG", (m_folder / "krb5.conf").c_str(), 1);
    setenv("KRB5_KDC_PROFILE", (m_folder / "kdc.conf").c_str(), 1);
    useTickets("tickets");
    run({REALM_SCRIPT, m_folder.path(), std::to_string(ListeningSocket().port)});
    startKdc();
}

Realm::~Realm() {
    stopKdc();
    for (const char* name : {"KRB5_CONFIG", "KRB5_KDC_PROFILE", "KRB5CCNAME"}) unsetenv(name);
}

void Realm::run(std::vector<std::string> command, const std::string& input) const {
    ProgramOptions options;
    options.input = input;
    const ProgramResult result = runProgram(command, options);
    if (result.exitCode != 0)
        throw std::runtime_error(command[0] + " failed: " + result.output + result.errors);
}

// The KDC ends with this process. It prints a line when it accepts requests.
void Realm::startKdc() {
    const Descriptor output = memoryFile();
    m_kdc = spawn({"setpriv", "--pdeathsig", "KILL", "/usr/sbin/krb5kdc", "-n"}, {},
                  {output.get(), output.get(), output.get()});
    for (int wait = 0; wait < 1000 && contentOf(output).find("starting") == std::string::npos; ++wait)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

void Realm::useTickets(const std::string& name) const {
    setenv("KRB5CCNAME", ("FILE:" + (m_folder / name).string()).c_str(), 1);
}

void Realm::addService(int port) const {
    run({"/usr/sbin/kadmin.local"},
        "addprinc -randkey " + serviceOf(port) + "\nktadd -k " + keytab() + " " + serviceOf(port) + "\n");
}

void Realm::changeServiceKeys(int port) const {
    run({"/usr/sbin/kadmin.local"}, "cpw -randkey " + serviceOf(port) + "\n");
    logIn("person");  // without the ticket for the old keys
}

void Realm::deleteService(int port) const {
    run({"/usr/sbin/kadmin.local"}, "delprinc -force " + serviceOf(port) + "\n");
    logIn("person");  // without the ticket for the service
}

void Realm::logIn(const std::string& client, std::vector<std::string> options) const {
    options.insert(options.begin(), {"kinit", "-k", "-t", clientKeytab()});
    options.push_back(client);
    run(options);
}

void Realm::logOut() const {
    run({"kdestroy", "-q"});
}

void Realm::stopKdc() {
    if (m_kdc <= 0) return;
    kill(m_kdc, SIGTERM);
    int exitCode = 0;
    waitFor(m_kdc, std::chrono::seconds(30), exitCode);
    m_kdc = -1;
}

}  // namespace support
