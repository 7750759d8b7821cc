// Runs the built command line in a sample installation that it makes itself.
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Program.h"
#include "TempDir.h"

namespace fs = std::filesystem;

using Words = std::vector<std::string>;

// The store is what ZEPHRA_REGISTRY names.
support::ProgramResult tscript(Words words, const std::string& input = {},
                               const std::string& store = "/nowhere");

struct Case {
    Words words;
    int exitCode;
    std::string output;  // parts of standard output and standard error
    std::string errors;
    std::string input = {};
};
void expectCases(const std::vector<Case>& cases, const std::string& store = "/nowhere");
std::string joined(const Words& words);  // for a failure's trace

mode_t modeOf(const fs::path& path);
void replaceInFile(const fs::path& path, const std::string& from, const std::string& to);
// The package's records behind its seal.
std::string withoutSeal(const fs::path& package);
// The names in a listing of one row a line, joined by ",".
std::string namesIn(const support::ProgramResult& listing);
pid_t serverOf(const fs::path& folder);  // of a sample installation, by its pid file

// A command that runs beside the test, in a process group of its own.
class Background {
  public:
    Background(Words words, const Words& environment);
    pid_t pid() const { return m_pid; }
    std::string output() const { return support::contentOf(m_output); }  // of both streams so far
    int end() const;  // waits for it, four minutes at most; returns its exit code

  private:
    const support::Descriptor m_output = support::memoryFile();
    pid_t m_pid;
};

// Up for the length of a test.
class Installation : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    std::string store() const { return folder / "registry.toml"; }
    std::string storeVariable() const { return "ZEPHRA_REGISTRY=" + store(); }
    support::ProgramResult run(const Words& words, const std::string& input = {}) {
        return tscript(words, input, store());
    }
    Background start(const Words& words) const { return {words, {storeVariable()}}; }
    void expectAll(const std::vector<Case>& cases) { expectCases(cases, store()); }
    void pack(const std::string& name, const std::string& text);
    void packBody(const std::string& name, const std::string& body) {
        pack(name, "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\n" + body);
    }
    void packEndless();  // "Endless", a script that runs until it is stopped
    // Journal rows of a script, newest first: "status|parameters|".
    std::string journal(const std::string& script);

    support::TempDir m_temp;
    const fs::path folder = m_temp / "in;# st";
};
