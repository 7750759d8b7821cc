// Command `test`: runs a package in sample installations of its own and compares what it does with
// expectations.
#include <filesystem>
#include <memory>

#include "commands/Commands.h"
#include "console/Console.h"
#include "installation/Installation.h"
#include "packagetest/PackageTestRun.h"
#include "packagetest/TestReports.h"
#include "packing/PlainPackage.h"
#include "system/Interrupt.h"
#include "system/ResultFile.h"

namespace {

namespace fs = std::filesystem;

struct TestOptions {
    std::string plain;
    std::string expectations;
    std::string only;
    std::string format = "text";
    std::string outputFile;
};

TestedPackage packageOf(const TestOptions& options) {
    std::error_code ignored;
    const fs::path plain = fs::absolute(options.plain, ignored);
    TestedPackage package{.name = plain.stem().string(), .plain = plain.string()};
    checkScriptName(package.name);
    const PackageCheck check = checkPlainPackage(options.plain);
    if (!check.errors.empty())
        throw Failure(ExitCode::kUsage, options.plain + ": " + textWithLine(check.errors.front()),
                      "tscript lint shows all errors.");
    package.database = check.database;
    return package;
}

std::vector<PackageTest> selectedTests(const TestOptions& options) {
    const fs::path beside = fs::path(options.plain).replace_extension(".test");
    const std::string file = options.expectations.empty() ? beside.string() : options.expectations;
    std::vector<PackageTest> tests = readExpectations(file);
    if (options.only.empty()) return tests;
    std::erase_if(tests, [&](const PackageTest& test) { return test.name != options.only; });
    if (tests.empty()) throw Failure(ExitCode::kUsage, file + " has no test '" + options.only + "'");
    return tests;
}

std::string reportText(const std::string& format, const std::string& package,
                       const std::vector<TestResult>& results) {
    if (format == "tap") return tapReport(package, results);
    return format == "junit" ? junitReport(package, results) : textReport(package, results);
}

ExitCode testPackage(const TestOptions& options) {
    const TestedPackage package = packageOf(options);
    const std::vector<PackageTest> tests = selectedTests(options);
    ResultFile target(options.outputFile);
    std::vector<TestResult> results;
    bool passed = true;
    const InterruptGuard guard;
    for (const PackageTest& test : tests) {
        try {
            results.push_back(runPackageTest(package, test));
        } catch (const Failure&) {
            if (!guard.interrupted()) throw;
        }
        if (guard.interrupted()) throw Failure(ExitCode::kInterrupted, "interrupted");
        passed = passed && results.back().passed();
    }
    target.write(reportText(options.format, package.name, results));
    return passed ? ExitCode::kDone : ExitCode::kScriptFailed;
}

}  // namespace

void addTestCommand(CLI::App& app, Action& action) {
    const auto options = std::make_shared<TestOptions>();
    CLI::App* command =
        addCommand(&app, action, "test",
                   "Test a plain script: run it in fresh sample installations and compare with a file of "
                   "expectations",
                   options, testPackage);
    addOption(command, "PLAIN", options->plain, "The plain text of the script", {.required = true});
    addOption(command, "--expect", options->expectations,
              "The expectations (default: the file beside it with the extension .test)", {.type = "FILE"});
    addOption(command, "--only", options->only, "Run only the test of this name", {.type = "TEST"});
    addOption(command, "--format", options->format, "The report (default: text)",
              {.oneOf = {"text", "tap", "junit"}});
    addOption(command, "-o,--output", options->outputFile, "Write the report to this file", {.type = "FILE"});
}
