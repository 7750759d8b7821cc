// Paths of a run's files. Time, process id and rand() keep those of concurrent runs apart. A double
// quote in a script's name becomes "_".
#pragma once

#include <string>

// A file for the run's own use: "<script>_<pid>_<time>_<random><ending>" in the folder that the configuration
// names for scripts ("sSCRIPTSTEMPDIR", when not empty), else in its temporary folder ("dZEPHRATEMPDIR", even
// when empty), else in the working directory.
std::string scratchPath(const std::string& scriptName, const char* ending);

// The query tool's output: "<log folder>/Tscript_<database>_<script>_<time>_<random>.log".
std::string outputPath(const std::string& logDir, const std::string& dbName, const std::string& scriptName);
