/* The names manager: keeps the names of numbered entities, one ordered list (index 0 to nNames-1)
 * per manager.
 *
 * Results. Unless a declaration says otherwise an operation returns 0 on success and 1 when memory
 * ran out or an argument lies outside the operation's contract (nothing is then changed). A failure
 * of any kind leaves the manager valid: what was stored before it stays stored, and caches that
 * could not be kept are dropped. No operation ever throws. NamesManagerStatus names the results;
 * NamesManager_Save and NamesManager_Load also pass on the codes of the host's streams.
 *
 * Indices. Signed 32-bit. A range (first, last) is inclusive. With bOneBased non-zero the caller's
 * indices count from 1: 1 is subtracted from each index given and added to each index reported;
 * "not found" is -1 either way. An empty range, last == first - 1, is no error. Outside the
 * contract are a 0-based first index below 0, a first index more than one past the last, and a
 * 0-based last index of 2147483647 or beyond.
 *
 * Names. Byte strings without NUL, compared byte for byte. Storing drops trailing blanks (byte 0x20
 * only). Lengths never count the NUL; sizes and widths do. A mgr, array or string pointer must not
 * be NULL unless its operation says that it may be.
 *
 * Default names. A read or a store that reaches beyond nNames first generates the names in between
 * (see NamesManager_GenerateNames). Where a read says status 1, one of these names could not be
 * stored.
 *
 * Ownership. The manager copies all text that it is given and keeps no caller pointer after a call.
 * Pointers to names that it hands out point into its own storage, are read-only, and stay valid
 * until the next operation that stores, removes, generates, clears, copies into, loads or destroys.
 * Reading, looking up, saving and switching the storage mode move no text.
 *
 * Locking. Every operation holds the manager's lock from entry to return, reads included (they move
 * the cursor and may build the index), so any thread may call any operation at any time, with the
 * exceptions that declarations name. Pointers handed out are not protected by the lock. Managers
 * share nothing: two threads working on two managers never wait for each other.
 *
 * Pages. What comments call docs/... is installed below share/doc/names_manager.
 */
#ifndef NAMES_NAMES_MANAGER_H
#define NAMES_NAMES_MANAGER_H

#include <stdint.h>

#if UINTPTR_MAX < UINT64_MAX
#error "names_manager is for 64-bit machines"
#endif

#include "host/host_hash_map.h"
#include "host/host_lock.h"
#include "host/host_stream.h"
#include "host/host_text.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The version of this header. Versions compare as numbers: 0.1.0 is 1000, 2.3.4 is 2003004. */
#define NAMES_MANAGER_VERSION_MAJOR 0
#define NAMES_MANAGER_VERSION_MINOR 1
#define NAMES_MANAGER_VERSION_PATCH 0
#define NAMES_MANAGER_VERSION                                                     \
    (NAMES_MANAGER_VERSION_MAJOR * 1000000 + NAMES_MANAGER_VERSION_MINOR * 1000 + \
     NAMES_MANAGER_VERSION_PATCH)

/* Results by name. */
enum NamesManagerStatus {
    NamesManagerStatus_OK = 0,
    NamesManagerStatus_Failed =
        1, /* memory ran out, or an argument lies outside the operation's contract */
    NamesManagerStatus_TooLong = 2,  /* a name of more than 1048575 bytes */
    NamesManagerStatus_TooSmall = 3, /* the buffer given; the size it needs is told */
    NamesManagerStatus_Refused =
        -1 /* by NamesManager_Load: memory ran out, or the image is not sound */
};

/* ---- Records
 * --------------------------------------------------------------------------------------------------------------------------
 * Open to inspection; only the operations below may change them. docs/design.md draws how they hang
 * together, and NamesManager_AssertConsistency checks the invariants that tie them.
 */

/* A block of text. New text is always placed at nUsed. */
typedef struct NameStorageBlock {
    char *pData;   /* the text, nSize bytes, owned */
    int32_t nSize; /* capacity in bytes */
    int32_t nUsed; /* bytes in use from the start, dead bytes (text that no name refers to any more)
                      included */
    int32_t nNamesInBlock; /* names whose text lies here; 0 exactly when nUsed is 0 */
} NameStorageBlock;

/* A run of 1 to 128 consecutive names whose texts, each ended by its NUL, lie back to back in one
 * block. */
typedef struct NameSegment {
    int32_t iFirst;  /* first index covered */
    int32_t iLast;   /* last index covered, inclusive */
    int32_t iBlock;  /* block that holds the text */
    int32_t nOffset; /* byte offset of name iFirst in that block */
    int32_t nBytes;  /* bytes of text, NULs included */
} NameSegment;

/* Where one name lies, in individual-positions mode. */
typedef struct NamePosition {
    int32_t iBlock;  /* block that holds the name */
    int32_t nOffset; /* byte offset of its first character */
} NamePosition;

/* The hash index from name text to 0-based index. Its keys are the addresses of the stored texts.
 */
typedef HostHashMap NameLookupIndex;

/* One manager. Exactly one of pSegments and pPositions is set; only a clear that ran out of memory
 * leaves neither. */
typedef struct NamesManager {
    void *pOwner; /* the caller's, untouched */
    int32_t nNames;
    char szNameFormat[32];      /* printf-style format of default names, one integer conversion */
    int32_t nGeneratedNameBase; /* the next default name has number max(nGeneratedNameBase, nNames)
                                   + 1, or the next whose name is free */
    char szFirstGeneratedName[32]; /* replaces the default name with number 1 when not empty */
    int32_t nMaxNameLength;        /* length of the longest name, -1: unknown */
    int32_t nMaxNameLengthCount;   /* while nMaxNameLength is known: at most as many as there are
                                      names of that length */
    NameStorageBlock *pBlocks;
    int32_t nBlocks; /* at least 1 */
    int32_t nBlocksAlloc;
    NameSegment
        *pSegments; /* in index order, tiling 0 to nNames-1; NULL in individual-positions mode */
    int32_t nSegments;
    int32_t nSegmentsAlloc;
    int32_t iCursorName;      /* the name that a sequential reader asks for next, -1: none; the next
                                 three are stale then */
    int32_t iCursorSegment;   /* segment that holds it */
    int32_t iCursorBlock;     /* block that holds it */
    int32_t nCursorOffset;    /* byte offset of its text in that block */
    int32_t nCursorMisses;    /* retrievals in a row that had to search for their first name */
    NamePosition *pPositions; /* one per name; NULL in segment mode */
    int32_t nPositionsAlloc;
    NameLookupIndex *pLookupIndex; /* NULL until the first lookup */
    HostLock lock;
} NamesManager;

/* ---- Lifecycle and counts
 * -------------------------------------------------------------------------------------------------------------
 */

/* A new, empty manager, or NULL: memory or the lock could not be had, or szFormat is not
 * acceptable. pOwner: kept in the record for the caller, never used. szFormat: NULL for "nm%d",
 * else at most 31 characters with exactly one conversion of d i u o x X, optionally with flags (- +
 * space 0 #), a width and a precision in decimal digits up to 2147483647; no *, $ or length
 * modifier; %% is text. The caller owns the result and gives it back with NamesManager_Destroy. */
NamesManager *NamesManager_Create(void *pOwner, const char *szFormat);

/* Releases a manager with everything it owns; NULL is ignored. Ends the life of every pointer
 * handed out. Takes no lock: no other thread may be using the manager. */
void NamesManager_Destroy(NamesManager *mgr);

/* Removes all names and returns the manager to segment mode; pOwner, the name format and the first
 * generated name stay, and so do the first block and the capacities of the block and segment
 * tables. 0; or 1 when a segment table had to be made and could not: the manager then holds no
 * names and refuses to store any until a later clear, or a copy or a load into it, succeeds.
 * Invalidates all name pointers. */
int32_t NamesManager_Clear(NamesManager *mgr);

/* The number of names held. */
int32_t NamesManager_GetNumNames(NamesManager *mgr);

/* NAMES_MANAGER_VERSION of the library that runs, which is the program's own unless the two were
 * built apart. Never fails; takes no lock, may be called at any time. */
int32_t NamesManager_Version(void);

/* ---- Storing
 * --------------------------------------------------------------------------------------------------------------------------
 * Indices below nNames are replaced, indices from nNames on appended; a gap before the range is
 * filled with default names first. Everything here invalidates all name pointers. Replacing
 * scattered names one at a time fragments segments and is paid for at each call; a host that is
 * about to rename very many in that way does better to call
 * NamesManager_StoreIndividualNamePositions first. A store that fails while it replaces names also
 * drops the lookup index and the known length of the longest name; both come back when they are
 * asked for.
 */

/* Stores names[0] to names[last-first], NUL-terminated, at first to last. Names may lie in mgr
 * itself: where they replace several others they are copied first, so that each is stored as it was
 * when the call began (1 and nothing changed without memory for the copies). 0; 1 memory exhausted
 * (names stored before stay; nothing else is lost); 2 a name is longer than 1048575 bytes without
 * its trailing blanks (nothing stored, except where memory was so short that names went in one by
 * one: then those before it). last < first stores nothing and returns 0. Also releases blocks left
 * empty, a single store only where last is a multiple of 1000. */
int32_t NamesManager_AddNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                              const char *const *names);

/* NamesManager_AddNames for one name, same results. The name may lie in mgr itself. */
int32_t NamesManager_AddName(NamesManager *mgr, int32_t index, int32_t bOneBased, const char *name);

/* Stores the source's name as a name of the destination, which may be the same manager; results of
 * NamesManager_AddName, and 1 with the destination unchanged when the source has no such name and
 * could not generate it. Locks one manager after the other, never both: while this runs no other
 * thread may change the source. */
int32_t NamesManager_CopyName(NamesManager *destination, int32_t destinationIndex,
                              int32_t bDestinationOneBased, NamesManager *source,
                              int32_t sourceIndex, int32_t bSourceOneBased);

/* NamesManager_CopyName with prefix, NUL-terminated, put before the name; 1 also when the work
 * buffer could not be had (destination unchanged). Names longer than 255 bytes together with the
 * prefix cost an allocation. */
int32_t NamesManager_CopyNameWithPrefix(NamesManager *destination, int32_t destinationIndex,
                                        int32_t bDestinationOneBased, NamesManager *source,
                                        int32_t sourceIndex, int32_t bSourceOneBased,
                                        const char *prefix);

/* Stores the last-first+1 NUL-terminated names that lie back to back in buffer, in batches of up to
 * 500000. 0; 1 memory exhausted (earlier batches stay, and of the batch that ran out of memory what
 * was stored before); 2 a name is longer than 1048575 bytes without its trailing blanks (earlier
 * batches stay, nothing of its own batch is stored; where memory was so short that names went in
 * one by one, those before it stay). buffer must not lie in mgr itself. */
int32_t NamesManager_AddNamesFromBuffer(NamesManager *mgr, int32_t first, int32_t last,
                                        int32_t bOneBased, const char *buffer);

/* Stores one name given as a field: at most nMaxLength bytes of name are read (a negative
 * nMaxLength counts as 0), and the name ends at the first NUL among them. No limit of 1048575
 * applies here. The name may lie in mgr itself. 0; 1 memory exhausted (default names generated to
 * fill a gap stay). */
int32_t NamesManager_AddNameWithMaxLength(NamesManager *mgr, int32_t index, int32_t bOneBased,
                                          const char *name, int32_t nMaxLength);

/* ---- Default names
 * --------------------------------------------------------------------------------------------------------------------
 */

/* Sees to it that at least count names exist, appending default names made from the format and a
 * running number, skipping any that are in use. 0; 1 when one could not be stored, which is also
 * reported through Host_ReportError (those before it stay). Builds the lookup index. Invalidates
 * all name pointers when it appends. */
int32_t NamesManager_GenerateNames(NamesManager *mgr, int32_t count);

/* Sets the text that the default name with number 1 gets instead of the formatted one: the first 31
 * bytes of szName, "" for none. Takes no lock: must not race with any other operation on mgr. */
void NamesManager_SetFirstGeneratedName(NamesManager *mgr, const char *szName);

/* ---- Reading
 * --------------------------------------------------------------------------------------------------------------------------
 * In segment mode ascending reads continue at a cursor; the fifth retrieval in a row that had to
 * search for its first name (it started neither at index 0 nor where the last one stopped) switches
 * the manager to individual positions for good. A retrieval that ends on the last name of a segment
 * leaves no cursor, so that the one that goes on from there counts as a search, too: a reader in
 * order whose ranges end there time and again, ranges of 128 names where segments are full, say,
 * switches the manager with the fifth of these.
 */

/* Writes the length in bytes of each name of the range into lengths[0] to lengths[last-first]. The
 * range must lie below nNames; nothing is written otherwise, nor for an empty range. Moves no
 * cursor. */
void NamesManager_GetNameLengths(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                                 int32_t *lengths);

/* Fills ppNames[0] to ppNames[last-first] with pointers to the stored, NUL-terminated names.
 * ppNames may be NULL: then names up to and including last are only made to exist, as they are for
 * an empty range whose last is nNames or beyond. 0; 1 default names missing up to last could not be
 * generated (nothing written; those generated stay). Reaching beyond nNames invalidates earlier
 * name pointers. */
int32_t NamesManager_GetNamePointers(NamesManager *mgr, int32_t first, int32_t last,
                                     int32_t bOneBased, const char **ppNames);

/* The stored, NUL-terminated name, or NULL where NamesManager_GetNamePointers would fail. */
const char *NamesManager_GetName(NamesManager *mgr, int32_t index, int32_t bOneBased);

/* Copies the names of the range into pBuffer as fields, one right after the other, each ended by a
 * NUL. A name of L bytes becomes neither flag   its L bytes                                   L + 1
 * bytes with the NUL bPad           filled up with blanks to nWidth - 1           max(L + 1,
 * nWidth) bTruncate      cut to nWidth - 1                             min(L + 1, nWidth) both
 * filled up or cut to nWidth - 1                nWidth nWidth counts the NUL and must be at least 1
 * where a flag is set; without flags it is not looked at. nBufferSize: bytes at pBuffer; 0 copies
 * nothing (pBuffer may then be NULL). pnRequiredSize: receives the bytes that the request needs,
 * NULL if not wanted. 0; 1 default names could not be generated (nothing written); 3 nBufferSize is
 * not 0 and too small (*pnRequiredSize is set, pBuffer untouched). Only a call that copies moves
 * the cursor. */
int32_t NamesManager_GetNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                              int32_t bPad, int32_t bTruncate, int32_t nWidth, char *pBuffer,
                              uint64_t nBufferSize, uint64_t *pnRequiredSize);

/* NamesManager_GetNames for one name, same results. */
int32_t NamesManager_GetNameIntoBuffer(NamesManager *mgr, int32_t index, int32_t bOneBased,
                                       int32_t bPad, int32_t bTruncate, int32_t nWidth,
                                       char *pBuffer, uint64_t nBufferSize,
                                       uint64_t *pnRequiredSize);

/* The length of the longest name, 0 for a manager without names. Usually answered from a cache;
 * never fails. */
int32_t NamesManager_GetMaxNameLength(NamesManager *mgr);

/* Appends a name to a host text buffer: as it is, or with bPad as a field of at least nWidth - 1
 * characters filled up with blanks; with bTrailingBlanks followed by nWidth - 1 blanks. nWidth must
 * be at least 1 where a flag is set. 0; 1 the name could not be had or a text operation failed
 * (what it had appended stays). Holds the lock only while it finds the name: no other thread may
 * change the manager's names until it returns. */
int32_t NamesManager_WriteNameToText(NamesManager *mgr, int32_t index, int32_t bOneBased,
                                     int32_t bTrailingBlanks, int32_t bPad, int32_t nWidth,
                                     HostText *text);

/* ---- Checking and looking up
 * ----------------------------------------------------------------------------------------------------------
 */

/* Tells whether storing the given names at first to last would leave two equal names: two given
 * ones, or a given one and one held outside the range. ppNames: last-first+1 pointers, NULL for
 * none; pnLengths: their lengths in bytes, 0 or more; ppNames[i][pnLengths[i]] must be readable. A
 * name ends at its first NUL; names are compared without trailing white space (isspace in the
 * current locale). The first given name that repeats an earlier given one is reported; without any,
 * the first that is held outside the range. Of several equal held names only the one that the index
 * yields is looked at (the lowest, in the shipped map): where that lies within the range, others
 * outside it go unnoticed. *pbDuplicate: 1 when a clash was found, else 0. Only then are
 * *piFirstIndex (the name that was there first), *piSecondIndex (the given name that repeats it),
 * both in the caller's base, and szDuplicateName written: the name, cut to nDuplicateNameSize - 1
 * bytes and a NUL (not touched when nDuplicateNameSize is below 1). 0: the check was made; 1: it
 * could not be (memory; *pbDuplicate is 0). Generates the default names that storing at first would
 * generate. */
int32_t NamesManager_CheckDuplicateNames(NamesManager *mgr, int32_t first, int32_t last,
                                         int32_t bOneBased, const char *const *ppNames,
                                         const int32_t *pnLengths, int32_t *pbDuplicate,
                                         int32_t *piFirstIndex, int32_t *piSecondIndex,
                                         char *szDuplicateName, int32_t nDuplicateNameSize);

/* NamesManager_CheckDuplicateNames for NUL-terminated names that lie back to back in buffer; names
 * longer than 1048575 bytes take no part. Same results; *pbDuplicate is untouched when the range
 * lies outside the contract or its work arrays could not be had. */
int32_t NamesManager_CheckDuplicateNamesInBuffer(NamesManager *mgr, int32_t first, int32_t last,
                                                 int32_t bOneBased, const char *buffer,
                                                 int32_t *pbDuplicate, int32_t *piFirstIndex,
                                                 int32_t *piSecondIndex, char *szDuplicateName,
                                                 int32_t nDuplicateNameSize);

/* Writes the index of each of the nCount names into pIndices, -1 for one that is not held. nWidth:
 * -1, names are NUL-terminated; above 0, names are fields of nWidth bytes that end at their first
 * NUL if they have one; 0, every name is the empty one. Trailing blanks do not count. Below -1:
 * NUL-terminated and compared with their trailing blanks. pIndices may be NULL. The first lookup
 * builds the index, which storing keeps current and removing drops. When it cannot be built, names
 * are compared one after the other. Of several equal names the index yields the one that the host's
 * map holds (the shipped map: the lowest), comparing the lowest. nCount below 1 looks nothing up,
 * but builds the index. 0; 1 no memory for a name of more than 255 bytes that had to be copied (all
 * results are -1). */
int32_t NamesManager_FindNames(NamesManager *mgr, const char *const *ppNames, int32_t nCount,
                               int32_t nWidth, int32_t bOneBased, int32_t *pIndices);

/* The index of a NUL-terminated name, trailing blanks not counting, or -1 (also when the lookup
 * failed). */
int32_t NamesManager_FindName(NamesManager *mgr, const char *name, int32_t bOneBased);

/* NamesManager_FindName for a name delimited by nWidth as in NamesManager_FindNames. */
int32_t NamesManager_FindNameInField(NamesManager *mgr, const char *name, int32_t nWidth,
                                     int32_t bOneBased);

/* NamesManager_FindNames for NUL-terminated names, same results. */
int32_t NamesManager_FindNameList(NamesManager *mgr, const char *const *ppNames, int32_t nCount,
                                  int32_t bOneBased, int32_t *pIndices);

/* ---- Removing
 * -------------------------------------------------------------------------------------------------------------------------
 */

/* Removes the names of the range; later names move down. last may lie beyond the last name and is
 * cut; a first beyond it removes nothing. 0; 1 the segment table could not be grown (no name is
 * removed, the lookup index is dropped). Drops the lookup index, releases empty blocks and
 * invalidates all name pointers. Switches to individual positions when it leaves more segments than
 * half the names. */
int32_t NamesManager_RemoveNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased);

/* Removes the names at the nCount 0-based indices, in any order, repeated ones and ones that do not
 * exist included; the list is not changed. 0; 1 some of them could not be removed for want of
 * memory. Takes time in proportion to the names and the list (and for sorting the list where it
 * does not ascend). Otherwise as NamesManager_RemoveNames. */
int32_t NamesManager_RemoveNamesByIndices(NamesManager *mgr, const int32_t *pIndices,
                                          int32_t nCount);

/* ---- Whole managers
 * -------------------------------------------------------------------------------------------------------------------
 */

/* Makes dst an exact copy of src: names, storage layout and mode, dead bytes, name format,
 * nGeneratedNameBase, maximum length; not pOwner, the first generated name, cursor or index. Blocks
 * get the sizes of src's, but a larger first block of dst stays larger. 0; 1 memory exhausted (dst
 * is then empty), or dst and src are the same (nothing changed), or a failed clear left src without
 * tables (dst unchanged). Locks dst, then src: two threads must not copy two managers into each
 * other at the same time. Invalidates all name pointers of dst. */
int32_t NamesManager_Copy(NamesManager *dst, NamesManager *src);

/* Switches to one position per name, which makes every later access direct at the price of 8 bytes
 * a name. 0; 1 the manager has no segments (it is switched already) or memory ran out (unchanged).
 * Name pointers stay valid. */
int32_t NamesManager_StoreIndividualNamePositions(NamesManager *mgr);

/* Gives the memory of blocks without names back, keeping at least one block. Always 0. Storing and
 * removing call it where it is due. Pointers to names stay valid. */
int32_t NamesManager_ReleaseEmptyBlocks(NamesManager *mgr);

/* Checks every invariant of the records above and reports each violation through
 * Host_ReportAssertion, with one text and a line number for each check. Changes and allocates
 * nothing. mgr may be NULL, which is itself reported. Takes no lock: no other thread may change the
 * manager meanwhile. With a lookup index, repeated names are reported too: no index can yield both.
 */
void NamesManager_AssertConsistency(NamesManager *mgr);

/* Writes the manager's complete state as a byte image, in the machine's byte order
 * (docs/image_format.md). mgr may be NULL. reserved is not used. 0, or the first non-zero result of
 * the stream's write, which ends the save; the manager keeps its names in any case. Equal managers
 * save equal bytes, unless there is no memory for the block records without their addresses (24
 * bytes a block): the addresses, which mean nothing to a load, then go out with the image. */
int32_t NamesManager_Save(NamesManager *mgr, void *reserved, HostOutputStream *stream);

/* Replaces all that mgr holds, except pOwner, by a state read from an image. Nothing in the image
 * is trusted: it is taken only if every invariant of a manager holds for it. The image of a NULL
 * manager clears mgr, which keeps its formats of default names then. reserved is not used. 0; -1
 * memory ran out or the image is not sound; else the code of the read that failed. After a failure
 * the manager is as NamesManager_Clear leaves it. Invalidates all name pointers. */
int32_t NamesManager_Load(NamesManager *mgr, void *reserved, HostInputStream *stream);

/* Runs fixed scenarios over every public operation on managers of its own, auditing after each
 * step; for an integrator to run on a new host. NamesManager_WriteNameToText and NamesManager_Load
 * are left out: they take a text buffer and an input stream, which only the host can make. Prints
 * progress on standard output and reports each failed expectation through the host. Returns the
 * number of expectations that failed, findings of the audit included; 0 is a pass. */
int32_t NamesManager_SelfCheck(void);

#ifdef __cplusplus
}
#endif

#endif
