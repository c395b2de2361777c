"""Break the module on purpose, one way after the other, and see which test notices.

Usage: ./dev mutants [NUMBER ...]. Works in a copy of the tree, in build/mutants. Fails when a mutant
is not noticed. The result of the last full run stands in docs/reliability.md.
"""

import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

TOP = Path(__file__).resolve().parent.parent
COPY = TOP / "build" / "mutants"

# What is broken, the file, the text there, and what it is replaced by; then the build that is tested.
MUTANTS = [
    ("a wrong last digit of a rate", "tables/published/per2020.hpp", "856.585", "856.586"),
    ("a wrong digit of an improvement factor", "tables/published/cmf2020.hpp", "0.039574", "0.039575"),
    ("a wrong digit in a base vector", "tables/synthetic/base_vectors.hpp", "0.014175", "0.014176"),
    ("a wrong rate of a level", "tables/synthetic/vocabulary.hpp", "{2024, 0.013}", "{2024, 0.014}"),
    ("a wrong loading", "tables/published/per2020.hpp", "9.54", "9.55"),
    ("a truncated product", "tables/published/cmf2020.hpp", "fifteenths + years / 2", "fifteenths"),
    ("an integer end that became a float", "tables/published/gam_swiss.hpp", "{.last_decrement = 1}", "{.last_decrement = 1.0}"),
    ("the slice one age short", "tables/payload/recipe_to_object.cpp", "recipe.length - 1)", "recipe.length - 2)"),
    ("the wrong end of a list", "tables/payload/description_to_recipe.hpp", "proportional ? 0.0 : 1.0", "proportional ? 1.0 : 0.0"),
    ("a missing reference count", "tables/payload/recipe_to_object.cpp", "return Py_NewRef(context_.literals[constant]);", "return context_.literals[constant];", "debug"),
    ("a reference count too many", "tables/interpreter/reference.hpp", "~Reference() { Py_XDECREF(object_); }", "~Reference() {}", "debug"),
    ("a leak where a call fails", "tables/dav2004r/functions.cpp", "  if (next_item(iterator)) {", "  if (next_item(iterator).release() != nullptr) {", "debug"),
    ("a swapped key order", "tables/payload/key_orders.hpp", "Key::mi_scale_factor, Key::omega, Key::start_age, Key::description};", "Key::mi_scale_factor, Key::start_age, Key::omega, Key::description};"),
    ("swapped columns", "tables/published/gam_swiss.hpp", 'flat("qx_m", literal(GAM71_qx_m)), flat("qx_f", literal(GAM71_qx_f))', 'flat("qx_f", literal(GAM71_qx_f)), flat("qx_m", literal(GAM71_qx_m))'),
    ("statements of the body swapped", "tables/body.hpp", "    table(published::GAM71),\n    table(published::GAM83),", "    table(published::GAM83),\n    table(published::GAM71),"),
    ("names of the inventory swapped", "tables/inventory.hpp", '    "GKMF95",\n    "IASS90",', '    "IASS90",\n    "GKMF95",'),
    ("a shared list copied", "tables/payload/recipe_to_object.cpp", "    return context_.names.find(context_.literals[recipe.base]);", "    return Reference::steal(PySequence_List(context_.names.find(context_.literals[recipe.base]).get()));"),
    ("a copied list shared", "tables/dav2004r/functions.cpp", "Reference::steal(PyList_GetSlice(list, 0, PY_SSIZE_T_MAX))", "Reference::borrow(list)"),
    ("four equal durations in one list", "tables/dav2004r/functions.cpp", "    set_item(mapping, context.literals[ingredients.durations[index]],", "    if (index == 3) set_item(mapping, context.literals[ingredients.durations[3]], PyDict_GetItem(mapping.get(), context.literals[ingredients.durations[2]])); else set_item(mapping, context.literals[ingredients.durations[index]],"),
    ("the factors of the other sex", "tables/dav2004r/resolve_ingredients.hpp", "resolve_factors(select_factors_f,", "resolve_factors(select_factors_m,"),
    ("multiplication and addition fused", "tables/dav2004r/functions.cpp", "PyFloat_FromDouble(PyFloat_AS_DOUBLE(start) + part)", "PyFloat_FromDouble((static_cast<void>(part), __builtin_fma(weight.value, difference, PyFloat_AS_DOUBLE(start))))"),
    ("a quotient for the weight", "tables/dav2004r/functions.cpp", "static_cast<double>(year - first_year) * 0.05", "static_cast<double>(year - first_year) / 20"),
    ("a computed last year", "tables/dav2004r/functions.cpp", "copy_of(trends.target));", "blended(context.builtins, trends, last_year));"),
    ("a certain rate discounted", "tables/payload/recipe_to_object.cpp", "less(rate, certain) ?", "!less(certain, rate) ?"),
    ("rounding to six places", "tables/payload/rounding.hpp", "rounding_places = 7", "rounding_places = 6"),
    ("rounding sure of every half", "tables/payload/rounding.hpp", "doubt = 1e-6", "doubt = 0.0"),
    ("a replaced round not called", "tables/payload/recipe_to_object.cpp", "context_.builtins.own_round && ", ""),
    ("a replaced zip not called", "tables/dav2004r/functions.cpp", "!builtins.own_zip", "false"),
    ("a list walked to its old length", "tables/interpreter/lists.hpp", "Py_ssize_t index = 0; index < PyList_GET_SIZE(iterable)", "Py_ssize_t index = 0, size = PyList_GET_SIZE(iterable); index < size", "sanitize"),
    ("a list that the collector never hears of", "tables/interpreter/lists.hpp", "    PyObject_GC_Track(list_.get());\n", ""),
    ("an item of a list used without being held", "tables/interpreter/lists.hpp", "hold_unless(PyFloat_CheckExact(item), item)", "hold_unless(true, item)", "sanitize"),
    ("items of two lists used without being held", "tables/dav2004r/functions.cpp", "const bool floats = both_exact_floats(start, target);", "const bool floats = true;", "sanitize"),
    ("a failed import not given up", "tables/module.cpp", "  state().live.reset();\n", ""),
    ("no traceback entry", "tables/module.cpp", "  if (progress.line != 0) {", "  if (progress.line < 0) {"),
    ("no guard against a second interpreter", "tables/module.cpp", "state().interpreter != current", "false"),
    ("no guard against a second module", "tables/module.cpp", "state().live->module.get() == module", "true"),
    ("errors of the spec swallowed", "tables/module.cpp", "  check(PyObject_GetOptionalAttrString(spec, attribute, &found));", "  if (PyObject_GetOptionalAttrString(spec, attribute, &found) < 0) PyErr_Clear();"),
    ("the short name taken by force", "tables/module.cpp", "if (registered == 0)", "if (registered >= 0)"),
    ("the version not compared", "tables/module.cpp", "minor == PY_MINOR_VERSION", "minor >= 0"),
    ("a list subclass accepted", "tables/dav2004r/arguments.cpp", "PyList_CheckExact(value)", "PyList_Check(value)"),
]  # fmt: skip


def fresh_copy():
    files = subprocess.run(
        ["git", "ls-files", "--cached", "--others", "--exclude-standard"],
        cwd=TOP, capture_output=True, text=True, check=True,
    ).stdout.split()  # fmt: skip
    for file in files:
        target, content = COPY / file, (TOP / file).read_bytes()
        target.parent.mkdir(parents=True, exist_ok=True)
        # Only what differs is written, so that the build sees what has changed, and only that.
        if not target.exists() or target.read_bytes() != content:
            target.write_bytes(content)
            shutil.copymode(TOP / file, target)


def noticed_by(build):
    """The first test that fails on the copy, or the compiler's sentence; None when nothing does."""
    quick_first = sorted(f"tests/{path.name}" for path in (COPY / "tests").glob("test_*.py"))
    quick_first.append("tests/reliability")
    tests = subprocess.run(
        ["./dev", "test", "-x", "-q", *quick_first], cwd=COPY, capture_output=True, text=True, check=False,
        env=os.environ | {"DATA_TABLES_BUILD": build},
    )  # fmt: skip
    output = tests.stdout + tests.stderr
    if tests.returncode == 0:
        return None
    if failed := re.search(r"^(?:FAILED|ERROR) (?:tests/)?(.+?)(?: - |$)", output, re.M):
        return failed[1]
    if error := re.search(r"error: (.*)", output):
        return f"the compiler: {error[1][:80]}"
    crash = re.search(r"(SEGV|Fatal Python error: [^\n]*|AddressSanitizer: \S+)", output)
    return f"the end of the process: {crash[1]}" if crash else output[-300:]


def main(chosen):
    unnoticed = 0
    for number, (what, file, old, new, *build) in enumerate(MUTANTS, 1):
        if chosen and number not in chosen:
            continue
        fresh_copy()
        path = COPY / file
        source = path.read_text()
        mutated, count = source.replace(old, new, 1), source.count(old)
        if not count:
            sys.exit(f"mutant {number}: {file} has no {old!r}")
        path.write_text(mutated)
        caught = noticed_by(build[0] if build else "release")
        unnoticed += caught is None
        print(f"| {number} | {what} | {caught or '**nobody**'} |", flush=True)
    sys.exit(bool(unnoticed))


if __name__ == "__main__":
    main(set(map(int, sys.argv[1:])))
