# SPDX-License-Identifier: MIT
"""Searches of many processes, with the result of one: import koru.mpi, and mpirun -n 4 python3 program.py.

Every process runs the whole program and makes the same model; at a search they share its tree. All come to the same
result; `found` is called in the first one only, and what the others print is discarded. The library koru_mpi is the one that
the environment's KORU_MPI_LIBRARY names, or that beside the library of this package, or that of the system. Without it, or
without a launcher, one process searches.

For exact searches: options whose choices depend on what was searched before (restarts, neighbourhoods, orders by failures or
activity, random ones, last conflicts, guided searches), limits and a progress function end the run with a message. Weak:
Ctrl-C ends the process while it searches.
"""
from __future__ import annotations

import ctypes
import functools
import os
from pathlib import Path
from typing import Any, Optional

from ._library import Found, Progress, lib
from .model import Model, Variables
from .options import Search
from .results import Result, Status
from .search import Solutions
from .variables import flat

NAME = "libkoru_mpi.so.3"


@functools.lru_cache(maxsize=None)
def _library() -> Any:
    """Global, as the parts of an MPI that are loaded later look for it there."""
    beside = Path(lib._name).parent / NAME
    path = os.environ.get("KORU_MPI_LIBRARY") or (str(beside) if beside.exists() else NAME)
    try:
        library = ctypes.PyDLL(path, mode=ctypes.RTLD_GLOBAL)
    except OSError as error:
        raise ImportError(f"koru.mpi: the library koru_mpi is not found; let KORU_MPI_LIBRARY name it\n{error}") from error
    library.cs_mpiSolve.argtypes = [ctypes.c_void_p, Found, ctypes.c_void_p]
    return library


def rank() -> int:
    """The number of this process, 0 for the first one."""
    return int(_library().cs_mpiRank())


def size() -> int:
    """How many processes there are."""
    return int(_library().cs_mpiSize())


def solve(m: Model, vars: Optional[Variables] = None, **how: Any) -> Result:
    """All solutions, in the order of one process; `best` is the last one."""
    return _whole(m, vars, (0, 0), how)


def minimize(m: Model, cost: Any, vars: Optional[Variables] = None, **how: Any) -> Result:
    """The solution with the least sum."""
    return _whole(m, vars, (m._objective(cost), 0), how)


def maximize(m: Model, gain: Any, vars: Optional[Variables] = None, **how: Any) -> Result:
    """The solution with the greatest sum."""
    return _whole(m, vars, (0, m._objective(gain)), how)


class _Shared(Solutions):
    """A search whose solutions are told of by the library."""

    def _options(self) -> Any:
        options = super()._options()
        if self._how.progress is None:
            options.progress = Progress()  # type: ignore  # null
        return options

    def whole(self) -> None:
        if self.search is None:
            return
        state = self._state.use()
        state.rethrow()
        told = self._how.found

        def tell(search: Any, extra: Any) -> bool:
            def keep() -> bool:
                self._keep()
                if told is not None:
                    told(self.solution)
                return True

            return bool(state.guard(False, keep))

        outer, state.active = state.active, self
        try:
            now = _library().cs_mpiSolve(self.search, Found(tell), None)
        finally:
            state.active = outer
        if now == 10:
            raise RuntimeError("koru: a search that has begun, or is not the newest one")
        state.rethrow()
        if now in (Status.OPTIMAL, Status.EXHAUSTED) and self.statistics.solutions > 0:
            self._keep()


def _whole(m: Model, vars: Optional[Variables], objective: Any, how: Any) -> Result:
    search = _Shared(m._state, Search(None if vars is None else flat(vars), objective=objective, **how))
    with search:
        search.whole()
        return Result(search.status, search.solution, search.statistics, search.interrupted)
