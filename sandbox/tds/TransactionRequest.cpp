#include "TransactionRequest.h"

#include "ByteWriter.h"
#include "SqlError.h"

namespace tds {
namespace {

constexpr int kInternalError = 50000;

enum TransactionRequest : std::uint16_t { kBegin = 5, kCommit = 7, kRollback = 8, kSave = 9 };
constexpr std::uint8_t kBeginsNext = 1;  // flag of a commit or rollback

// The name of a transaction or savepoint as T-SQL has it behind a verb.
std::string transactionName(ByteReader& in) {
    std::string name = utf8FromUtf16(in.bytes(in.u8()));
    for (std::size_t at = 0; (at = name.find(']', at)) != std::string::npos; at += 2) name.insert(at, 1, ']');
    return name.empty() ? name : " [" + name + "]";
}

// Every isolation level is the same here.
std::string beginBatch(ByteReader& in) {
    in.skip(1);
    return "BEGIN TRANSACTION" + transactionName(in);
}

std::string endBatch(const char* verb, ByteReader& in) {
    const std::string batch = verb + transactionName(in);
    return (in.u8() & kBeginsNext) != 0 ? batch + " " + beginBatch(in) : batch;
}

}  // namespace

std::string transactionBatch(ByteView body) {
    ByteReader in(body);
    switch (const std::uint16_t request = in.u16()) {
        case kBegin:
            return beginBatch(in);
        case kCommit:
            return endBatch("COMMIT TRANSACTION", in);
        case kRollback:
            return endBatch("ROLLBACK TRANSACTION", in);
        case kSave:
            return "SAVE TRANSACTION" + transactionName(in);
        default:
            throw tsql::SqlError(kInternalError,
                                 "Transaction manager request " + std::to_string(request) +
                                     " is not supported: there are no distributed transactions.");
    }
}

}  // namespace tds
