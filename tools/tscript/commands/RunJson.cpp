#include "commands/RunJson.h"

#include "console/Times.h"

const char* kindOf(int type) {
    const bool isProcedure = (type & kTScriptPermanent) != 0;
    const bool isPackage = (type & kTScriptPackageBits) != 0;
    if (isProcedure && isPackage) return "both";
    return isProcedure ? "procedure" : isPackage ? "package" : "other";
}

std::string statusText(const RunView& view) {
    return view.state == RunState::kUnknown ? std::to_string(view.run.status) : nameOf(view.state);
}

Json jsonOf(const RunView& view) {
    const TScriptRun_t& run = view.run;
    const bool ended = run.status != 0;
    return {{"id", run.id},
            {"name", run.name},
            {"kind", kindOf(run.type)},
            {"status", statusText(view)},
            {"start", utcTime(run.startTime)},
            {"end", ended ? Json(utcTime(run.endTime)) : Json()},
            {"seconds", view.seconds},
            {"user", run.userId},
            {"input", run.input}};
}
