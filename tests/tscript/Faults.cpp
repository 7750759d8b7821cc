#include "Faults.h"

#include <signal.h>

#include <chrono>

using support::ProgramResult;

std::string inQuotes(const std::string& word) {
    return "'" + word + "'";
}

ProgramResult Faults::runAfter(const std::string& command, const Words& words) const {
    std::string shell = command + "; exec " + inQuotes(TSCRIPT_PROGRAM);
    for (const std::string& word : words) shell += " " + inQuotes(word);
    support::ProgramOptions options;
    options.environment = {storeVariable()};
    return support::runProgram({"sh", "-c", shell}, options);
}

void Faults::expectInterrupted(Words command, int signal,
                               const std::function<std::ofstream()>& waitUntilAtWork) const {
    command.insert(command.begin(), TSCRIPT_PROGRAM);
    const support::Descriptor output = support::memoryFile();
    const support::Descriptor input = support::memoryFile();
    support::ProgramOptions options;
    options.environment = {storeVariable()};
    const pid_t pid = support::spawn(command, options, {input.get(), output.get(), output.get()});
    {
        const std::ofstream held = waitUntilAtWork();
        kill(pid, signal);
    }
    int exitCode = -1;
    EXPECT_TRUE(support::waitFor(pid, std::chrono::seconds(60), exitCode));
    EXPECT_EQ(exitCode, 130) << support::contentOf(output);
}

ProgramResult Faults::runWithSmallFiles(const Words& words) const {
    return runAfter("ulimit -f 64", words);
}
