#include "package/ParameterListing.h"

#include <algorithm>

std::string parametersText(const std::vector<Parameter>& parameters) {
    std::vector<std::string> heads;
    std::size_t width = 0;
    for (const Parameter& parameter : parameters) {
        heads.push_back("--" + parameter.name + " " + parameter.type);
        width = std::max(width, heads.back().size());
    }
    std::string text;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const Parameter& parameter = parameters[i];
        std::string line = heads[i] + std::string(width + 2 - heads[i].size(), ' ') + parameter.description;
        if (parameter.defaultValue)
            line += std::string(parameter.description.empty() ? "" : " ") +
                    "(default: " + *parameter.defaultValue + ")";
        line.erase(line.find_last_not_of(' ') + 1);
        text += (text.empty() ? "" : "\n") + line;
    }
    return text;
}

Json parametersJson(const std::vector<Parameter>& parameters) {
    Json list = Json::array();
    for (const Parameter& parameter : parameters)
        list.push_back({{"name", parameter.name},
                        {"type", parameter.type},
                        {"default", parameter.defaultValue ? Json(*parameter.defaultValue) : Json()},
                        {"description", parameter.description}});
    return list;
}

std::string withoutParameterLines(const std::string& text) {
    std::string kept;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
        if (text.compare(at, kParameterKey.size(), kParameterKey) != 0) kept += text.substr(at, end - at);
        at = end;
    }
    if (!text.empty() && text.back() != '\n' && !kept.empty() && kept.back() == '\n') kept.pop_back();
    return kept;
}
