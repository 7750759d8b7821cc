// Messages of a script: PRINT, RAISERROR, THROW.

#include "execute/Executor.h"
#include "types/Regex.h"

namespace tsql {

namespace {

constexpr std::size_t kLongestMessage = 2047;
constexpr std::string_view kEllipsis = "...";

// Formats one argument with SQLite's printf.
template <typename Argument>
std::string written(const std::string& format, Argument value) {
    const std::unique_ptr<char, void (*)(void*)> made(sqlite3_mprintf(format.c_str(), value), sqlite3_free);
    if (!made) throw std::bad_alloc();
    return made.get();
}

// Returns the text of a conversion. next: position of its argument.
std::string converted(const std::cmatch& conversion, std::string_view rest,
                      std::span<const TypedValue> arguments, std::size_t& next) {
    if (conversion.str(1) == "%") return "%";
    const auto number = [&](const std::string& given) {
        constexpr std::int64_t kWidest = 2047;
        std::int64_t value = 0;
        if (given != "*") {
            value = given.empty() ? 0 : std::stoi(given);
        } else if (const std::size_t index = next++; index < arguments.size()) {
            const auto* argument = std::get_if<std::int64_t>(&arguments[index].value);
            value = argument ? *argument : 0;
        }
        return std::to_string(std::clamp<std::int64_t>(value, 0, kWidest));
    };
    std::string flags = conversion.str(2);
    const std::string width = number(conversion.str(3));
    const bool precise = conversion[4].matched;
    const std::string size = width + (precise ? "." + number(conversion.str(5)) : "");
    const std::string type = conversion.str(6);
    if (type.empty()) throw sqlError(kInvalidFormat, {rest.substr(0, 20)});
    const bool left = flags.find('-') != std::string::npos;
    if (left || precise) std::erase(flags, '0');
    const std::string side = left ? "%-!" : "%!";
    const std::size_t index = next++;
    if (index >= arguments.size() || isNull(arguments[index].value))
        return written(side + width + "s", "(null)");
    const auto& [value, valueType] = arguments[index];
    const auto* text = std::get_if<std::string>(&value);
    if (!isText(valueType.id) && !isInteger(valueType.id) && !isBinary(valueType.id))
        throw sqlError(kInvalidSubstitutionType,
                       {baseName(valueType.id), std::to_string(index + 4)});  // parameter of RAISERROR
    if ((type == "s") != (text != nullptr) || isBinary(valueType.id))
        throw sqlError(kSubstitutionTypeMismatch, {std::to_string(index + 1)});
    if (text) return written(side + size + "s", text->c_str());
    // Unsigned conversions show negative numbers as 32-bit ones.
    const auto shown = static_cast<long long>(std::get<std::int64_t>(value));
    const bool isSigned = type == "d" || type == "i";
    return written("%" + flags + size + "ll" + type, isSigned || shown >= 0 ? shown : shown & 0xFFFFFFFF);
}

// Replaces the conversions in `format` by the arguments: %s, %d, %i, %u, %x, %X, %o and %% with flags, width
// and precision. Missing arguments become "(null)".
std::string raiseErrorText(std::string_view format, std::span<const TypedValue> arguments) {
    std::string text;
    // %% or: %, flags, width, precision, size and type. A width or precision of * is an argument.
    static const std::regex kConversion =
        compiled(R"(%(%|([-+0# ]{0,9})(\*|\d{0,4})(\.(\*|\d{0,4}))?(?:h|l|I64)?([diouxXs])?))");
    std::size_t next = 0;
    const char *at = format.data(), *const end = at + format.size();
    for (std::cregex_iterator found(at, end, kConversion), none; found != none; ++found) {
        const auto [from, to] = std::pair((*found)[0].first, (*found)[0].second);
        text.append(at, from).append(converted(*found, {from, end}, arguments, next));
        at = to;
    }
    text.append(at, end);
    if (characterCount(text) <= kLongestMessage) return text;
    return std::string(characters(text, 0, kLongestMessage - kEllipsis.size())).append(kEllipsis);
}

}  // namespace

Flow Executor::run(const Print& print) {
    const TypedValue value = evaluate(*print.value);
    constexpr std::size_t kLongest = 8000;  // bytes
    const std::string text = textOf(viewOf(value.value), value.type);
    report({0, 0, 1, m_line, m_frames.back()->procedure,
            std::string(characters(text, 0, isNational(value.type.id) ? kLongest / 2 : kLongest))});
    m_rowCount = m_error = 0;
    return Flow::Next;
}

Flow Executor::run(const RaiseError& raise) {
    const int askedSeverity = evaluateInteger(*raise.values[1]);
    const int askedState = evaluateInteger(*raise.values[2]);
    int severity = std::max(0, askedSeverity);
    const int state = askedState < 0 ? 1 : std::min(askedState, 255);
    constexpr int kTopUserSeverity = 18;
    if (severity > kTopUserSeverity && !raise.options.contains("LOG")) throw sqlError(kSeverityTooHigh);
    const TypedValue message = evaluate(*raise.values[0]);
    std::string format = textOf(viewOf(message.value), message.type);
    int raisedNumber = kUserDefined;
    if (isInteger(message.type.id)) {
        const int first = m_frames.back()->schemaName == "sys" ? 0 : 13'000;  // others are not for users
        raisedNumber = evaluateInteger(*raise.values[0]);
        if (raisedNumber < first || !findMessage(raisedNumber))
            throw sqlError(raisedNumber < first ? kInvalidRaisedNumber : kNoTextOfRaisedNumber,
                           {format, std::to_string(severity), std::to_string(state)});
        const SqlError known = sqlError(raisedNumber);
        format = known.what();
        if (askedSeverity < 0) severity = known.severity;
    }
    std::vector<TypedValue> arguments;
    for (std::size_t i = 3; i < raise.values.size(); ++i) arguments.push_back(evaluate(*raise.values[i]));
    const SqlError error(raisedNumber, raiseErrorText(format, arguments), severity, state);
    const Message raised = messageOf(error, m_line);
    if (severity > 10) {
        afterError(raised, /*raised=*/true);
    } else {
        report(raised);
        finished();
        if (raise.options.contains("SETERROR")) m_error = raised.number;
    }
    if (raise.options.contains("NOWAIT")) m_sink->flush();
    return Flow::Next;
}

Flow Executor::run(const Throw& node) {
    Message message;
    if (node.values.empty()) {
        if (m_caught.empty()) throw sqlError(kRethrowOutsideCatch);
        message = m_caught.back();
    } else {
        const int number = evaluateInteger(*node.values[0]);
        const int state = evaluateInteger(*node.values[2], TypeId::TinyInt);
        if (number < kUserDefined) throw sqlError(kThrowNumberOutOfRange, {std::to_string(number)});
        message = messageOf({number, evaluateText(*node.values[1]), 16, state}, m_line);
    }
    m_error = message.number;
    if (m_tries > 0) {
        m_doomed = m_doomed || (m_settings.abortOnError && m_transactions > 0);
        throw Raised{message};
    }
    report(message);
    if (m_settings.abortOnError) rollBack();
    throw BatchEnd{};
}

}  // namespace tsql
