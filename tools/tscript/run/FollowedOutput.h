// Output of a running script, read while the query tool writes it.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Reads the tool's output file. Only complete lines are returned; a NUL byte or a line of more than 64 KiB
// ends the reading.
class FollowedOutput {
  public:
    explicit FollowedOutput(bool isWanted) : m_isWanted(isWanted) {}
    ~FollowedOutput();
    FollowedOutput(const FollowedOutput&) = delete;
    FollowedOutput& operator=(const FollowedOutput&) = delete;

    bool isWanted() const { return m_isWanted; }
    // Returns the next lines of the running tool's output; empty if there are none. The view is valid until
    // the next call.
    std::string_view nextLines(pid_t tool);
    // Returns a run's whole output without the lines that nextLines() has returned.
    std::string rest(std::string output) const;

  private:
    const bool m_isWanted;
    int m_file = -1;
    bool m_hasEnded = false;
    std::size_t m_size = 0;  // of the returned lines
    std::string m_begin;     // of the returned lines
    std::vector<char> m_buffer;
};
