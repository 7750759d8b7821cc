#include "VtCauses.h"

#include <utility>

namespace {
thread_local VtCauseListener threadListener = nullptr;
}  // namespace

VtCauseListener VtListenToCauses(VtCauseListener listener) noexcept {
    return std::exchange(threadListener, listener);
}

void VtNoteCause(const VtCause& cause) noexcept {
    if (threadListener != nullptr) threadListener(cause);
}
