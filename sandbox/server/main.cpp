#include <malloc.h>
#include <sys/stat.h>

#include <cstdio>
#include <fstream>

#include "Listener.h"
#include "SessionLimits.h"

namespace {

constexpr std::size_t kMaxPasswordBytes = 512;

// Returns the file up to its first line end. Throws std::runtime_error for a file that cannot be read and for
// a first line that is empty or too long.
std::string readPassword(const std::filesystem::path& file) {
    const std::string name = "the password file " + file.string();
    std::ifstream in(file, std::ios::binary);
    std::string line(kMaxPasswordBytes + 1, '\0');
    in.read(line.data(), static_cast<std::streamsize>(line.size()));
    if (in.gcount() == 0 && (!in.is_open() || in.bad()))
        throw std::runtime_error("cannot read " + name + ": " + std::strerror(errno));
    line.resize(static_cast<std::size_t>(in.gcount()));
    line.resize(std::min(line.find_first_of("\r\n"), line.size()));
    if (line.empty()) throw std::runtime_error(name + " has an empty first line");
    if (line.size() > kMaxPasswordBytes)
        throw std::runtime_error("the first line of " + name + " is too long");
    return line;
}

}  // namespace

int main(int argc, char** argv) {
    mallopt(M_MMAP_THRESHOLD, 256 << 10);  // returns the memory of a large request to the system
    ::umask(S_IRWXG | S_IRWXO);            // database files are private in any directory
    server::blockStopSignals();
    server::countResources();
    const server::Options options = server::parseOptions(argc, argv);
    try {
        const tds::Credentials credentials(options.login, readPassword(options.passwordFile));
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
