// Fixture of the benchmarks: an installation, a server, and the comparison of measured code with a reference.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "SampleInstallation.h"
#include "TsqlBox.h"

namespace bench {

struct Options {
    bool quick = false;      // a twentieth of the work
    bool bigProcess = true;  // also start child processes while this process holds 4 GiB
    int rounds = 5;          // the best time of each side counts
};

// Limit that a ratio should keep. It is printed next to the ratio and not enforced.
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
    Step prepare = [] {};  // runs before each round and is not timed
};

class Bench {
  public:
    explicit Bench(const Options& options) : m_options(options) {}

    const Options& options() const { return m_options; }
    std::size_t scaled(std::size_t full) const { return m_options.quick ? full / 20 : full; }

    support::SampleInstallation& installation() { return m_installation; }

    // Returns the server. The first call starts it, with the sample databases, and makes it the
    // installation's.
    const support::TsqlBox& box();

    // Writes an encrypted package with these statements into the installation.
    void writePackage(const std::string& name, const std::string& statements);

    // Runs both sides alternately and prints a line. The ratio is measured time by reference time; with
    // atLeast(), measured speed by reference speed.
    void compare(const std::string& name, Bar bar, const Sides& sides) const;
    // Best times of both sides in seconds, of `runs` runs in each round.
    std::pair<double, double> bestTimes(int runs, const Step& measured, const Step& reference) const;
    static void print(const std::string& name, double ratio, Bar bar, const std::string& absolute);

  private:
    Options m_options;
    support::SampleInstallation m_installation;
    std::unique_ptr<support::TsqlBox> m_box;
};

double secondsOf(const Step& step);

// Growth of the process's memory: its peak since construction less its size at construction.
class PeakMemory {
  public:
    PeakMemory();
    std::size_t bytes() const;

  private:
    std::size_t m_before;
};

// Returns the value in bytes of a line of /proc/PID/status; `process` is the PID, or "self".
std::size_t processStatus(const std::string& process, const std::string& name);

// Throws std::runtime_error with the message unless the work succeeded: a failure makes the time meaningless.
void check(bool succeeded, std::string_view message);

// Reads a whole file in one call.
std::string readOnce(const std::string& path);

std::string milliseconds(double seconds);
std::string megabytes(std::size_t bytes);

}  // namespace bench
