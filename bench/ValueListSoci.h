#pragma once

#include <string>
#include <vector>

namespace bench {

// Reads rows of an integer and two strings as row texts.
void readWithSoci(const std::string& connectionString, const char* query, char separator,
                  std::vector<std::string>& rows);

}  // namespace bench
