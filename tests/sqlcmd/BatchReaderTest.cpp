#include "script/BatchReader.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "TempDir.h"
#include "text/Errors.h"

using namespace sqlcmd;

namespace {

// Steps of a script, each in angle brackets.
std::string stepsOf(ScriptSource source, Variables& variables, bool expand = true) {
    std::string result;
    BatchReader reader(std::move(source), variables, {.expandVariables = expand});
    for (Step step; (step = reader.next()).kind != Step::Kind::End;) {
        static const char* const kNames[] = {"", "exit?", "exit", "xml", "onerror"};
        result += '<' + std::string(kNames[static_cast<int>(step.kind)]);
        if (step.kind == Step::Kind::Xml || step.kind == Step::Kind::OnError)
            result += step.on ? " on" : " off";
        if (step.count != 1) result += std::to_string(step.count) + "*";
        result += step.text + '>';
        if (step.kind == Step::Kind::Exit || step.kind == Step::Kind::ExitQuery) break;
    }
    return result;
}

std::string stepsOf(const std::string& script, bool expand = true) {
    Variables variables;
    variables.set("T", "it's");
    return stepsOf(ScriptSource::ofText(script), variables, expand);
}

TEST(BatchReader, DividesScripts) {
    const std::pair<const char*, const char*> cases[] = {
        {"a\nGO\nb", "<a\n><b\n>"},
        {"a\n \tgo  3 \r\nb\ngo 0\nGO\n\nGO\n", "<3*a\n>"},
        {"a\nGO -- first\nb\ngo 2 --twice\n", "<a\n><2*b\n>"},
        {"a\ngoto x\nGO FROM y\ngo;\n", "<a\ngoto x\nGO FROM y\ngo;\n>"},
        {"s = 'x\nGO\n''\nGO\n'\nGO\nb", "<s = 'x\nGO\n''\nGO\n'\n><b\n>"},
        {"/* ' /*\nGO\n*/\nGO\n*/ a\nGO\nb", "</* ' /*\nGO\n*/\nGO\n*/ a\n><b\n>"},
        {"-- it's /*\nGO\nb", "<-- it's /*\n><b\n>"},
        {"[it's]]\nGO\n]\nGO\n\"a\nGO\n\"", "<[it's]]\nGO\n]\n><\"a\nGO\n\"\n>"},
        {"'/*'\nGO\nb", "<'/*'\n><b\n>"},
        {":xml on\na\n:XML OFF\nGO\n:on error exit\n:On Error Ignore\n",
         "<xml on><xml off><a\n><onerror on><onerror off>"},
        {"a\n:exit\nb", "<exit>"},
        {"a\nexit(select 1)\nb", "<exit?a\nselect 1>"},
        {"a\nGO\nquit\nb", "<a\n><exit>"},
        {"a\n:reset\nb\n::fn()\n", "<b\n::fn()\n>"},
        {"a\nreset\nb\n:exit()", "<exit?b\n>"},
        {"exit( )", "<exit>"},
        {"a\n:Exit (\nselect ')' -- )\n, [)] /* ) */\n) \nb", "<exit?a\nselect ')' -- )\n, [)] /* ) */>"},
    };
    for (const auto& [script, steps] : cases) EXPECT_EQ(stepsOf(script), steps) << script;
}

TEST(BatchReader, ExpandsVariables) {
    EXPECT_EQ(stepsOf("a $(t)'$(T)' /* $(no) */ -- $(no)\nb'\nGO\n"),
              "<a it's'it's' /* $(no) */ -- $(no)\nb'\nGO\n>");
    EXPECT_EQ(stepsOf(":setvar n 2\n:setvar q \"x \"\"y\"\" $(n)\"\n$(Q)$(a b)\nGO $(n)\n"),
              "<2*x \"y\" 2$(a b)\n>");
    EXPECT_EQ(stepsOf("$(no)", false), "<$(no)\n>");

    setenv("SCRIPT_TEST_VALUE", "outside", 1);
    EXPECT_EQ(stepsOf("$(SCRIPT_TEST_VALUE)\n:setvar script_test_value in\n$(SCRIPT_TEST_VALUE)"),
              "<outside\nin\n>");
}

TEST(BatchReader, RejectsUnknownCommandsAndVariables) {
    setenv("SQLCMDPASSWORD", "secret", 1);
    const std::pair<const char*, const char*> cases[] = {
        {"$(no)", "'no' scripting variable not defined."},
        {"$(SQLCMDPASSWORD)", "'SQLCMDPASSWORD' scripting variable not defined."},
        {"a\n:nothing x", "Sqlcmd: Error: Syntax error at line 2 near command ':nothing'."},
        {":Out", "Sqlcmd: Error: Syntax error at line 1 near command ':Out'."},
        {"exit(select 1\n)x", "Sqlcmd: Error: Syntax error at line 2 near command 'exit'."},
        {":exit(select ')'", "Sqlcmd: Error: Syntax error at line 1 near command 'exit'."},
        {":xml maybe", "Sqlcmd: Error: Syntax error at line 1 near command ':xml'."},
        {":setvar", "Sqlcmd: Error: Syntax error at line 1 near command ':setvar'."},
        {":r /no/such/file", "Sqlcmd: '/no/such/file': Invalid filename. No such file or directory."},
    };
    for (const auto& [script, message] : cases) try {
            stepsOf(script);
            ADD_FAILURE() << script;
        } catch (const ToolError& error) {
            EXPECT_STREQ(error.what(), message);
        }
    unsetenv("SQLCMDPASSWORD");
}

TEST(BatchReader, IncludesFilesUpToADepth) {
    const support::TempDir folder;
    support::writeFile(folder / "in.sql", "b\nGO\nc\n");
    Variables variables;
    variables.set("dir", folder.path().string());
    EXPECT_EQ(stepsOf(ScriptSource::ofText("a\n:r \"$(dir)/in.sql\"\nd"), variables), "<a\nb\n><c\nd\n>");
    constexpr int kDeepest = 32;
    for (int i = 1; i <= kDeepest; ++i)
        support::writeFile(folder / std::to_string(i), i == 1 ? "in" : ":r $(dir)/" + std::to_string(i - 1));
    EXPECT_EQ(stepsOf(ScriptSource::ofFile(folder / std::to_string(kDeepest)), variables), "<in\n>");
    support::writeFile(folder / "self.sql", ":r $(dir)/self.sql\n");
    EXPECT_THROW(stepsOf(ScriptSource::ofFile(folder / "self.sql"), variables), ToolError);
    support::writeFile(folder / "deep.sql", ":r $(dir)/" + std::to_string(kDeepest));
    EXPECT_THROW(stepsOf(ScriptSource::ofFile(folder / "deep.sql"), variables), ToolError);
}

TEST(ScriptSource, ReadsEveryEncoding) {
    const support::TempDir folder;
    const std::string long8 = "xé\U0001F600" + std::string(70'000, 'x');  // longer than one read
    std::string little, big;                                              // without byte order marks
    for (const char16_t unit : u"xé\U0001F600" + std::u16string(70'000, u'x') + u"\r\nGO\n") {
        little += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
        big += {static_cast<char>(unit >> 8), static_cast<char>(unit & 0xFF)};
    }
    for (const std::string& content : {long8 + "\r\nGO\n", "\xEF\xBB\xBF" + long8 + "\r\nGO\n", little, big,
                                       "\xFF\xFE" + little, "\xFE\xFF" + big}) {
        support::writeFile(folder / "script.sql", content);
        Variables variables;
        EXPECT_EQ(stepsOf(ScriptSource::ofFile(folder / "script.sql"), variables), "<" + long8 + "\r\n>");
    }
    support::writeFile(folder / "script.sql", "\x80\xE9\x81");
    Variables variables;
    EXPECT_EQ(stepsOf(ScriptSource::ofFile(folder / "script.sql", 850), variables), "<ÇÚü\n>");
    EXPECT_THROW(stepsOf(ScriptSource::ofFile(folder / "script.sql", 1252), variables), ToolError);
}

}  // namespace
