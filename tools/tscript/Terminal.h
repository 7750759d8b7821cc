// What a standard stream leads to, and how much decoration it bears.
#pragma once

#include <cstddef>

bool isTerminal(int fd);
// A terminal on which colour and moving text are welcome: TERM is set and not "dumb", NO_COLOR is unset or
// empty.
bool isLivelyTerminal(int fd);
std::size_t terminalWidth(int fd);  // columns, at least 20; 80 where the terminal does not tell
