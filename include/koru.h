/* SPDX-License-Identifier: MIT */
/* Copyright (c) The Koru authors */
/**
 * @file koru.h
 * @brief Koru, a finite-domain constraint solver over 32-bit signed integers.
 *
 * A worked example: x + y = 12 over digits.
 *
 *     #include <koru.h>
 *     int main(void) {
 *       cs_init();
 *       CSint *digits[2];
 *       digits[0] = cs_createNamedCSint(0, 9, "x");
 *       digits[1] = cs_createNamedCSint(0, 9, "y");
 *       if (cs_EQ(cs_Add(digits[0], digits[1]), 12) &&
 *           cs_search(digits, 2, cs_findFreeVarNbElements))
 *         cs_printf("%A\n", digits, 2);        // x: 3, y: 9
 *       cs_end();
 *       return 0;
 *     }
 *
 * The header reads as a table of contents:
 *
 *   1.  Types and callbacks
 *   2.  Lifecycle, version and errors
 *   3.  Variables: creation, names, queries
 *   4.  Choice points
 *   5.  Relations
 *   6.  Arithmetic
 *   7.  Linear sums
 *   8.  Reified comparisons
 *   9.  Conditional equality
 *   10. All-different
 *   11. Element, index and membership
 *   12. Occurrence, minimum and maximum
 *   13. Automata
 *   14. Variable element
 *   15. Scheduling
 *   16. Search, variable selection and statistics
 *   17. Optimisation and criteria search
 *   18. Value selectors
 *   19. Search notification
 *   20. No-goods and restarts
 *   21. User-defined constraints
 *   22. Profiler
 *   23. Formatted output
 *
 * What holds everywhere:
 *
 * - Look at every result. A function that answers false (or null, or 0) has not imposed what it was asked for, and a
 *   search that is begun all the same may return true with wrong values (cs_getNbRefused of koru_extras.h would tell).
 *   Where KORU_WARN_UNUSED is defined before this header is included, gcc and clang warn when the result of a function
 *   that posts (of sections 5 to 15 all but cs_Occur, of section 21 cs_eventKnown and cs_eventAllKnown) is thrown away.
 * - There is one solver per process. No call may run while another one runs in a different thread.
 * - `cs_init` comes first. Before it, and after `cs_end`, a function that needs the solver returns its
 *   failure value (null, 0 or false) and does nothing.
 * - A name in upper case after the prefix (`cs_EQ`) relates a variable to an int, a mixed-case one (`cs_Eq`) two
 *   variables; a leading `V` marks a variadic form.
 * - A variable is a `CSint *`. It belongs to the solver, stays valid until `cs_end`, and is never freed by the caller.
 * - A constraint is propagated as soon as it is posted and again at every change of its variables. A result of
 *   false (null for functions that create a variable) means that the problem as it stands has no solution, or that
 *   memory ran out; domains are then left as far as propagation got, and the caller restores a choice point.
 *   Inconsistency never touches the error code; exhausted memory sets it to `CS_ERR_MEMORY`.
 * - A null variable is answered with the failure value, so the result of one call can be handed to the next without
 *   a check in between: `cs_EQ(cs_Add(x, y), 12)` is false when `cs_Add` fails.
 * - An array of variables is read while the call runs unless the function says that it is kept; an array that is kept
 *   must stay valid, and its contents unchanged, until the constraint is undone or `cs_end`.
 * - Callbacks may query, narrow, post, search, create and print, and may save and restore choice points in balance.
 *   They must not call `cs_init` or `cs_end`, nor close a choice point that they did not open. A callback that leaves
 *   by longjmp or a C++ exception leaves the solver fit only for `cs_end`.
 * - Domain changes, choice points and constraints posted are undone by restoring a choice point; see section 4.
 *   Variables are not: they stay, with their names and bit arrays, until `cs_end`. A program that runs for long makes
 *   its variables once, or calls cs_end and cs_init between problems; docs/search.md shows both.
 * - Counters (fails, choice points, constraints of a variable, runs and failures of a profile) are 32-bit ints and wrap
 *   to negative numbers beyond 2147483647, which a search at full speed reaches in a minute or two.
 * - The same calls in the same order lead to the same tree, the same counters and the same texts on every platform. Of
 *   several calls among the arguments of another one, C leaves open which comes first: to fix that as well, make them
 *   one after the other.
 *
 * Costs are given per call without the propagation that the call sets off: n is the length of an array argument, and
 * "scan" means a walk over a bit array, 64 values at a step.
 */
#ifndef KORU_H
#define KORU_H

#include <stdio.h>

#ifndef __cplusplus
#include <stdbool.h>
#endif

#if defined(KORU_STATIC)
#define KORU_API
#elif defined(_WIN32)
#if defined(KORU_BUILDING)
#define KORU_API __declspec(dllexport)
#else
#define KORU_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define KORU_API __attribute__((visibility("default")))
#else
#define KORU_API
#endif

/* A function that posts: a host that defines KORU_WARN_UNUSED is warned when it throws the result away. */
#if defined(KORU_WARN_UNUSED) && defined(__GNUC__)
#define KORU_POST_API KORU_API __attribute__((warn_unused_result))
#else
#define KORU_POST_API KORU_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ==================================================================================================================
 * 1. Types and callbacks
 * ================================================================================================================ */

/** A constrained integer variable: a finite set of ints that only shrinks, except when a choice point is restored. */
typedef struct CSint CSint;

/** The error code; see cs_getErr. */
enum {
  CS_ERR_NONE = 0,              /**< no error */
  CS_ERR_NOT_INSTANTIATED = -1, /**< cs_getValue was asked for the value of a variable that is not instantiated */
  CS_ERR_OVERFLOW = -2,         /**< the bounds of a linear sum leave the 64-bit range */
  CS_ERR_MEMORY = -3            /**< memory exhausted */
};

/** Called when an error is raised. @p vint is the variable concerned or null, @p extra the argument installed. */
typedef void (*CSerrHandler)(CSint *vint, void *extra);

/** Called when a choice point is restored; see cs_backtrack. */
typedef void (*CSbacktrackCallback)(CSint *vint, int index);

/** Picks the variable to label next; null when none is left. Called once per search level. */
typedef CSint *(*CSfindFreeVar)(CSint **array, int size);

/** As CSfindFreeVar, but returns the index in the array; negative when no variable is left. */
typedef int (*CSfindFreeVarIndex)(CSint **array, int size);

/** Picks the row to label next; negative when none is left. @p extra is the argument of the search. */
typedef int (*CSfindFreeRow)(CSint ***matrix, int nbRows, int extra);

/** Picks a column of the row; negative when it has no free variable. @p rowArray is `matrix[row]`. */
typedef int (*CSfindFreeVarInRow)(int row, CSint **rowArray, int extra);

/** Rates a value of array[index]: lower is better. INT_MAX keeps the value from being tried at all. */
typedef int (*CScriteria)(int index, int value);

/** Rates a value of matrix[row][col]; as CScriteria. */
typedef int (*CSmatrixCriteria)(int row, int col, int value);

/** Called at each solution of cs_findAll, while the variables are instantiated to it. */
typedef void (*CSfoundCallback)(CSint **array, int size);

/** Called at each improving solution of cs_minimize, while the variables are instantiated to it. */
typedef void (*CSfoundCostCallback)(CSint **array, int size, CSint *cost);

/* ==================================================================================================================
 * 2. Lifecycle, version and errors
 * ================================================================================================================ */

/**
 * Start the solver. Called again while it runs, keeps all variables, constraints and choice points. In either case the
 * error code becomes 0 and the three error handlers their defaults, so install your own afterwards.
 * On failure (memory) the error code is CS_ERR_MEMORY, no handler is called, and the solver is unusable until a later
 * cs_init succeeds. If the last of the allocations was the only one to fail, the solver runs all the same, but profiles
 * do not list the relations with an int that callbacks impose. Cost: five allocations, about 130 KB.
 */
KORU_API void cs_init(void);

/**
 * End the solver and free everything it owns. Every CSint, array of cs_createCSintArray and choice point becomes
 * invalid; callbacks of cs_backtrack are dropped without a call. Without a running solver it does nothing.
 * Cost: linear in everything created.
 */
KORU_API void cs_end(void);

/** The version, "3.8.0": constant text, never freed. */
KORU_API char *cs_getVersion(void);

/** Store @p code, any int, as the error code and return it. No handler is called. */
KORU_API int cs_setErr(int code);

/** The error code: the last error since cs_init, cs_initErr or cs_setErr, and 0 without one. */
KORU_API int cs_getErr(void);

/** Set the error code to 0. */
KORU_API void cs_initErr(void);

/**
 * Install @p handler, and @p extra as its argument, for one of CS_ERR_NOT_INSTANTIATED, CS_ERR_OVERFLOW and
 * CS_ERR_MEMORY. A null handler installs the default: for CS_ERR_NOT_INSTANTIATED one that prints the variable to the
 * standard error stream, for CS_ERR_OVERFLOW one that does nothing, for CS_ERR_MEMORY the standard `abort`. A memory
 * handler that returns lets the failing call return its failure value.
 * @p extra is kept and never read by the library.
 * @return the handler now installed; for any other code nothing is changed and the code itself is returned, converted
 *         to the handler type (so `(intptr_t)cs_setErrHandler(5, h, e) == 5`).
 */
KORU_API CSerrHandler cs_setErrHandler(int code, CSerrHandler handler, void *extra);

/* ==================================================================================================================
 * 3. Variables: creation, names, queries
 * ================================================================================================================ */

/**
 * Create a variable with the domain [@p min, @p max]; any two ints. Restoring a choice point does not take the
 * variable away, only its changes and constraints.
 * @return the variable; null when min > max (no error is reported) or memory is exhausted.
 * The number of elements is kept as an int: a variable over more than INT_MAX values reports a wrapped number (0 for
 * the whole int range), counts as neither free nor instantiated until it is narrowed, and is safe to use.
 * Cost: constant; 64 bytes. The first value that is removed from between the bounds adds a bit array over the whole
 * range that the variable was created with, a bit a value, which stays until cs_end: 250 MB for 0..2,000,000,000. The
 * same goes for the variables that functions return, so give operands the ranges that they need.
 */
KORU_API CSint *cs_createCSint(int min, int max);

/** Create a constant: cs_createCSint(value, value). */
KORU_API CSint *CSINT(int value);

/**
 * cs_createCSint followed by cs_setName.
 * @return as cs_createCSint; when only the name cannot be stored, the variable without a name.
 */
KORU_API CSint *cs_createNamedCSint(int min, int max, const char *name);

/**
 * Create an array of @p size variables with the domain [@p min, @p max].
 * The array (not the variables) belongs to the choice point that is open now: it is freed when that is restored or
 * accepted, and by cs_end when none is open. Do not free it, and do not use it later.
 * @return the array, empty but not null when size < 1; null when a variable cannot be created (min > max or memory).
 */
KORU_API CSint **cs_createCSintArray(int size, int min, int max);

/**
 * Create a variable that holds exactly the @p size values of @p array, in any order, repetitions allowed. The array is
 * read only during the call.
 * @return the variable; null when size < 1 or memory is exhausted.
 * Cost: linear in size and in (largest - smallest) / 8, which is also its size in bytes.
 */
KORU_API CSint *cs_createCSintFromDomain(const int *array, int size);

/**
 * Give the variable a name: a copy of the text @p name, of any length. A null name takes the name away.
 * When the copy cannot be allocated, CS_ERR_MEMORY is reported and the variable has no name.
 */
KORU_API void cs_setName(CSint *vint, const char *name);

/** The name, owned by the variable and valid until the next cs_setName, or null when it has none. */
KORU_API char *cs_getName(CSint *vint);

/** True when the domain has two or more elements. Constant time, like every query not said to scan. */
KORU_API bool cs_isFree(CSint *vint);

/** True when the domain has exactly one element. */
KORU_API bool cs_isInstantiated(CSint *vint);

/** The smallest value of the domain; 0 for a null variable. */
KORU_API int cs_getMin(CSint *vint);

/** The largest value of the domain; 0 for a null variable. */
KORU_API int cs_getMax(CSint *vint);

/** The number of values in the domain; 0 for a null variable. */
KORU_API int cs_getNbElements(CSint *vint);

/**
 * The number of times a constraint was attached to the variable, those undone since included: it never falls.
 * 0 for a null variable.
 */
KORU_API int cs_getNbConstraints(CSint *vint);

/**
 * The value of an instantiated variable. When the minimum differs from the maximum, the error code becomes
 * CS_ERR_NOT_INSTANTIATED and its handler is called with the variable; the result is then the minimum as it is after
 * the handler. 0 for a null variable.
 */
KORU_API int cs_getValue(CSint *vint);

/**
 * The smallest value of the domain above @p val: INT_MAX when there is none (val >= maximum), the minimum when
 * val < minimum. Scans. INT_MAX for a null variable.
 */
KORU_API int cs_getNextValue(CSint *vint, int val);

/**
 * The largest value of the domain below @p val: INT_MIN when there is none (val <= minimum), the maximum when
 * val > maximum. Scans. INT_MIN for a null variable.
 */
KORU_API int cs_getPreviousValue(CSint *vint, int val);

/** True when @p val is in the domain. */
KORU_API bool cs_isIn(CSint *vint, int val);

/**
 * The values of the domain in increasing order: a new array of cs_getNbElements values that the caller frees with
 * cs_freeDomain. Null, with CS_ERR_MEMORY reported, when it cannot be allocated or the domain has more than INT_MAX
 * values. Should the recorded number of elements exceed the real one (see section 4), the entries past the last value
 * hold the maximum.
 */
KORU_API int *cs_getDomain(CSint *vint);

/** Free an array from cs_getDomain. Null is ignored. */
KORU_API void cs_freeDomain(int *array);

/* ==================================================================================================================
 * 4. Choice points
 *
 * Open choice points ("contexts") form a stack. A context's label is its position on it: the first one opened has
 * label 1. Restoring undoes domain changes, detaches constraints posted since, frees arrays of cs_createCSintArray
 * and calls back what cs_backtrack registered; accepting makes changes permanent even for enclosing contexts;
 * forgetting hands them to the enclosing context. Cost: linear in the number of changes undone or discarded.
 *
 * After an inner context was accepted and an outer one restored, a number of elements may be higher than that of the
 * values which are left, and from then on a bound may come to lie on a value that is not in the domain (cs_isIn knows).
 * Accept a context when none that will be restored is open around it.
 * ================================================================================================================ */

/**
 * Open a context. Changes that were queued by a running constraint are propagated first; should that fail, the
 * constraint's propagation fails when it returns.
 * @return its label; 0 without a running solver. When memory is exhausted, CS_ERR_MEMORY is reported, nothing is opened
 * and the number of contexts already open is returned, that is the label of the newest one: restoring it would close a
 * context that this call has not opened. The label of a context is one more than that of the one before it.
 */
KORU_API int cs_saveContext(void);

/** Close the newest context, keeping its changes undoable by the enclosing one. Without an open context: nothing. */
KORU_API void cs_forgetSaveContext(void);

/** Close the newest context and make its changes permanent. Without an open context: nothing. */
KORU_API void cs_acceptContext(void);

/** Close the newest context and undo every change made since it was opened. Without an open context: nothing. */
KORU_API void cs_restoreContext(void);

/** Close all contexts and make every change permanent. */
KORU_API void cs_acceptAll(void);

/** Close all contexts and undo every change made since the oldest one was opened. */
KORU_API void cs_restoreAll(void);

/** Forget the context @p label and all newer ones; nothing when label < 1 or fewer are open. */
KORU_API void cs_forgetSaveContextUntil(int label);

/** Accept the context @p label and all newer ones; nothing when label < 1 or fewer are open. */
KORU_API void cs_acceptContextUntil(int label);

/** Restore the context @p label and all newer ones; nothing when label < 1 or fewer are open. */
KORU_API void cs_restoreContextUntil(int label);

/** cs_restoreContext followed by cs_saveContext. @return the label of the new context. */
KORU_API int cs_restoreAndSaveContext(void);

/**
 * Register @p callback to be called once with (@p vint, @p index) when the context that is open now is restored, after
 * all later changes have been undone. Accepting the context, and cs_end, drop it without a call; so is one that was
 * registered with no context open. vint may be null and is only handed on. When the registration cannot be stored,
 * CS_ERR_MEMORY is reported and the callback will not be called.
 */
KORU_API void cs_backtrack(CSint *vint, int index, CSbacktrackCallback callback);

/** The same as cs_backtrack; the two mix freely. */
KORU_API void cs_backtrackExt(CSint *vint, int index, CSbacktrackCallback callback);

/* ==================================================================================================================
 * 5. Relations
 *
 * All return true when the relation could be imposed. Those with an int narrow the variable at once and keep nothing,
 * since the relation then holds for good; those with two variables post a constraint (about 120 bytes).
 * ================================================================================================================ */

/** x = v. False, x untouched, when v is not in the domain. */
KORU_POST_API bool cs_EQ(CSint *x, int v);

/** x != v. False when v is the only value left. */
KORU_POST_API bool cs_NEQ(CSint *x, int v);

/** x <= v. */
KORU_POST_API bool cs_LE(CSint *x, int v);

/** x < v. Always true, and without effect, for v = INT_MIN: v - 1 wraps. */
KORU_POST_API bool cs_LT(CSint *x, int v);

/** x >= v. */
KORU_POST_API bool cs_GE(CSint *x, int v);

/** x > v. Always true, and without effect, for v = INT_MAX: v + 1 wraps. */
KORU_POST_API bool cs_GT(CSint *x, int v);

/** x = y, domain-consistent: every value is kept in both or neither. True at once for the same variable twice. */
KORU_POST_API bool cs_Eq(CSint *x, CSint *y);

/** x != y, forward checking: acts when one side is bound. False at once for the same variable twice. */
KORU_POST_API bool cs_Neq(CSint *x, CSint *y);

/** x <= y, bounds-consistent. True at once for the same variable twice. */
KORU_POST_API bool cs_Le(CSint *x, CSint *y);

/** x < y, bounds-consistent. False at once for the same variable twice. */
KORU_POST_API bool cs_Lt(CSint *x, CSint *y);

/** x >= y, bounds-consistent. True at once for the same variable twice. */
KORU_POST_API bool cs_Ge(CSint *x, CSint *y);

/** x > y, bounds-consistent. False at once for the same variable twice. */
KORU_POST_API bool cs_Gt(CSint *x, CSint *y);

/* ==================================================================================================================
 * 6. Arithmetic
 *
 * Arithmetic is functional: each function returns a new variable that is constrained to equal the result. Bounds
 * stay within the int range. Null on failure: a null operand, exhausted memory, or no possible result.
 * ================================================================================================================ */

/**
 * x + y. Bounds-consistent. Holes of an operand are copied to the sum at posting when the other one is bound then, and
 * a value that is removed from between the bounds passes between two of the three variables while the third is bound;
 * holes that are older than the binding do not. A sum that is already decided is a constant and posts nothing.
 */
KORU_POST_API CSint *cs_Add(CSint *x, CSint *y);

/** x - y; as cs_Add. */
KORU_POST_API CSint *cs_Sub(CSint *x, CSint *y);

/**
 * The sum of the @p n variables that follow (each a `CSint *`), bounds-consistent. n = 1 returns the variable itself,
 * n < 1 a constant 0. Every change of a variable costs time linear in n.
 */
KORU_POST_API CSint *cs_VAdd(int n, ...);

/**
 * The first of the @p n variables that follow less the sum of the others, bounds-consistent. n < 1 returns a
 * constant 0.
 */
KORU_POST_API CSint *cs_VSub(int n, ...);

/**
 * x * y, on bounds: the product lies between the least and the greatest product of bounds, an operand between the
 * quotients of bounds unless the other one can be 0. When the product cannot be 0, a 0 that is a bound of an operand
 * goes. A bound need not be part of a solution. Nothing is narrowed at posting. A bound of the product outside the int
 * range is the int nearest to it.
 */
KORU_POST_API CSint *cs_Mul(CSint *x, CSint *y);

/**
 * The product of the @p n variables from @p x1 on (each a `CSint *`), built from left to right by cs_Mul under one
 * site. x1 itself for n < 2.
 */
KORU_POST_API CSint *cs_VMul(int n, CSint *x1, ...);

/**
 * The exact quotient of x and y: z with x = z * y, on bounds as cs_Mul. While y can be 0 it says nothing, and z then
 * ranges over all ints.
 * @return z; null, with no error reported, when no int is a quotient of values within the bounds of x and y.
 */
KORU_POST_API CSint *cs_Div(CSint *x, CSint *y);

/**
 * The exact quotient of @p x1 by the n - 1 variables that follow it, one after the other. x1 itself for n < 2.
 */
KORU_POST_API CSint *cs_VDiv(int n, CSint *x1, ...);

/**
 * The absolute value of x. Bounds-consistent; holes pass both ways for a domain that has them at posting, later
 * removals in any case, but a value that a moved bound of x has taken away on one side stays in the result although the
 * other side has lost it too. The smallest int, which has no absolute value, leaves x. Cost at posting: linear in the
 * width of a domain that has a bit array.
 */
KORU_POST_API CSint *cs_Abs(CSint *x);

/* ==================================================================================================================
 * 7. Linear sums
 *
 * Bounds-consistent, over the reals when a coefficient is other than 1, 0 and -1: then a bound need not be part of a
 * solution in ints. Totals are computed in 64 bits, anew at every change: an event costs time linear in the number of
 * terms. A bound of the sum outside the int range is the int nearest to it. Null on failure.
 * ================================================================================================================ */

/**
 * The sum of the @p n variables of @p array, which is kept. n = 1 returns the variable itself, n < 1 a constant 0.
 */
KORU_POST_API CSint *cs_Sigma(CSint **array, int n);

/**
 * coeffs[0] * vars[0] + ... + coeffs[n-1] * vars[n-1]. Both arrays are kept. A term with the coefficient 0 is attached
 * and never narrowed. n < 1 returns a constant 0, n = 1 a new variable.
 * @return the sum; null with CS_ERR_OVERFLOW reported when its bounds leave the 64-bit range.
 */
KORU_POST_API CSint *cs_ScalProd(CSint **vars, int *coeffs, int n);

/** As cs_ScalProd over @p n variables (each a `CSint *`) followed by n coefficients (each an int). */
KORU_POST_API CSint *cs_VScalProd(int n, ...);

/* ==================================================================================================================
 * 8. Reified comparisons
 *
 * Each returns a new 0/1 variable b that is 1 exactly when the comparison holds: b is bound as soon as the comparison
 * is decided, and a b that is bound imposes the comparison or its negation. An outcome decided at posting is a
 * constant, and nothing is posted. Null on failure (memory, a null variable).
 * ================================================================================================================ */

/** b <=> x = v. Constant time per event, like all of those with an int. */
KORU_POST_API CSint *cs_ReifEQ(CSint *x, int v);

/** b <=> x != v. */
KORU_POST_API CSint *cs_ReifNEQ(CSint *x, int v);

/** b <=> x < v. */
KORU_POST_API CSint *cs_ReifLT(CSint *x, int v);

/** b <=> x <= v. */
KORU_POST_API CSint *cs_ReifLE(CSint *x, int v);

/** b <=> x > v. */
KORU_POST_API CSint *cs_ReifGT(CSint *x, int v);

/** b <=> x >= v. */
KORU_POST_API CSint *cs_ReifGE(CSint *x, int v);

/** b <=> x = y; x = y is imposed on all values, x != y once one side is bound. Linear in domains with holes. */
KORU_POST_API CSint *cs_ReifEq(CSint *x, CSint *y);

/** b <=> x != y; as cs_ReifEq with b inverted. */
KORU_POST_API CSint *cs_ReifNeq(CSint *x, CSint *y);

/** b <=> x < y, on bounds, in constant time per event like the next three. */
KORU_POST_API CSint *cs_ReifLt(CSint *x, CSint *y);

/** b <=> x <= y. */
KORU_POST_API CSint *cs_ReifLe(CSint *x, CSint *y);

/** b <=> x > y. */
KORU_POST_API CSint *cs_ReifGt(CSint *x, CSint *y);

/** b <=> x >= y. */
KORU_POST_API CSint *cs_ReifGe(CSint *x, CSint *y);

/* ==================================================================================================================
 * 9. Conditional equality
 *
 * Forward checking: both act when x or y is bound and prune nothing on bounds alone. True when posted and consistent.
 * ================================================================================================================ */

/** x = a exactly when y = b. With the same variable as x and y, and a other than b, the value b passes all the same. */
KORU_POST_API bool cs_IfEq(CSint *x, CSint *y, int a, int b);

/** Never x = a and y = b together. */
KORU_POST_API bool cs_IfNeq(CSint *x, CSint *y, int a, int b);

/* ==================================================================================================================
 * 10. All-different
 * ================================================================================================================ */

/**
 * All @p count variables of @p vars take different values. A variable that becomes bound takes its value from all
 * others, and the span between the smallest minimum and the largest maximum must offer `count` values; there is no
 * stronger reasoning. The array is kept. A variable that stands in it twice fails when it is bound at posting; bound
 * later it is told by identity and not compared with itself.
 * @return 1 when posted and consistent, or when count < 1 (nothing is posted); 0 on failure.
 * Cost: linear in count at posting and whenever a variable becomes bound.
 */
KORU_POST_API int cs_AllNeq(CSint **vars, int count);

/* ==================================================================================================================
 * 11. Element, index and membership
 *
 * A value at a position, and, narrowed once and for all with nothing posted, a value in a set. The filters return 1,
 * or 0 as soon as nothing is left.
 * ================================================================================================================ */

/**
 * values[index], over the @p n ints of @p values, which are kept like an array of variables. The index is narrowed to
 * 0..n-1; each value stays while a position holds it, each position while its value stays. That is domain-consistent as
 * long as nothing else narrows the index within one propagation. A position that was removed from between the bounds of
 * the index, and passed by a bound before this constraint was told, is not noticed: its value may then stay with no
 * position, until the index or the value is bound. Two elements on one index do that to each other; cs_VarElement over
 * constants is domain-consistent there as well, so a table stated by columns is better stated with it.
 * @return the value variable, created over the values that index reaches: the memory of its bit array grows with their
 * span. Null when n < 1, no position of index lies in the array, or memory is exhausted.
 * Cost: n log n at posting, 12 bytes an int; per value or position that goes logarithmic in n, besides the positions
 * of the same value that are gone already.
 */
KORU_POST_API CSint *cs_Element(CSint *index, const int *values, int n);

/**
 * A position at which the @p n variables of @p vars hold @p val: a new variable over the indices of those that can
 * take it. A position goes when its variable loses the value, unless a bound had passed the value before this
 * constraint was told of its removal; when the position becomes bound, its variable is bound to val or the constraint
 * fails. A position that is the only one from the start imposes nothing: a removal that is not noticed is then
 * accepted. Other variables may take the value too. The array is kept.
 * @return null when n < 1, no variable can take the value, or memory is exhausted. Cost: linear in n at posting, then
 * constant per event.
 */
KORU_POST_API CSint *cs_Index(CSint **vars, int n, int val);

/**
 * Keep of v what stands in @p values, which is read during the call. n < 1 fails.
 * Cost: a pass over the array for each value of v between its ends.
 */
KORU_POST_API int cs_InArray(CSint *v, const int *values, int n);

/** Remove from v what stands in @p values, in array order. 1 for n < 1. */
KORU_POST_API int cs_NotInArray(CSint *v, const int *values, int n);

/** lo <= v <= hi. */
KORU_POST_API int cs_InInterval(CSint *v, int lo, int hi);

/** Remove lo..hi from v, one by one in increasing order; 1 for lo > hi. Cost: linear in the overlap with v's bounds. */
KORU_POST_API int cs_NotInInterval(CSint *v, int lo, int hi);

/* ==================================================================================================================
 * 12. Occurrence, minimum and maximum
 *
 * Over the n variables of an array, which is kept; the variadic forms copy their arguments.
 * ================================================================================================================ */

/**
 * The least of @p n variables: a new variable r over the smallest minimum to the smallest maximum. No variable is below
 * the minimum of r, and the maximum of r follows the smallest maximum. The maximum of r narrows nothing (a bound r
 * fails when no variable can take its value), and the minimum of r may stay behind the smallest minimum when r was
 * narrowed by someone else and a variable has jumped further. Of no variable (n < 1) the largest int. Null on failure.
 * Cost: linear in n per event on r; constant for the array but for a scan, now and then, when the last variable known
 * at the minimum of r has left it.
 */
KORU_POST_API CSint *cs_Min(CSint **vars, int n);

/** As cs_Min over the @p n variables that follow (each a `CSint *`). */
KORU_POST_API CSint *cs_VMin(int n, ...);

/** The greatest of @p n variables, as cs_Min with the bounds exchanged; of no variable the smallest int. */
KORU_POST_API CSint *cs_Max(CSint **vars, int n);

/** As cs_Max over the @p n variables that follow (each a `CSint *`). */
KORU_POST_API CSint *cs_VMax(int n, ...);

/**
 * count = how many of the variables are @p val; @p count may be one of them. The bounds of count follow the variables
 * that are bound to val and those that can still take it; once count decides, the value is imposed on the others or
 * taken from them. A count that is bound already when the constraint is posted does so at the next event. When all
 * variables are decided nothing is posted, and count is bound at once. n < 1 counts 0.
 * @return 0 always, also on success: use cs_OccurConstraints to learn of a failure.
 */
KORU_API int cs_Occur(CSint *count, int val, CSint **vars, int n);

/** As cs_Occur with a new variable for the count, which is returned; null on failure. */
KORU_POST_API CSint *cs_OccurDomain(int val, CSint **vars, int n);

/**
 * As cs_Occur. @return true when posted and consistent. Cost: linear in n at posting and when count decides, else
 * constant per event; two bits a variable.
 */
KORU_POST_API bool cs_OccurConstraints(CSint *count, int val, CSint **vars, int n);

/* ==================================================================================================================
 * 13. Automata
 * ================================================================================================================== */

/**
 * The values of vars[0] .. vars[n-1], in this order, are a word that a deterministic finite automaton accepts.
 *
 * States are 0 .. states-1, symbols 0 .. symbols-1, and the variables are restricted to the symbols.
 * table[q * symbols + a] is the state reached from q on a; an entry that is no state means that there is no such
 * transition. The word is read from @p start and must end in one of the @p finalCount states of @p finals; entries that
 * are no states are ignored. Domain-consistent when no variable stands in the array twice.
 *
 * `vars` is kept for as long as the constraint lives, that is until the context it was posted in is restored or the
 * solver ends; `table` and `finals` are only read by the call.
 * @return 1 when posted and consistent, or when n < 1 (nothing is posted); 0 when no final state is valid, the start is
 * no state, a pointer is null, no word is accepted, or memory is exhausted.
 * Cost: time linear in n * states * symbols, and 24 bytes for each transition of each position that lies on an accepted
 * word, besides 24 for each state and symbol of each position. An event costs a look at the states of its layer.
 */
KORU_POST_API int cs_Regular(CSint **vars, int n, const int *table, int states, int symbols, int start,
                             const int *finals, int finalCount);

/* ==================================================================================================================
 * 14. Variable element
 * ================================================================================================================== */

/**
 * A new variable equal to vars[index]. Positions outside [0, n - 1] are taken from the index; the result starts as the
 * union of the domains that can be selected. Domain-consistent: each position left shares a value with the result,
 * each value of the result is held by a position that is left (except that values which a bound of a variable had cut
 * off, and a restore has brought back, wait for an event on the index). Once the index is bound, the selected variable
 * and the result are equal value by value. The array is kept for as long as the constraint lives, that is until the
 * context it was posted in is restored or the solver ends.
 * @return the result; null when n < 1, for a null variable, when no position lies within the array, or when memory is
 * exhausted.
 * Cost: memory of n ints, and one int per value between the smallest and the largest that can be selected.
 */
KORU_POST_API CSint *cs_VarElement(CSint *index, CSint **vars, int n);

/**
 * As cs_VarElement on bounds only: the result starts as an interval, and a bound index aligns its bounds with those of
 * the selected variable. Constant memory; holes are met when a variable is bound.
 */
KORU_POST_API CSint *cs_VarElementRange(CSint *index, CSint **vars, int n);

/* ==================================================================================================================
 * 15. Scheduling
 *
 * Tasks with a start, a duration and a use, all of them variables; a task runs from its start to before
 * start + duration. Arrays and variables are kept.
 *
 * A proof that was made with these constraints is no proof. A schedule that is not feasible is never accepted; but
 * while variables are still being bound, a rule that moves a task to the next point at which another one may end or
 * begin refuses a feasible schedule now and then, and a search that has gone through everything may have missed the
 * best. With a cs_Disjunctive for each machine, the makespan called best was too long in 13 of 200 random job shops of
 * 5 jobs on 5 machines, and, with the orders of tasks labelled as well, in 8 of 200, in 5 of 100 of 6 jobs and in 4 of
 * 40 of 7 jobs. Of single constraints over four to six tasks one in 3,000 refuses something, of tight disjunctive ones
 * one in 600. Where that matters, state the resource otherwise (for a machine: cs_ReifLe for both orders of each two
 * tasks, and cs_Neq of the two); docs/cumulative.md has more.
 *
 * Quotients of energies (time times use) are ints: keep (latest end - earliest start) * capacity below 2^31, or scale
 * uses and capacity down; beyond it feasible tasks may be refused.
 * ================================================================================================================ */

/**
 * At every instant the uses of the @p n tasks that run then add up to at most @p capacity. A task of duration or use 0
 * takes no part; one whose use exceeds the capacity gets duration 0. The same variable may stand in several places; one
 * that is the capacity and a use as well may make the library call `abort` while it is narrowed. Durations, uses and
 * capacity are meant to be 0 or more: a duration that must be negative fails, and negative uses are counted where they
 * are sure to apply, but not watched.
 * @return true when posted and consistent, or when n < 1 (nothing is posted).
 * Cost: per change of a bound a sweep over all pairs of tasks at worst; memory linear in n.
 */
KORU_POST_API bool cs_Cumulative(CSint **starts, CSint **durations, CSint **uses, int n, CSint *capacity);

/**
 * No two of the @p n tasks of positive duration run at the same time: cs_Cumulative with uses and capacity 1, and
 * everything said there.
 */
KORU_POST_API bool cs_Disjunctive(CSint **starts, CSint **durations, int n);

/* ==================================================================================================================
 * 16. Search, variable selection and statistics
 *
 * The searches label an array of variables depth first: they let @p f pick a variable, open a context and try its
 * values in increasing order. They allocate nothing and use one native stack frame per level. The array must not change
 * while the search runs: a built-in selection may leave out variables that were bound at a level above.
 *
 * A true result leaves the solution in place, with one open context per level: undo it with cs_restoreAll, or
 * cs_restoreContextUntil with a label saved before. A false result after the whole tree was searched leaves everything
 * as before the call. After cs_cancelSearch, and when the fail limit was reached, contexts are left open and the
 * domains as they happen to be: open a context before the search and restore it after,
 *
 *     int label = cs_saveContext();
 *     bool any = cs_findAll(x, n, cs_findFreeVar, stopAfterThree);
 *     cs_restoreContextUntil(label);
 *
 * With a built-in selection, a search returns false at once when the array or one of its variables is null (unless size
 * is below 1). A selection of the host's own may be given any array: the engines look only at the variables that it
 * picks.
 *
 * A change that a callback of a search makes is propagated at once, like one made outside of any callback, when the
 * search was started outside of user-defined constraints. In one that a callback of section 21 has started, changes
 * made before the first level has opened its context (in the search's start, the first selection, `enter` and `init`,
 * and in a solution of a search that has nothing to label) are propagated when that context is opened, or else after
 * the callback.
 * ================================================================================================================ */

/** Find one solution. @return true if one was reached. With size < 1 the built-in selections find it at once. */
KORU_API bool cs_search(CSint **array, int size, CSfindFreeVar f);

/** As cs_search, giving up when @p nbFailsMax fails have been counted; 0 or negative means no limit. */
KORU_API bool cs_searchFail(CSint **array, int size, CSfindFreeVar f, int nbFailsMax);

/**
 * As cs_search over the @p nbVars variables from @p var1 on (each a `CSint *`), followed by the selection function
 * (a `CSfindFreeVar`). Allocates an array of nbVars pointers for the time of the search; when that fails,
 * CS_ERR_MEMORY is reported and the result is false.
 */
KORU_API bool cs_Vsearch(int nbVars, CSint *var1, ...);

/**
 * Visit all solutions: @p found, which may be null, is called at each one with (array, size), the variables hold it
 * only during that call. Returns with everything as before, but for a cancel: to stop after so many solutions is
 * common, and leaves contexts open that are to be restored as shown above.
 * @return true if there was at least one.
 */
KORU_API bool cs_findAll(CSint **array, int size, CSfindFreeVar f, CSfoundCallback found);

/** Make the running search stop before the next value it would try. To be called from any of its callbacks. */
KORU_API void cs_cancelSearch(void);

/** Selection: the first variable in array order that is not bound. Null when size < 1 or all are. Cost: linear. */
KORU_API CSint *cs_findFreeVar(CSint **array, int size);

/** Selection: a free variable with the fewest elements, the first of them in array order. */
KORU_API CSint *cs_findFreeVarNbElements(CSint **array, int size);

/** Selection: as cs_findFreeVarNbElements, equals decided by the smaller minimum, then by array order. */
KORU_API CSint *cs_findFreeVarNbElementsMin(CSint **array, int size);

/** Selection: a free variable with the largest cs_getNbConstraints, the first of them in array order. */
KORU_API CSint *cs_findFreeVarNbConstraints(CSint **array, int size);

/**
 * The number of fails since the last search began: decisions that propagation refused, solutions that a `found` hook
 * rejected, and choices of a criteria search that had no value left to try.
 */
KORU_API int cs_getNbFails(void);

/** The number of decisions (values, choices) tried, since the last search began. */
KORU_API int cs_getNbChoicePoints(void);

/** cs_fprintStats to the standard output. */
KORU_API void cs_printStats(void);

/**
 * Write fails, choice points and the capacity of the undo trail in records ("Heap Size") to @p f, a line each after an
 * empty one.
 */
KORU_API void cs_fprintStats(FILE *f);

/* ==================================================================================================================
 * 17. Optimisation and criteria search
 *
 * Depth-first searches that count, stop and leave things behind as those of section 16 do, unless said otherwise.
 * ================================================================================================================== */

/**
 * Branch and bound: search for a solution with cs_search's engine, then again and again for one whose cost is less
 * than the last one's. @p found, which may be null, is called at each of them with (array, size, cost); only there do
 * the variables hold it, so it has to copy what it wants to keep. The last call has the least cost.
 *
 * Afterwards all choices are undone, but "cost less than the best" stays imposed, with what propagation made of it:
 * open a context around the call to take that back. When there is no solution at all, the domains are as before and
 * one more context is open. After cs_cancelSearch, contexts of the pass that it stopped are open: restore them. The
 * counters are those of all passes together.
 * @param cost any variable whose bound the solutions decide; its minimum is taken as the cost of a solution
 * @return true if at least one solution was found; false also for a null f or cost.
 */
KORU_API bool cs_minimize(CSint **array, int size, CSfindFreeVar f, CSint *cost, CSfoundCostCallback found);

/**
 * Find one solution, trying the values of a variable from the lowest score to the highest, the smallest value first
 * among equals. Scores are asked for anew before each choice, for every value that is left, in increasing order. A
 * level makes as many choices as the variable has values: where values are left over whose score is INT_MAX, these
 * choices fail and count. Each level allocates a bit array for the range that its variable was created with; when that
 * fails, CS_ERR_MEMORY is reported and the level fails.
 * @return true if a solution was reached; false also for a null f or criteria.
 */
KORU_API bool cs_searchCriteria(CSint **array, int size, CSfindFreeVarIndex f, CScriteria criteria);

/** As cs_searchCriteria, giving up when @p nbFailsMax fails have been counted; 0 or negative means no limit. */
KORU_API bool cs_searchCriteriaFail(CSint **array, int size, CSfindFreeVarIndex f, CScriteria criteria, int nbFailsMax);

/**
 * As cs_searchCriteria over @p nbRows rows of variables: @p findFreeRow picks a row, @p findFreeVarInRow a column in
 * it. A row without a free variable is left for the next one that findFreeRow picks. @p extra, commonly the number of
 * columns, is handed to both and not used otherwise.
 * @return true if no row was left to pick; false also for null callbacks.
 */
KORU_API bool cs_searchMatrix(CSint ***matrix, int nbRows, int extra, CSfindFreeRow findFreeRow,
                              CSfindFreeVarInRow findFreeVarInRow, CSmatrixCriteria criteria);

/** As cs_searchMatrix with a fail limit; 0 or negative means no limit. */
KORU_API bool cs_searchMatrixFail(CSint ***matrix, int nbRows, int extra, CSfindFreeRow findFreeRow,
                                  CSfindFreeVarInRow findFreeVarInRow, CSmatrixCriteria criteria, int nbFailsMax);

/* ==================================================================================================================
 * 18. Value selectors
 *
 * A value selector says which decisions the search takes on a variable, and in what order. A decision compares the
 * variable with a value: an equality, half of the domain, a value's exclusion, ... Each variable of the searched array
 * has a selector of its own.
 * ================================================================================================================== */

/** The comparison of a decision. */
enum {
  CS_METHOD_EQ = 0,  /**< cs_EQ(v, value) */
  CS_METHOD_NEQ = 1, /**< cs_NEQ(v, value) */
  CS_METHOD_LE = 2,  /**< cs_LE(v, value) */
  CS_METHOD_LT = 3,  /**< cs_LT(v, value) */
  CS_METHOD_GE = 4,  /**< cs_GE(v, value) */
  CS_METHOD_GT = 5   /**< cs_GT(v, value) */
};

/** A branching decision on a variable. */
typedef struct CSvalueSelection {
  int method; /**< one of CS_METHOD_... */
  int value;
} CSvalueSelection;

/**
 * The functions of a value selector. @p index is the position of the variable in @p array, @p state points to one word
 * of the size of a pointer that belongs to the level of the search tree, zero at first.
 * Init is called once when the search reaches the variable, and false abandons the level; next stores the next
 * decision in @p r, or returns false when there is none; end is called when the level is left, and false makes it fail.
 * End is not called by a level that init refused, that notices a cancel, or that could not open a context. So if init
 * allocates, keep track of what it has allocated (in a list of one's own, say, from which end takes what it frees) and
 * free the rest when the search has returned.
 */
typedef bool (*CSvalueSelectorInit)(int index, CSint **array, int size, void *state);
typedef bool (*CSvalueSelectorNext)(CSvalueSelection *r, int index, CSint **array, int size, void *state);
typedef bool (*CSvalueSelectorEnd)(int index, CSint **array, int size, void *state);

/** A value selector. */
typedef struct CSvalueSelector {
  CSvalueSelectorInit init; /**< may be null */
  CSvalueSelectorNext next;
  CSvalueSelectorEnd end; /**< may be null */
} CSvalueSelector;

/**
 * The built-in selectors, with the decisions that each produces. The bounds and elements are those of the variable at
 * the call.
 */
enum {
  CS_SELECT_ASCENDING = 0,  /**< = each value, from the minimum up */
  CS_SELECT_DESCENDING = 1, /**< = each value, from the maximum down */
  CS_SELECT_LOWER_HALF = 2, /**< <= the middle of the bounds (rounded down), then > it */
  CS_SELECT_UPPER_HALF = 3, /**< >= the middle of the bounds (above the minimum), then < it */
  CS_SELECT_MEDIAN = 4      /**< = the middle element (the lower one of two), then != it; for a variable over more than
                               INT_MAX values, whose number of elements has wrapped, = its minimum and nothing else */
};

/** Make a selector of three functions, to be freed with cs_freeValueSelector. Null with CS_ERR_MEMORY reported. */
KORU_API CSvalueSelector *cs_createValueSelector(CSvalueSelectorInit init, CSvalueSelectorNext next,
                                                 CSvalueSelectorEnd end);

/** The built-in selector of a kind CS_SELECT_..., which belongs to the library. Null for any other kind. */
KORU_API CSvalueSelector *cs_getValueSelector(int kind);

/** Call the selector's init. @return its result; true without one; false for a null selector. */
KORU_API bool cs_initValueSelector(CSvalueSelector *vs, int index, CSint **array, int size, void *state);

/** Call the selector's next. @return its result; false for a null selector. */
KORU_API bool cs_selectNextValue(CSvalueSelection *r, CSvalueSelector *vs, int index, CSint **array, int size,
                                 void *state);

/** Call the selector's end. @return its result; true without one; false for a null selector. */
KORU_API bool cs_endValueSelector(CSvalueSelector *vs, int index, CSint **array, int size, void *state);

/** Post a decision. @return as the comparison. A method outside CS_METHOD_... aborts the process. */
KORU_API bool cs_selectValue(CSint *v, const CSvalueSelection *r);

/** Free a selector that cs_createValueSelector made. Null and the built-in ones are left alone. */
KORU_API void cs_freeValueSelector(CSvalueSelector *vs);

/** The hooks of a search; see section 19. */
typedef struct CSsearchNotify CSsearchNotify;

/**
 * Search depth first for a solution, with the decisions of the selectors; @p selectors[i] serves @p array[i], and a
 * null one abandons the level. A selector is asked for the next decision before the present one is tried. Each level
 * keeps one context open, as in section 16; so a true result leaves the solution with a context per level, and one
 * that comes from cs_cancelSearch, the fail limit, or an init or end that refused leaves the contexts of that branch.
 * @param nbFailsMax gives up at so many fails; 0 or negative means no limit
 * @param notify the hooks, or null
 * @return true if a solution was reached, accepted by the found hook, and no end refused it
 */
KORU_API bool cs_searchValueSelectorFail(CSint **array, CSvalueSelector **selectors, int size, CSfindFreeVarIndex f,
                                         int nbFailsMax, const CSsearchNotify *notify);

/* ==================================================================================================================
 * 19. Search notification
 *
 * Hooks through which the selector-driven searches tell of their progress. @p depth is 0 at the first variable chosen,
 * @p index the position of the level's variable in the array, @p r the decision, @p extra the pointer given to
 * cs_createSearchNotify. A hook that is null is not called.
 * ================================================================================================================== */

/** Before the first variable is chosen, once per run. */
typedef void (*CSsearchStartHook)(int nbFailsMax, CSint **array, int size, void *extra);

/** After a run, with its result and number of fails. */
typedef void (*CSsearchEndHook)(bool result, int nbFails, int nbFailsMax, CSint **array, int size, void *extra);

/** Before a decision is posted; its context is open and counted. */
typedef void (*CSbeforeValueSelectionHook)(int depth, int index, const CSvalueSelection *r, CSint **array, int size,
                                           void *extra);

/** After a decision was posted: @p result is true when propagation accepted it. */
typedef void (*CSafterValueSelectionHook)(bool result, int depth, int index, const CSvalueSelection *r, CSint **array,
                                          int size, void *extra);

/**
 * Enter: the variable of a level was chosen. Leave: the level's decisions are exhausted; not called when it succeeds,
 * when the run stops at its fail limit, or when init or end refuses. After a cancel the level that notices it does not
 * call it; a level above whose last decision has failed so is exhausted, and calls end and leave like any other.
 */
typedef void (*CSlevelHook)(int depth, int index, CSint **array, int size, void *extra);

/**
 * No variable is left to choose; @p depth is that of the last level (-1 without one). False rejects the solution: it
 * counts as a fail and the search goes on.
 */
typedef bool (*CSfoundHook)(int depth, CSint **array, int size, void *extra);

/** The hooks of a search. */
struct CSsearchNotify {
  CSsearchStartHook searchStart;
  CSsearchEndHook searchEnd;
  CSbeforeValueSelectionHook beforeValueSelection;
  CSafterValueSelectionHook afterValueSelection;
  CSlevelHook enter;
  CSlevelHook leave;
  CSfoundHook found;
  void *extra;
};

/**
 * Make a record without hooks. @p extra is handed to every hook and never read by the library.
 * @return the record, to be freed with cs_freeSearchNotify; null with CS_ERR_MEMORY reported.
 */
KORU_API CSsearchNotify *cs_createSearchNotify(void *extra);

/* The setters store a hook and return @p notify, so that calls can be chained. A null notify is returned as it is. */

KORU_API CSsearchNotify *cs_searchNotifySetSearchStart(CSsearchNotify *notify, CSsearchStartHook hook);
KORU_API CSsearchNotify *cs_searchNotifySetSearchEnd(CSsearchNotify *notify, CSsearchEndHook hook);
KORU_API CSsearchNotify *cs_searchNotifySetBeforeValueSelection(CSsearchNotify *notify,
                                                                CSbeforeValueSelectionHook hook);
KORU_API CSsearchNotify *cs_searchNotifySetAfterValueSelection(CSsearchNotify *notify, CSafterValueSelectionHook hook);
KORU_API CSsearchNotify *cs_searchNotifySetEnter(CSsearchNotify *notify, CSlevelHook hook);
KORU_API CSsearchNotify *cs_searchNotifySetLeave(CSsearchNotify *notify, CSlevelHook hook);
KORU_API CSsearchNotify *cs_searchNotifySetFound(CSsearchNotify *notify, CSfoundHook hook);

/** Free a record from cs_createSearchNotify. Null is ignored. */
KORU_API void cs_freeSearchNotify(CSsearchNotify *notify);

/* ==================================================================================================================
 * 20. No-goods and restarts
 *
 * A no-good is a conjunction of decisions that must not all hold. A set of them over an array of variables is a
 * constraint: it takes away the last decision of a no-good whose others all hold, and fails when all do. A restarting
 * search gives up at a fail limit, records what it has refuted as no-goods, and starts again at the root.
 *
 * A no-good reacts when one of its two watched elements (at first the first two) comes to hold; one that is added
 * while its elements hold already may go unnoticed until then, so add no-goods at the root. They outlive searches,
 * and restoring a choice point brings none back and takes none away.
 *
 * A set lives until `cs_end`, or until the choice point is restored inside which it was created; so do its no-goods,
 * unless they are deleted before: by cs_filterNoGood, for want of room, or because a shorter one says as much. A
 * `CSnoGood *` is for use inside the callback that it was handed to.
 * ================================================================================================================ */

/** No-goods over an array of variables (opaque). */
typedef struct CSnoGoodSet CSnoGoodSet;

/** A no-good of a set (opaque). */
typedef struct CSnoGood CSnoGood;

/**
 * Asked whether a no-good is to be inserted or kept; @p extra is the set's argument. It may add and delete no-goods of
 * the set, post and search, like any callback. A search calls the set's filter in the state of the branch that failed.
 */
typedef bool (*CSnoGoodFilter)(CSnoGoodSet *set, CSnoGood *ng, CSint **array, int size, void *extra);

/**
 * Called when a set's life ends, while it still holds its no-goods. It may read them; it must not change the solver,
 * nor look at variables, whose domains may be gone.
 */
typedef void (*CSnoGoodRelease)(CSnoGoodSet *set, void *extra);

/** Gives the fail limit of the next run of a restarting search; @p arg is the argument handed to it. */
typedef int (*CSfailLimit)(void *arg);

/**
 * Create an empty set over @p array, which is kept.
 * @param filter asked before each insertion, or null
 * @param maxNbNoGoods when as many are there, an insertion deletes the oldest; 0 or negative: no limit
 * @param release called when the set's life ends, or null; not called when the result is null
 * @param extra handed to both, and to the callback of cs_filterNoGood
 * @return null if size < 1, a variable is null, or memory is exhausted (CS_ERR_MEMORY).
 * Cost: an allocation per variable and three more. Each change of a variable visits the no-goods that watch it.
 */
KORU_API CSnoGoodSet *cs_createNoGoodSet(CSint **array, int size, CSnoGoodFilter filter, int maxNbNoGoods,
                                         CSnoGoodRelease release, void *extra);

/**
 * Insert the no-good of @p n elements: element i is @p decisions[i] about the variable at position @p indexes[i]. Both
 * arrays are copied. It becomes the newest, unless the filter refuses it or an older one consists of its first
 * elements; older ones whose first elements it consists of are deleted.
 * Nothing happens when n < 1, a method is none of the six, or an index is outside the set's array or not below n.
 * When memory is exhausted CS_ERR_MEMORY is reported and nothing is inserted.
 * Cost: one allocation, and a comparison with each no-good of the set.
 */
KORU_API void cs_addNoGood(CSnoGoodSet *set, const int *indexes, const CSvalueSelection *decisions, int n);

/** Delete the no-goods for which @p keep is false, asking about each from the oldest to the newest there is now. */
KORU_API void cs_filterNoGood(CSnoGoodSet *set, CSnoGoodFilter keep);

/** Hold at most @p max no-goods, deleting the oldest ones now; 0: any number. Negative: nothing happens. */
KORU_API void cs_setMaxNbNoGoods(CSnoGoodSet *set, int max);

/** The number of no-goods; 0 for null. */
KORU_API int cs_getNbNoGoods(CSnoGoodSet *set);

/** The number of elements of a no-good; 0 for null. */
KORU_API int cs_getNbNoGoodElements(CSnoGood *ng);

/**
 * Store element @p i of a no-good: the position of its variable in the set's array and the decision about it. For an i
 * below 0 or past the last element, -1 is stored in *index and *r is left as it is. Null pointers are skipped.
 */
KORU_API void cs_getNoGoodElementAt(int *index, CSvalueSelection *r, CSnoGood *ng, int i);

/**
 * Find one solution as cs_searchValueSelectorFail does, in runs: a run that has counted as many fails as its limit
 * allows is given up, and the next one starts at the root.
 *
 * At the end of such a run no-goods are recorded in @p set, which must be over the same variables: what the run has
 * tried in full is not tried again, provided that the decisions of each selector cover the domain of its variable and
 * no `init` or `end` refuses. Between two runs the newest are shortened. Nothing is recorded of a run during which
 * memory was exhausted. See docs/no-goods.md.
 *
 * @param nbFailsMaxFunc called with @p arg before each run for its limit; 0 or negative: the run has none and is the
 *   last
 * @param nbFailsMaxTotal when positive, the search is given up once as many fails have been counted in all runs
 * @param set may be null: nothing is recorded
 * @param notify may be null; searchStart and searchEnd are called for each run, with its limit and its fails
 * @return true if a solution was reached; it is left in place, with one open context per level, and one more if it was
 *   found in the first run. False when a run ended below its limit, the space then being exhausted and everything as
 *   before the call, or the search cancelled; false also when the total was reached, the state of the last branch and
 *   its contexts then being left open. False without a run when @p f or @p nbFailsMaxFunc is null.
 * Cost: as the runs, and one allocation for the longest path that is recorded.
 */
KORU_API bool cs_searchValueSelectorRestartNG(CSint **array, CSvalueSelector **selectors, int size,
                                              CSfindFreeVarIndex f, CSfailLimit nbFailsMaxFunc, void *arg,
                                              int nbFailsMaxTotal, CSnoGoodSet *set, const CSsearchNotify *notify);

/* ==================================================================================================================
 * 21. User-defined constraints
 *
 * A constraint of the host's own: a callback on an array of variables. It runs as part of propagation, like every
 * constraint, newest attachment first, and narrows domains through the ordinary functions; those changes are propagated
 * when it has returned. A callback that returns false makes the propagation fail.
 *
 * The array is kept, not copied; `extra` is handed to the callback. A registration is undone with the choice point in
 * which it was made. A null callback, a null variable or a null array is refused.
 *
 * What a callback may do, of these and of all others that the library calls:
 *
 *   query, print, create variables       yes
 *   narrow, post constraints             yes; in callbacks of this section propagated when the callback has returned,
 *                                        or at once inside a choice point that the callback opens; in those of a
 *                                        search at once, except as section 16 says
 *   save and restore choice points       yes, in balance
 *   search                               yes; counters and the cancel flag are those of the newest search
 *   cs_cancelSearch                      yes
 *   close a choice point that it did     no: caller error
 *   not open
 *   cs_init, cs_end                      no: caller error
 *   leave by longjmp or an exception     leaves the solver fit only for cs_end
 * ================================================================================================================== */

/** Called when no variable of the array is free any more. @return false to fail the propagation. */
typedef bool (*CSeventAllKnownCallback)(CSint **array, int size, void *extra);

/** Called when array[index] has become instantiated, to @p value. @return false to fail the propagation. */
typedef bool (*CSeventKnownCallback)(int value, int index, CSint **array, int size, void *extra);

/**
 * Called when @p vint, which is array[index], has lost its minimum, its maximum or an inner value. @p old is the
 * minimum or maximum as callbacks saw it last, or the value removed; the domain is as it is by now, which may be after
 * further changes. @return false to fail the propagation.
 */
typedef bool (*CSeventBoundCallback)(CSint *vint, int index, int old, CSint **array, int size, void *extra);

/** What was being done to a variable when propagation failed. */
enum {
  CS_CONFLICT_KNOWN = 0,   /**< it was being instantiated; value: its minimum as it is now */
  CS_CONFLICT_REMOVED = 1, /**< a value was being removed; value: that value */
  CS_CONFLICT_NEW_MAX = 2, /**< its maximum was being lowered; value: the new maximum */
  CS_CONFLICT_NEW_MIN = 4  /**< its minimum was being raised; value: the new minimum */
};

typedef struct CSconflictInfo {
  int kind;  /**< one of CS_CONFLICT_... */
  int value; /**< see there */
} CSconflictInfo;

/**
 * Called when the propagation of a change of @p vint has failed. @p vint need not be in the array: @p index is the
 * place of the first listened-to variable that this propagation had reached, not that of vint.
 */
typedef void (*CSeventConflictCallback)(CSint *vint, int index, CSconflictInfo *info, CSint **array, int size,
                                        void *extra);

/**
 * Runs @p allKnown as soon as no variable of the array is free. When none is now, it runs at once and nothing is
 * posted. It may run several times in one propagation, once for each variable that was bound in it.
 * @return its result then; otherwise true, or false when memory ran out.
 * Cost: linear in size at posting and whenever the free variable that is watched becomes bound.
 */
KORU_POST_API bool cs_eventAllKnown(CSint **array, int size, CSeventAllKnownCallback allKnown, void *extra);

/**
 * Runs @p known for each variable that becomes instantiated, and now, in array order, for those that are. A variable
 * that such a call binds may be told of twice: as a change, and when the walk comes to it.
 * @return false when one of these calls returns false or memory ran out; true when size < 1, with nothing posted.
 */
KORU_POST_API bool cs_eventKnown(CSint **array, int size, CSeventKnownCallback known, void *extra);

/**
 * Runs @p newMin when the minimum of a variable is raised, also onto its maximum: once for several raises that follow
 * each other before the call. It is not run when a variable is bound to a value strictly between its bounds, nor for a
 * raise that such a binding overtakes; only cs_eventKnown is. So a constraint on bounds registers that as well. x <= y,
 * over xy = {x, y}:
 *
 *     bool bounds(CSint *v, int index, int old, CSint **xy, int size, void *extra) {
 *       return cs_GE(xy[1], cs_getMin(xy[0])) && cs_LE(xy[0], cs_getMax(xy[1]));
 *     }
 *     bool known(int value, int index, CSint **xy, int size, void *extra) {
 *       return bounds(xy[index], index, value, xy, size, extra);
 *     }
 *     ...
 *     cs_eventNewMin(xy, 2, bounds, NULL);
 *     cs_eventNewMax(xy, 2, bounds, NULL);
 *     bool consistent = cs_eventKnown(xy, 2, known, NULL);
 *
 * Nothing when size < 1.
 */
KORU_API void cs_eventNewMin(CSint **array, int size, CSeventBoundCallback newMin, void *extra);

/** Runs @p newMax when the maximum of a variable is lowered, also onto its minimum; as cs_eventNewMin in all else. */
KORU_API void cs_eventNewMax(CSint **array, int size, CSeventBoundCallback newMax, void *extra);

/**
 * Runs @p neq when a value strictly between the bounds of a variable is removed, unless a bound has passed the value
 * before the call: of such a value nobody is told. Nothing when size < 1. Profiles list it under the name
 * "cs_eventNewMax".
 */
KORU_API void cs_eventNeq(CSint **array, int size, CSeventBoundCallback neq, void *extra);

/**
 * Runs @p conflict when a propagation has failed that had reached a variable of the array; domains are as the failure
 * left them. Of all variables that anybody listens to only the first one that the propagation came to counts: its
 * listeners are told, newest first, others are not. The outcome stays a failure. Nothing when size < 1.
 */
KORU_API void cs_eventConflict(CSint **array, int size, CSeventConflictCallback conflict, void *extra);

/* ==================================================================================================================
 * 22. Profiler
 *
 * How much propagation each place of the host program has caused: while a profiler is enabled, it counts the runs of
 * all constraints, and the failures among them, by site. A site is the function that posted, with a text for the place
 * it was called from, which a locator supplies.
 *
 * The built-in locator gives file, line, address and function of the call, separated by tabs, from the program's debug
 * information (compile with -g); without that the module stands for the file, the line is 0, and functions without a
 * symbol are "(unknown)". Posting only keeps an address: the rest is looked up when a report is written, or when
 * cs_EQ, cs_NEQ, cs_LE, cs_LT, cs_GE or cs_GT is called in a user-defined constraint while a profiler is enabled.
 * Modules should stay loaded until then. A place that cannot be found is "(unknown)", 0, 0, "(unknown)".
 * ================================================================================================================== */

/** Counts of constraint runs by site (opaque). Belongs to the solver. */
typedef struct CSprofiler CSprofiler;

/**
 * Names the place that is posting: called once for each posting, with the argument that was installed. The text is
 * copied; null stands for an empty one.
 */
typedef const char *(*CSprofilerLocator)(void *arg);

/**
 * A profiler, not enabled yet. @p kind must be 0.
 * @return null for any other kind and when memory is exhausted. When there was memory for the profiler, but not for its
 * counts, it counts nothing. CS_ERR_MEMORY is reported in both cases.
 */
KORU_API CSprofiler *cs_createProfiler(int kind);

/** Count from now on. The first enabling sets the start time. Nothing for null or a profiler that is enabled. */
KORU_API void cs_enableProfiler(CSprofiler *profiler);

/** Stop counting and set the end time. Nothing for null or a profiler that is not enabled. */
KORU_API void cs_disableProfiler(CSprofiler *profiler);

/**
 * Stop counting. Deliberately releases nothing: the profiler can still be read, its counts until cs_end, and its memory
 * is not given back. To keep memory bounded, leave profilers to cs_end, which releases them. A deleted profiler that is
 * disabled and then enabled counts again.
 */
KORU_API void cs_deleteProfiler(CSprofiler *profiler);

/**
 * Write the report to @p f: lines of "name: value" (times in seconds, the end time of an enabled profiler being now), a
 * line "__DATA__", and for each site a line of text, function name, runs and failures, separated by tabs, in no
 * particular order. When memory for that is exhausted, CS_ERR_MEMORY is reported and the rows are replaced by a line
 * "error".
 */
KORU_API void cs_profilerWrite(CSprofiler *profiler, FILE *f);

/** cs_profilerWrite to a file, which is made or emptied first. Nothing when it cannot be opened. */
KORU_API void cs_profilerWriteFile(CSprofiler *profiler, const char *path);

/**
 * Let @p locator name the places of postings from now on, until cs_end; @p format, of which a copy is kept, is what
 * reports call the format of its texts. With a null locator the built-in one is back.
 * When memory for the copy is exhausted, CS_ERR_MEMORY is reported and nothing changes.
 */
KORU_API void cs_setProfilerLocator(const char *format, CSprofilerLocator locator, void *arg);

/* ==================================================================================================================
 * 23. Formatted output
 * ================================================================================================================ */

/** cs_fprintf to the standard output. */
KORU_API void cs_printf(const char *format, ...);

/**
 * printf with three conversions more: `%D` prints the domain of a `CSint *`; `%T` its name and ": " first, if it has
 * one; `%A` takes a `CSint **` and an int and prints that many variables as `%T` does, separated by ", ".
 *
 * A bound variable prints as its value, an interval as {0..9} (or {0, 1}), any other domain as {1..3, 5, 7..10}.
 * The standard conversions are those of printf, except that `%n` is refused: it and anything that is no conversion
 * are printed as they stand. "%%" prints one percent sign after a standard conversion, and two before the first
 * conversion or after `%A`, `%D` and `%T`.
 * When memory for a piece of the format cannot be had, CS_ERR_MEMORY is reported and the rest is not printed.
 */
KORU_API void cs_fprintf(FILE *stream, const char *format, ...);

#ifdef __cplusplus
}
#endif

#endif /* KORU_H */
