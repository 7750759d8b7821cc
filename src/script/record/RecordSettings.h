// Settings of run records, in the store's [host] table.
#pragma once

#include <cstddef>
#include <string>

namespace record_setting {
inline constexpr char kFolder[] = "runRecords";       // unset: no records
inline constexpr char kOutput[] = "runRecordOutput";  // bytes of a run's output that are kept
inline constexpr char kKeep[] = "runRecordsKeep";     // number of records; 0: any
inline constexpr char kDays[] = "runRecordDays";      // 0: any age
}  // namespace record_setting

struct RecordSettings {
    static constexpr std::size_t kMostOutput = std::size_t{8} << 20;
    static constexpr std::size_t kMostDays = 36500;

    std::string folder{};
    std::size_t outputBytes = std::size_t{1} << 20;
    std::size_t keep = 10000;
    std::size_t days = 0;
};
