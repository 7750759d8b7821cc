// DBBase::parseOutputFile() against std::getline() and std::istringstream, which make the same row texts.
#include <fstream>
#include <sstream>
#include <vector>

#include "Bench.h"
#include "DVUtilities/DBBase.h"
#include "Rows.h"

namespace bench {
namespace {

constexpr int kColumns = 5;
constexpr char kSeparator = '\x12';

using Texts = std::vector<std::string>;

void parseWithStreams(const std::string& path, Texts& rows) {
    std::ifstream file(path);
    std::string line;
    for (int heading = 0; heading < 2; ++heading) std::getline(file, line);
    while (std::getline(file, line) && !line.empty()) {
        std::istringstream fields(line);
        std::string row;
        std::string field;
        for (int i = 0; i < kColumns && fields >> field; ++i) {
            if (i > 0) row += kSeparator;
            row += field;
        }
        rows.push_back(std::move(row));
    }
}

}  // namespace

void toolOutput(Bench& bench) {
    std::string path = bench.installation().folder("output.txt");
    const std::size_t count = bench.scaled(1'000'000);
    {
        std::string content =
            "id          name         state    size      amount\n----------- ---- -- -- --\n";
        for (std::size_t i = 0; i < count; ++i)
            content += "      " + std::to_string(i) + " name_of_a_node active   " + std::to_string(i * 7) +
                       "   1234.50\n";
        support::writeFile(path, content + "\n(" + std::to_string(count) + " rows affected)\n");
    }
    DBBase db(true);
    Texts rows;
    const Step measured = [&] {
        rows.clear();
        check(db.parseOutputFile(path.data(), rows, kColumns), db.getErrorMsg());
    };
    const Step reference = [&] {
        rows.clear();
        parseWithStreams(path, rows);
    };
    measured();
    const Texts expected = std::move(rows);
    reference();
    check(rows == expected && rows.size() == count, "the rows differ");
    bench.compare("tool-output", atLeast(5), {measured, reference});
}

}  // namespace bench
