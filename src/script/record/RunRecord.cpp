#include "record/RunRecord.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <iterator>

#include "json/Json.h"

namespace {

constexpr int kVersion = 1;
constexpr std::int64_t kPerSecond = 1000;

constexpr const char* kPlaces[] = {"",     "connection", "statement",    "query tool",
                                   "file", "package",    "configuration"};

struct TextMember {
    const char* name;
    std::string DVUCause_t::*member;
};
constexpr TextMember kCauseTexts[] = {{"sqlState", &DVUCause_t::sqlState},
                                      {"procedure", &DVUCause_t::procedure},
                                      {"server", &DVUCause_t::server},
                                      {"subject", &DVUCause_t::subject},
                                      {"text", &DVUCause_t::text}};

struct NumberMember {
    const char* name;
    int DVUCause_t::*member;
    int unknown;
};
constexpr NumberMember kCauseNumbers[] = {{"message", &DVUCause_t::serverError, 0},
                                          {"state", &DVUCause_t::state, 0},
                                          {"severity", &DVUCause_t::severity, 0},
                                          {"line", &DVUCause_t::line, 0},
                                          {"systemError", &DVUCause_t::systemError, 0},
                                          {"exitCode", &DVUCause_t::exitCode, -1},
                                          {"signal", &DVUCause_t::signal, 0}};

Json orNull(const std::string& text) {
    return text.empty() ? Json() : Json(text);
}

Json jsonOf(const DVUCause_t& cause) {
    Json json = Json::object();
    json["where"] = causePlaceName(cause.where);
    for (const NumberMember& number : kCauseNumbers)
        if (cause.*number.member != number.unknown) json[number.name] = cause.*number.member;
    for (const TextMember& text : kCauseTexts)
        if (!(cause.*text.member).empty()) json[text.name] = cause.*text.member;
    return json;
}

Json jsonOf(const std::vector<DVUCause_t>& causes) {
    Json json = Json::array();
    for (const DVUCause_t& cause : causes) json.push_back(jsonOf(cause));
    return json;
}

int intIn(const Json& json, const char* name, int unknown = 0) {
    return static_cast<int>(json.memberNumber(name, unknown));
}

// 0 for any text that isoTime() does not write.
std::int64_t timeIn(const Json& json, const char* name) {
    const std::string text = json.memberText(name);
    std::tm time{};
    const char* rest = strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S", &time);
    int milliseconds = 0;
    if (rest == nullptr || std::sscanf(rest, ".%3dZ", &milliseconds) != 1) return 0;
    const std::int64_t parsed = timegm(&time) * kPerSecond + milliseconds;
    return parsed > 0 && isoTime(parsed) == text ? parsed : 0;
}

DVUCause_t causeIn(const Json& json) {
    DVUCause_t cause;
    const std::string where = json.memberText("where");
    for (int place = 1; place < static_cast<int>(std::size(kPlaces)); ++place)
        if (where == kPlaces[place]) cause.where = place;
    for (const NumberMember& number : kCauseNumbers)
        cause.*number.member = intIn(json, number.name, number.unknown);
    for (const TextMember& text : kCauseTexts) cause.*text.member = json.memberText(text.name);
    return cause;
}

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

}  // namespace

const char* causePlaceName(int where) {
    return where > 0 && where < static_cast<int>(std::size(kPlaces)) ? kPlaces[where] : "";
}

std::string isoTime(std::int64_t milliseconds) {
    const std::time_t seconds = milliseconds / kPerSecond;
    std::tm time{};
    gmtime_r(&seconds, &time);
    std::array<char, 64> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &time);
    std::snprintf(text.data() + length, text.size() - length, ".%03dZ",
                  static_cast<int>(milliseconds % kPerSecond));
    return text.data();
}

std::string withoutMiddle(std::string_view text, std::size_t most) {
    if (text.size() <= most) return std::string(text);
    std::size_t first = most / 2;
    while (first > 0 && isContinuation(text[first])) --first;
    std::size_t second = text.size() - (most - most / 2);
    while (second < text.size() && isContinuation(text[second])) ++second;
    return std::string(text.substr(0, first)) + "\n[" + std::to_string(second - first) +
           " bytes are left out]\n" + std::string(text.substr(second));
}

Json jsonOf(const RunRecord& record) {
    Json json = Json::object();
    json["version"] = kVersion;
    json["run"] = record.run > 0 ? Json(record.run) : Json();
    json["script"] = record.script;
    json["kind"] = record.isPackage ? "package" : "procedure";
    json["sha256"] = orNull(record.sha256);
    json["database"] = record.database;
    json["server"] = record.server;
    json["host"] = record.host;
    json["installation"] = record.installation;
    json["user"] = record.user;
    json["program"] = record.program;
    json["process"] = record.process;
    json["start"] = isoTime(record.start);
    json["end"] = isoTime(record.end);
    json["status"] = record.succeeded ? "ok" : "failed";
    json["journalUser"] = record.journalUser;
    json["input"] = record.input ? Json(*record.input) : Json();
    json["causes"] = jsonOf(record.causes);
    json["output"] = record.output;
    json["outputBytes"] = record.outputBytes;
    json["outputCut"] = record.outputCut;
    return json;
}

std::string parseRecord(std::string_view text, RunRecord& record) {
    const std::optional<Json> parsed = jsonOfText(text);
    if (!parsed || !parsed->isObject()) return "it is damaged";
    const Json& json = *parsed;
    const std::int64_t version = json.memberNumber("version");
    if (version > kVersion) return "it has version " + std::to_string(version) + ", which is not supported";
    record.run = intIn(json, "run");
    record.script = json.memberText("script");
    record.isPackage = json.memberText("kind") == "package";
    record.sha256 = json.memberText("sha256");
    record.database = json.memberText("database");
    record.server = json.memberText("server");
    record.host = json.memberText("host");
    record.installation = json.memberText("installation");
    record.user = json.memberText("user");
    record.program = json.memberText("program");
    record.process = intIn(json, "process");
    record.start = timeIn(json, "start");
    record.end = timeIn(json, "end");
    record.succeeded = json.memberText("status") == "ok";
    record.journalUser = intIn(json, "journalUser");
    if (const Json* const input = json.find("input"); input != nullptr && input->isText())
        record.input = json.memberText("input");
    record.causes.clear();
    if (const Json* const causes = json.find("causes"); causes != nullptr && causes->isArray())
        for (const Json& cause : causes->elements())
            if (cause.isObject()) record.causes.push_back(causeIn(cause));
    record.output = json.memberText("output");
    record.outputBytes = static_cast<std::size_t>(json.memberNumber("outputBytes"));
    record.outputCut = json.memberIsTrue("outputCut");
    const bool isComplete = version == kVersion && !record.script.empty() && record.start != 0;
    return isComplete ? "" : "it is damaged";
}
