#include "Installation.h"

#include <sys/stat.h>

#include <fstream>
#include <sstream>

using support::ProgramResult;

namespace {

// A process that has ended and only waits to be collected does not.
bool runs(pid_t pid) {
    std::error_code gone;
    return pid > 0 && !fs::read_symlink("/proc/" + std::to_string(pid) + "/exe", gone).empty();
}

}  // namespace

ProgramResult tscript(Words words, const std::string& input, const std::string& store) {
    words.insert(words.begin(), TSCRIPT_PROGRAM);
    support::ProgramOptions options;
    options.input = input;
    options.environment = {"ZEPHRA_REGISTRY=" + store};
    return support::runProgram(words, options);
}

std::string joined(const Words& words) {
    std::string text = "tscript";
    for (const std::string& word : words) text += " " + word.substr(0, 60);
    return text;
}

void expectCases(const std::vector<Case>& cases, const std::string& store) {
    for (const Case& c : cases) {
        SCOPED_TRACE(joined(c.words));
        const ProgramResult result = tscript(c.words, c.input, store);
        EXPECT_EQ(result.exitCode, c.exitCode) << result.output << result.errors;
        EXPECT_NE(result.output.find(c.output), std::string::npos) << result.output << result.errors;
        EXPECT_NE(result.errors.find(c.errors), std::string::npos) << result.errors;
    }
}

mode_t modeOf(const fs::path& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

std::string withoutSeal(const fs::path& package) {
    const std::string records = support::readFile(package);
    return records.substr(records.find('\n') + 1);
}

std::string namesIn(const ProgramResult& listing) {
    EXPECT_EQ(listing.exitCode, 0) << listing.errors;
    std::string names;
    std::istringstream lines(listing.output);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t begin = line.find('\t') + 1;
        names += (names.empty() ? "" : ",") + line.substr(begin, line.find('\t', begin) - begin);
    }
    return names;
}

pid_t serverOf(const fs::path& folder) {
    std::ifstream in(folder / "tsqlbox.pid");
    pid_t pid = -1;
    in >> pid;
    return pid;
}

void replaceInFile(const fs::path& path, const std::string& from, const std::string& to) {
    std::string text = support::readFile(path);
    const std::size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << from << " in " << path;
    support::writeFile(path, text.replace(at, from.size(), to));
}

Background::Background(Words words, const Words& environment) {
    words.insert(words.begin(), TSCRIPT_PROGRAM);
    support::ProgramOptions options;
    options.environment = environment;
    m_pid = support::spawn(words, options, {m_output.get(), m_output.get(), m_output.get()});
}

int Background::end() const {
    int exitCode = -1;
    EXPECT_TRUE(support::waitFor(m_pid, std::chrono::minutes(4), exitCode)) << output();
    return exitCode;
}

void Installation::SetUp() {
    const ProgramResult result = tscript({"sandbox", "up", "--dir", folder});
    ASSERT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(result.output, "export ZEPHRA_REGISTRY='" + store() + "'\n");
}

void Installation::TearDown() {
    const pid_t server = serverOf(folder);
    EXPECT_EQ(tscript({"sandbox", "down", "--dir", folder}).exitCode, 0);
    EXPECT_FALSE(runs(server)) << "the server still runs";
}

void Installation::pack(const std::string& name, const std::string& text) {
    support::writeFile(m_temp / (name + ".txt"), text);
    const ProgramResult result = run({"pack", m_temp / (name + ".txt")});
    ASSERT_EQ(result.exitCode, 0) << result.errors;
}

void Installation::packEndless() {
    pack("Endless",
         "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nDECLARE @i int\nSET @i = 0\n"
         "WHILE @i < 2000000000 SET @i = @i + 1\n");
}

std::string Installation::journal(const std::string& script) {
    pack("Journal",
         "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nSET NOCOUNT ON\n"
         "SELECT CONVERT(varchar(9), status) + '|' + inputParams + '|' FROM ZpTscriptExec\n"
         "WHERE name = '%s' ORDER BY id DESC\n");
    return run({"run", "Journal", "-p", script}).output;
}
