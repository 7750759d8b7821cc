#include "console/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <string_view>
#include <type_traits>

#include "console/NearestWord.h"
#include "console/Outcome.h"

namespace {

std::vector<std::string> g_trailingWords;

constexpr std::size_t kLongestWord = 64;  // of an error message; longer ones are truncated

std::vector<const CLI::App*> commandsOf(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App*) { return true; });
}

std::string nearestCommand(const CLI::App& app, const std::string& word) {
    std::vector<std::string> names;
    for (const CLI::App* command : commandsOf(app)) names.push_back(command->get_name());
    return nearestWord(names, word);
}

// Options of a command are accepted after its subcommands as well.
bool takesValue(const CLI::App* command, const std::string& option) {
    if (option.empty() || option.front() != '-') return false;
    for (; command != nullptr; command = command->get_parent())
        if (const CLI::Option* known = command->get_option_no_throw(option))
            return known->get_items_expected_max() > 0;
    return false;
}

// Returns an error message for the first word that is not a command, with the most similar command if there
// is one; empty if all command words are known.
std::string describeUnknownCommand(const CLI::App& app, int argc, char** argv) {
    const CLI::App* level = &app;
    for (int i = 1; i < argc && !commandsOf(*level).empty(); ++i) {
        const std::string word = std::string(argv[i]).substr(0, kLongestWord);
        if (takesValue(level, word)) ++i;
        if (word.empty() || word.front() == '-') continue;
        const auto commands = commandsOf(*level);
        const auto next = std::find_if(commands.begin(), commands.end(),
                                       [&](const CLI::App* command) { return command->check_name(word); });
        if (next == commands.end()) {
            const std::string nearest = nearestCommand(*level, word);
            return "there is no command '" + word + "'" +
                   (nearest.empty() ? std::string() : "; did you mean '" + nearest + "'?");
        }
        level = *next;
    }
    return {};
}

CLI::Validator notEmpty() {
    return {[](std::string& value) { return value.empty() ? "the value is empty" : std::string(); }, ""};
}

// Accepts decimal numbers only and removes leading zeros. The parser alone reads "010" as octal and "nan" as
// a number within every range, and converts "-1" for an unsigned option.
template <typename Number>
CLI::Validator decimalNumber(Number least, Number most) {
    const auto text = [](Number number) { return std::to_string(static_cast<std::uint64_t>(number)); };
    const auto check = [=](std::string& word) -> std::string {
        Number number{};
        const char* const end = word.data() + word.size();
        const auto [rest, error] = std::from_chars(word.data(), end, number);
        const bool isInRange = error == std::errc() && rest == end && number >= least && number <= most;
        if (!isInRange) return "'" + word + "' is not a number from " + text(least) + " to " + text(most);
        if constexpr (std::is_integral_v<Number>) word = std::to_string(number);
        return {};
    };
    return {check,
            std::string(CLI::detail::type_name<Number>()) + " in [" + text(least) + " - " + text(most) + "]"};
}

void apply(CLI::Option* option, const OptionRules& rules) {
    option->required(rules.required);
    if (!rules.mayBeEmpty) option->check(notEmpty());
    if (rules.type != nullptr) option->type_name(rules.type);
    if (!rules.oneOf.empty()) option->check(CLI::IsMember(rules.oneOf));
}

template <typename Number>
void addRangedNumber(CLI::App* command, const char* name, Number& value, const char* help,
                     const NumberRules<Number>& rules) {
    CLI::Option* option = command->add_option(name, value, help);
    option->required(rules.required)->transform(decimalNumber(rules.least, rules.most));
    if (rules.type != nullptr) option->type_name(rules.type);
    if (rules.defaultInHelp) option->capture_default_str();
}

// The program and the command words that have been parsed: "tscript db list".
std::string chosenCommand(const CLI::App& app) {
    const auto commands = app.get_subcommands();
    return app.get_name() + (commands.empty() ? std::string() : " " + chosenCommand(*commands.front()));
}

OptionDescription describe(const CLI::Option& option, bool isHelp) {
    return {.argument = option.get_positional() ? option.get_name(/*positional=*/true) : "",
            .names = option.get_name(/*positional=*/false, /*all_options=*/true),
            .longNames = option.get_lnames(),
            .shortNames = option.get_snames(),
            .valueName = option.get_type_name(),
            .help = option.get_description(),
            .mostValues = option.get_items_expected_max(),
            .isRequired = option.get_required(),
            .isHelp = isHelp};
}

}  // namespace

CommandLine::CommandLine(const char* description, const char* program, const char* version,
                         const char* footer)
    : m_app(std::make_unique<CLI::App>(description, program)) {
    m_app->footer(footer);
    m_app->fallthrough();
    m_app->require_subcommand(1);
    m_app->set_version_flag("--version", version);
}

CommandLine::~CommandLine() = default;

bool CommandLine::parse(int argc, char** argv) {
    char** const lastWord = argv + argc;
    char** const mark = std::find(argv, lastWord, std::string_view("--"));
    if (mark != lastWord) g_trailingWords.assign(mark + 1, lastWord);
    // Commands pass on what they do not know. Not set earlier, because they would inherit it.
    m_app->allow_extras();
    try {
        m_app->parse(argc, argv);
        const std::vector<std::string> unknown = m_app->remaining();
        if (!unknown.empty() && !m_app->get_subcommands().front()->get_allow_extras())
            throw CLI::ExtrasError(m_app->get_name(), unknown);
        return true;
    } catch (const CLI::ParseError& end) {
        const std::string mistyped = describeUnknownCommand(*m_app, argc, argv);
        const bool isHelpOrVersion = end.get_exit_code() == 0;
        if (isHelpOrVersion && mistyped.empty()) {
            m_app->exit(end);
            return false;
        }
        throw Failure(ExitCode::kUsage, mistyped.empty() ? end.what() : mistyped,
                      "See " + chosenCommand(*m_app) + " --help.");
    }
}

CLI::App* addCommand(CLI::App* family, const char* name, const char* description,
                     const std::function<void()>& chosen) {
    CLI::App* command = family->add_subcommand(name, description);
    // The parser calls a command's function after those of its subcommands.
    return command->callback([command, chosen] {
        if (command->get_subcommands().empty()) chosen();
    });
}

CLI::App* addFamily(CLI::App& app, const char* name, const char* description) {
    return app.add_subcommand(name, description)->require_subcommand(1);
}

std::string usageOf(const CLI::App& app) {
    return app.get_formatter()->make_help(&app, app.get_name(), CLI::AppFormatMode::Normal);
}

void setHeading(CLI::App& app, const char* command, const char* heading) {
    app.get_subcommand(command)->group(heading);
}

CommandDescription describe(const CLI::App& app) {
    const std::string footer = app.get_footer();  // of acceptFurtherWords()
    CommandDescription command{
        .name = app.get_name(),
        .help = app.get_description(),
        .furtherWords = app.get_allow_extras() ? footer.substr(0, footer.find('\n')) : "",
        .options = {},
        .commands = {}};
    for (const CLI::Option* option : app.get_options())
        command.options.push_back(describe(*option, /*isHelp=*/option == app.get_help_ptr()));
    for (const CLI::App* below : commandsOf(app)) command.commands.push_back(describe(*below));
    return command;
}

void acceptFurtherWords(CLI::App* command, const char* help) {
    command->allow_extras()->footer(help + std::string("\n") + command->get_footer());
}

std::vector<std::string> furtherWords(const CLI::App& app) {
    return app.remaining();
}

std::string nearestOption(const CLI::App& app, const char* command, const std::string& word) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_subcommand(command)->get_options())
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    return nearestWord(names, word);
}

bool hasCommand(const CLI::App& app, const std::string& name) {
    const auto hasName = [&](const CLI::App* command) { return command->check_name(name); };
    return !app.get_subcommands(hasName).empty();
}

void addOption(CLI::App* command, const char* name, std::string& value, const char* help,
               const OptionRules& rules) {
    apply(command->add_option(name, value, help), rules);
}

void addOption(CLI::App* command, const char* name, std::vector<std::string>& values, const char* help,
               const OptionRules& rules) {
    apply(command->add_option(name, values, help), rules);
}

void addNumber(CLI::App* command, const char* name, int& value, const char* help, NumberRules<int> rules) {
    addRangedNumber(command, name, value, help, rules);
}

void addNumber(CLI::App* command, const char* name, double& value, const char* help,
               NumberRules<double> rules) {
    addRangedNumber(command, name, value, help, rules);
}

void addNumber(CLI::App* command, const char* name, std::uint64_t& value, const char* help,
               NumberRules<std::uint64_t> rules) {
    addRangedNumber(command, name, value, help, rules);
}

void addRepeatable(CLI::App* command, const char* name, std::vector<std::string>& values, const char* help,
                   const char* type) {
    const auto append = [&values](const std::string& value) { values.push_back(value); };
    command->add_option_function<std::string>(name, append, help)
        ->type_name(type)
        ->trigger_on_parse()
        ->allow_extra_args(false);
}

void addTrailingWords(CLI::App* command, const char* name, const char* help) {
    command->add_option_function<std::vector<std::string>>(
        name, [](const auto&) {}, help);
}

const std::vector<std::string>& trailingWords() {
    return g_trailingWords;
}

void addOptionFunction(CLI::App& app, const char* name, const std::function<void(const std::string&)>& set,
                       const char* help, const char* type) {
    app.add_option_function<std::string>(name, set, help)->type_name(type);
}

void addFlag(CLI::App* command, const char* name, bool& value, const char* help, const char* excluded) {
    CLI::Option* flag = command->add_flag(name, value, help);
    if (excluded != nullptr) flag->excludes(command->get_option(excluded));
}

void addChoiceFlag(CLI::App* command, const char* name, std::string& value, const char* help,
                   const std::vector<std::string>& oneOf) {
    command->add_flag(std::string(name) + "{" + oneOf.front() + "}", value, help)
        ->check(CLI::IsMember(oneOf));
}
