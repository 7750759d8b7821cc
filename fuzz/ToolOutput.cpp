// Output files of the query tool: parsed to row texts, which are split into fields.
#include <sys/mman.h>
#include <unistd.h>

#include <string>

#include "Fuzz.h"
#include "RowText.h"
#include "querytool/ToolOutput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    static const int file = memfd_create("output", MFD_CLOEXEC);
    static const std::string path = "/proc/self/fd/" + std::to_string(file);
    const int count = data[0] % 8;
    const std::string_view content = fuzz::textOf(data + 1, size - 1);
    fuzz::require(ftruncate(file, 0) == 0 &&
                  pwrite(file, content.data(), content.size(), 0) == static_cast<ssize_t>(content.size()));

    std::vector<std::string> rows;
    fuzz::require(readToolOutput(path.c_str(), '\x12', count, rows));
    for (const std::string& row : rows) {
        const std::vector<std::string> fields = splitRow(row, '\x12', count);
        fuzz::require(fields.size() == static_cast<std::size_t>(count));
        for (const std::string& field : fields) fuzz::require(field.size() <= kFieldLength);
        splitRow(wideText(row), L'\x12', count);
        leadingNumber(row);
    }
    return 0;
}
