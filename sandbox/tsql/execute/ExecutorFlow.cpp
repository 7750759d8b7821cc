// Variables, control of flow, waiting.
#include <thread>

#include "execute/Executor.h"

namespace tsql {

Flow Executor::run(const Declare& declare) {
    for (const auto& each : declare.variables) {
        if (each.table) declareTable(each);
        if (each.isCursor) m_frames.back()->cursors.try_emplace(toLower(each.name));
        if (!each.value) continue;  // in a loop, the variable keeps its value
        m_frames.back()->variables[each.name].value = evaluate(*each.value, each.type);
        m_error = 0;
        m_rowCount = 1;
    }
    return Flow::Next;
}

Flow Executor::run(const Assign& assign) {
    TypedValue& variable = local(assign.name);
    variable.value = evaluate(*assign.value, variable.type);
    return finished(1);
}

Flow Executor::run(const If& node) {
    if (m_settings.describeOnly) {  // both branches
        runStatement(*node.then);
    } else {
        const bool condition = holds(*node.condition);
        m_rowCount = m_error = 0;
        if (condition) return runStatement(*node.then);
    }
    return node.otherwise ? runStatement(*node.otherwise) : Flow::Next;
}

Flow Executor::run(const While& node) {
    const int line = m_line;
    while (holds(*node.condition)) {
        const Flow flow = runStatement(*node.body);
        if (flow == Flow::Break) break;
        if (flow >= Flow::Return) return flow;
        m_line = line;
        beginStatement();
    }
    m_rowCount = m_error = 0;
    return Flow::Next;
}

Flow Executor::run(const Return& node) {
    Frame& frame = *m_frames.back();
    frame.returned = node.value ? evaluate(*node.value, frame.returnType) : Value(std::int64_t{0});
    if (isNull(frame.returned) && !frame.isFunction) {
        inform(kNullReturnStatus, {frame.procedure});
        frame.returned = std::int64_t{0};
    }
    if (node.value && !frame.isFunction) m_rowCount = 1;  // as after an assignment
    return Flow::Return;
}

Flow Executor::run(const TryCatch& node) {
    try {
        const Temporarily within(m_tries, m_tries + 1);
        const Temporarily inFrame(m_frames.back()->tries, m_frames.back()->tries + 1);
        return runBlock(node.attempt);
    } catch (const Raised& raised) {
        if (raised.within == m_frames.back()) throw;
        m_caught.push_back(raised.message);
    }
    const Finally forget([this] { m_caught.pop_back(); });
    return runBlock(node.handler);
}

void Executor::run(const WaitFor& wait) {
    const std::string text = evaluateText(*wait.time);
    const Value time =
        convertValue(text, varcharType(SqlType::kMax), simpleType(TypeId::Time), kNoStyle, Conversion::Try);
    if (isNull(time) || text.find(':') == std::string::npos) throw sqlError(kBadTimeForWaitFor, {text});
    using Clock = std::chrono::steady_clock;
    const Ticks given = fromStorage(std::get<std::string>(time)).time();
    const Ticks pause = wait.until ? (given - timeNow().time() + days(1)) % days(1) : given;
    const auto until = Clock::now() + pause;
    while (Clock::now() < until) {
        if (isCancelled()) throw BatchEnd{};
        constexpr std::chrono::nanoseconds kPause = std::chrono::milliseconds(50);
        std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(kPause, until - Clock::now()));
    }
}

}  // namespace tsql
