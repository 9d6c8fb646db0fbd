/* SPDX-License-Identifier: MIT */
/* Copyright (c) The Koru authors */
/**
 * @file koru_mpi.h
 * @brief Searches that many processes share, on one machine or many, with the result of one.
 *
 *     #include <koru_mpi.h>
 *     static void found(CSint **queens, int n) { ... print ... }
 *     int main(void) {
 *       cs_init();
 *       ... variables and constraints, as ever ...
 *       cs_mpiFindAll(queens, n, cs_findFreeVarNbElements, found);   // was: cs_findAll
 *       printf("%lld fails\n", cs_mpiGetNbFails());
 *       cs_end();
 *     }
 *
 *     ./queens                 one process, no MPI started
 *     mpirun -n 8 ./queens     eight, and the same output
 *
 * Every process runs the whole program and posts the same model; at a search they share its tree. Only the first one
 * calls `found` and writes to the standard output: that of the others is discarded, also what they have written before
 * and not flushed.
 *
 * What holds for every number of processes, however fast each is, and when some of them die (not the first one; how far
 * that is tested says docs/scale.md):
 *
 * - the result; the calls of `found`, their order, and the domains of all variables during each;
 * - the counters cs_mpiGetNbFails and cs_mpiGetNbChoicePoints;
 * - in every process, the domains and open contexts after the search;
 *
 * and each of these is what the function of koru.h with the same name gives. Not promised: times, how often `f` and
 * callbacks of user-defined constraints run, and in which process.
 *
 * What the program must keep to:
 *
 * - All processes make the same calls in the same order up to the search: no clock, no random seed, no rank in the
 *   model. A difference that is noticed is reported, and the run ends with status 3.
 * - `f`, and callbacks that change domains, look at nothing but the solver: the same state, the same choice.
 * - Files are written by all processes unless the program asks cs_mpiRank() == 0 first.
 * - No constraint whose conclusions depend on what was searched before: no-good sets and cs_VarElement (not
 *   cs_VarElementOf). A model that cs_findConstraintWithMemory (koru_extras.h) finds one in ends the run with status 3.
 * - cs_getNbFails and cs_getNbChoicePoints do not follow a parallel search. cs_cancelSearch ends it when `found` calls
 *   it, after the same solution for every number of processes; it is not to be called by `f`.
 *
 * Exhausted memory, in the solver or for lists of pieces, ends the run with status 3 or by abort.
 * docs/scale.md says how to run it, what it costs and what breaks. MPI is started by the first function of this header
 * that is called, only when a launcher has set OMPI_COMM_WORLD_SIZE, PMI_SIZE or PMIX_RANK, and finished at exit. The
 * library can be built without MPI: then each process is alone. One thread uses it.
 */
#ifndef KORU_MPI_H
#define KORU_MPI_H

#include "koru.h"
#include "koru_extras.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A function of the shared library. */
#if defined(__GNUC__)
#define KORU_MPI_API __attribute__((visibility("default")))
#else
#define KORU_MPI_API
#endif

/**
 * Visit all solutions as cs_findAll does; @p found, which may be null, is called in the first process only.
 * Cost: with several processes the first one goes to each solution again, a few microseconds each: with many solutions
 * that is what all wait for. With a null `found` they are only counted.
 */
KORU_MPI_API bool cs_mpiFindAll(CSint **array, int size, CSfindFreeVar f, CSfoundCallback found);

/** Find one solution: the one that cs_search finds. It is left in place in every process, a context per level. */
KORU_MPI_API bool cs_mpiSearch(CSint **array, int size, CSfindFreeVar f);

/**
 * Branch and bound as cs_minimize does it, pass for pass: the same improving solutions, the same last one.
 * Cost: what is searched to the right of a pass's solution before it is known is lost.
 */
KORU_MPI_API bool cs_mpiMinimize(CSint **array, int size, CSfindFreeVar f, CSint *cost, CSfoundCostCallback found);

/**
 * Called in the first process at a solution of a search object, which stands: cs_getBestSolution and cs_getSearchStats
 * tell of it. @return false to end the search with it.
 */
typedef bool (*CSmpiSolved)(CSsearch *search, void *extra);

/**
 * The whole search of a search object (koru_extras.h, section 2) that has not begun: the solutions, or with an
 * objective the improving ones, that cs_nextSolution gives one after the other, with the same counts. @p found may be
 * null; then solutions of a search without an objective are only counted. Afterwards the search has ended in every
 * process, with everything as it was when the object was created; the statistics tell of its choice points, fails,
 * solutions and objective, and cs_getBestSolution gives the last solution that was told of. For exact searches: options
 * that cs_findUnwalkableOption names (restarts, neighbourhoods, orders by failures or activity, random ones, last
 * conflicts, guided searches, limits, a progress callback) end the run with status 3 and a message. Callbacks that
 * choose are as @p f of the others. With an objective, what is searched to the right of a solution before that is known
 * is lost.
 * @return CS_STATUS_EXHAUSTED, CS_STATUS_OPTIMAL, CS_STATUS_STOPPED after false from @p found; CS_STATUS_REFUSED, with
 * nothing done, for null, a search that has begun, or one whose turn it is not.
 */
KORU_MPI_API CSstatus cs_mpiSolve(CSsearch *search, CSmpiSolved found, void *extra);

/** Fails and choice points of the last parallel search: those that the search of one process counts. */
KORU_MPI_API long long cs_mpiGetNbFails(void);
KORU_MPI_API long long cs_mpiGetNbChoicePoints(void);

/**
 * Called in the first process about every so many seconds: @p done is the part of the tree (of a minimisation: of the
 * tree of the present pass) that has been searched, 0 to 1, as if all values between the bounds of a variable were
 * worth the same; it never shrinks but at a new pass. The counts are those so far, @p processes is how many answer. It
 * may query and print, no more.
 */
typedef void (*CSmpiProgress)(double done, long long choicePoints, long long solutions, int processes, void *extra);

/** Tell of the progress of searches from now on; a null @p progress ends it. @p extra is handed to it. */
KORU_MPI_API void cs_mpiSetProgress(CSmpiProgress progress, double seconds, void *extra);

/**
 * Keep the state of the searches from now on in the file @p path, written anew about every so many seconds, by the
 * first process; null ends it. The file is of one search and is removed when that ends. When the program is started
 * again after all of its processes have died, with any number of processes, the search with the same number goes on
 * from there; searches before it are made again.
 *
 * `found` is then not called again for the solutions of which it was told before the file was written: see
 * cs_mpiGetNbTold. It is called again for those told after that. All output streams are flushed before the file is
 * written, so that what it counts as told has been written as well.
 *
 * A file that is cut off, damaged or of another model ends the run with status 3 and a message, and stays as it is.
 * One that cannot be written is reported on the standard error, and the search goes on.
 */
KORU_MPI_API void cs_mpiSetCheckpoint(const char *path, double seconds);

/**
 * In the first process, in `found` or later: of how many solutions of the last parallel search `found` had been told
 * before the program was started again. 0 for a search that was not, and in the other processes.
 */
KORU_MPI_API long long cs_mpiGetNbTold(void);

/** The number of this process, 0 for the first one, and how many there are. May be called before cs_init. */
KORU_MPI_API int cs_mpiRank(void);
KORU_MPI_API int cs_mpiSize(void);

#ifdef __cplusplus
}
#endif

#endif /* KORU_MPI_H */
