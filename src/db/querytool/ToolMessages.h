// Error messages of SQL Server in the query tool's output file.
#pragma once

#include <string>

// Notes a cause for each message "Msg 208, Level 16, State 1, Server NAME, Procedure NAME, Line 2" at the end
// of the file with the text on the line below it; the procedure may be missing. Messages of severity 10 and
// below are no errors. Reads the last 64 KiB of the file, in UTF-8 or, as the tool writes it with option
// "-u", in UTF-16. Does nothing for a file that cannot be read.
void noteToolMessages(const std::string& path);
