/* Model of host/host_lock.cpp for the model checker SPIN. Functions, states and words have the names
 * that they have there, without "lock." and the "k" of constants; check.sh runs it.
 *
 * THREADS threads use one record. Each takes its lock, takes it once more, counts down nUses and
 * releases both, ROUNDS times; the one that counts to 0 frees the record. Checked: no two of them
 * are inside at once, nobody touches the lock after the record was freed, all come to an end, and
 * no count is lost.
 *
 * A thread's stores lie in its buffer until some moment; the thread itself sees them at once. An
 * atomic read-modify-write and a system call empty the buffer. Stores leave it in their order, as
 * with x86-64; with WEAK_STORES others may overtake those that are no releases, as with AArch64.
 *
 * What can be left out, to see that it is needed: NO_LIMIT (waitBrieflyOn sleeps for ever),
 * NO_BARRIER (processBarrier does nothing), LOOK_AFTER_STORE (release looks at nState after its
 * store), NO_RELEASE (the store of nInside in a release is none), NO_STEP_BACK (a thread that is
 * turned away leaves nInside as it is). ORDINARY: the lock is never biased.
 */
#ifndef THREADS
#define THREADS 2
#endif
#ifndef ROUNDS
#define ROUNDS 2
#endif
#define STORES 3 /* places in a thread's buffer */

/* nState */
#define FREE 0
#define HELD 1
#define AWAITED 2
#define BIASED 3
#define REVOKING 4

/* nBias, but for threads' numbers */
#define NONE_YET 0
#define NONE_ANY_MORE 1
#define ME (me + 2)

/* The record: the lock's words, and how often it is yet to be used. */
#define WORDS 6
#define nBias 0
#define nOwner 1
#define nState 2
#define nInside 3
#define nDepth 4
#define nUses 5
byte memory[WORDS];
bool bFreed;

byte nHolders; /* threads between an acquire and its release, as nobody's processor sees it */

/* Each thread's buffer, what it has for a word, and how many stores to the word are in it. */
chan buffer[THREADS] = [STORES] of { byte, byte, bool };
byte newest[THREADS * WORDS];
byte nStores[THREADS * WORDS];
#define AT(word) (me * WORDS + (word))

byte asleepOn[THREADS]; /* the word that a thread sleeps on, and 1; 0: it is awake */

/* ---- The machine ---- */

inline load(word, to) {
    d_step {
        assert(!bFreed);
        to = (nStores[AT(word)] > 0 -> newest[AT(word)] : memory[word]);
    }
}

#define RELAXED 0
#define RELEASE 1

inline store(word, value, order) {
    atomic {
        nfull(buffer[me]);
        assert(!bFreed);
        newest[AT(word)] = value;
        nStores[AT(word)]++;
        buffer[me] ! word, newest[AT(word)], order
    }
}

inline writeTo(me, word) {
    assert(!bFreed);
    memory[word] = value;
    nStores[AT(word)]--;
    newest[AT(word)] = (nStores[AT(word)] > 0 -> newest[AT(word)] : 0);
    value = 0;
    oldest = 0
}

#define WRITE_OLDEST(me) :: atomic { buffer[me] ? oldest, value, _ -> writeTo(me, oldest) }
#ifdef WEAK_STORES
/* Two stores to one word never change their order; only nInside has both kinds. */
#define OVERTAKE(me, word) :: atomic { buffer[me] ?? word, value, RELAXED -> writeTo(me, word) }
#define WRITE_ANY(me) \
    WRITE_OLDEST(me) \
    OVERTAKE(me, nBias) \
    OVERTAKE(me, nOwner) \
    OVERTAKE(me, nDepth) \
    OVERTAKE(me, nUses) \
    :: atomic { !(buffer[me] ?? [nInside, _, RELEASE]) && buffer[me] ?? [nInside, _, RELAXED] -> \
                buffer[me] ?? nInside, value, RELAXED; writeTo(me, nInside) }
#else
#define WRITE_ANY(me) WRITE_OLDEST(me)
#endif

active proctype Processors() {
    byte oldest, value;
end:
    do
    WRITE_ANY(0)
    WRITE_ANY(1)
#if THREADS > 2
    WRITE_ANY(2)
#endif
    od
}

/* bDone: it was expected and is desired now. */
inline compareExchange(word, expected, desired) {
    atomic {
        empty(buffer[me]);
        assert(!bFreed);
        bDone = (memory[word] == expected);
        if
        :: bDone -> memory[word] = desired
        :: else
        fi
    }
}

inline exchange(word, desired, before) {
    atomic {
        empty(buffer[me]);
        assert(!bFreed);
        before = memory[word];
        memory[word] = desired
    }
}

inline sleepOn(word, value) {
    atomic {
        empty(buffer[me]);
        assert(!bFreed);
        if
        :: memory[word] == value -> asleepOn[me] = word + 1
        :: else
        fi
    }
}

inline waitOn(word, value) {
    sleepOn(word, value);
    asleepOn[me] == 0
}

inline waitBrieflyOn(word, value) {
    sleepOn(word, value);
#ifdef NO_LIMIT
    asleepOn[me] == 0
#else
    asleepOn[me] = 0 /* whether somebody woke it or not */
#endif
}

/* Uses nothing but the address. */
inline wakeOne(word) {
    atomic {
        empty(buffer[me]);
        if
        :: asleepOn[0] == word + 1 -> asleepOn[0] = 0
        :: asleepOn[1] == word + 1 -> asleepOn[1] = 0
#if THREADS > 2
        :: asleepOn[2] == word + 1 -> asleepOn[2] = 0
#endif
        :: else
        fi
    }
}

/* For each thread there is a moment, between call and return, at which its buffer is empty. */
inline processBarrier() {
    skip;
#ifndef NO_BARRIER
    empty(buffer[0]);
    empty(buffer[1]);
#if THREADS > 2
    empty(buffer[2]);
#endif
#endif
}

/* ---- The lock ---- */

inline own() {
    store(nOwner, ME, RELAXED);
    store(nDepth, 1, RELAXED)
}

/* bDone: what the function returns. */
inline enterBiased() {
    store(nInside, 1, RELAXED);
    load(nState, n);
    bDone = (n == BIASED)
}

/* n: what the function returns. */
inline leaveBiased() {
    load(nInside, n);
    n = n - 1;
#ifdef NO_RELEASE
    store(nInside, n, RELAXED)
#else
    store(nInside, n, RELEASE)
#endif
}

inline stepBack() {
#ifndef NO_STEP_BACK
    store(nInside, 0, RELEASE);
#endif
    wakeOne(nInside)
}

inline revokeAndTake() {
    processBarrier();
    do
    :: load(nInside, n);
       if
       :: n == 0 -> break
       :: else -> waitBrieflyOn(nInside, n)
       fi
    od;
    store(nBias, NONE_ANY_MORE, RELAXED);
    own();
    store(nState, AWAITED, RELEASE)
}

inline waitAndTake() {
    do
    :: load(nState, n);
       if
       :: n == REVOKING -> waitOn(nState, REVOKING)
       :: else -> break
       fi
    od;
    do
    :: exchange(nState, AWAITED, n);
       if
       :: n != FREE -> waitOn(nState, AWAITED)
       :: else -> break
       fi
    od;
    own()
}

inline takeSlowly() {
    bTaken = false;
    load(nState, n);
    if
    :: n == BIASED ->
       compareExchange(nBias, NONE_YET, ME);
       if
       :: bDone ->
          enterBiased();
          bTaken = bDone;
          if
          :: !bTaken -> stepBack()
          :: else
          fi
       :: else
       fi;
       if
       :: !bTaken ->
          compareExchange(nState, BIASED, REVOKING);
          if
          :: bDone -> revokeAndTake(); bTaken = true
          :: else
          fi
       :: else
       fi
    :: else
    fi;
    if
    :: !bTaken -> waitAndTake()
    :: else
    fi;
    bTaken = false
}

inline acquireUnbiased() {
    load(nOwner, n);
    if
    :: n == ME -> load(nDepth, n); store(nDepth, n + 1, RELAXED)
    :: else ->
       compareExchange(nState, FREE, HELD);
       if
       :: bDone -> own()
       :: else -> takeSlowly()
       fi
    fi
}

/* n: the nState that the function is given. */
inline releaseUnbiased() {
    if
    :: n == REVOKING ->
       leaveBiased();
       if
       :: n == 0 -> wakeOne(nInside)
       :: else
       fi
    :: else ->
       load(nDepth, n);
       n = n - 1;
       store(nDepth, n, RELAXED);
       if
       :: n == 0 ->
          store(nOwner, 0, RELAXED);
          exchange(nState, FREE, n);
          if
          :: n == AWAITED -> wakeOne(nState)
          :: else
          fi
       :: else
       fi
    fi
}

inline acquire() {
    load(nBias, n);
    if
    :: n != ME -> acquireUnbiased()
    :: else ->
       load(nInside, n);
       if
       :: n != 0 -> store(nInside, n + 1, RELAXED)
       :: else ->
          enterBiased();
          if
          :: !bDone -> stepBack(); takeSlowly()
          :: else
          fi
       fi
    fi;
    bDone = false
}

inline release() {
    load(nState, n);
    if
    :: n == BIASED ->
       leaveBiased();
#ifdef LOOK_AFTER_STORE
       load(nState, n);
       if
       :: n == REVOKING -> wakeOne(nInside)
       :: else
       fi
#endif
    :: else -> releaseUnbiased()
    fi;
    n = 0
}

/* ---- Its users ---- */

inline comeIn() {
    d_step {
        assert(nHolders == 0);
        nHolders++
    }
}

proctype Thread(byte me) {
    byte n, iRound;
    bool bDone, bTaken, bLast;
    do
    :: iRound < ROUNDS ->
       acquire();
       comeIn();
       acquire();
       load(nUses, n);
       n--;
       store(nUses, n, RELAXED);
       bLast = (n == 0);
       release();
       nHolders--;
       release();
       iRound++
    :: else -> break
    od;
    if
    :: bLast -> bFreed = true
    :: else
    fi
}

init {
    byte i;
    atomic {
        memory[nUses] = THREADS * ROUNDS;
#ifdef ORDINARY
        memory[nBias] = NONE_ANY_MORE;
        memory[nState] = FREE;
#else
        memory[nState] = BIASED;
#endif
        for (i : 0 .. (THREADS - 1)) {
            run Thread(i)
        }
    }
    _nr_pr == 2; /* the threads are gone */
    assert(bFreed)
}
