// A file that a check writes where script runs write theirs; deleted with its object.
#pragma once

#include <string>
#include <string_view>

class ProbeFile {
  public:
    // Creates a file in `folder`, mode 0600, and writes `text`. Throws std::system_error.
    ProbeFile(const std::string& folder, std::string_view text);
    ~ProbeFile();
    ProbeFile(const ProbeFile&) = delete;
    ProbeFile& operator=(const ProbeFile&) = delete;

    const std::string& path() const { return m_path; }
    std::string content() const;  // what the file holds now

  private:
    std::string m_path;
};
