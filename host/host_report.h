/** @file
 * Reports of errors and of violated expectations. Reporting never ends the process and never fails;
 * the caller goes on.
 *
 * nSourceTag and nLine name the module and the source line that report, nCode is the module's own
 * number. Texts are NUL-terminated, stay the caller's, and need to live for the call only. Every
 * function may be called from any thread.
 */
#ifndef HOST_HOST_REPORT_H
#define HOST_HOST_REPORT_H

#include <stdint.h>

#ifdef __GNUC__
#pragma GCC visibility push(default) /* what is declared here is exported */
#endif
#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define HOST_REPORT_PRINTF_LIKE __attribute__((format(printf, 4, 5)))
#else
#define HOST_REPORT_PRINTF_LIKE
#endif

/** Reports an error to whoever operates the library. */
void Host_ReportError(uint64_t nSourceTag, int32_t nLine, int32_t nCode, const char *szText);

/** Reports a violated expectation; szFormat and the arguments after it are as for printf. The text
 * passed on is cut to 1023 bytes. */
void Host_ReportAssertion(uint64_t nSourceTag, int32_t nLine, int32_t nCode, const char *szFormat,
                          ...) HOST_REPORT_PRINTF_LIKE;

/** Reports an assertion with both texts unless szExpected and szActual are equal byte for byte.
 * Either may be NULL, which equals only NULL. */
void Host_AssertStringsEqual(uint64_t nSourceTag, int32_t nLine, const char *szExpected,
                             const char *szActual);

/** @name The shipped host's own: where reports go
 * @{ */

/** Handlers of a program's own. A NULL function stands for the default, which writes a line to
 * standard error. Handlers may be called from several threads at once and must not throw. */
typedef struct HostReportHandlers {
    void *pContext; /**< passed to both functions */
    void (*pfnError)(void *pContext, uint64_t nSourceTag, int32_t nLine, int32_t nCode,
                     const char *szText);
    void (*pfnAssertion)(void *pContext, uint64_t nSourceTag, int32_t nLine, int32_t nCode,
                         const char *szText);
} HostReportHandlers;

/** Sends later reports to `*pHandlers`, or to the defaults if pHandlers is NULL. The record stays
 * the caller's and must live until it is replaced and the reports then under way have returned.
 *
 * Returns what was set before (NULL: the defaults), so that settings can be nested. */
const HostReportHandlers *Host_SetReportHandlers(const HostReportHandlers *pHandlers);

/** @} */

#ifdef __cplusplus
}
#endif
#ifdef __GNUC__
#pragma GCC visibility pop
#endif

#endif
