// Golden scripts: each *.sql of the folder runs in a session of an empty server and prints the output
// recorded in it.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "ScriptRunner.h"
#include "TempDir.h"

namespace fs = std::filesystem;

namespace {

std::string contentOf(const fs::path& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::vector<std::string> scripts() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(TSQL_SCRIPTS))
        if (entry.path().extension() == ".sql") names.push_back(entry.path().stem());
    std::sort(names.begin(), names.end());
    return names;
}

class Scripts : public testing::TestWithParam<std::string> {};

TEST_P(Scripts, PrintTheirRecordedOutput) {
    const std::string script = contentOf(fs::path(TSQL_SCRIPTS) / (GetParam() + ".sql"));
    const support::TempDir directory;
    tsql::Engine engine(directory.path());
    tsql::Session session(engine, {"sa"}, "master", 51);
    EXPECT_EQ(tsql::test::runScript(session, script), script);
}

INSTANTIATE_TEST_SUITE_P(Tsql, Scripts, testing::ValuesIn(scripts()),
                         [](const auto& script) { return script.param; });

}  // namespace
