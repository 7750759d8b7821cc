// The page of `tscript report`, made from a sample installation's journal and checked in a browser.
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <ctime>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "Installation.h"

namespace {

using support::ProgramResult;

// Shows the page at a phone's and at a desktop's width, with every part opened, and lists its faults.
constexpr const char* kViewer = R"html(<!DOCTYPE html><body style="margin:0;display:flex;background:gray">
<iframe src="report.html" style="flex:none;border:0;width:360px;height:900px"></iframe>
<iframe src="report.html" style="flex:none;border:0;width:1280px;height:900px"></iframe>
<pre id="findings"></pre>
<script>
const channels = color => color.match(/[\d.]+/g).map(Number);
const luminance = color => channels(color).slice(0, 3).map(c => c / 255)
  .map(c => c <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4)
  .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
function background(view, element) {
  for (let at = element; at; at = at.parentElement) {
    const color = view.getComputedStyle(at).backgroundColor;
    if (channels(color)[3] !== 0) return color;
  }
}
function contrast(view, element) {
  const style = view.getComputedStyle(element);
  const pair = [element.closest('svg') ? style.fill : style.color, background(view, element)].map(luminance);
  return (Math.max(...pair) + 0.05) / (Math.min(...pair) + 0.05);
}
function look(frame) {
  const view = frame.contentWindow, page = frame.contentDocument, faults = [];
  const expect = (holds, fault) => { if (!holds) faults.push(fault); };
  const runs = [...page.querySelectorAll('details.run')];
  const before = runs.filter(run => run.open).length;
  runs.forEach(run => { if (!run.open) run.querySelector('summary').click(); });
  expect(before === 1 && runs.every(run => run.open), 'summaries do not open');
  page.querySelectorAll('details').forEach(details => details.open = true);
  expect(page.documentElement.scrollWidth <= view.innerWidth, 'scrolls sideways: ' + page.documentElement.scrollWidth);
  expect(view.performance.getEntriesByType('resource').length === 0, 'asks for other files');
  expect(!page.querySelector('script, img, b, link, iframe'), 'markup of the journal got in');
  expect(page.documentElement.lang && page.title && page.querySelector('meta[name=viewport]'), 'no language, title or viewport');
  const ids = [...page.querySelectorAll('[id]')].map(element => element.id);
  expect(new Set(ids).size === ids.length, 'an id stands twice');
  expect([...page.querySelectorAll('svg')].every(svg => svg.ariaHidden || svg.getAttribute('aria-label')), 'a drawing without a text');
  expect([...page.querySelectorAll('pre, .scroll')].every(box => box.tabIndex === 0), 'a box that keys cannot scroll');
  page.querySelector('.skip').focus();
  expect(page.querySelector('.skip').getBoundingClientRect().left >= 0, 'the focus is not seen');
  let texts = 0, drawn = page.querySelectorAll('.timeline g rect').length;
  const walker = page.createTreeWalker(page.body, NodeFilter.SHOW_TEXT);
  while (walker.nextNode()) {
    const element = walker.currentNode.parentElement;
    if (!walker.currentNode.data.trim() || element.closest('title') || !element.getClientRects().length) continue;
    texts++;
    expect(contrast(view, element) >= 4.5, 'too pale: ' + walker.currentNode.data);
  }
  return `width ${view.innerWidth}, runs ${runs.length}, bars ${drawn > 2}, texts ${texts > 60}, faults: ${faults.join('; ') || 'none'}\n`;
}
onload = () => {
  const scheme = matchMedia('(prefers-color-scheme: dark)').matches ? 'dark' : 'light';
  document.getElementById('findings').textContent = scheme + '\n' + [...document.querySelectorAll('iframe')].map(look).join('');
};
</script>)html";

// Runs axe-core on the page and lists the violations that it finds.
constexpr const char* kAuditor =
    R"html(<!DOCTYPE html><body><iframe src="audited.html" style="width:1280px;height:900px"></iframe>
<pre id="findings"></pre>
<script>
onload = async () => {
  const frame = document.querySelector('iframe'), page = frame.contentDocument;
  page.querySelectorAll('details').forEach(details => details.open = true);
  await new Promise(loaded => page.head.append(Object.assign(page.createElement('script'), {src: 'axe.min.js', onload: loaded})));
  const found = await frame.contentWindow.axe.run(page);
  document.getElementById('findings').textContent = `rules ${found.passes.length > 20}, violations: ` +
    (found.violations.map(rule => rule.id + ' ' + rule.nodes.map(node => node.target)).join('; ') || 'none');
};
</script>)html";

class Report : public Installation {
  protected:
    support::ProgramOptions options() const {
        support::ProgramOptions options;
        options.environment = {storeVariable(), "HOME=" + m_temp.path().string(),
                               "TMPDIR=" + m_temp.path().string()};
        return options;
    }
    // Enters runs as T-SQL says; @now is the present second.
    void enter(const std::string& statements) {
        packBody("Enter",
                 "SET NOCOUNT ON\nDECLARE @i int, @now datetime\nSET @i = 0\nSET @now = dbo.GetDateTime(" +
                     std::to_string(std::time(nullptr)) + ")\n" + statements + "\nGO\n");
        const ProgramResult result = run({"run", "Enter"});
        ASSERT_EQ(result.exitCode, 0) << result.output << result.errors;
    }
    static std::string row(const std::string& name, const std::string& start, const std::string& end,
                           int status) {
        return "INSERT ZpTscriptExec (tsId, type, name, timeStart, timeEnd, status, inputParams, userId) "
               "VALUES (1, 2, '" +
               name + "', " + start + ", " + end + ", " + std::to_string(status) + ", '<img src=x>', 7)\n";
    }
    std::string page(Words words) {
        words.insert(words.begin(), "report");
        const ProgramResult result = run(words);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        EXPECT_EQ(result.errors, "");
        return result.output;
    }
    // A run that is killed once it has written something.
    void abandonRun() {
        packBody("Slow", "PRINT 'step 1 of 2'\nGO\nWAITFOR DELAY '00:01:00'\nGO\n");
        const Background slow({"run", "Slow"}, options().environment);
        for (int i = 0; i < 600 && !slowHasWritten(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_TRUE(slowHasWritten());
        kill(slow.pid(), SIGKILL);
        slow.end();
    }
    bool slowHasWritten() const {
        for (const auto& file : fs::directory_iterator(folder / "logs"))
            if (file.path().filename().string().starts_with("Tscript_Dorvas_Slow_") && file.file_size() > 0)
                return true;
        return false;
    }
    // DVU_SCREENSHOTS names a folder in which the screenshots are kept.
    std::string browse(const std::string& scheme, const Words& what) {
        Words words = {"chromium", "--headless=new", "--no-sandbox", "--disable-gpu",
                       "--disable-dev-shm-usage"};
        words.insert(words.end(),
                     {"--allow-file-access-from-files", "--hide-scrollbars", "--window-size=1640,900"});
        words.push_back("--user-data-dir=" + (m_temp / "browser").string());
        words.push_back(std::string("--blink-settings=preferredColorScheme=") +
                        (scheme == "dark" ? "0" : "1"));
        words.insert(words.end(), what.begin(), what.end());
        words.push_back("file://" + (m_temp / "viewer.html").string());
        const ProgramResult result = support::runProgram(words, options());
        EXPECT_EQ(result.exitCode, 0)
            << "chromium (scripts/setup.sh installs it) does not work: " << result.errors;
        return result.output;
    }
};

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t times = 0;
    for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++times;
    return times;
}

void expectIn(const std::string& text, const Words& parts) {
    const std::size_t body = text.find("<body>");
    for (const std::string& part : parts)
        EXPECT_NE(text.find(part), text.npos) << part << " in\n" << text.substr(body == text.npos ? 0 : body);
}

TEST_F(Report, IsReadableInBothColourSchemesAndWidths) {
    packBody("Fail",
             "PRINT '<script>alert(1)</script> & %s'\nDECLARE @i int\nSET @i = 0\nWHILE @i < 20 BEGIN "
             "PRINT 'line ' + CONVERT(varchar(9), @i) + REPLICATE('-', 90) SET @i = @i + 1 END\n"
             "RAISERROR('broken', 16, 1)\nGO\n");
    EXPECT_EQ(run({"run", "PurgeEvents", "-p", "30", "-p", "2"}).exitCode, 0);
    for (const char* name : {"one", "two"}) EXPECT_EQ(run({"run", "Fail", "-p", name}).exitCode, 1);
    abandonRun();
    enter(row("A <b>bold</b> \"quoted\" it''s 100% [x]*", "DATEADD(hour, -2, @now)",
              "DATEADD(hour, -1, @now)", 2) +
          // Older than no hours at all, which within its first second it is not.
          "UPDATE ZpTscriptExec SET timeStart = DATEADD(second, -2, timeStart) WHERE name = 'Slow'");
    const fs::path file = m_temp / "report.html";
    ASSERT_EQ(page({"--stale", "0", "--since", "1d", "--compare", "-o", file}), "");
    const std::string text = support::readFile(file);
    expectIn(text, {"&lt;b&gt;bold&lt;/b&gt; &quot;quoted&quot; it&#39;s 100% [x]*", "&lt;img src=x&gt;",
                    "aria-label=\"Output of run 2\">&lt;script&gt;alert(1)&lt;/script&gt; &amp; one\nline 0-",
                    "&lt;/script&gt; &amp; two\nline 0-", "line 8-",
                    "<code>tscript journal show 2</code> prints the rest", "<dl id=\"run-2\">",
                    "<dt>Cause</dt><dd><bdi>query tool, Msg 50000, level 16, state 1, line 5: broken</bdi>",
                    "It left no run record", "\">step 1 of 2\n</pre>", "Its output is unknown", "1 abandoned",
                    "4 runs failed or abandoned"});
    const std::string password = support::readFile(folder / "password");
    for (const std::string& never : {std::string("://"), std::string("line 9-"), password.substr(0, 12)})
        EXPECT_EQ(text.find(never), text.npos) << never;

    support::writeFile(m_temp / "viewer.html", kViewer);
    for (const std::string scheme : {"light", "dark"}) {
        expectIn(browse(scheme, {"--dump-dom"}),
                 {scheme + "\nwidth 360, runs 4, bars true, texts true, faults: none\n"
                           "width 1280, runs 4, bars true, texts true, faults: none\n"});
        const char* kept = std::getenv("DVU_SCREENSHOTS");
        const fs::path picture = (kept != nullptr ? fs::path(kept) : m_temp.path()) / (scheme + ".png");
        browse(scheme, {"--screenshot=" + picture.string()});
        EXPECT_GT(support::readFile(picture).size(), 50'000U) << "an empty picture";
    }
}

// The page without its policy, which forbids scripts.
TEST_F(Report, HasNoViolationThatAxeFinds) {
    const ProgramResult installed = support::runProgram(
        {INSTALL_NPM, AXE_FOLDER, "2025-01-01", "axe-core@4.10.2"}, {{}, {}, {}, std::chrono::minutes(3)});
    if (installed.exitCode == 77) GTEST_SKIP() << installed.errors;
    ASSERT_EQ(installed.exitCode, 0) << installed.errors;
    packBody("Fail", "PRINT 'before'\nRAISERROR('broken', 16, 1)\nGO\n");
    EXPECT_EQ(run({"run", "PurgeEvents", "-p", "30", "-p", "2"}).exitCode, 0);
    EXPECT_EQ(run({"run", "Fail"}).exitCode, 1);
    ASSERT_EQ(page({"--since", "1d", "--compare", "-o", m_temp / "audited.html"}), "");
    replaceInFile(m_temp / "audited.html", "http-equiv=\"Content-Security-Policy\"", "name=\"policy\"");
    fs::copy_file(fs::path(AXE_FOLDER) / "node_modules/axe-core/axe.min.js", m_temp / "axe.min.js");
    support::writeFile(m_temp / "viewer.html", kAuditor);
    const Words dump = {"--dump-dom", "--virtual-time-budget=60000"};
    for (const char* scheme : {"light", "dark"})
        expectIn(browse(scheme, dump), {"rules true, violations: none</pre>"});
    replaceInFile(m_temp / "audited.html", "<html lang=\"en\">", "<html>");
    expectIn(browse("light", dump), {"violations: html-has-lang html</pre>"});
}

TEST_F(Report, HasBoundsWhateverTheJournalHolds) {
    expectIn(page({}), {"The journal is empty"});
    enter("WHILE @i < 250 BEGIN\n" + row("Many", "DATEADD(minute, @i - 250, @now)", "@now", 2) +
          "SET @i = @i + 1 END");
    const std::string many = page({"--name", "M?ny"});
    expectIn(many, {"The newest 200 of 250 runs", "Runs per hour", "names like <bdi><b>M?ny</b></bdi>"});
    EXPECT_EQ(count(many, "<details class=\"run failed\""), 200U);
    expectIn(page({"--name", "<*>"}), {"The journal holds no such run", "&lt;*&gt;"});

    enter("SET @i = 1\nWHILE @i <= 100 BEGIN\n" + row("Even", "DATEADD(second, -@i, @now)", "@now", 1) +
          "SET @i = @i + 1 END");
    expectIn(page({"--name", "Even"}),
             {"<td role=\"cell\" data-label=\"Longest\">1 min 40 s</td>", "100.0 %", "No run failed"});
    const std::string even = page({"--name", "Even"});
    expectIn(even, {"data-label=\"Median\">50 s<", "data-label=\"95 %\">1 min 3"});

    for (const auto& [unit, ago] : {std::pair("day", "day, -50"),
                                    {"week", "day, -100"},
                                    {"month", "day, -1500"},
                                    {"year", "year, -20"},
                                    {"decade", "year, -90"}}) {
        enter(row(unit, std::string("DATEADD(") + ago + ", @now)", "@now", 1) + row(unit, "@now", "@now", 0));
        expectIn(page({"--name", unit}), {std::string("Runs per ") + unit, "1 ok, 1 running"});
    }
}

TEST_F(Report, FiguresOfFewRuns) {
    const std::int64_t anHour = std::time(nullptr) / 3600 * 3600 - 7200;
    const struct {
        const char* name;
        int seconds, status;
        std::string median, most, longest;
    } runs[] = {{"F one", 100, 1, "1 min 40 s", "1 min 40 s", "1 min 40 s"},
                {"F two", 10, 1, "10 s", "20 s", "20 s"},
                {"F two", 20, 1, "10 s", "20 s", "20 s"},
                {"F 3599 s", 3599, 1, "59 min 59 s", "59 min 59 s", "59 min 59 s"},
                {"F 3600 s", 3600, 2, "1 h 00 min", "1 h 00 min", "1 h 00 min"},
                {"F 86399 s", 86399, 1, "23 h 59 min", "23 h 59 min", "23 h 59 min"},
                {"F day", 86400, 1, "1 d 00 h", "1 d 00 h", "1 d 00 h"},
                {"F days", 93600, 1, "1 d 02 h", "1 d 02 h", "1 d 02 h"},
                {"F open", 0, 0, "–", "–", "–"},
                {"F odd", 5, 7, "–", "–", "–"}};
    std::string statements =
        "DECLARE @hour datetime SET @hour = dbo.GetDateTime(" + std::to_string(anHour) + ")\n";
    for (const auto& run : runs)
        statements +=
            row(run.name, "@hour", "DATEADD(second, " + std::to_string(run.seconds) + ", @hour)", run.status);
    enter(statements);
    const std::string text = page({"--name", "F *", "--stale", "1"});
    expectIn(text,
             {"<dt>Runs</dt><dd>10</dd>", "<dt>Succeeded</dt><dd>77.7 %</dd>", "<dt>Failed</dt><dd>1</dd>",
              "<dt>Abandoned</dt><dd>1</dd>", "<dt>Unknown state</dt><dd>1</dd>",
              "In all 7 ok, 1 failed, 1 abandoned, 1 unknown. At most 10 in one hour.",
              "</th><td>10</td><td>7</td><td>1</td><td>1</td><td>1</td></tr>\n</tbody>"});
    expectIn(page({"--csv", "--name", "F *", "--stale", "1"}),
             {"script,runs,ok,failed,abandoned,running,unknown,median_seconds,",
              "\"F two\",2,2,0,0,0,0,10,20,20,30\r\n", "\"F open\",1,0,0,1,0,0,,,,\r\n"});
    expectIn(page({"--json", "--name", "F *", "--stale", "1"}),
             {"\"runs\": 10,\n    \"ok\": 7,", "\"median\": 10,\n        \"most\": 20,",
              "\"name\": \"F 3600 s\",\n      \"status\": \"failed\"", "\"seconds\": null"});
    enter(row("C", "DATEADD(hour, -6, @now)", "DATEADD(second, 10, DATEADD(hour, -6, @now))", 1) +
          row("C", "DATEADD(hour, -2, @now)", "DATEADD(second, 20, DATEADD(hour, -2, @now))", 2) +
          row("C", "DATEADD(minute, -20, @now)", "@now", 1));
    const Words compared = {"--name", "C", "--since", "4h", "--until", "1h", "--compare"};
    expectIn(page(compared), {"1 run, 100.0 % succeeded. This period: 1 run, 0.0 % succeeded.",
                              "<bdi>C</bdi></th><td>1</td><td>1</td><td>0</td><td class=\"failed\">1</td>"
                              "<td>10 s</td><td>20 s</td>"});
    Words comparedData = compared;
    comparedData.emplace_back("--json");
    expectIn(page(comparedData), {"\"before\": {\n    \"since\"", "\"median\": 10", "\"median\": 20"});
    for (const auto& run : runs) {
        const std::size_t at = text.find("<bdi>" + std::string(run.name) + "</bdi></th>");
        expectIn(text.substr(at, text.find("</tr>", at) - at),
                 {"\"Median\">" + run.median + "<", "\"95 %\">" + run.most + "<",
                  "\"Longest\">" + run.longest + "<"});
    }
}

// The log holds a run of the same script at the same time, which succeeded.
TEST_F(Report, TheOutputOfASuccessIsNotAFailures) {
    packBody("Quiet", "PRINT 'all is well'\n");
    ASSERT_EQ(run({"run", "Quiet"}).exitCode, 0);
    enter(
        "INSERT ZpTscriptExec (tsId, type, name, timeStart, timeEnd, status, inputParams, userId)\n"
        "SELECT tsId, type, name, timeStart, timeEnd, 2, '', 0 FROM ZpTscriptExec WHERE name = 'Quiet'");
    const std::string text = page({});
    expectIn(text, {"1 run failed or abandoned", "Its output is unknown"});
    EXPECT_EQ(count(text, "all is well"), 0U);

    replaceInFile(store(), "runRecords ", "debugLogFile = 'own.log'  # ");
    packBody("Loud", "PRINT 'it is broken'\nRAISERROR('x', 16, 1)\n");
    ASSERT_EQ(run({"run", "Loud"}).exitCode, 1);
    expectIn(page({"--name", "Loud"}), {"it is broken", "this is what the debug log has"});
}

TEST_F(Report, IsWrittenWholeOrNotAtAll) {
    expectAll({
        {{"report", "--since", "someday"}, 2, "", "is not a time"},
        {{"report", "--compare"}, 2, "", "needs the beginning"},
        {{"report", "--since", "1h", "--until", "2h"}, 2, "", "ends before it begins"},
        {{"report", "--json", "--csv"}, 2, "", "excludes"},
        {{"report", "--db", "Nothing"}, 2, "", "Dorvas, NQ2"},
        {{"report", "--name", std::string(257, 'x')}, 2, "", "longer than 256"},
        {{"report", "--store", "/nowhere"}, 3, "", "/nowhere"},
        {{"report", "-o", m_temp.path()}, 3, "", "Is a directory"},
        {{"report", "-o", m_temp / "none" / "x.html"}, 3, "", "No such file"},
        {{"report", "-o", "/dev/full"}, 3, "", "No space left on device"},
    });
    // No file of the process can grow beyond 4 KiB: writing fails as it does on a full disk.
    const fs::path file = m_temp / "place" / "page";
    fs::create_directory(file.parent_path());
    support::writeFile(file, "kept");
    const std::string shell = "ulimit -f 8; exec '" TSCRIPT_PROGRAM "' report -o '" + file.string() + "'";
    EXPECT_EQ(support::runProgram({"sh", "-c", shell}, options()).exitCode, 3);
    EXPECT_EQ(support::readFile(file), "kept");
    EXPECT_EQ(std::distance(fs::directory_iterator(file.parent_path()), {}), 1);
}

}  // namespace
