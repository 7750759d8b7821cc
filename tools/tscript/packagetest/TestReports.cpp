#include "packagetest/TestReports.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "console/TextWidth.h"
#include "report/Html.h"

namespace {

// With a point in every locale.
std::string secondsText(double seconds) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.2f", seconds);
    std::replace(text.begin(), text.end(), ',', '.');
    return text.data();
}

std::string inOneLine(const std::string& text) {
    return withoutControls(text);
}

// With its line breaks, which escaped() replaces.
std::string escapedLines(const std::string& text) {
    std::string lines;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        lines += escaped(text.substr(at, end - at)) + "\n";
        at = end + 1;
    }
    return lines;
}

long failuresOf(const std::vector<TestResult>& results) {
    return std::count_if(results.begin(), results.end(),
                         [](const TestResult& result) { return !result.passed(); });
}

}  // namespace

std::string textReport(const std::string& package, const std::vector<TestResult>& results) {
    std::string text;
    for (const TestResult& result : results) {
        text += (result.passed() ? "passed  " : "FAILED  ") + inOneLine(result.name) + " (" +
                secondsText(result.seconds) + " s)\n";
        for (const std::string& fault : result.faults) text += "        " + inOneLine(fault) + "\n";
    }
    return text + package + ": " + std::to_string(results.size()) + " test(s), " +
           std::to_string(failuresOf(results)) + " failed\n";
}

std::string tapReport(const std::string& package, const std::vector<TestResult>& results) {
    std::string text =
        "TAP version 13\n1.." + std::to_string(results.size()) + "\n# " + inOneLine(package) + "\n";
    for (std::size_t i = 0; i < results.size(); ++i) {
        std::string name = inOneLine(results[i].name);
        std::replace(name.begin(), name.end(), '#', ' ');  // would begin a directive
        text += (results[i].passed() ? "ok " : "not ok ") + std::to_string(i + 1) + " - " + name + "\n";
        for (const std::string& fault : results[i].faults) text += "# " + inOneLine(fault) + "\n";
    }
    return text;
}

std::string junitReport(const std::string& package, const std::vector<TestResult>& results) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n<testsuite name=\"" +
                       escaped(package) + "\" tests=\"" + std::to_string(results.size()) + "\" failures=\"" +
                       std::to_string(failuresOf(results)) + "\" errors=\"0\">\n";
    for (const TestResult& result : results) {
        text += "<testcase classname=\"" + escaped(package) + "\" name=\"" + escaped(result.name) +
                "\" time=\"" + secondsText(result.seconds) + "\">\n";
        if (!result.passed()) {
            text += "<failure message=\"" + escaped(inOneLine(result.faults.front())) + "\">\n";
            for (const std::string& fault : result.faults) text += escaped(inOneLine(fault)) + "\n";
            text += "</failure>\n";
        }
        if (!result.output.empty()) text += "<system-out>" + escapedLines(result.output) + "</system-out>\n";
        text += "</testcase>\n";
    }
    return text + "</testsuite>\n</testsuites>\n";
}
