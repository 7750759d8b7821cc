#include "Rpc.h"

#include <algorithm>
#include <cctype>
#include <charconv>

#include "Utf16.h"

namespace tds {
namespace {

constexpr std::uint16_t kCallByNumber = 0xFFFF;
constexpr std::uint8_t kNextCallSince72 = 0xFF;
constexpr std::uint8_t kNextCallBefore72 = 0x80;
constexpr std::size_t kMostStatements = 10'000;

struct KnownProcedure {
    int number;
    const char* name;
};
constexpr KnownProcedure kKnownProcedures[] = {
    {10, "sp_executesql"}, {11, "sp_prepare"}, {12, "sp_execute"}, {13, "sp_prepexec"}, {15, "sp_unprepare"}};

std::string nameOf(int number) {
    for (const KnownProcedure& known : kKnownProcedures)
        if (known.number == number) return known.name;
    return "procedure number " + std::to_string(number);
}

std::string lowered(std::string_view text) {
    std::string result(text);
    for (char& c : result) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return result;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool isNextCall(ByteView rest) {
    const auto flag = static_cast<std::uint8_t>(rest[0]);
    return flag == kNextCallSince72 || flag == kNextCallBefore72;
}

RpcCall parseCall(ByteView body, std::size_t& position) {
    ByteReader in(body.substr(position));
    const auto here = [&] { return body.substr(body.size() - in.remaining()); };
    RpcCall call;
    const std::size_t nameLength = in.u16();
    call.procedure = nameLength == kCallByNumber ? nameOf(in.u16()) : utf8FromUtf16(in.bytes(2 * nameLength));
    in.skip(2);  // options: recompile and the like
    while (!in.atEnd() && !isNextCall(here())) call.parameters.push_back(readParameter(in));
    if (!in.atEnd()) in.skip(1);
    position = body.size() - in.remaining();
    return call;
}

// ---- Declarations -------------------------------------------------------------------------------

struct Declaration {
    std::string name;  // with its @
    std::string type;
};

// "@P1 int, @P2 decimal(9,2) OUTPUT" at its commas, those within brackets left.
std::vector<Declaration> splitDeclarations(std::string_view text) {
    std::vector<Declaration> declarations;
    int depth = 0;
    std::size_t start = 0;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i < text.size() && text[i] == '(') ++depth;
        if (i < text.size() && text[i] == ')') --depth;
        if (i < text.size() && (text[i] != ',' || depth > 0)) continue;
        const std::string_view part = trimmed(text.substr(start, i - start));
        start = i + 1;
        if (part.empty()) continue;
        const std::size_t nameEnd = std::min(part.find_first_of(" \t\r\n"), part.size());
        std::string type(trimmed(part.substr(nameEnd)));
        for (const std::string_view word : {" output", " out"})
            if (lowered(type).ends_with(word)) type.resize(type.size() - word.size());
        std::replace(type.begin(), type.end(), '\n', ' ');
        declarations.push_back({std::string(part.substr(0, nameEnd)), type});
    }
    return declarations;
}

const Parameter* valueFor(const Declaration& declaration, std::size_t index,
                          std::span<const Parameter> values) {
    for (const Parameter& value : values)
        if (lowered(value.name) == lowered(declaration.name)) return &value;
    return index < values.size() && values[index].name.empty() ? &values[index] : nullptr;
}

std::string declare(std::string_view name, std::string_view type, const Parameter& value) {
    return "DECLARE " + std::string(name) + " " + std::string(type) + " = " + literal(value) + " ";
}

std::string outputSelect(const std::vector<std::string>& variables) {
    std::string text;
    for (const std::string& variable : variables) {
        text += text.empty() ? "\nSELECT " : ", ";
        text += variable;
        if (&variable == variables.data()) text += " AS [" + std::string(kOutputMarker) + "]";
    }
    return text;
}

// The declarations stand before the statement in its own first line, so that its errors keep their lines.
RpcBatch statementBatch(std::string_view text, std::string_view declarations,
                        std::span<const Parameter> values) {
    RpcBatch batch;
    std::vector<std::string> outputs;
    std::size_t index = 0;
    for (const Declaration& declaration : splitDeclarations(declarations)) {
        const Parameter* value = valueFor(declaration, index++, values);
        if (value == nullptr)
            throw RpcError(8178, 16,
                           "The parameterized query '(" + std::string(declarations) + ")" +
                               std::string(text.substr(0, 100)) + "' expects the parameter '" +
                               declaration.name + "', which was not supplied.");
        batch.text += declare(declaration.name, declaration.type, *value);
        if (!value->output) continue;
        outputs.push_back(declaration.name);
        batch.outputs.push_back({declaration.name, true, value->type, {}});
    }
    batch.text += text;
    batch.text += outputSelect(outputs);
    return batch;
}

RpcBatch procedureBatch(const RpcCall& call) {
    RpcBatch batch;
    batch.returnsStatus = true;
    std::vector<std::string> outputs = {"@tds_status"};
    std::string arguments;
    batch.text = "DECLARE @tds_status int ";
    for (const Parameter& parameter : call.parameters) {
        const std::string variable = "@tds_p" + std::to_string(&parameter - call.parameters.data() + 1);
        batch.text += declare(variable, typeName(parameter.type), parameter);
        arguments += arguments.empty() ? " " : ", ";
        if (!parameter.name.empty()) arguments += parameter.name + " = ";
        arguments += variable;
        if (!parameter.output) continue;
        arguments += " OUTPUT";
        outputs.push_back(variable);
        batch.outputs.push_back(parameter);
    }
    batch.text += "EXEC @tds_status = " + call.procedure + arguments + outputSelect(outputs);
    return batch;
}

const Parameter& argument(const RpcCall& call, std::size_t index) {
    if (index >= call.parameters.size())
        throw RpcError(201, 16,
                       "Procedure or function '" + call.procedure + "' expects parameter number " +
                           std::to_string(index + 1) + ", which was not supplied.");
    return call.parameters[index];
}

std::string textArgument(const RpcCall& call, std::size_t index) {
    return argument(call, index).value.value_or("");
}

int handleArgument(const RpcCall& call) {
    const std::string text = textArgument(call, 0);
    int handle = 0;
    std::from_chars(text.data(), text.data() + text.size(), handle);
    return handle;
}

std::span<const Parameter> from(const RpcCall& call, std::size_t index) {
    return std::span(call.parameters).subspan(std::min(index, call.parameters.size()));
}

}  // namespace

std::vector<RpcCall> parseRpc(ByteView body) {
    std::vector<RpcCall> calls;
    for (std::size_t position = 0; position < body.size() || calls.empty();)
        calls.push_back(parseCall(body, position));
    return calls;
}

RpcBatch PreparedStatements::batchFor(const RpcCall& call) {
    const std::string name = lowered(call.procedure);
    if (name == "sp_executesql") {
        const std::string declarations = call.parameters.size() > 1 ? textArgument(call, 1) : std::string();
        return statementBatch(textArgument(call, 0), declarations, from(call, 2));
    }
    if (name == "sp_prepare") return prepare(call, false);
    if (name == "sp_prepexec") return prepare(call, true);
    if (name == "sp_execute") return execute(call);
    if (name == "sp_unprepare") return unprepare(call);
    if (name.starts_with("procedure number "))
        throw RpcError(2812, 16, "Could not find stored procedure '" + call.procedure + "'.");
    return procedureBatch(call);
}

RpcBatch PreparedStatements::prepare(const RpcCall& call, bool executes) {
    if (m_statements.size() >= kMostStatements)
        throw RpcError(701, 17, "There are too many prepared statements in this session.");
    Statement statement{textArgument(call, 1), textArgument(call, 2)};
    RpcBatch batch;
    if (executes) batch = statementBatch(statement.text, statement.declarations, from(call, 3));
    m_statements[++m_lastHandle] = std::move(statement);
    Parameter handle{call.parameters[0].name, true, {}, std::to_string(m_lastHandle)};
    handle.type.id = tsql::TypeId::Int;
    batch.known.push_back(std::move(handle));
    return batch;
}

RpcBatch PreparedStatements::execute(const RpcCall& call) {
    const auto found = m_statements.find(handleArgument(call));
    if (found == m_statements.end())
        throw RpcError(8179, 16,
                       "Could not find prepared statement with handle " + textArgument(call, 0) + ".");
    return statementBatch(found->second.text, found->second.declarations, from(call, 1));
}

RpcBatch PreparedStatements::unprepare(const RpcCall& call) {
    m_statements.erase(handleArgument(call));
    return {};
}

}  // namespace tds
