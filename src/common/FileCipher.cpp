#include "FileCipher.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "Causes.h"
#include "CommonMessages.h"
#include "DVUtilities/commonFunc.h"
#include "ExceptionGuard.h"
#include "FX.h"
#include "OpenFile.h"
#include "TextAsFormat.h"
#include "VTPassword.h"

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

// Encryption or decryption of one file, line by line.
class FileCipher {
  public:
    FileCipher(bool encrypt, std::string& errorText)
        : m_encrypt(encrypt),
          m_errorText(errorText),
          m_line(encrypt ? kPlainSize : kRecordSize),
          m_output(encrypt ? kRecordSize : kPlainSize) {}

    // `openTarget` returns the target's stream. It is called after the source has been opened, so that a
    // missing source does not truncate the target.
    template <typename OpenTarget>
    bool run(const char* sourcePath, const char* targetPath, OpenTarget openTarget) {
        OpenFile source(sourcePath, "r");
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
        for (long line = 1; std::fgets(m_line.data(), limit, source) != nullptr; ++line) {
            std::size_t length = std::strlen(m_line.data());
            if (length < kShortestPiece) continue;
            if (!m_encrypt) length = cutLineEnd(length);
            if (length == 0) continue;
            if (!transformPiece()) return failAtLine(sourcePath, line);
            if (!write(target)) return failAt(targetPath, common_messages::kCannotWriteTarget);
        }
        return true;
    }

    // Cuts a line break ("\n" or "\r\n") off the end of the line; returns the remaining length.
    std::size_t cutLineEnd(std::size_t length) {
        if (m_line.data()[length - 1] != '\n') return length;
        --length;
        if (length > 0 && m_line.data()[length - 1] == '\r') --length;
        m_line.data()[length] = '\0';
        return length;
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
    std::string& m_errorText;
    VTPassword m_cipher;
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
    return guarded(false, [&] {
        if (isSameFile(sourceFile, targetFile)) {
            reportCause({.where = kDVUFile, .subject = targetFile, .text = common_messages::kSameFile});
            errorText = FXString::Format(common_messages::kCannotOpenCipherFile, targetFile);
            return false;
        }
        return FileCipher(encrypt, errorText).run(sourceFile, targetFile, [&] {
            return OpenFile(targetFile, "w");
        });
    });
}

bool decryptInto(const char* sourceFile, const FileDescriptor& target, const char* targetName,
                 std::string& errorText) {
    return FileCipher(/*encrypt=*/false, errorText).run(sourceFile, targetName, [&] {
        return OpenFile(target.duplicate(), "w");
    });
}
