// The folder of a sample installation: where its parts stand, and the making of those that are files.
#pragma once

#include <filesystem>
#include <string>

class SandboxFolder {
  public:
    // Throws Failure (usage) for a path that the store cannot carry.
    explicit SandboxFolder(const std::filesystem::path& folder);

    const std::filesystem::path& path() const { return m_path; }
    std::filesystem::path store() const { return m_path / "registry.toml"; }
    std::filesystem::path key() const { return m_path / "cipher.key"; }
    std::filesystem::path passwordFile() const { return m_path / "password"; }
    std::filesystem::path data() const { return m_path / "data"; }
    std::filesystem::path scripts() const { return m_path / "Scripts"; }
    std::filesystem::path logs() const { return m_path / "logs"; }
    std::filesystem::path pidFile() const { return m_path / "tsqlbox.pid"; }

    bool isOurs() const;      // carries the mark of a sample installation
    bool isComplete() const;  // and was made to its end
    void markComplete() const;
    void markUnfinished() const;  // make() then makes it anew; backups stay

    // Empties an unfinished folder and makes its subfolders and a random password. Throws Failure
    // (installation).
    void make() const;
    // Writes the store of an installation whose server listens on that port.
    void writeStore(int port) const;

    std::filesystem::path mark() const { return m_path / ".tscript-sandbox"; }

  private:
    std::filesystem::path m_path;
};

// While it lives, others wait who want to change the folder. It is the lock of the mark, which is set if need
// be: the folder of the store is locked by whoever changes a value.
class SandboxLock {
  public:
    // Throws Failure (installation), also for a folder that holds something else.
    explicit SandboxLock(const SandboxFolder& folder);
    ~SandboxLock();
    SandboxLock(const SandboxLock&) = delete;
    SandboxLock& operator=(const SandboxLock&) = delete;

  private:
    int m_fd;
};

// Folder of the programs that are built and installed together with this one.
std::filesystem::path programFolder();
// Folder of the sample's schema and packages.
std::filesystem::path sampleFolder();
