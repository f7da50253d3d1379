#include "host/host_report.h"

#include <atomic>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace host {
namespace {

constexpr size_t kMaxReport = 1024;  // bytes of a formatted report, NUL included

std::atomic<const HostReportHandlers *> g_pHandlers{nullptr};

void printReport(const char *szKind, uint64_t nSourceTag, int32_t nLine, int32_t nCode,
                 const char *szText) {
    (void)std::fprintf(stderr, "%s %d (%016" PRIx64 ":%d): %s\n", szKind, nCode, nSourceTag, nLine,
                       szText);
}

bool isSameText(const char *szOne, const char *szOther) {
    if (szOne == nullptr || szOther == nullptr) { return szOne == szOther; }
    return std::strcmp(szOne, szOther) == 0;
}

const char *orNull(const char *szText) {
    return szText == nullptr ? "(null)" : szText;
}

}  // namespace
}  // namespace host

using namespace host;

void Host_ReportError(uint64_t nSourceTag, int32_t nLine, int32_t nCode, const char *szText) {
    const HostReportHandlers *pHandlers = g_pHandlers.load(std::memory_order_acquire);
    if (pHandlers != nullptr && pHandlers->pfnError != nullptr) {
        pHandlers->pfnError(pHandlers->pContext, nSourceTag, nLine, nCode, szText);
    } else {
        printReport("error", nSourceTag, nLine, nCode, szText);
    }
}

void Host_ReportAssertion(uint64_t nSourceTag, int32_t nLine, int32_t nCode, const char *szFormat,
                          ...) {
    char szText[kMaxReport] = "";
    va_list arguments;
    va_start(arguments, szFormat);
    (void)std::vsnprintf(szText, sizeof szText, szFormat, arguments);
    va_end(arguments);
    const HostReportHandlers *pHandlers = g_pHandlers.load(std::memory_order_acquire);
    if (pHandlers != nullptr && pHandlers->pfnAssertion != nullptr) {
        pHandlers->pfnAssertion(pHandlers->pContext, nSourceTag, nLine, nCode, szText);
    } else {
        printReport("assertion", nSourceTag, nLine, nCode, szText);
    }
}

void Host_AssertStringsEqual(uint64_t nSourceTag, int32_t nLine, const char *szExpected,
                             const char *szActual) {
    if (isSameText(szExpected, szActual)) { return; }
    // Each text gets half of the report, so that a long one leaves room for the other.
    constexpr int kShare = kMaxReport / 2 - 32;
    Host_ReportAssertion(nSourceTag, nLine, 0, "expected \"%.*s\", got \"%.*s\"", kShare,
                         orNull(szExpected), kShare, orNull(szActual));
}

const HostReportHandlers *Host_SetReportHandlers(const HostReportHandlers *pHandlers) {
    return g_pHandlers.exchange(pHandlers, std::memory_order_acq_rel);
}
