// Prints a golden script with its current output: `tsql_script data-directory file`. To add batches, write
// them with a line GO after each, run this, read the result and replace the script with it.
#include <fstream>
#include <iostream>
#include <iterator>

#include "ScriptRunner.h"

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "usage: tsql_script data-directory file\n";
        return 2;
    }
    std::ifstream file(arguments[2]);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    tsql::Engine engine(arguments[1]);
    const auto session = tsql::openSession(engine, {"sa"}, "master", 51);
    std::cout << tsql::test::runScript(*session, text);
}
