/* A text buffer that grows as text is appended.
 *
 * Appending returns 0, or 1 when memory ran out: the text is then what it was before. Appending may
 * move the text. A buffer has no lock: one thread at a time.
 */
#ifndef HOST_HOST_TEXT_H
#define HOST_HOST_TEXT_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HostText HostText;

/* Appends the NUL-terminated szString, which must not lie in the buffer itself, without its NUL. */
int32_t HostText_Append(HostText *pText, const char *szString);

/* Appends szString, which must not lie in the buffer itself, as a field of nCharacters bytes:
 * blanks follow a shorter string; a longer one is appended whole. */
int32_t HostText_AppendPadded(HostText *pText, const char *szString, int64_t nCharacters);

/* Appends nCount times cCharacter; a count below 1 appends nothing. */
int32_t HostText_AppendRepeated(HostText *pText, int64_t nCount, char cCharacter);

/* ---- The shipped host's own: making and reading a buffer ---- */

/* Makes an empty buffer, which belongs to the caller until HostText_Destroy. NULL when there is no
 * memory. */
HostText *HostText_Create(void);

/* Destroys the buffer. NULL does nothing. */
void HostText_Destroy(HostText *pText);

/* The text, NUL-terminated and never NULL. It is the buffer's own and valid until the next append
 * or HostText_Destroy. */
const char *HostText_GetString(const HostText *pText);

/* The length of the text in bytes, without the NUL. */
uint64_t HostText_GetLength(const HostText *pText);

#ifdef __cplusplus
}
#endif

#endif
