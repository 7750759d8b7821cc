#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <thread>
#include <vector>

#include "CVoFile.h"
#include "FX.h"
#include "TempDir.h"

namespace {

TEST(Files, OpenAsTheirModeSays) {
    const support::TempDir folder;
    const std::string path = folder / "file";
    struct Case {
        const char* mode;
        const char* before;  // null: no file
        int error;
        const char* after;  // once "new" was written; null when writing fails
    };
    for (const Case& open :
         {Case{"r", nullptr, ENOENT, nullptr}, Case{"rb", "old..", 0, nullptr},
          Case{"r+", "old..", 0, "new.."}, Case{"w", "old..", 0, "new"}, Case{"wb+", nullptr, 0, "new"},
          Case{"a", "old..", 0, "old..new"}, Case{"", "old..", EINVAL, nullptr},
          Case{"rw", "old..", EINVAL, nullptr}, Case{"x", "old..", EINVAL, nullptr}}) {
        std::filesystem::remove(path);
        if (open.before != nullptr) support::writeFile(path, open.before);
        CVoFile file;
        const CVoError error = file.Open(path.c_str(), open.mode);
        EXPECT_EQ(error.GetErrorCode(), open.error) << open.mode;
        if (error.IsError()) continue;
        EXPECT_EQ(file.Write("new", 3).IsError(), open.after == nullptr) << open.mode;
        EXPECT_FALSE(file.Close().IsError());
        EXPECT_EQ(support::readFile(path), open.after != nullptr ? open.after : open.before) << open.mode;
    }
}

TEST(Files, CreationNeverOpensWhatIsThere) {
    const support::TempDir folder;
    const std::string path = folder / "new";
    const std::string link = folder / "link";
    std::filesystem::create_symlink(folder / "elsewhere", link);
    CVoFile file;
    EXPECT_FALSE(file.Open(path.c_str(), O_CREAT, 0600).IsError());
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    EXPECT_EQ(file.Open(path.c_str(), O_CREAT, 0600).GetErrorCode(), EEXIST);
    const CVoError error = file.Open(link.c_str(), O_CREAT | O_WRONLY, 0600);
    EXPECT_EQ(error.GetErrorCode(), EEXIST);
    EXPECT_STREQ(error.AsString(), "File exists");
    const auto descriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto before = descriptors();
    EXPECT_FALSE(file.Open(path.c_str(), "r").IsError());
    EXPECT_EQ(descriptors(), before + 1);
    EXPECT_FALSE(file.Open(path.c_str(), "r").IsError());
    EXPECT_FALSE(file.Open(path.c_str(), O_RDONLY, 0).IsError());
    EXPECT_EQ(descriptors(), before + 1) << "an open file is closed before the next one is opened";
    EXPECT_FALSE(std::filesystem::exists(folder / "elsewhere"));
}

TEST(Files, FullDisksAndWrongUsesAreErrors) {
    const support::TempDir folder;
    CVoFile file;
    char buffer[8];
    std::size_t got = 1;
    EXPECT_EQ(file.Close().GetErrorCode(), EBADF);
    EXPECT_EQ(file.Read(buffer, sizeof buffer, &got).GetErrorCode(), EBADF);
    EXPECT_EQ(file.Open(nullptr, "r").GetErrorCode(), EINVAL);
    ASSERT_FALSE(file.Open("/dev/full", "w").IsError());
    EXPECT_EQ(file.Write("x", 1).GetErrorCode(), ENOSPC);
    ASSERT_FALSE(file.Open(folder.path().c_str(), "r").IsError());
    EXPECT_EQ(file.Read(buffer, sizeof buffer, &got).GetErrorCode(), EISDIR);
    EXPECT_EQ(CVoFile::Delete((folder / "none").c_str(), false).GetErrorCode(), ENOENT);
    EXPECT_FALSE(CVoFile::Delete((folder / "none").c_str(), true).IsError());
    EXPECT_TRUE(CVoFile::Delete(folder.path().c_str(), true).IsError());
    EXPECT_STREQ(CVoError(4711).AsString(), "Unknown error 4711");
}

TEST(Files, AWriteBeyondTheFileSizeLimitKeepsTheFirstBytes) {
    const support::TempDir folder;
    const std::string path = folder / "limited";
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit limit{1000, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &limit);
    CVoFile file;
    ASSERT_FALSE(file.Open(path.c_str(), "w").IsError());
    const int code = file.Write(std::string(1500, 'x').data(), 1500).GetErrorCode();
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(code, EFBIG);  // after a short write of 1,000 bytes
    EXPECT_EQ(std::filesystem::file_size(path), 1000U);
}

TEST(Files, ReadsGoOnAfterShortReads) {
    const support::TempDir folder;
    const std::string path = folder / "pipe";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    std::thread writer([&] {
        CVoFile file;
        EXPECT_FALSE(file.Open(path.c_str(), "w").IsError());
        for (int i = 0; i < 100; ++i) EXPECT_FALSE(file.Write(std::string(3001, 'p').data(), 3001).IsError());
    });
    CVoFile file;
    ASSERT_FALSE(file.Open(path.c_str(), "r").IsError());
    std::vector<char> buffer(400000);
    std::size_t got = 0;
    EXPECT_FALSE(file.Read(buffer.data(), 200000, &got).IsError());
    EXPECT_EQ(got, 200000U);
    EXPECT_FALSE(file.Read(buffer.data(), buffer.size(), &got).IsError());
    EXPECT_EQ(got, 100100U);
    EXPECT_FALSE(file.Read(buffer.data(), buffer.size(), &got).IsError());
    EXPECT_EQ(got, 0U);
    writer.join();
}

TEST(Files, PathsJoinWithOneSlash) {
    for (const auto& [base, component, joined] : {std::tuple("/opt", "Scripts", "/opt/Scripts"),
                                                  {"/opt/", "Scripts", "/opt/Scripts"},
                                                  {"/opt//", "//Scripts/", "/opt/Scripts/"},
                                                  {"/", "x", "/x"},
                                                  {"", "x", "x"},
                                                  {"/opt", "", "/opt"}}) {
        std::string path = base;
        FXPath::Append(path, component);
        EXPECT_EQ(path, joined);
    }
    EXPECT_EQ(FXString::Format("[%s] %d", std::string(70000, 'f').c_str(), 5).size(), 70004U);
    EXPECT_TRUE(FXFile::Exists("/dev/null"));
    EXPECT_FALSE(FXFile::Exists(nullptr));
    EXPECT_TRUE(FXFile::Remove("/tmp/there/is/none") || errno == ENOENT);
}

}  // namespace
