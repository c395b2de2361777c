"""The harness of trials in processes of their own: no memory, leaks, hostile neighbours.

A test writes its trial as a snippet, which sees the names of this file. What may end in a
successful import is tried in a fork: a process imports the module once.
"""

import _testcapi
import array
import ctypes
import gc
import importlib.util
import itertools
import os
import signal
import sys
import textwrap
import traceback
from _imp import create_dynamic, exec_dynamic  # noqa: F401, for the snippets
from pathlib import Path

from snippets import run

NAME = "marlune.tables.data_tables"
REFUSED = (
    "ImportError: Interpreter change detected - this module can only be loaded into one"
    " interpreter per process."
)
SANITIZED = "libasan" in os.environ.get("LD_PRELOAD", "")


def trial(*snippets):
    """Run snippets, one after the other, in one fresh process; returns what they printed."""
    here = str(Path(__file__).parent)
    start = f"import builtins, sys; sys.path.append({here!r}); from harness import *"
    return run("\n".join([start, *map(textwrap.dedent, snippets)]))


def complete(module):
    return list(vars(module))[-2:] == ["REPO_TABLES", "__test__"]


def import_it():
    module = importlib.import_module(NAME)
    assert complete(module), list(vars(module))[-1]
    return module


def new_module():
    """The create step alone."""
    spec = importlib.util.find_spec(NAME)
    assert spec
    return importlib.util.module_from_spec(spec)


def failure_of(action, *arguments):
    """The exception of any kind that the call raises; None when it raises none."""
    try:
        action(*arguments)
    except BaseException as error:
        return error
    return None


def leave():
    """End without a search for leaks, for trials that import again (see leaks.supp)."""
    sys.stdout.flush()
    os._exit(0)


def forked(action):
    """The small number that the action returns in a fork of this process; None is 0."""
    child = os.fork()
    if child == 0:
        status = 99
        try:
            signal.alarm(100)  # A hang is a failure, too.
            status = action() or 0
        except BaseException:
            traceback.print_exc()
        finally:
            os._exit(status)
    status = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
    assert 0 <= status < 99, f"the fork ended with {status}"
    return status


# ---- memory runs out ----

ENOUGH = 16


def of_interpreter(first, end):
    """Let allocations of the interpreter fail from the first on, until the end; 0 is no end."""
    _testcapi.set_nomemory(first, end)
    return _testcapi.remove_mem_hooks


def of_cxx(first, end):
    """The same for C++ code of the module; needs failing_new.cpp to be preloaded."""
    fail_new = ctypes.CDLL(None).fail_new
    fail_new(first, end)
    return lambda: fail_new(-1, 0)


def fails(action, allocations, first, end):
    """Whether the action ends in MemoryError. Any other exception is the caller's."""
    heal = allocations(first, end)
    try:
        action()
    except MemoryError:
        return True
    finally:
        heal()
    return False


def sweep(action, check, allocations, lasting, first, step, block):
    """At how many points, every step-th allocation from the first on, the action fails.

    Blocks of points are tried in forks, each with the memory of a process in which nothing has
    failed: one point to a fork where something is done once in a process. `check` looks at what
    every point has left behind; at the end of a block the action has to succeed. The sweep is over
    when nothing has failed in so many blocks in a row.
    """

    def try_block():
        for index in range(block):
            point = start + index * step
            try:
                failed = fails(action, allocations, point, 0 if lasting else point + 1)
                check(failed)
            except BaseException:
                print("allocation", point, file=sys.stderr)
                raise
            if not failed:
                return index
        action()
        check(False)
        return block

    start, failed, sound = first, 0, 0
    while sound < ENOUGH:
        failures = forked(try_block)
        failed += failures
        start += min(failures + 1, block) * step
        sound = 0 if failures == block else 1 if failures else sound + 1
    return failed


# ---- leaks ----


def growth(action, rounds=5, times=5):
    """By how much references, blocks or bytes grow in every round; a leak shows in each."""
    counters = [sys.getallocatedblocks, getattr(sys, "gettotalrefcount", sys.getallocatedblocks)]
    if SANITIZED:  # It has taken the blocks over, and sees those of C++ as well.
        counters = [ctypes.CDLL(None).__sanitizer_get_current_allocated_bytes]
        counters[0].restype = ctypes.c_size_t
    assert all(count() > 0 for count in counters)
    counts = [array.array("q", bytes(8 * (rounds + 1))) for _ in counters]
    for at in range(-3, rounds + 1):  # The first rounds fill caches.
        for _ in range(times):
            action()
        gc.collect()
        sys._clear_internal_caches()  # They hold names that attributes were asked by.
        for index, count in enumerate(counters):
            counts[index][max(at, 0)] = count()
    return [min(after - before for before, after in itertools.pairwise(each)) for each in counts]
