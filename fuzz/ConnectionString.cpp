// Connection strings: each value is read back from the string as it was given, whatever it holds.
#include "ConnectionString.h"

#include <map>
#include <string>

#include "Fuzz.h"

namespace {

// Attributes of a connection string. In braces, Microsoft's drivers read two closing ones as one, and FreeTDS
// reads up to the first "};".
std::map<std::string, std::string> attributesOf(std::string_view text, bool isFreeTds) {
    std::map<std::string, std::string> attributes;
    while (!text.empty()) {
        const std::size_t equals = text.find('=');
        fuzz::require(equals != text.npos);
        std::string& value = attributes[std::string(text.substr(0, equals))];
        text.remove_prefix(equals + 1);
        const bool isBraced = text.starts_with('{');
        if (isBraced) text.remove_prefix(1);
        while (!text.empty() &&
               (isBraced ? text[0] != '}' || (isFreeTds ? !text.starts_with("};") : text.starts_with("}}"))
                         : text[0] != ';')) {
            if (isBraced && !isFreeTds && text[0] == '}') text.remove_prefix(1);
            value += text[0];
            text.remove_prefix(1);
        }
        fuzz::require(text.substr(0, isBraced ? 2 : 1) == (isBraced ? "};" : ";"));
        text.remove_prefix(isBraced ? 2 : 1);
    }
    return attributes;
}

}  // namespace

// Server, database, user, password.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto parts = fuzz::partsOf(fuzz::textOf(data, size));
    parts.resize(4);
    hostlayer::ConnectionRequest request{
        .server = {}, .database = parts[1], .user = parts[2], .password = parts[3]};
    std::string problem;
    if (!hostlayer::parseServer(parts[0], request.server, problem)) return 0;
    for (const char* driver : {"FreeTDS", "ODBC Driver 18 for SQL Server"}) {
        const bool isFreeTds = std::string_view(driver) == "FreeTDS";
        std::string text;
        if (!hostlayer::makeConnectionString({driver, "", "require", ""}, request, text, problem)) continue;
        const auto target = hostlayer::probeTargetOf(text);
        fuzz::require(target.has_value() == (isFreeTds && request.server.instance.empty()));
        auto attributes = attributesOf(text, isFreeTds);
        // FreeTDS has an attribute for the port, unless there is an instance; Microsoft's drivers have none,
        // but two for the encryption.
        const std::size_t count = isFreeTds && !request.server.instance.empty() ? 6 : 7;
        fuzz::require(attributes["Driver"] == driver && attributes["Database"] == parts[1] &&
                      attributes["UID"] == parts[2] && attributes["PWD"] == parts[3] &&
                      attributes["Server"].starts_with(request.server.host) && attributes.size() == count);
    }
    return 0;
}
