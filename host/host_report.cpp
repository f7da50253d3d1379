#include "host/host_report.h"

#include <atomic>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

constexpr size_t kMaxText = 1024;  // bytes of a formatted report, NUL included

std::atomic<const HostReportHandlers *> g_pHandlers{nullptr};

void writeLine(const char *szKind, uint64_t nSourceTag, int32_t nLine, int32_t nCode,
               const char *szText) {
    (void)std::fprintf(stderr, "%s %d (%016" PRIx64 ":%d): %s\n", szKind, nCode, nSourceTag, nLine,
                       szText);
}

void deliverAssertion(uint64_t nSourceTag, int32_t nLine, int32_t nCode, const char *szText) {
    const HostReportHandlers *pHandlers = g_pHandlers.load(std::memory_order_acquire);
    if (pHandlers != nullptr && pHandlers->pfnAssertion != nullptr) {
        pHandlers->pfnAssertion(pHandlers->pContext, nSourceTag, nLine, nCode, szText);
    } else {
        writeLine("assertion", nSourceTag, nLine, nCode, szText);
    }
}

bool sameText(const char *szOne, const char *szOther) {
    if (szOne == nullptr || szOther == nullptr) { return szOne == szOther; }
    return std::strcmp(szOne, szOther) == 0;
}

const char *shown(const char *szText) {
    return szText == nullptr ? "(null)" : szText;
}

}  // namespace

void Host_ReportError(uint64_t nSourceTag, int32_t nLine, int32_t nCode, const char *szText) {
    const HostReportHandlers *pHandlers = g_pHandlers.load(std::memory_order_acquire);
    if (pHandlers != nullptr && pHandlers->pfnError != nullptr) {
        pHandlers->pfnError(pHandlers->pContext, nSourceTag, nLine, nCode, szText);
    } else {
        writeLine("error", nSourceTag, nLine, nCode, szText);
    }
}

void Host_ReportAssertion(uint64_t nSourceTag, int32_t nLine, int32_t nCode, const char *szFormat,
                          ...) {
    char szText[kMaxText] = "";
    va_list arguments;
    va_start(arguments, szFormat);
    (void)std::vsnprintf(szText, sizeof szText, szFormat, arguments);
    va_end(arguments);
    deliverAssertion(nSourceTag, nLine, nCode, szText);
}

void Host_AssertStringsEqual(uint64_t nSourceTag, int32_t nLine, const char *szExpected,
                             const char *szActual) {
    if (sameText(szExpected, szActual)) { return; }
    // Each text gets half of the report, so that a long one cannot hide the other.
    constexpr int kShare = kMaxText / 2 - 32;
    Host_ReportAssertion(nSourceTag, nLine, 0, "expected \"%.*s\", got \"%.*s\"", kShare,
                         shown(szExpected), kShare, shown(szActual));
}

const HostReportHandlers *Host_SetReportHandlers(const HostReportHandlers *pHandlers) {
    return g_pHandlers.exchange(pHandlers, std::memory_order_acq_rel);
}
