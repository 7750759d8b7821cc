#include "Causes.h"

#include <algorithm>
#include <new>
#include <system_error>

#include "CommonMessages.h"
#include "EvDebug.h"
#include "Utf8.h"

namespace {

constexpr std::size_t kMaxCauses = 64;
constexpr std::size_t kMaxText = 4096;  // bytes

thread_local CauseCollector* innermost = nullptr;
thread_local std::size_t notedCauses = 0;

// Cuts before the character that does not fit.
void cutText(std::string& text) {
    if (text.size() <= kMaxText) return;
    std::size_t length = kMaxText;
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) --length;
    text.resize(length);
}

// The same cause occurs again when a step is repeated, such as a read of an unreadable configuration.
bool contains(const std::vector<DVUCause_t>& causes, const DVUCause_t& cause) {
    return std::any_of(causes.begin(), causes.end(), [&](const DVUCause_t& known) {
        return known.where == cause.where && known.serverError == cause.serverError &&
               known.line == cause.line && known.subject == cause.subject && known.text == cause.text;
    });
}

DVUCause_t causeOf(const VtCause& cause) {
    return {.where = cause.place,
            .sqlState = cause.sqlState,
            .serverError = cause.serverError,
            .state = cause.state,
            .severity = cause.severity,
            .line = cause.line,
            .procedure = cause.procedure,
            .server = cause.server,
            .systemError = cause.systemError,
            .exitCode = cause.exitCode,
            .signal = cause.signal,
            .subject = cause.subject,
            .text = cause.text};
}

void noteOfPlatform(const VtCause& cause) {
    guarded([&] { noteCause(causeOf(cause)); });
}

}  // namespace

void noteCause(DVUCause_t cause) noexcept {
    ++notedCauses;
    for (std::string* text :
         {&cause.sqlState, &cause.procedure, &cause.server, &cause.subject, &cause.text}) {
        guarded([text] { repairUtf8(*text); });
        cutText(*text);
    }
    for (CauseCollector* collector = innermost; collector != nullptr; collector = collector->m_outer) {
        std::vector<DVUCause_t>& causes = collector->causes();
        if (causes.size() < kMaxCauses && !contains(causes, cause)) guarded([&] { causes.push_back(cause); });
    }
}

void reportCause(DVUCause_t cause) noexcept {
    guarded([&] {
        EvDebug().DebugLevel(kErrorDebugLevel, "[%s] %s", cause.subject.c_str(), cause.text.c_str());
        noteCause(std::move(cause));
    });
}

void reportFileFailure(const std::string& path, int error) noexcept {
    guarded([&] {
        reportCause({.where = kDVUFile,
                     .systemError = error,
                     .subject = path,
                     .text = std::generic_category().message(error)});
    });
}

void reportConfiguration(const char* key, const char* valueName, const char* text) noexcept {
    guarded([&] {
        reportCause(
            {.where = kDVUConfiguration, .subject = std::string(key) + '\\' + valueName, .text = text});
    });
}

void noteException() noexcept {
    guarded([] { noteCause({.text = common_messages::kStopped}); });
}

CauseCollector::CauseCollector() noexcept : m_outer(std::exchange(innermost, this)) {
    if (VtListenToCauses != nullptr) m_listenerBefore = VtListenToCauses(noteOfPlatform);
}

CauseCollector::~CauseCollector() {
    if (VtListenToCauses != nullptr) VtListenToCauses(m_listenerBefore);
    innermost = m_outer;
}

void CauseCollector::keepIn(DVUCauseList*& kept, bool failed) noexcept {
    if (!failed) {
        delete std::exchange(kept, nullptr);
        return;
    }
    if (kept == nullptr) kept = new (std::nothrow) DVUCauseList;
    if (kept != nullptr) kept->causes = std::move(m_list.causes);
}

ExplainedStep::ExplainedStep() noexcept : m_before(notedCauses) {}

bool ExplainedStep::isExplained() const noexcept {
    return notedCauses != m_before;
}

void ExplainedStep::noteUnlessExplained(DVUCause_t cause) const noexcept {
    if (!isExplained()) noteCause(std::move(cause));
}

void DVU_DebugLog(int level, const char* text) {
    if (text != nullptr) guarded([&] { EvDebug().DebugLevel(level, "%s", text); });
}

DVUCauses::DVUCauses() : m_collector(new (std::nothrow) CauseCollector) {}

DVUCauses::~DVUCauses() {
    delete m_collector;
}

void DVUCauses::get(std::vector<DVUCause_t>& causes) const {
    causes.clear();
    if (m_collector != nullptr) guarded([&] { causes = m_collector->causes(); });
}

void DVUCauses::clear() {
    if (m_collector != nullptr) m_collector->causes().clear();
}
