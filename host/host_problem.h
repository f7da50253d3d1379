/* The problem object that owns managers. It has no content of its own here; it serves as an owner
 * to hand to NamesManager_Create. */
#ifndef HOST_HOST_PROBLEM_H
#define HOST_HOST_PROBLEM_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ZOLTproblem *ZOLTprob;

/* Makes a problem and sets *pProb to it; it belongs to the caller until ZOLTdestroyprob. Returns 0,
 * or 1 when there is no memory (*pProb is then NULL). */
int32_t ZOLTcreateprob(ZOLTprob *pProb);

/* Destroys a problem; NULL does nothing. Returns 0. */
int32_t ZOLTdestroyprob(ZOLTprob prob);

#ifdef __cplusplus
}
#endif

#endif
