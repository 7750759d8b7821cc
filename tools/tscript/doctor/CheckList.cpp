#include "doctor/CheckList.h"

#include <algorithm>

void CheckList::addGood(std::string name, std::string detail) {
    m_checks.push_back({std::move(name), Health::kGood, std::move(detail), {}, ExitCode::kDone});
}

void CheckList::addWarning(std::string name, std::string detail, std::string advice) {
    m_checks.push_back(
        {std::move(name), Health::kWarning, std::move(detail), std::move(advice), ExitCode::kDone});
}

void CheckList::addFailure(std::string name, ExitCode code, std::string detail, std::string advice) {
    m_checks.push_back({std::move(name), Health::kFailed, std::move(detail), std::move(advice), code});
}

void CheckList::addSkipped(std::string name, std::string detail) {
    m_checks.push_back({std::move(name), Health::kSkipped, std::move(detail), {}, ExitCode::kDone});
}

bool CheckList::hasFailed(const std::string& name) const {
    return std::any_of(m_checks.begin(), m_checks.end(), [&name](const Check& check) {
        return check.health == Health::kFailed && check.name == name;
    });
}

ExitCode CheckList::exitCode() const {
    for (const ExitCode code : {ExitCode::kInstallation, ExitCode::kRefused, ExitCode::kConnection})
        for (const Check& check : m_checks)
            if (check.health == Health::kFailed && check.code == code) return code;
    return ExitCode::kDone;
}
