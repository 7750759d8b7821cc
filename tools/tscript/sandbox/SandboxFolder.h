// Folder of a sample installation: paths, state and files.
#pragma once

#include <filesystem>
#include <string>

class SandboxFolder {
  public:
    // Throws Failure (kUsage) if the store cannot hold the path.
    explicit SandboxFolder(const std::filesystem::path& folder);

    const std::filesystem::path& path() const { return m_path; }
    std::filesystem::path store() const { return m_path / "registry.toml"; }
    std::filesystem::path key() const { return m_path / "cipher.key"; }
    std::filesystem::path passwordFile() const { return m_path / "password"; }
    std::filesystem::path certificate() const { return m_path / "tls-cert.pem"; }
    std::filesystem::path tlsKey() const { return m_path / "tls-key.pem"; }
    std::filesystem::path data() const { return m_path / "data"; }
    std::filesystem::path scripts() const { return m_path / "Scripts"; }
    std::filesystem::path logs() const { return m_path / "logs"; }
    std::filesystem::path backups() const { return m_path / "backups"; }
    std::filesystem::path pidFile() const { return m_path / "tsqlbox.pid"; }
    std::filesystem::path mark() const { return m_path / ".tscript-sandbox"; }

    bool isSandbox() const;   // has the mark of a sample installation
    bool isComplete() const;  // was created completely
    void markComplete() const;
    void markIncomplete() const;

    // Deletes everything but backups, and creates the subfolders and a random password. Throws Failure
    // (kInstallation).
    void create() const;
    // Writes the store for a server on this port.
    void writeStore(int port) const;

  private:
    std::filesystem::path m_path;
};

// Exclusive lock of a sandbox folder. Locks the mark, which is created if it does not exist: the folder's
// store is locked by every change of a value.
class SandboxLock {
  public:
    // Waits for the lock. Throws Failure (kInstallation), also if the folder holds something else.
    explicit SandboxLock(const SandboxFolder& folder);
    ~SandboxLock();
    SandboxLock(const SandboxLock&) = delete;
    SandboxLock& operator=(const SandboxLock&) = delete;

  private:
    int m_fd;
};

// Folder of the running program and of those installed with it.
std::filesystem::path programFolder();
// The query tool of this program's installation, whatever `sqlcmd` on PATH is. In a build tree it is beside
// this program.
std::filesystem::path sandboxSqlcmd();
// Folder with the sample's schema and packages.
std::filesystem::path sampleFolder();
