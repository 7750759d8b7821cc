// Run records: one that is read is written and read again with the same content.
#include "record/RunRecord.h"

#include "Fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    RunRecord record, again;
    if (!parseRecord(std::string(fuzz::textOf(data, size)), record).empty()) return 0;
    const std::string json = jsonText(jsonOf(record));
    fuzz::require(parseRecord(json, again).empty() && jsonText(jsonOf(again)) == json);
    fuzz::require(withoutMiddle(record.output, size / 2).size() <= record.output.size() + 64);
    return 0;
}
