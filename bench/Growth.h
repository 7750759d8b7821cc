// `--growth`: costs against sizes.
#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace bench {

class Bench;

// A table of tab-separated values, from which scripts/bench.sh makes a table and a plot of
// docs/performance.md.
class Series {
  public:
    // Creates FOLDER/NAME.tsv. The first line has the columns' names; the first column is the size.
    Series(const std::filesystem::path& folder, const std::string& name,
           const std::vector<std::string>& columns);
    // Adds a line, and prints it.
    void add(std::size_t size, const std::vector<double>& values);

  private:
    std::string m_name;
    std::ofstream m_file;
};

// Each writes one series or more.
void growRows(Bench& bench, const std::filesystem::path& folder);
void growOutput(Bench& bench, const std::filesystem::path& folder);
void growPackage(Bench& bench, const std::filesystem::path& folder);
void growConcurrency(Bench& bench, const std::filesystem::path& folder);
void growJournal(Bench& bench, const std::filesystem::path& folder);

}  // namespace bench
