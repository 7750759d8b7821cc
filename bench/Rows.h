// The benchmarks, each in a source file of its name.
#pragma once

namespace bench {

class Bench;

void valueList(Bench& bench);
void sqlFile(Bench& bench);
void fileCipher(Bench& bench);
void packageLoad(Bench& bench);
void packageRun(Bench& bench);
void toolTime(Bench& bench);
void concurrentRuns(Bench& bench);
void toolOutput(Bench& bench);
void logLine(Bench& bench);
void childProcess(Bench& bench);
void registryValue(Bench& bench);
void catalogue(Bench& bench);
void server(Bench& bench);
void queryTool(Bench& bench);

}  // namespace bench
