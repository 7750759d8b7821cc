#include "Bench.h"

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <limits>
#include <stdexcept>

#include "DVUtilities/commonFunc.h"

namespace bench {
namespace {

std::string barText(Bar bar) {
    if (bar.kind == Bar::kNone) return "-";
    char text[32];
    std::snprintf(text, sizeof text, "%s %.2f", bar.kind == Bar::kAtMost ? "<=" : ">=", bar.limit);
    return text;
}

}  // namespace

const support::TsqlBox& Bench::box() {
    if (!m_box) {
        m_box = std::make_unique<support::TsqlBox>();
        support::SampleInstallation::loadSchema(*m_box);
        m_installation.useServer(*m_box);
    }
    return *m_box;
}

void Bench::writePackage(const std::string& name, const std::string& statements) {
    const support::TempDir folder;
    support::writeFile(folder / "plain",
                       "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\n" + statements);
    const std::string package = m_installation.homeFolder() / "Scripts" / (name + ".sql");
    std::string error;
    check(EncryptFile((folder / "plain").c_str(), package.c_str(), error), error);
}

void Bench::compare(const std::string& name, Bar bar, const Sides& sides) const {
    double measured = std::numeric_limits<double>::infinity();
    double reference = measured;
    for (int round = 0; round < m_options.rounds; ++round) {
        sides.prepare();
        measured = std::min(measured, secondsOf(sides.measured));
        reference = std::min(reference, secondsOf(sides.reference));
    }
    print(name, bar.kind == Bar::kAtLeast ? reference / measured : measured / reference, bar,
          milliseconds(measured) + " against " + milliseconds(reference));
}

std::pair<double, double> Bench::bestTimes(int runs, const Step& measured, const Step& reference) const {
    std::pair<double, double> best(std::numeric_limits<double>::infinity(),
                                   std::numeric_limits<double>::infinity());
    for (int run = 0; run < runs * m_options.rounds; ++run) {
        best.first = std::min(best.first, secondsOf(measured));
        best.second = std::min(best.second, secondsOf(reference));
    }
    return best;
}

void Bench::print(const std::string& name, double ratio, Bar bar, const std::string& absolute) {
    std::printf("%-28s %8.2f  %-8s (%s)\n", name.c_str(), ratio, barText(bar).c_str(), absolute.c_str());
    std::fflush(stdout);
}

double secondsOf(const Step& step) {
    const auto start = std::chrono::steady_clock::now();
    step();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

PeakMemory::PeakMemory() {
    constexpr int kResetPeak = 5;  // proc(5), /proc/pid/clear_refs
    malloc_trim(/*pad=*/0);
    std::ofstream("/proc/self/clear_refs") << kResetPeak << std::flush;
    m_before = processStatus("self", "VmRSS:");
}

std::size_t PeakMemory::bytes() const {
    const std::size_t peak = processStatus("self", "VmHWM:");
    return peak > m_before ? peak - m_before : 0;
}

std::size_t processStatus(const std::string& process, const std::string& name) {
    const std::string path = "/proc/" + process + "/status";
    std::ifstream status(path);
    for (std::string word; status >> word;) {
        std::size_t kilobytes = 0;
        if (word == name && status >> kilobytes) return kilobytes * 1024;
    }
    throw std::runtime_error(path + " has no " + name);
}

void check(bool succeeded, std::string_view message) {
    if (!succeeded) throw std::runtime_error(std::string(message));
}

std::string readOnce(const std::string& path) {
    std::string content(std::filesystem::file_size(path), '\0');
    std::ifstream file(path, std::ios::binary);
    check(file.read(content.data(), static_cast<std::streamsize>(content.size())).good(), path);
    return content;
}

std::string milliseconds(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.*f ms", seconds < 0.1 ? 3 : 0, seconds * 1e3);
    return text;
}

std::string megabytes(std::size_t bytes) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f MB", static_cast<double>(bytes) / 1e6);
    return text;
}

}  // namespace bench
