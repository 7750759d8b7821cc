#include "FileCipher.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Causes.h"
#include "CommonMessages.h"
#include "DVUtilities/commonFunc.h"
#include "FX.h"
#include "OpenFile.h"
#include "TextAsFormat.h"
#include "VTPassword.h"
#include "VtPackageSeal.h"

namespace {

// Buffer sizes in bytes, the NUL included: of a piece of a plain line and of the cipher's record.
constexpr std::size_t kPlainSize = 511;
constexpr std::size_t kRecordSize = 2048;
constexpr std::size_t kShortestPiece = 2;  // shorter ones, above all empty lines, are skipped
constexpr std::size_t kStreamBufferSize = 65536;

// Buffer that is wiped when it is destroyed.
class Scratch {
  public:
    explicit Scratch(std::size_t size) : m_bytes(size) {}
    ~Scratch() { explicit_bzero(m_bytes.data(), m_bytes.size()); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    char* data() { return m_bytes.data(); }
    std::size_t size() const { return m_bytes.size(); }

  private:
    std::vector<char> m_bytes;
};

enum class Direction { kEncrypt, kDecrypt, kDecryptPackage };

// Encryption or decryption of one file, line by line.
class FileCipher {
  public:
    FileCipher(Direction direction, std::string& errorText)
        : m_encrypt(direction == Direction::kEncrypt),
          m_isPackage(direction == Direction::kDecryptPackage),
          m_errorText(errorText),
          m_line(m_encrypt ? kPlainSize : kRecordSize),
          m_output(m_encrypt ? kRecordSize : kPlainSize) {
        if (m_isPackage && VtStartSealCheck != nullptr) m_seal = VtStartSealCheck();
    }

    // `openTarget` returns the target's stream. It is called after the source has been opened, so that a
    // missing source does not truncate the target.
    template <typename OpenTarget>
    bool run(OpenFile source, const char* sourcePath, const char* targetPath, OpenTarget openTarget) {
        if (!source.isOpen()) return failAt(sourcePath, common_messages::kCannotOpenCipherFile);
        OpenFile target = openTarget();
        if (!target.isOpen()) return failAt(targetPath, common_messages::kCannotOpenCipherFile);
        std::setvbuf(source.get(), m_sourceBuffer.data(), _IOFBF, m_sourceBuffer.size());
        std::setvbuf(target.get(), m_targetBuffer.data(), _IOFBF, m_targetBuffer.size());
        return transformLines(source.get(), target.get(), sourcePath, targetPath) &&
               (std::ferror(source.get()) == 0 || failAt(sourcePath, common_messages::kCannotReadSource)) &&
               (target.close() || failAt(targetPath, common_messages::kCannotWriteTarget));
    }

  private:
    // Leaves errno of a failed read.
    bool transformLines(std::FILE* source, std::FILE* target, const char* sourcePath,
                        const char* targetPath) {
        // fgets() reads one byte less than its limit: pieces have 509 or 2,046 bytes.
        const int limit = static_cast<int>(m_line.size()) - 1;
        long line = 1;
        for (; std::fgets(m_line.data(), limit, source) != nullptr; ++line) {
            const std::size_t length = std::strlen(m_line.data());
            if (m_isPackage && !isWholeLine(source, length)) {
                return refuse(sourcePath, textAsFormat(common_messages::kBrokenLine, {std::to_string(line)}));
            }
            const std::string_view lineEnd = m_encrypt ? std::string_view() : cutLineEnd(length);
            const std::size_t recordLength = length - lineEnd.size();
            const bool isBlank = length < kShortestPiece || recordLength == 0;
            if (!isBlank && !transformPiece()) return failAtLine(sourcePath, line);
            if (isBlank) m_output.data()[0] = '\0';
            if (!isContent(recordLength, lineEnd) || isBlank) continue;
            if (!write(target)) return failAt(targetPath, common_messages::kCannotWriteTarget);
        }
        return std::ferror(source) != 0 || !m_isPackage || acceptPackage(sourcePath);
    }

    // False for a line with a NUL byte, which hides what follows it, and for a last line of one byte, which
    // would be skipped.
    bool isWholeLine(std::FILE* source, std::size_t length) {
        m_read += static_cast<off_t>(length);
        if (length > 0 && m_line.data()[length - 1] == '\n') return true;
        if (length + 2 == m_line.size()) return true;  // a piece of a longer line
        return std::feof(source) != 0 && length >= kShortestPiece && ::ftello(source) == m_read;
    }

    // Cuts a line break ("\n" or "\r\n") off the end of the line and returns it.
    std::string_view cutLineEnd(std::size_t length) {
        char* const line = m_line.data();
        if (length == 0 || line[length - 1] != '\n') return "";
        const bool hasReturn = length > 1 && line[length - 2] == '\r';
        line[length - (hasReturn ? 2 : 1)] = '\0';
        return hasReturn ? "\r\n" : "\n";
    }

    // Adds the line to the seal's check. False for the seal itself.
    bool isContent(std::size_t recordLength, std::string_view lineEnd) {
        m_records += recordLength > 0 ? 1 : 0;
        return m_seal == nullptr || m_seal->addLine({m_line.data(), recordLength}, lineEnd, m_output.data());
    }

    bool acceptPackage(const char* path) {
        if (m_records == 0) return refuse(path, common_messages::kNoRecord);
        if (m_seal == nullptr) return true;
        const std::string problem = m_seal->problem(packageName(path));
        return problem.empty() || refuse(path, problem);
    }

    // File name without ".sql".
    static std::string packageName(const std::string& path) {
        constexpr std::string_view kEnding = ".sql";
        const std::string name = path.substr(path.rfind('/') + 1);
        return name.ends_with(kEnding) ? name.substr(0, name.size() - kEnding.size()) : name;
    }

    bool transformPiece() {
        m_output.data()[0] = '\0';
        unsigned long size = m_output.size();
        const int success = m_encrypt ? m_cipher.encrypt(m_line.data(), m_output.data(), &size)
                                      : m_cipher.decrypt(m_line.data(), m_output.data(), &size);
        const char* name = m_encrypt ? common_messages::kEncryptName : common_messages::kDecryptName;
        return success != 0 || fail(FXString::Format(common_messages::kCipherFailed, name,
                                                     static_cast<long>(m_cipher.getLastError())));
    }

    bool write(std::FILE* target) {
        const std::size_t length = std::strlen(m_output.data());
        if (length == 0) return true;
        return std::fwrite(m_output.data(), 1, length, target) == length &&
               (!m_encrypt || std::fputc('\n', target) != EOF);
    }

    // Failure of a file operation; errno is its reason.
    bool failAt(const char* path, const char* message) {
        reportFileFailure(path, errno);
        return fail(textAsFormat(message, {path}));
    }

    bool refuse(const char* path, const std::string& reason) {
        reportCause({.where = kDVUPackage, .subject = path, .text = reason});
        return fail(reason);
    }

    // The cipher has noted the reason.
    bool failAtLine(const char* sourcePath, long line) {
        const char* text =
            m_encrypt ? common_messages::kLineNotEncrypted : common_messages::kLineNotDecrypted;
        reportCause({.where = m_encrypt ? kDVUFile : kDVUPackage,
                     .subject = sourcePath,
                     .text = textAsFormat(text, {std::to_string(line)})});
        return false;
    }

    bool fail(std::string message) {
        m_errorText = std::move(message);
        return false;
    }

    const bool m_encrypt;
    const bool m_isPackage;
    std::string& m_errorText;
    VTPassword m_cipher;
    std::unique_ptr<VtSealCheck> m_seal;  // of a package; null without a platform that knows seals
    std::size_t m_records = 0;
    off_t m_read = 0;
    Scratch m_line;
    Scratch m_output;
    Scratch m_sourceBuffer{kStreamBufferSize};
    Scratch m_targetBuffer{kStreamBufferSize};
};

}  // namespace

bool EncryptFile(const char* sourceFile, const char* targetFile, std::string& errorText) {
    return EncryptDecryptFile(sourceFile, targetFile, errorText, /*encrypt=*/true);
}

bool DecryptFile(const char* sourceFile, const char* targetFile, std::string& errorText) {
    return EncryptDecryptFile(sourceFile, targetFile, errorText, /*encrypt=*/false);
}

bool EncryptDecryptFile(const char* sourceFile, const char* targetFile, std::string& errorText,
                        bool encrypt) {
    if (sourceFile == nullptr || targetFile == nullptr) return false;
    return explained(false, [&] {
        if (isSameFile(sourceFile, targetFile)) {
            reportCause({.where = kDVUFile, .subject = targetFile, .text = common_messages::kSameFile});
            errorText = FXString::Format(common_messages::kCannotOpenCipherFile, targetFile);
            return false;
        }
        const Direction direction = encrypt ? Direction::kEncrypt : Direction::kDecrypt;
        OpenFile source(sourceFile, "r");
        return FileCipher(direction, errorText).run(std::move(source), sourceFile, targetFile, [&] {
            return OpenFile(targetFile, "w");
        });
    });
}

bool decryptPackage(FileDescriptor source, const char* sourcePath, const FileDescriptor& target,
                    const char* targetPath, std::string& errorText) {
    OpenFile package(std::move(source), "r");
    return FileCipher(Direction::kDecryptPackage, errorText)
        .run(std::move(package), sourcePath, targetPath, [&] { return OpenFile(target.duplicate(), "w"); });
}
