// What every row of the benchmarks works with: an installation and a server, and the comparison of the
// measured thing with a reference.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "SampleInstallation.h"
#include "TsqlBox.h"

namespace bench {

struct Options {
    bool quick = false;      // about a twentieth of the work
    bool bigProcess = true;  // also measure child processes of a process with 4 GiB of its own
    int rounds = 5;          // of which each side's best counts
};

// What a ratio should be. It is printed beside it and judged by the reader.
struct Bar {
    enum Kind { kNone, kAtMost, kAtLeast } kind = kNone;
    double limit = 0;
};
constexpr Bar atMost(double limit) {
    return {Bar::kAtMost, limit};
}
constexpr Bar atLeast(double limit) {
    return {Bar::kAtLeast, limit};
}

using Step = std::function<void()>;

struct Sides {
    Step measured;
    Step reference;
    Step prepare = [] {};  // before each run of the measured side, untimed
};

class Bench {
  public:
    explicit Bench(const Options& options) : m_options(options) {}

    const Options& options() const { return m_options; }
    std::size_t scaled(std::size_t full) const { return m_options.quick ? full / 20 : full; }

    support::SampleInstallation& installation() { return m_installation; }
    // Started, with the sample databases, by the first call; the installation then points at it.
    const support::TsqlBox& box();
    // Enciphers a package of these statements into the installation.
    void writePackage(const std::string& name, const std::string& statements);

    // Runs both sides alternately and prints a line. The ratio is measured time over reference time; where
    // the bar is a least one, measured speed over reference speed.
    void compare(const std::string& name, Bar bar, const Sides& sides) const;
    static void print(const std::string& name, double ratio, Bar bar, const std::string& absolute);

  private:
    Options m_options;
    support::SampleInstallation m_installation;
    std::unique_ptr<support::TsqlBox> m_box;
};

double secondsOf(const Step& step);

// The most memory that the process held since this object was made, beyond what it held then.
class PeakMemory {
  public:
    PeakMemory();
    std::size_t bytes() const;

  private:
    std::size_t m_before;
};

// Throws std::runtime_error: a benchmark whose work fails has measured nothing.
void check(bool done, std::string_view what);

// The whole file by one read.
std::string readOnce(const std::string& path);

std::string milliseconds(double seconds);
std::string megabytes(std::size_t bytes);

}  // namespace bench
