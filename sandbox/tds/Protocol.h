// Constants of the Tabular Data Stream protocol, [MS-TDS]: packet types 2.2.3.1.1, versions 2.2.6.4,
// tokens 2.2.4.2, DONE status 2.2.7.6, ENVCHANGE types 2.2.7.9.
#pragma once

#include <cstdint>

namespace tds {

enum class PacketType : std::uint8_t {
    SqlBatch = 1,
    Rpc = 3,
    Response = 4,
    Attention = 6,
    BulkLoad = 7,
    TransactionManager = 14,
    Login7 = 16,
    SspiMessage = 17,
    Prelogin = 18
};

// Bits of a request's status: a pooled connection begins anew, without its transaction or with it.
constexpr std::uint8_t kStatusReset = 0x08, kStatusResetKeepTransaction = 0x10;

// Protocol versions in ascending order, so that "7.2 or later" is a comparison.
enum class Version : std::uint32_t {
    V71 = 0x71000001,
    V72 = 0x72090002,
    V73A = 0x730A0003,
    V73B = 0x730B0003,
    V74 = 0x74000004
};

enum class Token : std::uint8_t {
    ReturnStatus = 0x79,
    ColMetadata = 0x81,
    Error = 0xAA,
    Info = 0xAB,
    ReturnValue = 0xAC,
    LoginAck = 0xAD,
    Row = 0xD1,
    EnvChange = 0xE3,
    Sspi = 0xED,
    Done = 0xFD,
    DoneProc = 0xFE,
    DoneInProc = 0xFF
};

// Server version reported to clients: major, minor, build.
constexpr std::uint32_t kServerVersion = 0x0F0007D0;

// Bytes, the header included.
constexpr std::size_t kDefaultPacketSize = 4096, kMinPacketSize = 512, kMaxPacketSize = 32767;

// Bits of a DONE token's status.
constexpr unsigned kDoneFinal = 0x00, kDoneMore = 0x01, kDoneError = 0x02, kDoneCount = 0x10,
                   kDoneAttention = 0x20;

enum class EnvChange : std::uint8_t {
    Database = 1,
    Language = 2,
    PacketSize = 4,
    Collation = 7,
    BeginTransaction = 8,
    CommitTransaction = 9,
    RollbackTransaction = 10,
    ResetAcknowledged = 18
};

}  // namespace tds
