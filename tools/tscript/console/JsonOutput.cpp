#include "console/JsonOutput.h"

#include "console/Console.h"

void writeJson(const Json& value) {
    writeResult(jsonText(value));
}
