#include "files/OutputHeader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <vector>

#include "OpenFile.h"
#include "files/RemovedAtEnd.h"

namespace {

std::size_t skipLine(std::FILE* in) {
    std::size_t length = 0;
    for (int c = getc_unlocked(in); c != EOF && c != '\n'; c = getc_unlocked(in)) ++length;
    return length;
}

// Reads the second line until it differs from a line of dashes of that length.
bool readSeparator(std::FILE* in, std::size_t length) {
    int last = EOF;
    std::size_t count = 0;
    for (int c = getc_unlocked(in); c != EOF && c != '\n'; c = getc_unlocked(in), ++count) {
        if ((c != '-' && c != '\t') || (count == 0 && c != '-') || count == length) return false;
        last = c;
    }
    return length > 0 && count == length && last == '-';
}

CVoError copyRest(std::FILE* in, CVoFile& out) {
    std::vector<char> block(std::size_t{1} << 16);
    char last = '\n';
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), in)) {
        if (CVoError error = out.Write(block.data(), count); error.IsError()) return error;
        last = block[count - 1];
    }
    if (std::ferror(in) != 0) return CVoError(EIO);
    return last == '\n' ? CVoError() : out.Write("\n", 1);
}

// Deletes a file that an earlier process left behind; whatever else has the name stays.
void removeLeftOver(const char* path) {
    struct stat status {};
    if (lstat(path, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid())
        CVoFile::Delete(path, /*missingIsFine=*/true);
}

}  // namespace

CVoError removeOutputHeader(const std::string& path) {
    const OpenFile in(path.c_str(), "r");
    if (!in.isOpen()) return CVoError(errno);
    if (!readSeparator(in.get(), skipLine(in.get()))) return {};

    const std::string scratchPath = path + ".tscript.temp.txt";
    removeLeftOver(scratchPath.c_str());
    CVoFile scratch;
    if (CVoError error = scratch.Open(scratchPath.c_str(), O_CREAT | O_WRONLY, S_IRUSR | S_IWUSR);
        error.IsError()) {
        return error;
    }
    RemovedAtEnd removed(scratchPath);
    if (CVoError error = copyRest(in.get(), scratch); error.IsError()) return error;
    if (CVoError error = scratch.Close(); error.IsError()) return error;
    // rename() instead of a copy: the file never holds a part of the output only.
    if (std::rename(scratchPath.c_str(), path.c_str()) != 0) return CVoError(errno);
    removed.keep();
    return {};
}
