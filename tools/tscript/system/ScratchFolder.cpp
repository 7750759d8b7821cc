#include "system/ScratchFolder.h"

#include <stdlib.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "console/Outcome.h"

ScratchFolder::ScratchFolder() {
    const char* folder = std::getenv("TMPDIR");
    std::string name =
        std::string(folder != nullptr && *folder != '\0' ? folder : "/tmp") + "/tscript.XXXXXX";
    if (mkdtemp(name.data()) == nullptr)
        throw Failure(ExitCode::kInstallation,
                      "cannot create a folder " + name + ": " + std::strerror(errno));
    m_path = name;
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}
