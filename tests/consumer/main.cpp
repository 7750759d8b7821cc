// Calls every exported operation of the installed library against a running sample installation.
// Arguments: the installation's folder, its server, login and the file with its password.
#include <fstream>

#include "Check.h"

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: consumer FOLDER SERVER LOGIN PASSWORD-FILE\n");
        return 2;
    }
    Site site{argv[1], argv[2], argv[3], {}, std::string(argv[1]) + "/logs/consumer.log"};
    std::getline(std::ifstream(argv[4]) >> std::ws, site.password);

    Checks checks;
    checkHostFacts(site, checks);
    checkDatabase(site, checks);
    checkScripts(site, checks);
    std::printf("%d passed, %d failed\n", checks.passed, checks.failed);
    return checks.failed == 0 ? 0 : 1;
}
