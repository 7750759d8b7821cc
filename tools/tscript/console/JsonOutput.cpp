#include "console/JsonOutput.h"

#include "console/Console.h"

std::string jsonText(const Json& value) {
    constexpr int kIndentation = 2;
    return value.dump(kIndentation, ' ', /*ensure_ascii=*/false, Json::error_handler_t::replace);
}

void writeJson(const Json& value) {
    writeResult(jsonText(value));
}
