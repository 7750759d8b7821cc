#include <malloc.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <exception>
#include <fstream>

#include "Listener.h"
#include "SessionLimits.h"

namespace {

// Returns the first line of the file. Throws std::runtime_error if it cannot be read or is empty.
std::string readPassword(const std::filesystem::path& file) {
    const std::string name = "the password file " + file.string();
    std::ifstream in(file, std::ios::binary);
    std::string line;
    if (!std::getline(in, line) && (!in.is_open() || in.bad()))
        throw std::runtime_error("cannot read " + name + ": " + std::strerror(errno));
    line.resize(std::min(line.find('\r'), line.size()));
    if (line.empty()) throw std::runtime_error(name + " has an empty first line");
    return line;
}

}  // namespace

int main(int argc, char** argv) {
    mallopt(M_MMAP_THRESHOLD, 256 << 10);  // returns the memory of a large request to the system
    ::umask(S_IRWXG | S_IRWXO);            // database files are private in any directory
    server::blockStopSignals();
    server::countMemoryOfSqlite();
    server::countTemporaryFiles();
    const server::Options options = server::parseOptions(argc, argv);
    try {
        const tds::Credentials credentials{options.login, readPassword(options.passwordFile)};
        tsql::Engine engine(options.dataDirectory, options.backupFolders);
        server::Listener listener(options, credentials, engine);
        std::printf("listening on %s\n", listener.address().c_str());
        std::fflush(stdout);
        listener.run();
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tsqlbox: %s\n", error.what());
        return 1;
    }
}
