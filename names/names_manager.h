/** @file
 * The names manager: keeps the names of numbered entities, one ordered list (index 0 to nNames-1)
 * per manager.
 *
 * **Results.** Unless a declaration says otherwise, an operation returns 0 on success and 1 if
 * memory ran out or an argument lies outside the operation's contract. Declarations do not repeat
 * the latter; nothing is changed then. Every failure leaves the manager valid: what was stored
 * before it stays stored, and caches that could not be kept are dropped. No operation ever throws.
 * NamesManagerStatus names the results; NamesManager_Save() and NamesManager_Load() also pass on
 * the codes of the host's streams.
 *
 * **Indices.** Signed 32-bit. A range (first, last) is inclusive. With bOneBased non-zero the
 * caller's indices count from 1: 1 is subtracted from each index given and added to each index
 * reported; "not found" is -1 either way. An empty range, last == first - 1, is no error. Outside
 * the contract are a 0-based first index below 0, a first index more than one past the last, and a
 * 0-based last index of 2147483647 or beyond.
 *
 * **Names.** Byte strings without NUL, compared byte for byte. Storing drops trailing blanks (byte
 * 0x20 only). Lengths never count the NUL; sizes and widths do. A mgr, array or string pointer must
 * not be NULL unless its operation says that it may be.
 *
 * **Default names.** A read or a store that reaches beyond nNames first generates the names in
 * between (see NamesManager_GenerateNames()). Where a read says that default names could not be
 * generated, one of them could not be stored.
 *
 * **Ownership.** The manager copies all text that it is given and keeps no caller pointer after a
 * call. Pointers to names that it hands out ("name pointers") point into its own storage, are
 * read-only, and stay valid until the next operation that stores, removes, generates, clears,
 * copies into, loads or destroys. Reading, looking up, saving and switching the storage mode move
 * no text.
 *
 * **Locking.** Every operation holds the manager's lock from entry to return, reads included (they
 * move the cursor and may build the index), so any thread may call any operation at any time, with
 * the exceptions that declarations name. Several calls become one between NamesManager_Lock() and
 * NamesManager_Unlock(): checking and then adding, finding and then reading; name pointers read
 * there stay valid until the unlock, whatever other threads want. Outside, the lock does not
 * protect name pointers. Many threads that only read do without the lock: names/names_reader.h.
 * Managers share nothing: two threads working on two managers never wait for each other.
 *
 * **Pages.** What comments call docs/... is installed below share/doc/names_manager.
 */
#ifndef NAMES_NAMES_MANAGER_H
#define NAMES_NAMES_MANAGER_H

#include <stdint.h>

#if UINTPTR_MAX < UINT64_MAX
#error "names_manager is for 64-bit machines"
#endif

/* Another host's headers of these names take the place of the shipped ones if their folder comes
 * first in the include path; docs/porting.md says what they must declare. */
#include "host/host_hash_map.h"
#include "host/host_lock.h"
#include "host/host_stream.h"
#include "host/host_text.h"

#ifdef __GNUC__
#pragma GCC visibility push(default) /* what is declared here is exported */
#endif
#ifdef __cplusplus
extern "C" {
#endif

#define NAMES_MANAGER_VERSION_MAJOR 0
#define NAMES_MANAGER_VERSION_MINOR 1
#define NAMES_MANAGER_VERSION_PATCH 0

/** The version of this header. Versions compare as numbers: 0.1.0 is 1000, 2.3.4 is 2003004. */
#define NAMES_MANAGER_VERSION                                                     \
    (NAMES_MANAGER_VERSION_MAJOR * 1000000 + NAMES_MANAGER_VERSION_MINOR * 1000 + \
     NAMES_MANAGER_VERSION_PATCH)

/** The most bytes that a name may have, trailing blanks and NUL not counted, where a declaration
 * sets a limit. */
#define NAMES_MANAGER_MAX_NAME_BYTES 1048575

/** Results by name. */
enum NamesManagerStatus {
    NamesManagerStatus_OK = 0,
    NamesManagerStatus_Failed = 1,   /**< memory ran out, or an argument is outside the contract */
    NamesManagerStatus_TooLong = 2,  /**< a name has more than NAMES_MANAGER_MAX_NAME_BYTES */
    NamesManagerStatus_TooSmall = 3, /**< the buffer given; the size that it needs is reported */
    NamesManagerStatus_Refused = -1  /**< by a load: memory ran out, or the image is not sound */
};

/** Widths of names to look up that stand for names without one (see NamesManager_FindNames()). */
enum NamesManagerWidth {
    NamesManagerWidth_Terminated = -1, /**< names end at their NUL; trailing blanks do not count */
    NamesManagerWidth_AsGiven = -2     /**< names end at their NUL; trailing blanks count */
};

/** @name Records
 * Open to inspection; only the operations below may change them. docs/design.md draws how they hang
 * together, and NamesManager_AssertConsistency() checks the invariants that tie them.
 * @{ */

/** A block of text. New text always goes to offset nUsed. */
typedef struct NameStorageBlock {
    char *pData;           /**< the text, nSize bytes, owned */
    int32_t nSize;         /**< capacity in bytes */
    int32_t nUsed;         /**< bytes in use from the start, including dead bytes (text that no name
                                refers to any more) */
    int32_t nNamesInBlock; /**< names whose text lies here; 0 exactly when nUsed is 0 */
} NameStorageBlock;

/** 1 to 128 consecutive names whose texts, each with its NUL, lie back to back in one block. */
typedef struct NameSegment {
    int32_t iFirst;  /**< first index covered */
    int32_t iLast;   /**< last index covered, inclusive */
    int32_t iBlock;  /**< block that holds the text */
    int32_t nOffset; /**< byte offset of name iFirst in that block */
    int32_t nBytes;  /**< bytes of text, NULs included */
} NameSegment;

/** Where one name's text lies, in individual-positions mode. */
typedef struct NamePosition {
    int32_t iBlock;  /**< block that holds the name */
    int32_t nOffset; /**< byte offset of its first character in that block */
} NamePosition;

/** The hash index from a name's text to its 0-based index. Its keys are the addresses of the stored
 * texts. */
typedef HostHashMap NameLookupIndex;

/** One manager. Exactly one of pSegments and pPositions is set; only a clear that ran out of memory
 * leaves neither. */
typedef struct NamesManager {
    void *pOwner;                  /**< the caller's, never used or changed */
    int32_t nNames;                /**< names held */
    char szNameFormat[32];         /**< printf-style format of default names, with one integer
                                        conversion */
    int32_t nGeneratedNameBase;    /**< the next default name has number
                                        max(nGeneratedNameBase, nNames) + 1, or the next higher
                                        number whose name is not in use */
    char szFirstGeneratedName[32]; /**< replaces the default name with number 1 unless empty */
    int32_t nMaxNameLength;        /**< length of the longest name in bytes, -1: unknown */
    int32_t nMaxNameLengthCount;   /**< while nMaxNameLength is known, at most the number of names
                                        of that length */
    NameStorageBlock *pBlocks;     /**< the table of blocks, owned */
    int32_t nBlocks;               /**< blocks in use, at least 1 */
    int32_t nBlocksAlloc;          /**< records that the table has room for */
    NameSegment *pSegments;        /**< in index order, tiling 0 to nNames-1; NULL in
                                        individual-positions mode */
    int32_t nSegments;             /**< segments in use */
    int32_t nSegmentsAlloc;        /**< records that the table has room for */
    int32_t iCursorName;           /**< the name that a sequential reader asks for next, -1: none;
                                        the next three fields are stale then */
    int32_t iCursorSegment;        /**< segment that holds it */
    int32_t iCursorBlock;          /**< block that holds it */
    int32_t nCursorOffset;         /**< byte offset of its text in that block */
    int32_t nCursorMisses;         /**< retrievals in a row that had to search for their first
                                        name */
    NamePosition *pPositions;      /**< one per name; NULL in segment mode */
    int32_t nPositionsAlloc;       /**< records that the table has room for */
    NameLookupIndex *pLookupIndex; /**< NULL until the first lookup */
    HostLock lock;                 /**< held by every operation from entry to return */
} NamesManager;

/** @} */

/** @name Lifecycle and counts
 * @{ */

/** Makes an empty manager, which belongs to the caller until NamesManager_Destroy().
 *
 * pOwner is kept in the record for the caller and never used. szFormat is the format of default
 * names: NULL for "nm%d", else at most 31 characters with exactly one conversion of `d i u o x X`,
 * optionally with flags (`- + space 0 #`) and with a width and a precision in decimal digits up to
 * 2147483647; no `*`, no `$`, no length modifier; `%%` is text.
 *
 * Returns NULL if memory or the lock could not be had, or if szFormat is not such a format. */
NamesManager *NamesManager_Create(void *pOwner, const char *szFormat);

/** Destroys a manager with everything that it owns; NULL is ignored. Invalidates all name pointers.
 * Takes no lock: no other thread may be using the manager. */
void NamesManager_Destroy(NamesManager *mgr);

/** Removes all names and returns the manager to segment mode. Kept are pOwner, the name format, the
 * first generated name, the first block, and the capacities of the block and segment tables.
 * Invalidates all name pointers.
 *
 * Returns 0, or 1 if a segment table had to be made and there was no memory for it: the manager
 * then holds no names and refuses to store any until a later clear, or a copy or a load into it,
 * succeeds. */
int32_t NamesManager_Clear(NamesManager *mgr);

/** Returns the number of names held. */
int32_t NamesManager_GetNumNames(NamesManager *mgr);

/** Returns the NAMES_MANAGER_VERSION of the library that runs. It is the program's own unless the
 * two were built apart. Never fails, takes no lock, and may be called at any time. */
int32_t NamesManager_Version(void);

/** Takes the manager's lock, as every operation does for itself: until NamesManager_Unlock() no
 * other thread's operation on mgr begins. Waits while another thread holds it. Recursive: the
 * calling thread may call any operation, and this one again. */
void NamesManager_Lock(NamesManager *mgr);

/** Gives back one NamesManager_Lock() of the same thread. */
void NamesManager_Unlock(NamesManager *mgr);

/** @} */

/** @name Storing
 * Names at indices below nNames are replaced, those from nNames on appended; a gap before the range
 * is filled with default names first. Every operation here invalidates all name pointers.
 *
 * Replacing scattered names one at a time fragments segments, which costs time at each call; a host
 * that is about to rename very many names in that way should call
 * NamesManager_StoreIndividualNamePositions() first.
 *
 * A store that fails while it replaces names also drops the lookup index and the known length of
 * the longest name; both are made again when they are needed.
 * @{ */

/** Stores names[0] to names[last-first], NUL-terminated, at first to last.
 *
 * Returns
 * - 0 on success; also if last < first, which stores nothing
 * - 1 if memory ran out: names stored before stay, and nothing else is lost
 * - 2 if a name has more than NAMES_MANAGER_MAX_NAME_BYTES without its trailing blanks: nothing is
 *   stored, unless memory was so short that names were stored one by one; then those before it stay
 *
 * Names may lie in mgr itself. If they replace several others, they are copied first, so that each
 * is stored as it was when the call began; without memory for the copies the result is 1 and
 * nothing is changed.
 *
 * Also releases blocks left empty; a store of one name does so only if last is a multiple of 1000.
 */
int32_t NamesManager_AddNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                              const char *const *names);

/** NamesManager_AddNames() for names that need no NUL: names[k] has lengths[k] bytes, 0 or more,
 * and no byte after these is read. Returns what NamesManager_AddNames() returns, and 1 with nothing
 * stored if there is a NUL among the bytes of a name. */
int32_t NamesManager_AddNamesWithLengths(NamesManager *mgr, int32_t first, int32_t last,
                                         int32_t bOneBased, const char *const *names,
                                         const int32_t *lengths);

/** NamesManager_AddNames() for one name, with the same results. The name may lie in mgr itself. */
int32_t NamesManager_AddName(NamesManager *mgr, int32_t index, int32_t bOneBased, const char *name);

/** Stores the source's name as a name of the destination, which may be the same manager.
 *
 * Returns what NamesManager_AddName() returns, and 1 with the destination unchanged if the source
 * has no such name and could not generate it.
 *
 * Locks one manager after the other, never both: while this runs no other thread may change the
 * source. */
int32_t NamesManager_CopyName(NamesManager *destination, int32_t destinationIndex,
                              int32_t bDestinationOneBased, NamesManager *source,
                              int32_t sourceIndex, int32_t bSourceOneBased);

/** NamesManager_CopyName() with prefix, NUL-terminated, put before the name. Returns 1 also if
 * there is no memory for the work buffer (the destination is unchanged then), which is allocated if
 * prefix and name together are longer than 255 bytes. */
int32_t NamesManager_CopyNameWithPrefix(NamesManager *destination, int32_t destinationIndex,
                                        int32_t bDestinationOneBased, NamesManager *source,
                                        int32_t sourceIndex, int32_t bSourceOneBased,
                                        const char *prefix);

/** Stores the last-first+1 NUL-terminated names that lie back to back in buffer, which must not lie
 * in mgr itself. Stores up to 500000 names at a time, called a group here.
 *
 * Returns
 * - 0 on success
 * - 1 if memory ran out: earlier groups stay, and so does what was stored of the group at hand
 * - 2 if a name has more than NAMES_MANAGER_MAX_NAME_BYTES without its trailing blanks: earlier
 *   groups stay and nothing of its own group is stored, unless memory was so short that names were
 *   stored one by one; then those before it stay */
int32_t NamesManager_AddNamesFromBuffer(NamesManager *mgr, int32_t first, int32_t last,
                                        int32_t bOneBased, const char *buffer);

/** Stores one name given as a field: at most nMaxLength bytes of name are read (none if nMaxLength
 * is negative), and the name ends at the first NUL among them. NAMES_MANAGER_MAX_NAME_BYTES is no
 * limit here. The name may lie in mgr itself.
 *
 * Returns 0, or 1 if memory ran out; default names generated to fill a gap stay. */
int32_t NamesManager_AddNameWithMaxLength(NamesManager *mgr, int32_t index, int32_t bOneBased,
                                          const char *name, int32_t nMaxLength);

/** @} */

/** @name Default names
 * @{ */

/** Appends default names until there are at least count names. They are made from the format and a
 * running number, which skips those whose name is in use. Builds the lookup index. Invalidates all
 * name pointers if it appends.
 *
 * Returns 0, or 1 if a name could not be stored, which is also reported through Host_ReportError();
 * those before it stay. */
int32_t NamesManager_GenerateNames(NamesManager *mgr, int32_t count);

/** Sets the text that the default name with number 1 gets instead of the formatted one: the first
 * 31 bytes of szName, or "" for none. Takes no lock: no other operation on mgr may run meanwhile.
 */
void NamesManager_SetFirstGeneratedName(NamesManager *mgr, const char *szName);

/** @} */

/** @name Reading
 * In segment mode ascending reads go on at a cursor. A retrieval that starts neither at index 0 nor
 * at the cursor has to search for its first name; the fifth in a row that does switches the manager
 * to individual positions for good. A retrieval that ends on the last name of a segment leaves no
 * cursor, so that the next one counts as a search even if it goes on from there. A sequential
 * reader whose ranges often end there (ranges of 128 names where segments are full, for example)
 * therefore switches the manager at the fifth of these.
 * @{ */

/** Writes the length in bytes of each name of the range into lengths[0] to lengths[last-first].
 * Writes nothing if the range is empty or does not lie below nNames. Moves no cursor. */
void NamesManager_GetNameLengths(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                                 int32_t *lengths);

/** Fills ppNames[0] to ppNames[last-first] with pointers to the stored, NUL-terminated names.
 *
 * ppNames may be NULL: names up to and including last are then only generated where they are
 * missing, as they also are for an empty range whose last is nNames or beyond. Generating
 * invalidates earlier name pointers.
 *
 * Returns 0, or 1 if missing default names up to last could not be generated; nothing is written
 * then, but those that were generated stay. */
int32_t NamesManager_GetNamePointers(NamesManager *mgr, int32_t first, int32_t last,
                                     int32_t bOneBased, const char **ppNames);

/** NamesManager_GetNamePointers() that also writes the names' lengths in bytes into pLengths[0] to
 * pLengths[last-first], with the same results. Either array may be NULL; if both are, names are
 * only generated. */
int32_t NamesManager_GetNameViews(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                                  const char **ppNames, int32_t *pLengths);

/** Returns the stored, NUL-terminated name, or NULL where NamesManager_GetNamePointers() would
 * fail. */
const char *NamesManager_GetName(NamesManager *mgr, int32_t index, int32_t bOneBased);

/** Copies the names of the range into pBuffer as fields, back to back, each ended by a NUL.
 *
 * | flags     | a name of L bytes becomes              | bytes with the NUL |
 * |-----------|----------------------------------------|--------------------|
 * | neither   | its L bytes                            | L + 1              |
 * | bPad      | filled up with blanks to nWidth - 1    | max(L + 1, nWidth) |
 * | bTruncate | cut to nWidth - 1                      | min(L + 1, nWidth) |
 * | both      | filled up or cut to nWidth - 1         | nWidth             |
 *
 * nWidth counts the NUL and must be at least 1 if a flag is set; without flags it is ignored.
 * nBufferSize is the number of bytes at pBuffer; 0 copies nothing, and pBuffer may then be NULL.
 * pnRequiredSize, unless NULL, receives the bytes that the request needs. Only a call that copies
 * moves the cursor.
 *
 * Returns
 * - 0 on success
 * - 1 if missing default names could not be generated: nothing is written
 * - 3 if nBufferSize is not 0 and too small: `*pnRequiredSize` is set, pBuffer is untouched */
int32_t NamesManager_GetNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                              int32_t bPad, int32_t bTruncate, int32_t nWidth, char *pBuffer,
                              uint64_t nBufferSize, uint64_t *pnRequiredSize);

/** NamesManager_GetNames() for one name, with the same results. */
int32_t NamesManager_GetNameIntoBuffer(NamesManager *mgr, int32_t index, int32_t bOneBased,
                                       int32_t bPad, int32_t bTruncate, int32_t nWidth,
                                       char *pBuffer, uint64_t nBufferSize,
                                       uint64_t *pnRequiredSize);

/** Returns the length of the longest name in bytes, 0 for a manager without names. Usually answered
 * from a cache; never fails. */
int32_t NamesManager_GetMaxNameLength(NamesManager *mgr);

/** Appends a name to a text buffer of the host: as it is, or with bPad as a field of at least
 * nWidth - 1 characters filled up with blanks. With bTrailingBlanks nWidth - 1 blanks follow.
 * nWidth must be at least 1 if a flag is set.
 *
 * Returns 0, or 1 if the name could not be had or a text operation failed; what was appended before
 * stays.
 *
 * Holds the lock only while it finds the name: no other thread may change the manager's names until
 * it returns. */
int32_t NamesManager_WriteNameToText(NamesManager *mgr, int32_t index, int32_t bOneBased,
                                     int32_t bTrailingBlanks, int32_t bPad, int32_t nWidth,
                                     HostText *text);

/** @} */

/** @name Checking and looking up
 * @{ */

/** Finds out whether storing the given names at first to last would leave two equal names: two
 * given ones, or a given one and one held outside the range. Generates the default names that
 * storing at first would generate.
 *
 * ppNames has last-first+1 pointers, NULL for no name. pnLengths has the names' lengths in bytes, 0
 * or more; `ppNames[i][pnLengths[i]]` must be readable. A name ends at its first NUL. Names are
 * compared without trailing white space (isspace in the current locale).
 *
 * The first given name that repeats an earlier given one is reported; if there is none, the first
 * given name that is held outside the range. Of several equal held names only the one that the
 * index yields is looked at (the lowest, in the shipped map): if it lies within the range, others
 * outside the range go unnoticed.
 *
 * `*pbDuplicate` becomes 1 if a clash was found, else 0. Only if it is 1 are these written:
 * `*piFirstIndex`, the name that was there first; `*piSecondIndex`, the given name that repeats it,
 * both in the caller's base; and szDuplicateName, the name cut to nDuplicateNameSize - 1 bytes, and
 * a NUL (untouched if nDuplicateNameSize is below 1).
 *
 * Returns 0 if the check was made, or 1 if memory ran out; `*pbDuplicate` is 0 then. */
int32_t NamesManager_CheckDuplicateNames(NamesManager *mgr, int32_t first, int32_t last,
                                         int32_t bOneBased, const char *const *ppNames,
                                         const int32_t *pnLengths, int32_t *pbDuplicate,
                                         int32_t *piFirstIndex, int32_t *piSecondIndex,
                                         char *szDuplicateName, int32_t nDuplicateNameSize);

/** NamesManager_CheckDuplicateNames() for NUL-terminated names that lie back to back in buffer,
 * with the same results. Names of more than NAMES_MANAGER_MAX_NAME_BYTES take no part.
 * `*pbDuplicate` is untouched if the range lies outside the contract or there is no memory for the
 * work arrays. */
int32_t NamesManager_CheckDuplicateNamesInBuffer(NamesManager *mgr, int32_t first, int32_t last,
                                                 int32_t bOneBased, const char *buffer,
                                                 int32_t *pbDuplicate, int32_t *piFirstIndex,
                                                 int32_t *piSecondIndex, char *szDuplicateName,
                                                 int32_t nDuplicateNameSize);

/** Writes the index of each of the nCount names into pIndices, -1 for a name that is not held.
 * pIndices may be NULL.
 *
 * nWidth says where a name ends and whether its trailing blanks count:
 * - above 0: a name is a field of nWidth bytes and ends at its first NUL if it has one; trailing
 *   blanks do not count
 * - 0: every name is the empty one
 * - NamesManagerWidth_Terminated (-1): a name ends at its NUL; trailing blanks do not count
 * - NamesManagerWidth_AsGiven (-2) and below: a name ends at its NUL; trailing blanks count
 *
 * The first lookup builds the index, which storing keeps current and removing drops. nCount below 1
 * looks nothing up, but builds the index. If it cannot be built, names are compared one after the
 * other. Of several equal names the index yields the one that the host's map holds (the shipped
 * map: the lowest), comparing one after the other yields the lowest.
 *
 * Returns 0, or 1 if there is no memory for a name of more than 255 bytes that had to be copied;
 * all results are -1 then. */
int32_t NamesManager_FindNames(NamesManager *mgr, const char *const *ppNames, int32_t nCount,
                               int32_t nWidth, int32_t bOneBased, int32_t *pIndices);

/** Returns the index of a NUL-terminated name, whose trailing blanks do not count, or -1 if it is
 * not held or the lookup failed. */
int32_t NamesManager_FindName(NamesManager *mgr, const char *name, int32_t bOneBased);

/** NamesManager_FindName() for a name that ends as nWidth says (see NamesManager_FindNames()). */
int32_t NamesManager_FindNameInField(NamesManager *mgr, const char *name, int32_t nWidth,
                                     int32_t bOneBased);

/** NamesManager_FindNames() with NamesManagerWidth_Terminated, with the same results. */
int32_t NamesManager_FindNameList(NamesManager *mgr, const char *const *ppNames, int32_t nCount,
                                  int32_t bOneBased, int32_t *pIndices);

/** NamesManager_FindNames() for names that need no NUL: ppNames[k] has pLengths[k] bytes, 0 or
 * more, and no byte after these is read. Trailing blanks do not count. Returns what
 * NamesManager_FindNames() returns, and 1 if there is a NUL among the bytes of a name; all results
 * are -1 then. */
int32_t NamesManager_FindNamesWithLengths(NamesManager *mgr, const char *const *ppNames,
                                          const int32_t *pLengths, int32_t nCount,
                                          int32_t bOneBased, int32_t *pIndices);

/** Finds each of the nCount NUL-terminated names or, if it is not held, adds it at the end: for one
 * name after the other what NamesManager_FindName() and then NamesManager_AddName() would do, all
 * under one lock, and faster for many. A name that comes again is found where it was added. Writes
 * the index of each name into pIndices, which may be NULL. Invalidates all name pointers if it
 * adds.
 *
 * Returns
 * - 0 on success
 * - 1 if memory ran out: names before the one that it ran out for stay and have their indices, the
 *   others -1
 * - 2 if a name that is not held has more than NAMES_MANAGER_MAX_NAME_BYTES without its trailing
 *   blanks: nothing is stored, and all indices are -1 */
int32_t NamesManager_FindOrAddNames(NamesManager *mgr, const char *const *names, int32_t nCount,
                                    int32_t bOneBased, int32_t *pIndices);

/** Returns the lowest index from first on whose name is held at a lower index, too, and sets
 * `*piEarlier` to that one (in the shipped map, the lowest). Returns -1 if there is none or no
 * memory for the index; `*piEarlier` is untouched then. To go through all repeats, call it again
 * from the index after each: with the shipped map that takes time in proportion to the names. */
int32_t NamesManager_FindRepeatedName(NamesManager *mgr, int32_t first, int32_t bOneBased,
                                      int32_t *piEarlier);

/** @} */

/** @name Removing
 * @{ */

/** Removes the names of the range; later names move down. A last beyond the last name is cut to it;
 * a first beyond it removes nothing.
 *
 * Drops the lookup index, releases empty blocks and invalidates all name pointers. Switches to
 * individual positions if it leaves more segments than half the names. The next lookup builds the
 * index anew, at 20 to 40 ns a name: who removes and looks up in turn pays up to 80 ms each time in
 * a list of 2,000,000 names, and should remove many names in one call.
 *
 * Returns 0, or 1 if the segment table could not be grown; no name is removed then, but the lookup
 * index is dropped. */
int32_t NamesManager_RemoveNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased);

/** Removes the names at the nCount 0-based indices, which may come in any order, repeat, or not
 * exist; the list is not changed. Takes time in proportion to the names and the list, and for
 * sorting the list if it does not ascend. Otherwise as NamesManager_RemoveNames().
 *
 * Returns 0, or 1 if some of the names could not be removed because memory ran out. */
int32_t NamesManager_RemoveNamesByIndices(NamesManager *mgr, const int32_t *pIndices,
                                          int32_t nCount);

/** @} */

/** @name Whole managers
 * @{ */

/** Makes dst an exact copy of src: names, storage layout and mode, dead bytes, name format,
 * nGeneratedNameBase and maximum length; not pOwner, the first generated name, the cursor or the
 * index. Blocks get the sizes of src's, except that a larger first block of dst stays larger.
 * Invalidates all name pointers of dst.
 *
 * Returns 0, or 1
 * - if memory ran out: dst is then empty
 * - if dst and src are the same: nothing is changed
 * - if a failed clear left src without tables: dst is unchanged
 *
 * Locks dst, then src: two threads must not copy two managers into each other at the same time. */
int32_t NamesManager_Copy(NamesManager *dst, NamesManager *src);

/** Switches to one position per name, which makes every later access direct and costs 8 bytes per
 * name. Name pointers stay valid.
 *
 * Returns 0, or 1 if the manager has no segments (it is switched already) or memory ran out; it is
 * unchanged then. */
int32_t NamesManager_StoreIndividualNamePositions(NamesManager *mgr);

/** Frees blocks without names, keeping at least one block. Storing and removing call it where it is
 * due. Name pointers stay valid. Always returns 0. */
int32_t NamesManager_ReleaseEmptyBlocks(NamesManager *mgr);

/** Checks every invariant of the records above and reports each violation through
 * Host_ReportAssertion(), with one text and a line number for each check. Changes and allocates
 * nothing. mgr may be NULL, which is itself reported. With a lookup index, repeated names are
 * reported too: no index can yield both.
 *
 * Takes no lock: no other thread may change the manager meanwhile. */
void NamesManager_AssertConsistency(NamesManager *mgr);

/** Writes the manager's complete state as an image, in the machine's byte order
 * (docs/image_format.md). mgr may be NULL. reserved is not used. The manager keeps its names in any
 * case.
 *
 * Equal managers save equal bytes, unless there is no memory for a copy of the block records
 * without their addresses (24 bytes per block): the addresses, which mean nothing to a load, are
 * then saved as well.
 *
 * Returns 0, or the first non-zero result of the stream's write, which ends the save. */
int32_t NamesManager_Save(NamesManager *mgr, void *reserved, HostOutputStream *stream);

/** Replaces all that mgr holds, except pOwner, by a state read from an image. Nothing in the image
 * is trusted: it is taken only if every invariant of a manager holds for it. The image of a NULL
 * manager clears mgr, which then keeps its name format and first generated name. reserved is not
 * used. Invalidates all name pointers.
 *
 * Returns 0; -1 if memory ran out or the image is not sound; else the code of the read that failed.
 * After a failure the manager is as NamesManager_Clear() leaves it. */
int32_t NamesManager_Load(NamesManager *mgr, void *reserved, HostInputStream *stream);

/** Runs fixed scenarios over the public operations on managers of its own, auditing after each
 * step; for an integrator to run on a new host. NamesManager_WriteNameToText() and
 * NamesManager_Load() are left out, because only a host can make the text buffer and the input
 * stream that they take. Prints progress on standard output and reports each failed expectation
 * through the host.
 *
 * Returns the number of expectations that failed, findings of the audit included; 0 is a pass. */
int32_t NamesManager_SelfCheck(void);

/** @} */

#ifdef __cplusplus
}
#endif
#ifdef __GNUC__
#pragma GCC visibility pop
#endif

#endif
