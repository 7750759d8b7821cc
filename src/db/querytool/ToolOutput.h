// The query tool's output files: temporary ones, and their rows.
#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>
#include <vector>

#include "parts/DatabaseReport.h"

// Converts a line to a row text: its first `count` fields (at least one), which blanks separate, joined by
// the separator. A row with fewer fields ends with a separator; callers rely on it. A line of blanks becomes
// an empty row. The line ends at its first NUL.
std::string rowOfLine(std::string_view line, char separator, int count);

// Appends the rows behind the two heading lines, up to the first empty line or the end of the file. False,
// with a cause, when the file cannot be opened or read.
bool readToolOutput(const char* path, char separator, int count, std::vector<std::string>& rows);

// The same; a failure becomes the last message, too, and is logged.
bool readToolOutput(const char* path, char separator, int count, std::vector<std::string>& rows,
                    const DatabaseReport& report);

// The same for a claimed file, which others may have replaced since: false for a link, a pipe and a file with
// a second name.
bool readOwnToolOutput(const char* path, char separator, int count, std::vector<std::string>& rows,
                       const DatabaseReport& report);

// A name in the installation's temporary folder; the same one for calls within one second. Creates no file.
std::string temporaryOutputPath();

// Creates a temporary output file before the tool opens it, because others can guess its name: only this user
// may read it, and the tool does not write to a link or a file of somebody else. A file that this user left
// there earlier is emptied and used again. Also true if the file cannot be created at all: the tool then
// fails on it.
// False, with a cause, for whatever else has the name: a link, a pipe, another user's file.
bool claimToolOutput(const std::string& path);

// Returns whether a claimed file is still this user's, or is gone. False, with a cause, for whatever else has
// its name by now.
bool isOwnToolOutput(const std::string& path);

// Watches an output file from before the tool's start, to see whether the tool writes it. An empty file has
// an earlier time meanwhile, so that a tool which writes nothing into it is seen, too.
class OutputWatch {
  public:
    explicit OutputWatch(std::string path);
    ~OutputWatch();
    OutputWatch(const OutputWatch&) = delete;
    OutputWatch& operator=(const OutputWatch&) = delete;
    // True if there is no file, or a regular one that nobody has opened for a new content.
    bool isUnwritten() const;

  private:
    bool isUnchanged(const struct stat& now) const;

    std::string m_path;
    struct stat m_before {};
    bool m_existed;
    bool m_isMarked = false;
};

// Deletes a claimed file if the tool has written nothing to it.
void dropUnwrittenOutput(const std::string& path);
