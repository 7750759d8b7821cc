// Variables, control of flow, messages of a script, waiting.
#include <algorithm>
#include <chrono>
#include <thread>

#include "execute/Executor.h"
#include "execute/RaiseErrorText.h"
#include "messages/Messages.h"
#include "types/Finally.h"
#include "types/Text.h"
#include "types/Work.h"

namespace tsql {

using namespace ast;

Flow Executor::run(const Declare& declare) {
    for (const auto& each : declare.variables) {
        if (each.table) {
            declareTable(each);
            continue;
        }
        if (!each.value) continue;  // in a loop, the variable keeps its value
        m_frames.back()->variables[each.name].value = evaluate(*each.value, each.type);
        m_error = 0;
        m_rowCount = 1;
    }
    return Flow::Next;
}

Flow Executor::run(const Assign& assign) {
    Variable& variable = local(assign.name);
    variable.value = evaluate(*assign.value, variable.type);
    return finished(1);
}

Flow Executor::run(const If& node) {
    const bool condition = holds(*node.condition);
    m_error = 0;
    m_rowCount = 0;
    if (condition) return runStatement(*node.then);
    return node.otherwise ? runStatement(*node.otherwise) : Flow::Next;
}

Flow Executor::run(const While& node) {
    const int line = m_line;
    while (holds(*node.condition)) {
        const Flow flow = runStatement(*node.body);
        if (flow == Flow::Break) break;
        if (flow >= Flow::Return) return flow;
        if (isCancelled()) throw BatchEnd{};
        m_line = line;
        m_functions.beginStatement();
    }
    m_error = 0;
    m_rowCount = 0;
    return Flow::Next;
}

Flow Executor::run(const Return& node) {
    Frame& frame = *m_frames.back();
    frame.returned = node.value ? evaluate(*node.value, frame.returnType) : Value(std::int64_t{0});
    if (isNull(frame.returned) && !frame.isFunction) {
        inform(message::kNullReturnStatus, {frame.procedure});
        frame.returned = std::int64_t{0};
    }
    if (node.value && !frame.isFunction) m_rowCount = 1;  // as after an assignment
    return Flow::Return;
}

Flow Executor::run(const TryCatch& node) {
    std::optional<Message> caught;
    try {
        const Temporarily within(m_tries, m_tries + 1);
        const Temporarily inFrame(m_frames.back()->tries, m_frames.back()->tries + 1);
        return runBlock(node.attempt);
    } catch (const Raised& raised) {
        if (raised.within == m_frames.back()) throw;
        caught = raised.message;
    }
    m_caught.push_back(*caught);
    const Finally forget([this] { m_caught.pop_back(); });
    return runBlock(node.handler);
}

Flow Executor::run(const Print& print) {
    const TypedValue value = evaluate(*print.value);
    constexpr std::size_t kLongest = 8000;  // bytes
    const std::string text = textOf(viewOf(value.value), value.type);
    report({0, 0, 1, m_line, m_frames.back()->procedure,
            std::string(characters(text, 0, isNational(value.type.id) ? kLongest / 2 : kLongest))});
    m_error = 0;
    m_rowCount = 0;
    return Flow::Next;
}

Flow Executor::run(const RaiseError& raise) {
    const auto number = [this](const Expr& expr) {
        const Value value = evaluate(expr, simpleType(TypeId::Int));
        return isNull(value) ? 0 : static_cast<int>(std::get<std::int64_t>(value));
    };
    const int severity = std::max(0, number(*raise.severity));
    const int asked = number(*raise.state);
    const int state = asked < 0 ? 1 : std::min(asked, 255);
    constexpr int kTopUserSeverity = 18;
    if (severity > kTopUserSeverity && !raise.log) throw sqlError(message::kSeverityTooHigh);
    const TypedValue message = evaluate(*raise.message);
    if (isInteger(message.type.id)) {
        constexpr std::int64_t kFirst = 13'000;
        const auto* asks = std::get_if<std::int64_t>(&message.value);
        throw sqlError(
            asks && *asks >= kFirst ? message::kNoTextOfRaisedNumber : message::kInvalidRaisedNumber,
            {textOf(viewOf(message.value), message.type), std::to_string(severity), std::to_string(state)});
    }
    std::vector<TypedValue> arguments;
    for (const auto& argument : raise.arguments) arguments.push_back(evaluate(*argument));
    const Message raised{message::kUserDefined,
                         severity,
                         state,
                         m_line,
                         m_frames.back()->procedure,
                         raiseErrorText(textOf(viewOf(message.value), message.type), arguments)};
    if (severity > 10) {
        afterError(raised, /*raised=*/true);
    } else {
        report(raised);
        finished();
        if (raise.setError) m_error = raised.number;
    }
    if (raise.noWait) m_sink->flush();
    return Flow::Next;
}

Flow Executor::run(const Throw& node) {
    Message message;
    if (!node.number) {
        if (m_caught.empty()) throw sqlError(message::kRethrowOutsideCatch);
        message = m_caught.back();
    } else {
        const Value number = evaluate(*node.number, simpleType(TypeId::Int));
        const Value state = evaluate(*node.state, simpleType(TypeId::TinyInt));
        const auto given = isNull(number) ? 0 : std::get<std::int64_t>(number);
        if (given < message::kUserDefined)
            throw sqlError(message::kThrowNumberOutOfRange, {std::to_string(given)});
        message = {static_cast<int>(given),
                   16,
                   isNull(state) ? 0 : static_cast<int>(std::get<std::int64_t>(state)),
                   m_line,
                   m_frames.back()->procedure,
                   evaluateText(*node.message)};
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

Flow Executor::run(const WaitFor& wait) {
    const std::string text = evaluateText(*wait.time);
    const Value time =
        convertValue(text, varcharType(SqlType::kMax), simpleType(TypeId::Time), kNoStyle, Conversion::Try);
    if (isNull(time) || text.find(':') == std::string::npos)
        throw sqlError(message::kBadTimeForWaitFor, {text});
    using Clock = std::chrono::steady_clock;
    constexpr std::int64_t kNanosecondsPerTick = 100;
    constexpr std::int64_t kDay = 86'400LL * 10'000'000;
    const auto given = fromStorage(std::get<std::string>(time)).ticks;
    const auto ticks = wait.until ? (given - timeNow().local.ticks + kDay) % kDay : given;
    const auto until = Clock::now() + std::chrono::nanoseconds(ticks * kNanosecondsPerTick);
    while (Clock::now() < until) {
        if (isCancelled()) throw BatchEnd{};
        constexpr std::chrono::nanoseconds kSlice = std::chrono::milliseconds(50);
        std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(kSlice, until - Clock::now()));
    }
    return finished();
}

}  // namespace tsql
