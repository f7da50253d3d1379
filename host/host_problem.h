/** @file
 * The problem object that owns managers. It has no content of its own here; it serves as an owner
 * to pass to NamesManager_Create().
 */
#ifndef HOST_HOST_PROBLEM_H
#define HOST_HOST_PROBLEM_H

#include <stdint.h>

#ifdef __GNUC__
#pragma GCC visibility push(default) /* what is declared here is exported */
#endif
#ifdef __cplusplus
extern "C" {
#endif

typedef struct ZOLTproblem *ZOLTprob;

/** Makes a problem, which belongs to the caller until ZOLTdestroyprob(), and sets `*pProb` to it.
 *
 * Returns 0, or 1 if there is no memory; `*pProb` is NULL then. */
int32_t ZOLTcreateprob(ZOLTprob *pProb);

/** Destroys a problem; NULL is ignored. Returns 0. */
int32_t ZOLTdestroyprob(ZOLTprob prob);

#ifdef __cplusplus
}
#endif
#ifdef __GNUC__
#pragma GCC visibility pop
#endif

#endif
