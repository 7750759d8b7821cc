#include "commands/ManPages.h"

#include <fstream>
#include <sstream>

namespace {

// Escapes text for roff: nothing in the result is a request or an escape.
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

void writeOption(std::ostream& out, const OptionDescription& option) {
    std::string names = option.isArgument() ? option.argument : option.names;
    for (std::size_t at = 0; (at = names.find(',', at)) != names.npos; at += 2) names.insert(at + 1, 1, ' ');
    out << ".TP\n\\fB" << roff(names) << "\\fR";
    if (!option.isArgument() && option.mostValues > 0) out << " \\fI" << roff(option.valueName) << "\\fR";
    out << "\n" << roff(option.help) << "\n";
}

void writeSection(std::ostream& out, const char* title, const CommandDescription& command, bool ofArguments) {
    bool isEmpty = true;
    for (const OptionDescription& option : command.options) {
        if (option.isHelp || option.isArgument() != ofArguments) continue;
        if (isEmpty) out << ".SH " << title << "\n";
        isEmpty = false;
        writeOption(out, option);
    }
}

void writeCommands(std::ostream& out, const CommandDescription& family) {
    if (!family.commands.empty()) out << ".SH COMMANDS\n";
    for (const CommandDescription& command : family.commands)
        out << ".TP\n\\fB" << roff(command.name) << "\\fR\n" << roff(command.help) << "\n";
}

// `family` is null for a command that belongs to none.
std::string pageOf(const CommandDescription& command, const CommandDescription* family,
                   const std::string& path) {
    const std::string name = joined(path, '-');
    std::string upper = name;
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    std::ostringstream out;
    out << ".TH " << roff(upper) << " 1 \"\" \"DVUtilities\" \"User Commands\"\n.SH NAME\n"
        << roff(name) << " \\- " << roff(command.help) << "\n.SH SYNOPSIS\n\\fB" << roff(path)
        << "\\fR [\\fIOPTIONS\\fR]";
    for (const OptionDescription& option : command.options) {
        if (!option.isArgument()) continue;
        const std::string argument =
            "\\fI" + roff(option.argument) + "\\fR" + (option.mostValues > 1 ? "..." : "");
        out << " " << (option.isRequired ? argument : "[" + argument + "]");
    }
    out << "\n.SH DESCRIPTION\n" << roff(command.help) << ".\n";
    if (!command.furtherWords.empty()) out << ".PP\n" << roff(command.furtherWords) << "\n";
    writeCommands(out, command);
    writeSection(out, "ARGUMENTS", command, /*ofArguments=*/true);
    writeSection(out, "OPTIONS", command, /*ofArguments=*/false);
    if (family != nullptr) writeSection(out, "OPTIONS OF THE FAMILY", *family, /*ofArguments=*/false);
    out << ".SH EXIT STATUS\nAs for\n.BR tscript (1).\n.SH SEE ALSO\n.BR tscript (1)\n";
    return out.str();
}

bool writePagesBelow(const CommandDescription& level, const CommandDescription* family,
                     const std::string& path, const std::string& folder) {
    for (const CommandDescription& command : level.commands) {
        const std::string name = path + " " + command.name;
        if (!writePagesBelow(command, &command, name, folder)) return false;
        std::ofstream out(folder + "/" + joined(name, '-') + ".1");
        out << pageOf(command, family, name) << std::flush;
        if (!out) return false;
    }
    return true;
}

}  // namespace

bool writeManPages(const CommandDescription& program, const std::string& folder) {
    return writePagesBelow(program, /*family=*/nullptr, program.name, folder);
}
