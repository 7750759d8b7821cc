#include "run/NamedValues.h"

#include <algorithm>
#include <optional>

#include "console/NearestWord.h"
#include "console/Outcome.h"

namespace {

constexpr std::size_t kLongestQuotation = 64;  // of a value or word in an error message

std::string quotation(const std::string& text) {
    return "'" + (text.size() > kLongestQuotation ? text.substr(0, kLongestQuotation) + "..." : text) + "'";
}

[[noreturn]] void throwUnknown(const std::vector<Parameter>& parameters, const std::string& name) {
    std::vector<std::string> names;
    for (const Parameter& parameter : parameters) names.push_back(parameter.name);
    const std::string nearest = nearestWord(names, name);
    throw Failure(ExitCode::kUsage, "the script has no parameter " + quotation(name),
                  nearest.empty() ? "tscript params shows the script's parameters."
                                  : "Did you mean --" + nearest + "?");
}

void checkNames(const std::vector<Parameter>& parameters, const std::vector<NamedValue>& named) {
    std::vector<const Parameter*> given;
    for (const NamedValue& value : named) {
        const Parameter* parameter = findParameter(parameters, value.name);
        if (parameter == nullptr) throwUnknown(parameters, value.name);
        if (std::find(given.begin(), given.end(), parameter) != given.end())
            throw Failure(ExitCode::kUsage, "--" + parameter->name + " is given twice");
        given.push_back(parameter);
    }
}

[[noreturn]] void throwMissing(const Parameter& parameter) {
    std::string what = "the value of --" + parameter.name + " (" + parameter.type + ") is missing";
    if (!parameter.description.empty()) what += ": " + parameter.description;
    throw Failure(ExitCode::kUsage, what, "Give it as --" + parameter.name + " VALUE or by -p.");
}

}  // namespace

std::vector<NamedValue> namedValues(const std::vector<std::string>& words) {
    std::vector<NamedValue> values;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (word.compare(0, 2, "--") != 0 || word.size() == 2)
            throw Failure(ExitCode::kUsage, quotation(word) + " is not expected",
                          "Values follow -p, or --NAME for a parameter that the package declares.");
        const std::size_t equals = word.find('=');
        if (equals == word.npos && i + 1 == words.size())
            throw Failure(ExitCode::kUsage, quotation(word) + " needs a value");
        const std::string name = word.substr(2, equals == word.npos ? equals : equals - 2);
        values.push_back({name, equals == word.npos ? words[++i] : word.substr(equals + 1)});
    }
    return values;
}

std::vector<std::string> valuesInOrder(const std::vector<Parameter>& parameters,
                                       const std::vector<std::string>& positional,
                                       const std::vector<NamedValue>& named, bool allowMissing) {
    checkNames(parameters, named);
    std::vector<std::string> values;
    const Parameter* firstMissing = nullptr;
    auto next = positional.begin();
    for (const Parameter& parameter : parameters) {
        const auto byName = std::find_if(named.begin(), named.end(), [&](const NamedValue& value) {
            return findParameter({parameter}, value.name) != nullptr;
        });
        std::optional<std::string> value = parameter.defaultValue;
        if (byName != named.end()) {
            value = byName->value;
        } else if (next != positional.end()) {
            value = *next++;
        }
        if (!value) {
            if (!allowMissing) throwMissing(parameter);
            if (firstMissing == nullptr) firstMissing = &parameter;
            continue;
        }
        if (firstMissing != nullptr) throwMissing(*firstMissing);
        const std::string problem = valueProblem(parameter, *value);
        if (!problem.empty())
            throw Failure(ExitCode::kUsage,
                          "the value of --" + parameter.name + " " + problem + ": " + quotation(*value),
                          parameter.description);
        values.push_back(std::move(*value));
    }
    values.insert(values.end(), next, positional.end());
    return values;
}
