// Results of a package's tests as text, TAP and JUnit XML.
#pragma once

#include <string>
#include <vector>

#include "packagetest/PackageTestRun.h"

std::string textReport(const std::string& package, const std::vector<TestResult>& results);
std::string tapReport(const std::string& package, const std::vector<TestResult>& results);
std::string junitReport(const std::string& package, const std::vector<TestResult>& results);
