// Script bodies: percent signs in comments blanked, placeholders filled with values; texts used as formats.
#include "Fuzz.h"
#include "TextAsFormat.h"
#include "text/PlaceholderFiller.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string_view> parts = fuzz::partsOf(fuzz::textOf(data, size));
    const std::string body = blankPercentSignsInComments(parts.front());
    fuzz::require(body.size() == parts.front().size());

    const std::vector<std::string> values(parts.begin() + 1, parts.end());
    std::string filled;
    PlaceholderFiller filler([](const std::string& value) { return value; },
                             [&](std::string_view text) { return filled.append(text), true; });
    fuzz::require(filler.fill(body, values));
    fuzz::require(filled.size() <= size);

    const std::string_view last = parts.back();
    fuzz::require(textAsFormat(parts.front(), {last}).size() <= size * (last.size() + 1));
    fuzz::require(textAsFormat(parts.front(), last.size()).size() <= last.size());
    textAsFormat(std::wstring(last.begin(), last.end()), size / 2);
    return 0;
}
