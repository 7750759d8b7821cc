// A message as a client receives it.
#pragma once

#include <string>

namespace tsql {

// An error or an informational text (PRINT, severity 0), as SQL Server numbers them.
struct Message {
    int number = 0;
    int severity = 0;  // "class": above 10 is an error; 20 and above ends the session
    int state = 1;
    int line = 1;           // within the batch or the procedure, from 1
    std::string procedure;  // empty outside of one
    std::string text;       // UTF-8
};

}  // namespace tsql
