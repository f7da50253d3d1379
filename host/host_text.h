/** @file
 * A text buffer that grows as text is appended.
 *
 * Appending returns 0, or 1 if memory ran out; the text is then what it was before. Appending may
 * move the text. A buffer has no lock: only one thread may use it at a time.
 */
#ifndef HOST_HOST_TEXT_H
#define HOST_HOST_TEXT_H

#include <stdint.h>

#ifdef __GNUC__
#pragma GCC visibility push(default) /* what is declared here is exported */
#endif
#ifdef __cplusplus
extern "C" {
#endif

typedef struct HostText HostText;

/** Appends the NUL-terminated szString, which must not lie in the buffer itself, without its NUL.
 */
int32_t HostText_Append(HostText *pText, const char *szString);

/** Appends szString, which must not lie in the buffer itself, as a field of nCharacters bytes:
 * blanks follow a shorter string; a longer one is appended whole. */
int32_t HostText_AppendPadded(HostText *pText, const char *szString, int64_t nCharacters);

/** Appends nCount times cCharacter; a count below 1 appends nothing. */
int32_t HostText_AppendRepeated(HostText *pText, int64_t nCount, char cCharacter);

/** @name The shipped host's own: making and reading a buffer
 * @{ */

/** Makes an empty buffer, which belongs to the caller until HostText_Destroy(). Returns NULL if
 * there is no memory. */
HostText *HostText_Create(void);

/** Destroys the buffer; NULL is ignored. */
void HostText_Destroy(HostText *pText);

/** Returns the text, NUL-terminated and never NULL. It is the buffer's own and valid until the next
 * append or HostText_Destroy(). */
const char *HostText_GetString(const HostText *pText);

/** Returns the length of the text in bytes, without the NUL. */
uint64_t HostText_GetLength(const HostText *pText);

/** @} */

#ifdef __cplusplus
}
#endif
#ifdef __GNUC__
#pragma GCC visibility pop
#endif

#endif
