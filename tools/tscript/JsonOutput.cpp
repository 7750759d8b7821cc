#include "JsonOutput.h"

#include "Console.h"

void writeJson(const Json& value) {
    constexpr int kIndentation = 2;
    writeResult(value.dump(kIndentation, ' ', false, Json::error_handler_t::replace));
}
