#include "commands/ManPages.h"

#include <CLI/CLI.hpp>
#include <fstream>
#include <sstream>

namespace {

// A text in which nothing is a request or an escape of roff.
std::string roff(const std::string& text) {
    std::string escaped;
    for (const char c : text)
        escaped += c == '\\' ? "\\e" : c == '-' ? "\\-" : c == '\n' ? "\n\\&" : std::string(1, c);
    return !escaped.empty() && (escaped.front() == '.' || escaped.front() == '\'') ? "\\&" + escaped
                                                                                   : escaped;
}

std::string joined(const std::string& names, char separator) {
    std::string text = names;
    for (char& c : text)
        if (c == ' ') c = separator;
    return text;
}

void writeOption(std::ostream& out, const CLI::Option& option) {
    const bool isArgument = option.get_positional();
    std::string names = isArgument ? option.get_name(/*positional=*/true) : option.get_name(false, true);
    for (std::size_t at = 0; (at = names.find(',', at)) != names.npos; at += 2) names.insert(at + 1, 1, ' ');
    out << ".TP\n\\fB" << roff(names) << "\\fR";
    if (!isArgument && option.get_items_expected_max() > 0)
        out << " \\fI" << roff(option.get_type_name()) << "\\fR";
    out << "\n" << roff(option.get_description()) << "\n";
}

void writeSection(std::ostream& out, const char* title, const CLI::App& command, bool positional) {
    bool isEmpty = true;
    for (const CLI::Option* option : command.get_options()) {
        if (option->get_positional() != positional || option == command.get_help_ptr()) continue;
        if (isEmpty) out << ".SH " << title << "\n";
        isEmpty = false;
        writeOption(out, *option);
    }
}

std::vector<const CLI::App*> commandsOf(const CLI::App& level) {
    return level.get_subcommands([](const CLI::App*) { return true; });
}

void writeCommands(std::ostream& out, const CLI::App& family) {
    if (!commandsOf(family).empty()) out << ".SH COMMANDS\n";
    for (const CLI::App* command : commandsOf(family))
        out << ".TP\n\\fB" << roff(command->get_name()) << "\\fR\n"
            << roff(command->get_description()) << "\n";
}

std::string pageOf(const CLI::App& command, const std::string& path) {
    const std::string name = joined(path, '-');
    std::string upper = name;
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    std::ostringstream out;
    out << ".TH " << roff(upper) << " 1 \"\" \"DVUtilities\" \"User Commands\"\n.SH NAME\n"
        << roff(name) << " \\- " << roff(command.get_description()) << "\n.SH SYNOPSIS\n\\fB" << roff(path)
        << "\\fR [\\fIOPTIONS\\fR]";
    for (const CLI::Option* option : command.get_options()) {
        if (!option->get_positional()) continue;
        const std::string argument = "\\fI" + roff(option->get_name(/*positional=*/true)) + "\\fR" +
                                     (option->get_items_expected_max() > 1 ? "..." : "");
        out << " " << (option->get_required() ? argument : "[" + argument + "]");
    }
    out << "\n.SH DESCRIPTION\n" << roff(command.get_description()) << ".\n";
    if (command.get_allow_extras()) {  // acceptFurtherWords() describes them
        const std::string footer = command.get_footer();
        out << ".PP\n" << roff(footer.substr(0, footer.find('\n'))) << "\n";
    }
    writeCommands(out, command);
    writeSection(out, "ARGUMENTS", command, /*positional=*/true);
    writeSection(out, "OPTIONS", command, /*positional=*/false);
    if (command.get_parent()->get_parent() != nullptr)
        writeSection(out, "OPTIONS OF THE FAMILY", *command.get_parent(), /*positional=*/false);
    out << ".SH EXIT STATUS\nAs for\n.BR tscript (1).\n.SH SEE ALSO\n.BR tscript (1)\n";
    return out.str();
}

bool writePagesBelow(const CLI::App& level, const std::string& path, const std::string& folder) {
    for (const CLI::App* command : commandsOf(level)) {
        const std::string name = path + " " + command->get_name();
        if (!writePagesBelow(*command, name, folder)) return false;
        std::ofstream out(folder + "/" + joined(name, '-') + ".1");
        out << pageOf(*command, name) << std::flush;
        if (!out) return false;
    }
    return true;
}

}  // namespace

bool writeManPages(const CLI::App& app, const std::string& folder) {
    return writePagesBelow(app, app.get_name(), folder);
}
