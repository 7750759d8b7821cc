#include "console/Terminal.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace {

std::string_view environmentValue(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

}  // namespace

void occupyClosedStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(stream, F_GETFD) < 0) open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

bool isTerminal(int fd) {
    return isatty(fd) == 1;
}

bool isAnsiTerminal(int fd) {
    const std::string_view kind = environmentValue("TERM");
    return isTerminal(fd) && !kind.empty() && kind != "dumb" && environmentValue("NO_COLOR").empty();
}

std::size_t terminalWidth(int fd) {
    constexpr std::size_t kNarrowest = 20;
    constexpr std::size_t kUsual = 80;
    winsize size{};
    const bool isKnown = ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? std::max<std::size_t>(size.ws_col, kNarrowest) : kUsual;
}
