// Temporary folder, deleted with its content.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace support {

class TempDir {
  public:
    TempDir();  // throws std::system_error
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    std::filesystem::path operator/(std::string_view name) const { return m_path / name; }

  private:
    std::filesystem::path m_path;
};

// Write and read whole files; both throw std::runtime_error with the name of the file.
void writeFile(const std::filesystem::path& path, std::string_view content);
std::string readFile(const std::filesystem::path& path);

}  // namespace support
