#include "backup/ServerScript.h"

#include <algorithm>
#include <string_view>

#include "installation/Installation.h"
#include "system/ScratchFile.h"

namespace {

constexpr std::size_t kLongestPath = 900;  // the library's path buffers hold 1,024 bytes
constexpr std::size_t kLongestDatabaseName = 128;

std::string withDoubled(std::string_view text, char quote) {
    std::string doubled;
    for (const char c : text) doubled += c == quote ? std::string(2, c) : std::string(1, c);
    return doubled;
}

void checkSqlText(const std::string& what, const std::string& text, std::size_t maximum) {
    const auto isForbidden = [](char c) {
        return c == '\'' || c == '%' || static_cast<unsigned char>(c) < 0x20;
    };
    checkQueryText(what, text, maximum);
    if (text.empty() || std::any_of(text.begin(), text.end(), isForbidden))
        throw Failure(ExitCode::kUsage,
                      what + " must not be empty or hold quotes, percent signs or control characters");
}

}  // namespace

void checkServerName(const std::string& what, const std::string& name) {
    checkSqlText(what, name, kLongestDatabaseName);
}

void checkServerPath(const std::string& what, const std::string& path) {
    checkSqlText(what, path, kLongestPath);
    if (path.front() != '/')
        throw Failure(ExitCode::kUsage, what + " '" + path + "' is not absolute",
                      "It is a path on the server's host; write it from the root.");
}

ServerReply runOnServer(DBBase& db, const std::string& sql, const std::string& advice) {
    const ScratchFile file;
    const ScratchFile output;
    file.write(sql + "\nGO\n");
    const bool succeeded = runInterruptibly(advice, [&] {
        return db.RunFileQuery(file.path().c_str(), output.path().c_str(), "MASTER", /*toolSyntax=*/true,
                               /*errorLevel=*/false);
    });
    return {succeeded, output.content()};
}

std::string sqlName(const std::string& name) {
    return "[" + withDoubled(name, ']') + "]";
}

std::string sqlLiteral(const std::string& text) {
    return "N'" + withDoubled(text, '\'') + "'";
}
