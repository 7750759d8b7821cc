#include "messages/Messages.h"

#include <algorithm>

namespace tsql {
namespace {

constexpr MessageText kMessages[] = {
#define TSQL_MESSAGE(name, number, severity, state, ends, text) {number, severity, state, Ends::ends, text},
#include "messages/MessageTable.inc"
#undef TSQL_MESSAGE
};

}  // namespace

const MessageText* findMessage(int number) {
    const auto* found = std::ranges::lower_bound(kMessages, number, {}, &MessageText::number);
    return found == std::end(kMessages) || found->number != number ? nullptr : found;
}

SqlError sqlError(int number, std::initializer_list<std::string_view> values, int state) {
    const MessageText* found = findMessage(number);
    if (!found) throw std::logic_error("no text for error " + std::to_string(number));
    std::string text(found->text);
    std::size_t at = 0;
    for (const auto value : values) {
        if ((at = text.find("%s", at)) == std::string::npos) break;
        text.replace(at, 2, value);
        at += value.size();
    }
    return {number, text, found->severity, state ? state : found->state};
}

Ends endOf(int number) {
    const MessageText* found = findMessage(number);
    return found ? found->ends : Ends::Statement;
}

SqlError unsupported(std::string_view construct) {
    return {kUserDefined, "tsqlbox does not support " + std::string(construct) + "."};
}

}  // namespace tsql
