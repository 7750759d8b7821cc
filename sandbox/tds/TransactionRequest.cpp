#include "TransactionRequest.h"

#include "ByteWriter.h"
#include "messages/Messages.h"

namespace tds {
namespace {

enum RequestType : std::uint16_t { kBegin = 5, kCommit = 7, kRollback = 8, kSave = 9 };
constexpr std::uint8_t kFlagBeginNext = 1;  // of a commit or rollback: begin the next transaction

// " [name]" of a transaction or savepoint; empty when it has no name.
std::string readName(ByteReader& in) {
    std::string name = utf8FromUtf16(in.bytes(in.u8()));
    for (std::size_t at = 0; (at = name.find(']', at)) != std::string::npos; at += 2) name.insert(at, 1, ']');
    return name.empty() ? name : " [" + name + "]";
}

std::string beginBatch(ByteReader& in) {
    in.skip(1);  // isolation level: the engine has only one
    return "BEGIN TRANSACTION" + readName(in);
}

}  // namespace

std::string transactionBatch(ByteView body) {
    ByteReader in(body);
    const std::uint16_t request = in.u16();
    if (request == kBegin) return beginBatch(in);
    if (request == kSave) return "SAVE TRANSACTION" + readName(in);
    if (request != kCommit && request != kRollback)
        throw tsql::unsupported("transaction manager request " + std::to_string(request));
    const std::string batch =
        (request == kCommit ? "COMMIT TRANSACTION" : "ROLLBACK TRANSACTION") + readName(in);
    return (in.u8() & kFlagBeginNext) != 0 ? batch + " " + beginBatch(in) : batch;
}

}  // namespace tds
