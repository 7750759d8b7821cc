// Golden scripts: each *.sql of the folder runs in a session of an empty server and prints the output
// recorded in it.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <regex>

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
    const auto session = tsql::openSession(engine, {"sa"}, "master", 51);
    EXPECT_EQ(tsql::test::runScript(*session, script), script);
}

// A batch as words: names and numbers, strings, or single other characters.
std::vector<std::string> wordsOf(const std::string& batch) {
    static const std::regex word(R"('(?:[^']|'')*'|[@#\w]+|[^\s])");
    return {std::sregex_token_iterator(batch.begin(), batch.end(), word), {}};
}

// Batches of the scripts with one word exchanged for another one of the same script: most are errors, and
// every error is one of SQL Server's.
TEST_P(Scripts, VariantsFailInTheTermsOfSqlServer) {
    constexpr int kVariantsOfABatch = 8;
    const std::regex endless("WHILE|GOTO|WAITFOR|BACKUP", std::regex::icase);
    const auto batches = tsql::test::batchesOf(contentOf(fs::path(TSQL_SCRIPTS) / (GetParam() + ".sql")));
    std::vector<std::string> words;
    for (const std::string& batch : batches) std::ranges::copy(wordsOf(batch), std::back_inserter(words));
    const support::TempDir directory;
    tsql::Engine engine(directory.path());
    const auto session = tsql::openSession(engine, {"sa"}, "master", 51);
    std::mt19937 random(1);  // NOLINT(cert-msc51-cpp): the same batches each time
    const auto anyOf = [&](auto& list) -> auto& {
        return list[random() % list.size()];
    };
    for (const std::string& batch : batches) {
        for (int variant = 0; variant < kVariantsOfABatch; ++variant) {
            auto changed = wordsOf(batch);
            anyOf(changed) = anyOf(words);
            std::string text;
            for (const std::string& word : changed) text += word + ' ';
            if (std::regex_search(text, endless)) continue;
            const std::string output = tsql::test::runBatch(*session, text);
            EXPECT_EQ(output.find("could not run the statement"), std::string::npos) << text << '\n'
                                                                                     << output;
        }
        tsql::test::runBatch(*session, batch);
    }
}

INSTANTIATE_TEST_SUITE_P(Tsql, Scripts, testing::ValuesIn(scripts()),
                         [](const auto& script) { return script.param; });

}  // namespace
