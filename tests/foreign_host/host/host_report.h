/* The foreign host only counts reports. */
#ifndef HOST_HOST_REPORT_H
#define HOST_HOST_REPORT_H
#include <stdint.h>
#ifdef __cplusplus
extern "C" {
#endif
void Host_ReportError(uint64_t nSourceTag, int32_t nLine, int32_t nCode, const char *szText);
void Host_ReportAssertion(uint64_t nSourceTag, int32_t nLine, int32_t nCode, const char *szFormat,
                          ...);
void Host_AssertStringsEqual(uint64_t nSourceTag, int32_t nLine, const char *szExpected,
                             const char *szActual);
#ifdef __cplusplus
}
#endif
#endif
