// Named and typed parameters that a package's header declares: one line each, in the order of the
// placeholders.
//
//     Parameter:NAME TYPE[(LIMITS)] [DEFAULT] ["DESCRIPTION"]
//
// Programs that do not know these lines take them for text of the description.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct Parameter {
    std::string name;
    std::string type;                         // as written: "int(1..365)"
    std::optional<std::string> defaultValue;  // of a run that gives none; empty: a run must give a value
    std::string description;
};

inline constexpr std::string_view kParameterKey = "Parameter:";

// Parses the text behind the key. Returns what is wrong with it; empty if it is a declaration.
std::string parseParameter(std::string_view text, Parameter& parameter);

// Returns why the value does not fit the type, as the end of a sentence ("is no int"); empty if it does.
std::string valueProblem(const Parameter& parameter, const std::string& value);

// All values of a type that has few of them; empty for other types.
std::vector<std::string> valuesOf(const Parameter& parameter);

// Null if there is none of that name. Letters of both cases are the same.
const Parameter* findParameter(const std::vector<Parameter>& parameters, std::string_view name);

// Whether `tscript run` has an option of that name, which would take the value.
bool isOptionOfRun(std::string_view name);

struct ParameterList {
    std::vector<Parameter> parameters;  // none if there is a problem
    std::string problem;                // why the header's lines declare nothing
};

// Reads the declarations of an encrypted package. Throws Failure like inspectPackage().
ParameterList readParameters(const std::string& packageFile);
