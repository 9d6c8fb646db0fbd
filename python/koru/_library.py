# SPDX-License-Identifier: MIT
"""The shared library: found, loaded, and told how its functions are called.

The library is the one that the environment's KORU_LIBRARY names, or that in this folder (a wheel brings it along), or
that of the system. Of koru.h and koru_extras.h only what this package calls is declared, in SIGNATURES;
tests compare that with the headers.

The interpreter is held while the library works, so that no two threads are in it at a time; only a search lets other
threads run.
"""
from __future__ import annotations

import ctypes
import ctypes.util
import os
from ctypes import CFUNCTYPE, POINTER, c_bool, c_char_p, c_double, c_int, c_longlong, c_size_t, c_ulonglong, c_void_p
from pathlib import Path
from typing import Any, List

INT_MIN, INT_MAX = -(2**31), 2**31 - 1
ANY = INT_MIN  #: in a row of a table: any value


class ValueSelection(ctypes.Structure):
    _fields_ = [("method", c_int), ("value", c_int)]


class SearchStats(ctypes.Structure):
    """CSsearchStats."""

    _fields_ = (
        [(name, c_longlong) for name in ("choicePoints", "fails", "solutions", "restarts", "noGoods", "neighbourhoods",
                                         "neighbourhoodsBetter", "wakings", "peakDepth", "peakTrail")]
        + [(name, c_double) for name in ("seconds", "secondsToFirst", "secondsToBest")]
        + [("objective", c_int), ("bound", c_int)])


ChooseVariable = CFUNCTYPE(c_int, c_void_p, c_int, c_void_p)
ChooseValue = CFUNCTYPE(c_bool, POINTER(ValueSelection), c_int, c_void_p, c_int, c_void_p)
ChooseRelaxed = CFUNCTYPE(None, POINTER(c_bool), POINTER(c_int), c_int, c_void_p)
Progress = CFUNCTYPE(None, c_void_p, POINTER(SearchStats), c_void_p)
Found = CFUNCTYPE(c_bool, c_void_p, c_void_p)
Run = CFUNCTYPE(c_bool, c_void_p, c_int, c_void_p)
ErrorHandler = CFUNCTYPE(None, c_void_p, c_void_p)
Locator = CFUNCTYPE(c_void_p, c_void_p)


class SearchOptions(ctypes.Structure):
    """CSsearchOptions."""

    _fields_ = [
        ("size", c_size_t), ("order", c_int), ("value", c_int), ("branching", c_int), ("lastConflict", c_bool),
        ("randomTies", c_bool), ("guided", c_bool), ("seed", c_ulonglong), ("minimize", c_void_p),
        ("maximize", c_void_p), ("restarts", c_int), ("restartFails", c_int), ("restartGrowth", c_int),
        ("neighbours", c_int), ("neighbourFails", c_int), ("relaxed", c_int), ("milliseconds", c_longlong),
        ("fails", c_longlong), ("choicePoints", c_longlong), ("solutions", c_longlong), ("memory", c_longlong),
        ("selectors", c_void_p), ("chooseVariable", ChooseVariable), ("chooseValue", ChooseValue),
        ("chooseRelaxed", ChooseRelaxed), ("progress", Progress), ("progressMilliseconds", c_longlong),
        ("extra", c_void_p)]


class TaskOrders(ctypes.Structure):
    """CSorder."""

    _fields_ = [("first", c_void_p), ("starts", c_void_p * 2), ("durations", c_void_p * 2), ("machine", c_int)]


ModelFunction = CFUNCTYPE(c_int, c_void_p)


class Reason(ctypes.Structure):
    """CSreason."""

    _fields_ = [("function", c_char_p), ("file", c_char_p), ("line", c_int), ("caller", c_char_p), ("number", c_int),
                ("numberOf", c_int), ("position", c_int)]


class Explanation(ctypes.Structure):
    """CSexplanation."""

    _fields_ = [("status", c_int), ("nearest", c_bool), ("size", c_int), ("reasons", POINTER(Reason)), ("places", c_int),
                ("allPostings", c_int), ("allPlaces", c_int), ("checks", c_int)]


class ExplainOptions(ctypes.Structure):
    """CSexplainOptions."""

    _fields_ = [("size", c_size_t), ("nearest", c_bool), ("maxChecks", c_int), ("milliseconds", c_longlong),
                ("placesKnown", c_void_p), ("extra", c_void_p)]


class Removal(ctypes.Structure):
    """CSremoval."""

    _fields_ = [("variable", c_void_p), ("change", ValueSelection), ("bySearch", c_bool), ("function", c_char_p),
                ("file", c_char_p), ("line", c_int), ("caller", c_char_p)]


class Removals(ctypes.Structure):
    """CSremovals."""

    _fields_ = [("size", c_int), ("steps", POINTER(Removal))]


TYPES = {
    "void": None, "bool": c_bool, "int": c_int, "long": c_longlong, "size": c_size_t, "text": c_char_p,
    "pointer": c_void_p, "ErrorHandler": ErrorHandler, "Locator": Locator, "Run": Run, "Model": ModelFunction}

#: Results, names and parameters, in the words of TYPES. Arrays and structures are pointers.
SIGNATURES = """
void cs_init
void cs_end
text cs_getVersion
ErrorHandler cs_setErrHandler int ErrorHandler pointer
pointer CSINT int
pointer cs_createCSint int int
pointer cs_createCSintFromDomain pointer int
void cs_setName pointer text
text cs_getName pointer
int cs_getMin pointer
int cs_getMax pointer
int cs_getNbElements pointer
int cs_getNextValue pointer int
bool cs_isIn pointer int
int cs_saveContext
void cs_restoreContextUntil int
void cs_forgetSaveContextUntil int
bool cs_EQ pointer int
bool cs_NEQ pointer int
bool cs_LE pointer int
bool cs_LT pointer int
bool cs_GE pointer int
bool cs_GT pointer int
bool cs_Eq pointer pointer
bool cs_Neq pointer pointer
bool cs_Le pointer pointer
bool cs_Lt pointer pointer
bool cs_Ge pointer pointer
bool cs_Gt pointer pointer
pointer cs_Abs pointer
pointer cs_Mul pointer pointer
pointer cs_Min pointer int
pointer cs_Max pointer int
pointer cs_ReifLE pointer int
pointer cs_ReifGE pointer int
pointer cs_ReifEq pointer pointer
bool cs_IfNeq pointer pointer int int
int cs_AllNeq pointer int
int cs_InArray pointer pointer int
int cs_NotInArray pointer pointer int
int cs_InInterval pointer int int
int cs_NotInInterval pointer int int
bool cs_OccurConstraints pointer int pointer int
int cs_Regular pointer int pointer int int int pointer int
pointer cs_createProfiler int
void cs_enableProfiler pointer
void cs_profilerWriteFile pointer text
void cs_setProfilerLocator text Locator pointer
bool cs_LexLe pointer pointer int
bool cs_LexLt pointer pointer int
pointer cs_createSearch pointer int
bool cs_setSearchOptions pointer pointer
bool cs_addSearchPhase pointer pointer int int int
bool cs_addSearchOrders pointer pointer int int int
bool cs_setSearchHint pointer int int
int cs_nextSolution pointer
int cs_getSearchStatus pointer
text cs_getStatusName int
pointer cs_getBestSolution pointer
bool cs_getSearchStats pointer pointer size
void cs_stopSearch pointer
bool cs_freeSearch pointer
bool cs_eventRun pointer int Run pointer
bool cs_AllNeqDomain pointer int
bool cs_AllNeqBounds pointer int
int cs_getNbRefused
bool cs_Table pointer int pointer int
bool cs_NotTable pointer int pointer int
bool cs_ShortTable pointer int pointer int
bool cs_Mdd pointer int pointer pointer pointer int int int
bool cs_Clause pointer int pointer int
bool cs_ClauseIff pointer pointer int pointer int
bool cs_ClauseIf pointer pointer int pointer int
bool cs_InArrayIff pointer pointer pointer int
bool cs_NotInArrayIff pointer pointer pointer int
bool cs_InArrayIf pointer pointer pointer int
bool cs_NotInArrayIf pointer pointer pointer int
bool cs_InIntervalIff pointer pointer int int
bool cs_NotInIntervalIff pointer pointer int int
bool cs_InIntervalIf pointer pointer int int
bool cs_NotInIntervalIf pointer pointer int int
bool cs_Linear pointer pointer int int long
bool cs_LinearIff pointer pointer pointer int int long
bool cs_LinearIf pointer pointer pointer int int long
bool cs_Increasing pointer int
bool cs_StrictlyIncreasing pointer int
bool cs_Inverse pointer pointer int
bool cs_Precede pointer int int int
bool cs_CountOf pointer int pointer pointer
bool cs_ElementOf pointer pointer int pointer
bool cs_VarElementOf pointer pointer int pointer
bool cs_Circuit pointer int
bool cs_Subcircuit pointer int
bool cs_DivTrunc pointer pointer pointer
bool cs_Mod pointer pointer pointer
bool cs_Pow pointer pointer pointer
bool cs_Cardinality pointer int pointer pointer int bool
bool cs_CardinalityDomain pointer int pointer pointer int bool
bool cs_NValues pointer int pointer
bool cs_BinPacking pointer pointer int pointer int
pointer cs_detachSolver
bool cs_attachSolver pointer
bool cs_DisjunctiveTasks pointer pointer pointer int
bool cs_DisjunctiveTransitions pointer pointer pointer pointer pointer int pointer int int
bool cs_CumulativeTasks pointer pointer pointer pointer int pointer
bool cs_PrecedenceIf pointer pointer pointer int pointer
bool cs_EitherBefore pointer pointer pointer pointer pointer pointer pointer
bool cs_Alternative pointer pointer pointer pointer pointer pointer int
bool cs_Span pointer pointer pointer pointer pointer pointer int
bool cs_NoOverlap pointer pointer pointer pointer int
bool cs_Reservoir pointer pointer pointer int int int int
pointer cs_explainFailure Model pointer pointer
void cs_freeExplanation pointer
bool cs_recordRemovals bool
pointer cs_whyRemoved pointer int
void cs_freeRemovals pointer
void cs_setProfilerDetails pointer bool
void cs_profilerWriteDetailsFile pointer text
"""
# Comparisons tied to a truth value: with a variable, and with an int.
SIGNATURES += "".join(f"bool cs_{name}{tie} pointer pointer pointer\nbool cs_{name.upper()}{tie} pointer pointer int\n"
                      for name in ("Eq", "Neq", "Le", "Lt", "Ge", "Gt") for tie in ("If", "Iff"))

NAMES = ("libkoru.so.3", "koru.dll", "libkoru.dll", "libkoru.3.dylib")


def _candidates() -> List[str]:
    told = os.environ.get("KORU_LIBRARY")
    if told:
        return [told]
    here = Path(__file__).resolve().parent
    beside = [str(here / name) for name in NAMES if (here / name).exists()]
    return beside or [*NAMES, ctypes.util.find_library("koru") or NAMES[0]]


def _declare(library: Any) -> None:
    for line in SIGNATURES.split("\n"):
        if line:
            result, name, *parameters = line.split()
            function = getattr(library, name)
            function.restype = TYPES[result]
            function.argtypes = [TYPES[p] for p in parameters]


def _load() -> Any:
    reasons = []
    for path in _candidates():
        try:
            library: Any = ctypes.PyDLL(path)
            search = ctypes.CDLL(path).cs_nextSolution
        except OSError as error:
            reasons.append(str(error))
            continue
        _declare(library)
        if not library.cs_getVersion().startswith(b"3."):
            raise ImportError(f"koru: {path} is version {library.cs_getVersion().decode()}; version 3 is needed")
        search.restype, search.argtypes = c_int, [c_void_p]
        library.cs_nextSolution = search
        return library
    raise ImportError("koru: the shared library is not found; let KORU_LIBRARY name it\n" + "\n".join(reasons))


lib: Any = _load()
version: str = lib.cs_getVersion().decode()


def ints(values: Any) -> Any:
    """A ctypes array of ints, which has an address also when it is empty: the library refuses null arrays."""
    return (c_int * max(len(values), 1))(*values)


def pointers(values: Any) -> Any:
    return (c_void_p * max(len(values), 1))(*values)
