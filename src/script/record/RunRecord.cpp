#include "record/RunRecord.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <iterator>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

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

// Text of a JSON object, `indent` columns from the left. Values are added one by one, because the destructor
// of a tree of values needs memory, and lack of it would end the program.
class ObjectText {
  public:
    explicit ObjectText(std::size_t indent) : m_indent(indent, ' ') {}
    void add(const char* name, const Json& scalar) {
        addText(name, scalar.dump(-1, ' ', /*ensure_ascii=*/false, Json::error_handler_t::replace));
    }
    void addText(const char* name, const std::string& text) {
        m_members += m_members.empty() ? "{\n" : ",\n";
        m_members += m_indent + "  \"" + name + "\": " + text;
    }
    std::string text() const { return m_members + "\n" + m_indent + "}"; }

  private:
    std::string m_indent;
    std::string m_members;
};

std::string textOf(const DVUCause_t& cause, std::size_t indent) {
    ObjectText json(indent);
    json.add("where", causePlaceName(cause.where));
    for (const NumberMember& number : kCauseNumbers)
        if (cause.*number.member != number.unknown) json.add(number.name, cause.*number.member);
    for (const TextMember& text : kCauseTexts)
        if (!(cause.*text.member).empty()) json.add(text.name, cause.*text.member);
    return json.text();
}

std::string textOf(const std::vector<DVUCause_t>& causes) {
    constexpr std::size_t kIndent = 4;
    std::string text = "[";
    for (const DVUCause_t& cause : causes) {
        text += text == "[" ? "\n" : ",\n";
        text += std::string(kIndent, ' ') + textOf(cause, kIndent);
    }
    return text + (causes.empty() ? "]" : "\n  ]");
}

std::string textIn(const Json& json, const char* name) {
    const auto member = json.find(name);
    return member != json.end() && member->is_string() ? member->get<std::string>() : std::string();
}

std::int64_t numberIn(const Json& json, const char* name, std::int64_t unknown = 0) {
    const auto member = json.find(name);
    return member != json.end() && member->is_number_integer() ? member->get<std::int64_t>() : unknown;
}

int intIn(const Json& json, const char* name, int unknown = 0) {
    return static_cast<int>(numberIn(json, name, unknown));
}

// 0 for any text that isoTime() does not write.
std::int64_t timeIn(const Json& json, const char* name) {
    const std::string text = textIn(json, name);
    std::tm time{};
    const char* rest = strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S", &time);
    int milliseconds = 0;
    if (rest == nullptr || std::sscanf(rest, ".%3dZ", &milliseconds) != 1) return 0;
    return std::max<std::int64_t>(timegm(&time) * kPerSecond + milliseconds, 0);
}

DVUCause_t causeIn(const Json& json) {
    DVUCause_t cause;
    const std::string where = textIn(json, "where");
    for (int place = 1; place < static_cast<int>(std::size(kPlaces)); ++place)
        if (where == kPlaces[place]) cause.where = place;
    for (const NumberMember& number : kCauseNumbers)
        cause.*number.member = intIn(json, number.name, number.unknown);
    for (const TextMember& text : kCauseTexts) cause.*text.member = textIn(json, text.name);
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

std::string jsonOf(const RunRecord& record) {
    ObjectText json(/*indent=*/0);
    json.add("version", kVersion);
    json.add("run", record.run > 0 ? Json(record.run) : Json());
    json.add("script", record.script);
    json.add("kind", record.isPackage ? "package" : "procedure");
    json.add("sha256", orNull(record.sha256));
    json.add("database", record.database);
    json.add("server", record.server);
    json.add("host", record.host);
    json.add("installation", record.installation);
    json.add("user", record.user);
    json.add("program", record.program);
    json.add("process", record.process);
    json.add("start", isoTime(record.start));
    json.add("end", isoTime(record.end));
    json.add("status", record.succeeded ? "ok" : "failed");
    json.add("journalUser", record.journalUser);
    json.add("input", record.input ? Json(*record.input) : Json());
    json.addText("causes", textOf(record.causes));
    json.add("output", record.output);
    json.add("outputBytes", record.outputBytes);
    json.add("outputCut", record.outputCut);
    return json.text() + "\n";
}

std::string parseRecord(const std::string& text, RunRecord& record) {
    const Json json = Json::parse(text, /*cb=*/nullptr, /*allow_exceptions=*/false);
    if (!json.is_object()) return "it is damaged";
    const std::int64_t version = numberIn(json, "version");
    if (version > kVersion) return "it has version " + std::to_string(version) + ", which is not supported";
    record.run = intIn(json, "run");
    record.script = textIn(json, "script");
    record.isPackage = textIn(json, "kind") == "package";
    record.sha256 = textIn(json, "sha256");
    record.database = textIn(json, "database");
    record.server = textIn(json, "server");
    record.host = textIn(json, "host");
    record.installation = textIn(json, "installation");
    record.user = textIn(json, "user");
    record.program = textIn(json, "program");
    record.process = intIn(json, "process");
    record.start = timeIn(json, "start");
    record.end = timeIn(json, "end");
    record.succeeded = textIn(json, "status") == "ok";
    record.journalUser = intIn(json, "journalUser");
    const auto input = json.find("input");
    if (input != json.end() && input->is_string()) record.input = input->get<std::string>();
    record.causes.clear();
    if (const auto causes = json.find("causes"); causes != json.end() && causes->is_array())
        for (const Json& cause : *causes)
            if (cause.is_object()) record.causes.push_back(causeIn(cause));
    record.output = textIn(json, "output");
    record.outputBytes = static_cast<std::size_t>(numberIn(json, "outputBytes"));
    const auto cut = json.find("outputCut");
    record.outputCut = cut != json.end() && cut->is_boolean() && cut->get<bool>();
    const bool isComplete = version == kVersion && !record.script.empty() && record.start != 0;
    return isComplete ? "" : "it is damaged";
}
