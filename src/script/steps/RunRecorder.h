// Run record of one run: notes its start, and writes the record when it has ended.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "Causes.h"
#include "record/RecordSettings.h"
#include "record/RunRecord.h"
#include "state/ScriptParts.h"

class RunRecorder {
  public:
    explicit RunRecorder(const ScriptParts& script);

    // False if the store names no folder for records: the other operations then do nothing.
    bool isOn() const { return !m_settings.folder.empty(); }
    // Notes the time and where the run's part of the output begins. `input`: as journalled; null if the run
    // is not journalled.
    void noteStart(const char* input);
    // Writes the record of the run. A failure is a cause and a line in the debug log, never one of the run.
    void write(bool succeeded) noexcept;

  private:
    void writeRecord(bool succeeded);
    void describe(bool succeeded);
    std::string procedureHash() const;

    ScriptParts m_script;
    RecordSettings m_settings;
    RunRecord m_record;
    std::size_t m_outputStart = 0;
    CauseCollector m_collector;  // of the run's causes
};

// Settings of run records in the configuration.
RecordSettings recordSettings();
