// What a standard stream leads to, and how much decoration it bears.
#pragma once

#include <cstddef>

// The next file or socket would take the number of a standard stream that the caller has closed, and results
// would stand in a log. What takes it instead cannot be used in the stream's direction.
void occupyClosedStreams();

bool isTerminal(int fd);
// A terminal on which colour and moving text are welcome: TERM is set and not "dumb", NO_COLOR is unset or
// empty.
bool isLivelyTerminal(int fd);
std::size_t terminalWidth(int fd);  // columns, at least 20; 80 where the terminal does not tell
