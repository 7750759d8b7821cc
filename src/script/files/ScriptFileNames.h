// Paths of a run's files. Time, process id and rand() make those of concurrent runs different. A double quote
// or a slash in a script's name becomes "_".
#pragma once

#include <string>

// Path of a temporary file, "<script>_<pid>_<time>_<random><ending>". The folder is the configuration's
// "sSCRIPTSTEMPDIR" if it is not empty, otherwise "dZEPHRATEMPDIR", even if it is empty, otherwise the
// working directory.
std::string scratchPath(const std::string& scriptName, const char* ending);

// Path of the query tool's output file: "<log folder>/Tscript_<database>_<script>_<time>_<random>.log".
std::string outputPath(const std::string& logDir, const std::string& dbName, const std::string& scriptName);
