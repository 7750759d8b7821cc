#include <malloc.h>
#include <sys/stat.h>

#include <cstdio>
#include <exception>

#include "Listener.h"
#include "Options.h"
#include "execute/Engine.h"

namespace {

void serve(const server::Options& options) {
    const tds::Credentials credentials(options.login, server::readPassword(options.passwordFile));
    tsql::Engine engine(options.dataDirectory);
    server::Listener listener(options, credentials, engine);
    std::printf("listening on %s\n", listener.address().c_str());
    std::fflush(stdout);
    listener.run();
}

}  // namespace

int main(int argc, char** argv) {
    mallopt(M_MMAP_THRESHOLD, 256 << 10);  // what a big request took is given back with it
    ::umask(S_IRWXG | S_IRWXO);            // the databases are private in whatever folder they stand
    server::blockStopSignals();
    const server::Options options = server::parseOptions(argc, argv);
    try {
        serve(options);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tsqlbox: %s\n", error.what());
        return 1;
    }
}
