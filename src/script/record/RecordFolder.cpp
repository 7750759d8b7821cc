#include "record/RecordFolder.h"

#include <dirent.h>
#include <sodium/randombytes.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <functional>
#include <memory>
#include <string_view>
#include <system_error>

namespace {

// "20260131T183000123Z-Dorvas-42-0123abcd.json": the order of names is that of the starts.
constexpr std::string_view kTimePattern = "00000000T000000000Z-";  // 0: a digit
constexpr std::string_view kEnding = ".json";
constexpr char kIncomplete = '.';  // before the name of a file that is being written

constexpr std::size_t kMostNames = 200'000;  // a folder's further files are not listed
constexpr std::size_t kMostDeletions = 1000;
constexpr std::size_t kMostBytes = std::size_t{64} << 20;  // of a file
constexpr std::int64_t kHour = 3'600'000;                  // milliseconds
constexpr std::int64_t kDay = 24 * kHour;

// Start of the names of records of that time.
std::string timePart(std::int64_t milliseconds) {
    std::string text;
    for (const char c : isoTime(milliseconds))
        if (c != '-' && c != ':' && c != '.') text += c;
    return text + "-";
}

bool isRecordName(std::string_view name) {
    if (name.size() <= kTimePattern.size() + kEnding.size() || !name.ends_with(kEnding)) return false;
    return std::equal(kTimePattern.begin(), kTimePattern.end(), name.begin(),
                      [](char wanted, char c) { return wanted == '0' ? c >= '0' && c <= '9' : c == wanted; });
}

std::string rowPart(const std::string& database, int run) {
    return database + "-" + std::to_string(run) + "-";
}

std::string newName(const RunRecord& record) {
    std::array<char, 16> random{};
    std::snprintf(random.data(), random.size(), "%08x", randombytes_random());
    return timePart(record.start) + rowPart(record.database, record.run) + random.data() +
           std::string(kEnding);
}

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

FileDescriptor openIn(const FileDescriptor& folder, const std::string& name, int flags) {
    constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;
    return FileDescriptor::adopt(
        ::openat(folder.get(), name.c_str(), flags | O_NOFOLLOW | O_CLOEXEC, kOwnerOnly));
}

void forEachName(const FileDescriptor& folder, const std::function<void(std::string_view)>& work) {
    FileDescriptor copy = openIn(folder, ".", O_RDONLY | O_DIRECTORY);
    const std::unique_ptr<DIR, CloseFolder> list(copy.isOpen() ? ::fdopendir(copy.get()) : nullptr);
    if (!list) return;
    copy.release();
    std::size_t count = 0;
    while (const dirent* entry = ::readdir(list.get())) {
        if (++count > kMostNames) return;
        work(entry->d_name);
    }
}

}  // namespace

RecordFolder::RecordFolder(const std::string& path, Access access) {
    if (path.empty() || path.front() != '/') {
        fail("the path is not absolute");
        return;
    }
    const bool isRefused = access == Access::kWrite && ::mkdir(path.c_str(), S_IRWXU) != 0 && errno != EEXIST;
    const int refusal = isRefused ? errno : 0;
    m_folder = FileDescriptor(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    if (!isOpen()) {
        fail(isRefused && errno == ENOENT ? refusal : errno);  // why the missing folder was not created
        return;
    }
    checkTrust(access);
}

void RecordFolder::checkTrust(Access access) {
    struct stat status {};
    if (::fstat(m_folder.get(), &status) != 0) {
        fail(errno);
    } else if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        fail("users other than its owner may write to it");
    } else if (const bool isOurs = status.st_uid == ::geteuid() || status.st_uid == 0 || ::geteuid() == 0;
               access == Access::kWrite && !isOurs) {
        fail("it belongs to another user");
    } else {
        return;
    }
    m_folder = FileDescriptor();
}

bool RecordFolder::fail(int error) {
    m_systemError = error;
    m_problem = std::generic_category().message(error);
    return false;
}

bool RecordFolder::fail(std::string problem) {
    m_systemError = 0;
    m_problem = std::move(problem);
    return false;
}

bool RecordFolder::write(const RunRecord& record) {
    const std::string name = newName(record);
    const std::string incomplete = kIncomplete + name;
    const bool isStored =
        writeFile(incomplete, jsonText(jsonOf(record)) + "\n") &&
        (::renameat(m_folder.get(), incomplete.c_str(), m_folder.get(), name.c_str()) == 0 || fail(errno));
    if (isStored)
        ::fsync(m_folder.get());
    else
        ::unlinkat(m_folder.get(), incomplete.c_str(), /*flags=*/0);
    return isStored;
}

bool RecordFolder::writeFile(const std::string& name, const std::string& text) {
    const FileDescriptor file = openIn(m_folder, name, O_WRONLY | O_CREAT | O_EXCL);
    const bool written = file.isOpen() && writeAll(file, text) && ::fsync(file.get()) == 0;
    return written || fail(errno);
}

void RecordFolder::prune(std::size_t keep, std::size_t days, std::int64_t now) {
    std::vector<std::string> records;
    std::vector<std::string> doomed;
    const std::string anHourAgo = kIncomplete + timePart(now - kHour);
    forEachName(m_folder, [&](std::string_view name) {
        if (isRecordName(name)) {
            records.emplace_back(name);
        } else if (name.front() == kIncomplete && isRecordName(name.substr(1)) && name < anHourAgo) {
            doomed.emplace_back(name);
        }
    });
    const std::string oldest = days != 0 ? timePart(now - static_cast<std::int64_t>(days) * kDay) : "";
    std::sort(records.begin(), records.end());
    const std::size_t surplus = keep != 0 && records.size() > keep ? records.size() - keep : 0;
    for (std::size_t i = 0; i < records.size() && (i < surplus || records[i] < oldest); ++i)
        doomed.push_back(std::move(records[i]));
    if (doomed.size() > kMostDeletions) doomed.resize(kMostDeletions);
    for (const std::string& name : doomed) ::unlinkat(m_folder.get(), name.c_str(), /*flags=*/0);
}

std::vector<std::string> RecordFolder::names() const {
    std::vector<std::string> names;
    forEachName(m_folder, [&](std::string_view name) {
        if (isRecordName(name)) names.emplace_back(name);
    });
    std::sort(names.begin(), names.end(), std::greater<>());
    return names;
}

std::vector<std::string> RecordFolder::namesOf(const std::vector<std::string>& all,
                                               const std::string& database, int run) {
    const std::string part = rowPart(database, run);
    std::vector<std::string> names;
    for (const std::string& name : all)
        if (name.compare(kTimePattern.size(), part.size(), part) == 0) names.push_back(name);
    return names;
}

bool RecordFolder::read(const std::string& name, RunRecord& record) {
    std::string text;
    if (!readFile(name, text)) return false;
    std::string problem = parseRecord(text, record);
    return problem.empty() || fail(std::move(problem));
}

bool RecordFolder::readFile(const std::string& name, std::string& text) {
    const FileDescriptor file = openIn(m_folder, name, O_RDONLY | O_NONBLOCK);
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0) return fail(errno);
    if (!S_ISREG(status.st_mode)) return fail("it is not a regular file");
    if (status.st_size > static_cast<off_t>(kMostBytes)) return fail("it is larger than 64 MiB");
    text.resize(static_cast<std::size_t>(status.st_size));
    std::size_t length = 0;
    while (length < text.size()) {
        const ssize_t count = ::read(file.get(), text.data() + length, text.size() - length);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return fail(errno);
        if (count == 0) break;
        length += static_cast<std::size_t>(count);
    }
    text.resize(length);
    return true;
}
