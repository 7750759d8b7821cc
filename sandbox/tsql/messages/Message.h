// A message to the client.
#pragma once

#include <string>

namespace tsql {

// An error or informational message (PRINT has severity 0).
struct Message {
    int number = 0;
    int severity = 0;  // above 10: error; 20 and above: ends the session
    int state = 1;
    int line = 1;           // line of the batch or procedure, from 1
    std::string procedure;  // empty outside of procedures
    std::string text;       // UTF-8
};

}  // namespace tsql
