#include "ProcessStart.h"

#include <atomic>

namespace hostlayer {
namespace {

std::atomic<BeforeProcessStart> beforeProcessStart{nullptr};

}  // namespace

void callBeforeProcessStart(BeforeProcessStart function) {
    beforeProcessStart = function;
}

void announceProcessStart(const std::vector<std::string>& arguments) {
    if (auto* const function = beforeProcessStart.load()) function(arguments);
}

}  // namespace hostlayer
