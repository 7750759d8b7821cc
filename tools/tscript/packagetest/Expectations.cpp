#include "packagetest/Expectations.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <string_view>

#include "console/Outcome.h"
#include "console/TextWidth.h"
#include "package/PackageFile.h"

namespace {

constexpr std::uintmax_t kMostGiB = 1;
constexpr std::size_t kMostTests = 1000;
constexpr int kHighestExitCode = 255;

// Returns what is wrong; empty if the value was stored.
using Store = std::string (*)(PackageTest& test, const std::string& value);

struct Key {
    std::string_view name;
    Store store;
};

template <std::vector<std::string> PackageTest::*list>
std::string append(PackageTest& test, const std::string& value) {
    (test.*list).push_back(value);
    return {};
}

std::string storeParameter(PackageTest& test, const std::string& value) {
    test.parameters.push_back(value);
    return value.find('=') == value.npos ? "a parameter is NAME=VALUE" : "";
}

std::string storeExitCode(PackageTest& test, const std::string& value) {
    const char* end = value.data() + value.size();
    const auto [stop, error] = std::from_chars(value.data(), end, test.exitCode);
    const bool isCode =
        error == std::errc() && stop == end && test.exitCode >= 0 && test.exitCode <= kHighestExitCode;
    return isCode ? "" : "an exit code is a number from 0 to 255";
}

std::string storeRow(PackageTest& test, const std::string& value) {
    if (test.queries.empty()) return "a row follows its query";
    test.queries.back().rows.push_back(value);
    return {};
}

constexpr Key kKeys[] = {
    {"setup", append<&PackageTest::setup>},
    {"value", append<&PackageTest::values>},
    {"parameter", storeParameter},
    {"exit", storeExitCode},
    {"output", append<&PackageTest::outputLines>},
    {"contains", append<&PackageTest::contained>},
    {"absent", append<&PackageTest::absent>},
    {"error", append<&PackageTest::errors>},
    {"query",
     [](PackageTest& test, const std::string& value) -> std::string {
         test.queries.push_back({value, {}});
         return {};
     }},
    {"row", storeRow},
};

// "key: value"; one blank after the colon does not count.
class Reader {
  public:
    explicit Reader(std::string file) : m_file(std::move(file)) {}

    void readLine(const std::string& line) {
        ++m_line;
        if (!isUtf8(line) || line.find('\0') != line.npos || line.find('\r') != line.npos)
            throwFailure("text is UTF-8 without carriage returns and NUL bytes");
        if (line.empty() || line.front() == '#') return;
        const std::size_t colon = line.find(':');
        if (colon == line.npos) throwFailure("a line is KEY: VALUE");
        const std::string key = line.substr(0, colon);
        const std::size_t begin = line.compare(colon + 1, 1, " ") == 0 ? colon + 2 : colon + 1;
        storeValue(key, line.substr(begin));
    }

    std::vector<PackageTest> finish() {
        if (m_tests.empty())
            throw Failure(ExitCode::kUsage, m_file + " has no test", "A test begins with test: NAME");
        return std::move(m_tests);
    }

  private:
    void storeValue(const std::string& name, const std::string& value) {
        if (name == "test") return addTest(value);
        const Key* key = std::find_if(std::begin(kKeys), std::end(kKeys),
                                      [&](const Key& each) { return each.name == name; });
        if (key == std::end(kKeys)) throwFailure("the key '" + name.substr(0, 40) + "' is unknown");
        if (m_tests.empty()) throwFailure("the first line is test: NAME");
        const std::string problem = key->store(m_tests.back(), value);
        if (!problem.empty()) throwFailure(problem);
    }

    void addTest(const std::string& name) {
        if (name.empty()) throwFailure("a test has a name");
        if (m_tests.size() == kMostTests) throwFailure("more than " + std::to_string(kMostTests) + " tests");
        for (const PackageTest& other : m_tests)
            if (other.name == name) throwFailure("a second test of that name");
        m_tests.push_back({.name = name, .line = m_line});
    }

    [[noreturn]] void throwFailure(const std::string& what) const {
        throw Failure(ExitCode::kUsage, m_file + ", line " + std::to_string(m_line) + ": " + what,
                      "docs/package-format.md describes the file.");
    }

    std::string m_file;
    std::size_t m_line = 0;
    std::vector<PackageTest> m_tests;
};

}  // namespace

std::vector<PackageTest> readExpectations(const std::string& file) {
    std::ifstream in = openPackageFile(file, kMostGiB);
    Reader reader(file);
    for (std::string line; std::getline(in, line);) reader.readLine(line);
    requireReadToEnd(in, file);
    return reader.finish();
}
