// Batches of T-SQL: read to a syntax tree, or refused with an error of a number and a line of the batch.
#include <algorithm>

#include "Fuzz.h"
#include "Parser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::textOf(data, size);
    const auto lines = std::count(text.begin(), text.end(), '\n') + 1;
    for (const bool quotedIdentifiers : {true, false}) {
        try {
            tsql::parseBatch(text, quotedIdentifiers);
        } catch (const tsql::SyntaxError& error) {
            fuzz::require(error.number > 0 && error.line >= 1 && error.line <= lines);
        }
    }
    return 0;
}
