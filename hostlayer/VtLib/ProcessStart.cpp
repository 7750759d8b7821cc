#include "ProcessStart.h"

#include <atomic>

namespace hostlayer {
namespace {

std::atomic<void (*)()> beforeProcessStart{nullptr};

}  // namespace

void callBeforeProcessStart(void (*function)()) {
    beforeProcessStart = function;
}

void announceProcessStart() {
    if (auto* const function = beforeProcessStart.load()) function();
}

}  // namespace hostlayer
