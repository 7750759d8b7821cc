#include "Growth.h"

#include <cstdio>

#include "Bench.h"

namespace bench {

Series::Series(const std::filesystem::path& folder, const std::string& name,
               const std::vector<std::string>& columns)
    : m_name(name), m_file(folder / (name + ".tsv")) {
    for (const std::string& column : columns) m_file << (&column != &columns.front() ? "\t" : "") << column;
    m_file << std::endl;
    check(m_file.good(), m_name + ".tsv cannot be written");
}

void Series::add(std::size_t size, const std::vector<double>& values) {
    std::string line = std::to_string(size);
    for (const double value : values) {
        char text[32];
        std::snprintf(text, sizeof text, "\t%.*f", value < 10 ? 3 : value < 1000 ? 1 : 0, value);
        line += text;
    }
    m_file << line << std::endl;
    std::printf("%s\t%s\n", m_name.c_str(), line.c_str());
    std::fflush(stdout);
    check(m_file.good(), m_name + ".tsv cannot be written");
}

}  // namespace bench
