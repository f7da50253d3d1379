/** @file
 * Readers: any number of threads read one manager at once, without its lock and without a shared
 * write.
 *
 * A reader is a value of the caller's, made by NamesReader_Open and used by one thread at a time;
 * each thread opens or copies one of its own. Copies are readers of their own from then on. There
 * is nothing to close.
 *
 * From the first NamesReader_Open until the last use of the last reader nothing but readers may use
 * the manager, reads included: no operation may be called on it by any thread, except
 * NamesReader_Open. The caller sees to it that what was stored before is visible to the threads
 * that read, as starting a thread or passing a mutex does. Readers opened before the manager
 * changes must be opened anew afterwards.
 *
 * Readers give the answers that the operations of names_manager.h would give, except that they
 * generate no default names: a name at or beyond the number of names does not exist. They change
 * neither the record nor its cursor, which each reader has for itself; ascending reads are the
 * cheapest. Names and indices are those of names_manager.h. Pointers to names point into the
 * manager, are read-only, and stay valid until the manager changes.
 */
#ifndef NAMES_NAMES_READER_H
#define NAMES_NAMES_READER_H

#include <stdint.h>

#include "names/names_manager.h"

#ifdef __GNUC__
#pragma GCC visibility push(default) /* what is declared here is exported */
#endif
#ifdef __cplusplus
extern "C" {
#endif

/** How many names a reader that goes on in ascending order looks at together. */
#define NAMES_READER_AHEAD 64

/** A reader. The fields are its own; copy it as a whole. */
typedef struct NamesReader {
    const NamesManager *pManager;
    NameLookupIndex *pIndex;         /**< NULL: lookups find nothing */
    const NameStorageBlock *pBlocks; /**< the manager's */
    const NamePosition *pPositions;  /**< the manager's, of nPositions names; 0 in segment mode */
    const char *pText;               /**< in segment mode: some consecutive names */
    int32_t nPositions;
    int32_t iFirst; /**< the first of those names, and how many; the cursor is after them */
    int32_t nNames;
    int32_t iSegment; /**< that holds them, and where the first begins in its block */
    int32_t nOffset;
    /** Of each, from pText on, and of what follows; then room that finding them needs. */
    int32_t aStarts[NAMES_READER_AHEAD + 1 + 64];
} NamesReader;

/** Makes *reader a reader of mgr, whose lock it holds meanwhile. With bLookups non-zero the lookup
 * index is built if need be, so that names can be found. Returns 0, or 1 without memory for the
 * index: the reader reads all the same, and its lookups find nothing. */
int32_t NamesReader_Open(NamesReader *reader, NamesManager *mgr, int32_t bLookups);

/** The number of names. */
int32_t NamesReader_GetNumNames(const NamesReader *reader);

/** Returns the stored, NUL-terminated name, or NULL if there is none at this index. Its length in
 * bytes without the NUL goes to *pnLength, which is untouched for NULL; pnLength may be NULL. */
const char *NamesReader_GetName(NamesReader *reader, int32_t index, int32_t bOneBased,
                                int32_t *pnLength);

/** NamesReader_GetName() for a 0-based index and without the length, inlined where it is called. */
static inline const char *NamesReader_Name(NamesReader *reader, int32_t index) {
    const uint32_t i = (uint32_t)index; /* below 0: too high for anything */
    const uint32_t k = i - (uint32_t)reader->iFirst;
    if (i < (uint32_t)reader->nPositions) {
        const NamePosition *pPosition = &reader->pPositions[i];
        return reader->pBlocks[pPosition->iBlock].pData + pPosition->nOffset;
    }
    if (k < (uint32_t)reader->nNames) { return reader->pText + reader->aStarts[k]; }
    int32_t nUnwanted = 0;
    return NamesReader_GetName(reader, index, 0, &nUnwanted);
}

/** Writes pointers to the names of the range to ppNames[0] to ppNames[last-first] and their lengths
 * in bytes, without the NUL, to pLengths; either may be NULL. Returns 0, or 1 if not all of them
 * exist or the range lies outside the contract; nothing is written then. */
int32_t NamesReader_GetNameViews(NamesReader *reader, int32_t first, int32_t last,
                                 int32_t bOneBased, const char **ppNames, int32_t *pLengths);

/** Returns the index of a NUL-terminated name, whose trailing blanks do not count; -1 if it is not
 * held, if there was no memory to look up a name of more than 255 bytes that ends in a blank, or if
 * the reader was opened without bLookups. */
int32_t NamesReader_FindName(NamesReader *reader, const char *name, int32_t bOneBased);

/** Writes the index of each of the nCount names to pIndices, as NamesManager_FindNames does; nWidth
 * has its meaning there. Returns 0, or 1 without memory for a name of more than 255 bytes that had
 * to be copied (all results are -1). A reader opened without bLookups finds nothing. pIndices may
 * be NULL. */
int32_t NamesReader_FindNames(NamesReader *reader, const char *const *ppNames, int32_t nCount,
                              int32_t nWidth, int32_t bOneBased, int32_t *pIndices);

#ifdef __cplusplus
}
#endif
#ifdef __GNUC__
#pragma GCC visibility pop
#endif

#endif
