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
    std::string text;
    std::string_view rest = found->text;
    for (const auto value : values) {
        const std::size_t at = std::min(rest.find("%s"), rest.size());
        if (at == rest.size()) break;
        text.append(rest.substr(0, at)).append(value);
        rest.remove_prefix(at + 2);
    }
    return {number, text.append(rest), found->severity, state ? state : found->state};
}

Ends endOf(int number) {
    const MessageText* found = findMessage(number);
    return found ? found->ends : Ends::Statement;
}

SqlError unsupported(std::string_view construct) {
    return {kUserDefined, "tsqlbox does not support " + std::string(construct) + "."};
}

}  // namespace tsql
