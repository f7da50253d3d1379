/* The course of one names manager in C: names are stored, read, looked up, replaced, removed and
 * saved. */
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "host/host_stream.h"
#include "names/names_manager.h"

/* Prints all names on one line. 0, or 1: they could not be read. */
static int printNames(NamesManager *mgr, const char *szTitle) {
    uint64_t nBytes = 0; /* of all names, each with its NUL */
    const int32_t iLast = NamesManager_GetNumNames(mgr) - 1;
    if (NamesManager_GetNames(mgr, 0, iLast, 0, 0, 0, 0, NULL, 0, &nBytes) != 0) { return 1; }
    char *pNames = malloc(nBytes + 1); /* never of 0 bytes, which may yield NULL */
    const int bFailed = pNames == NULL ||
                        NamesManager_GetNames(mgr, 0, iLast, 0, 0, 0, 0, pNames, nBytes, NULL) != 0;
    printf("%s (%" PRIu64 " bytes):", szTitle, nBytes);
    for (const char *p = pNames; !bFailed && p < pNames + nBytes; p += strlen(p) + 1) {
        printf(" %s", p);
    }
    printf("\n");
    free(pNames);
    return bFailed;
}

static int useManager(NamesManager *mgr, HostOutputStream *pImage) {
    static const char *const aNames[] = {"one", "two", "three", "four", "five"};
    static const char *const aThird[] = {"third-name"};
    if (NamesManager_AddNames(mgr, 1, 5, 1, aNames) != 0 || printNames(mgr, "stored") != 0) {
        return 1;
    }
    printf("\"three\" has index %" PRId32 "\n", NamesManager_FindName(mgr, "three", 0));
    if (NamesManager_AddNames(mgr, 2, 2, 0, aThird) != 0 || printNames(mgr, "replaced") != 0) {
        return 1;
    }
    printf("\"three\" has index %" PRId32 ", \"third-name\" has %" PRId32 "\n",
           NamesManager_FindName(mgr, "three", 0), NamesManager_FindName(mgr, "third-name", 0));
    if (NamesManager_RemoveNames(mgr, 0, 1, 0) != 0 ||
        printNames(mgr, "removed the first two") != 0) {
        return 1;
    }
    if (NamesManager_Save(mgr, NULL, pImage) != 0) { return 1; }
    uint64_t nBytes = 0;
    HostOutputStream_GetMemory(pImage, &nBytes);
    printf("saved: %" PRIu64 " bytes\n", nBytes);
    return 0;
}

int main(void) {
    NamesManager *mgr = NamesManager_Create(NULL, NULL);
    HostOutputStream *pImage = HostOutputStream_CreateInMemory();
    const int bFailed = mgr == NULL || pImage == NULL || useManager(mgr, pImage) != 0;
    HostOutputStream_Close(pImage, 0);
    NamesManager_Destroy(mgr);
    if (bFailed) { fprintf(stderr, "typical_course: out of memory\n"); }
    return bFailed ? EXIT_FAILURE : EXIT_SUCCESS;
}
