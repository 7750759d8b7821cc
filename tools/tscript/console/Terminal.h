// Properties of the standard streams.
#pragma once

#include <cstddef>

// Opens /dev/null for every standard stream that the caller closed, in the opposite direction: using the
// stream still fails. Without this the next file or socket would get its descriptor, and results would be
// written into a log.
void occupyClosedStreams();

bool isTerminal(int fd);
// True for a terminal with colours and cursor movement: TERM is set and not "dumb", and NO_COLOR is unset or
// empty.
bool isAnsiTerminal(int fd);
std::size_t terminalWidth(int fd);  // in columns, at least 20; 80 if unknown
