"""The DAV 2004 R functions and what they build."""

import platform
import signal
from decimal import Decimal
from fractions import Fraction

import pytest
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

import marlune.tables.data_tables as module
from columns import blended
from compiler import compile_source
from marlune.tables.data_tables import _DAV2004R_DATA as DATA
from marlune.tables.data_tables import _build_dav2004r_data as build
from marlune.tables.data_tables import _dav_mi_linear as blend
from tools.digest import objects_of

YEARS = list(range(2004, 2025))


def bits(grid):
    return {year: [(type(v), v.hex() if type(v) is float else v) for v in rates]
            for year, rates in grid.items()}  # fmt: skip


# ---- _dav_mi_linear ----


def test_worked_values_bit_for_bit():
    start = [0.03045921, 0.03043323]
    target = [0.02275699, 0.02043855]
    grid = blend(start, target)
    assert [grid[year] for year in (2004, 2005, 2007, 2014, 2023, 2024)] == [
        [0.03045921, 0.03043323],
        [0.030074099, 0.029933495999999997],
        [0.029303877, 0.028934027999999997],
        [0.026608100000000003, 0.02543589],
        [0.023142101, 0.020938284],
        [0.02275699, 0.02043855],
    ]


rates = st.floats(allow_nan=False, width=64) | st.integers(-(10**6), 10**6)


# A loaded machine is no fault of the function.
@settings(deadline=None, suppress_health_check=[HealthCheck.too_slow])
@given(st.lists(rates, max_size=9), st.lists(rates, max_size=9))
def test_any_two_lists_give_what_plain_python_gives(start, target):
    before = list(start), list(target)
    try:
        want = blended(start, target)
    except OverflowError:
        return
    got = blend(mi_ziel=target, mi_start=start)
    assert bits(got) == bits(want)
    assert list(got) == YEARS and (start, target) == before
    assert len({id(values) for values in [start, target, *got.values()]}) == 23


def test_lengths_copies_and_shared_elements():
    start, target = [0.1, 0.2, 0], [0.3]
    grid = blend(start, target)
    assert [len(grid[year]) for year in YEARS] == [3] + [1] * 19 + [1]
    assert grid[2004] == start and grid[2004] is not start
    assert all(copied is kept for copied, kept in zip(grid[2004], start))
    assert blend([], [1.0])[2024] == [1.0] and blend([], []) == {year: [] for year in YEARS}
    zero = blend([0], [0])
    assert [type(zero[year][0]) for year in YEARS] == [int] + [float] * 19 + [int]
    # The end is copied, not computed: that would give another double here.
    begin, end = 0.052, 0.014
    assert blend([begin], [end])[2024][0] is end and begin + 1.0 * (end - begin) != end


def test_long_list_beside_a_short_one_takes_no_memory():
    import tracemalloc

    long = [0.0] * 10**5
    tracemalloc.start()
    try:
        blend(long, [1.0])
        assert tracemalloc.get_traced_memory()[1] < 1.5 * 10**5 * 8
    finally:
        tracemalloc.stop()


@pytest.mark.parametrize(
    ("option", "sentence"),
    [
        ("-ffast-math", "different with -ffast-math"),
        ("-ffinite-math-only", "different with -ffast-math"),
        ("-mfpmath=387", "for SSE2, not for x87"),
    ],
)
def test_compiler_that_would_reckon_otherwise_is_refused(option, sentence):
    if option.startswith("-m") and platform.machine() != "x86_64":
        pytest.skip("only there")
    source = '#include "payload/rate_values.hpp"'
    assert compile_source(source, "-fsyntax-only")[0]
    compiles, errors = compile_source(source, "-fsyntax-only", option)
    assert not compiles and sentence in errors, errors


def test_known_grid_is_taken_for_the_published_trends_alone():
    published = module._DAV2004R_DATA["Agg_2o"]["MI_f"]
    start, target = published[2004], published[2024]
    again = blend(start, target)
    assert again == published
    assert all(again[year] is not published[year] for year in published)
    assert all(again[2014][age] is published[2014][age] for age in range(122))
    for age in (0, 60, 121):
        other = start.copy()
        other[age] = 0.5
        assert blend(other, target)[2014][age] == 0.5 + 0.5 * (target[age] - 0.5)
        assert blend(start, other)[2014][age] == start[age] + 0.5 * (0.5 - start[age])
    assert len(blend(start[:-1], target)[2014]) == 121


def test_generic_numbers():
    grid = blend([Fraction(1, 10)], [Fraction(3, 10)])
    assert type(grid[2004][0]) is Fraction and type(grid[2005][0]) is float
    assert grid[2014][0] == Fraction(1, 10) + 0.5 * Fraction(1, 5)
    assert blend([1], [True])[2014] == [1.0] and blend([1j], [2])[2014] == [1 + 0.5j]
    with pytest.raises(TypeError, match=r"unsupported operand type.*'float' and 'decimal.Decimal'"):
        blend([Decimal("0.1")], [Decimal("0.3")])
    with pytest.raises(TypeError, match=r"unsupported operand type.*'float' and 'NoneType'"):
        blend([None], [0.1])


class Listed(list):
    pass


COUNT = "_dav_mi_linear() takes exactly 2 positional arguments ({} given)"
KIND = "Argument '{}' has incorrect type (expected list, got {})"


@pytest.mark.parametrize(
    ("arguments", "message"),
    [
        ("", COUNT.format(0)),
        ("[]", COUNT.format(1)),
        ("[], [], []", COUNT.format(3)),
        ("[], [], [], mi_ziel=[]", COUNT.format(3)),
        ("mi_ziel=[]", COUNT.format(0)),
        ("mi_start=[]", COUNT.format(1)),
        ("[], ziel=[]", "_dav_mi_linear() got an unexpected keyword argument 'ziel'"),
        ("[], [], x=1", "_dav_mi_linear() got an unexpected keyword argument 'x'"),
        ("[], mi_start=[]", "_dav_mi_linear() got multiple values for keyword argument 'mi_start'"),
        ("None, []", KIND.format("mi_start", "NoneType")),
        ("[], (1.0,)", KIND.format("mi_ziel", "tuple")),
        ("1, 2", KIND.format("mi_start", "int")),
        ("Listed(), []", KIND.format("mi_start", "Listed")),
        ("[], mi_ziel=Listed()", KIND.format("mi_ziel", "Listed")),
        # A name longer than the message allows is cut.
        ("type('L' * 300, (), {})(), []", KIND.format("mi_start", "L" * 200)),
    ],
)
def test_wrong_arguments_are_refused(arguments, message):
    with pytest.raises(TypeError) as caught:
        eval(f"blend({arguments})")
    assert str(caught.value) == message
    notes = getattr(caught.value, "__notes__", [])
    assert len(notes) == ("Listed" in message)
    assert all("ubclasses of built-in types are deliberately rejected" in note for note in notes)


# ---- _build_dav2004r_data ----


def test_second_order_improvement_is_the_blend_of_its_trends():
    for key in ("MI_m", "MI_f"):
        grid = DATA["Agg_2o"][key]
        assert bits(grid) == bits(blended(grid[2004], grid[2024]))
        ends = [grid[year][121] for year in YEARS]
        assert [type(end) for end in ends] == [int] + [float] * 19 + [int] and not any(ends)


FACTORS = {"qx_m": (0.670538, 0.876209), "qx_f": (0.712823, 0.79823)}


def test_select_durations_are_the_ultimate_rates_times_the_factors():
    for order in ("SelUlt_1o", "SelUlt_2o"):
        for key, (first, later) in FACTORS.items():
            mapping = DATA[order][key]
            assert list(mapping) == [1, 2, 3, 4, 5, "ult"]
            for duration in range(1, 6):
                factor = first if duration == 1 else later
                assert mapping[duration] == [rate * factor for rate in mapping["ult"]]
                assert mapping[duration][121] == factor and type(mapping[duration][121]) is float
    assert DATA["SelUlt_1o"]["qx_m"][1][0] == 0.001707189748
    assert DATA["SelUlt_1o"]["qx_m"][2][0] == 0.002230828114
    assert DATA["SelUlt_2o"]["qx_f"][1][0] == 0.002176248619


def lists_in(data):
    return {id(each) for each in objects_of(data) if isinstance(each, list)}


def test_every_call_builds_anew():
    again = build()
    assert again == DATA and again is not DATA
    assert not lists_in(again) & lists_in(DATA)
    assert again["SelUlt_2o"]["MI_f"] is again["Agg_2o"]["MI_f"]
    with pytest.raises(TypeError, match=r"_build_dav2004r_data\(\) takes no arguments"):
        build(1)
    with pytest.raises(TypeError, match="takes no keyword arguments"):
        build(x=1)


def test_blending_is_looked_up_at_the_call(monkeypatch):
    calls = []

    def replaced(start, target):
        calls.append((start[0], target[23], len(start), len(target)))
        return len(calls)

    monkeypatch.setattr(module, "_dav_mi_linear", replaced)
    data = build()
    assert [data[order][key] for order in ("Agg_2o", "SelUlt_2o") for key in ("MI_m", "MI_f")] == [
        1, 2, 1, 2
    ]  # fmt: skip
    assert calls == [(0.03045921, 0.02043855, 122, 122), (0.03045921, 0.02271861, 122, 122)]
    monkeypatch.delattr(module, "_dav_mi_linear")
    with pytest.raises(NameError, match=r"^name '_dav_mi_linear' is not defined$"):
        build()
    import builtins

    monkeypatch.setattr(builtins, "_dav_mi_linear", replaced, raising=False)
    assert build()["Agg_2o"]["MI_m"] == 3


def test_builtins_of_the_import_are_kept(monkeypatch):
    import builtins

    monkeypatch.delattr(builtins, "zip")
    assert len(blend([0.1], [0.2])) == 21


def test_key_interrupt_is_answered_between_two_years():
    """The traceback names the function: it had not come to its end."""

    def interrupt(*_):
        raise KeyboardInterrupt

    before = signal.signal(signal.SIGALRM, interrupt)
    try:
        signal.setitimer(signal.ITIMER_REAL, 0.01)
        with pytest.raises(KeyboardInterrupt) as interrupted:
            module._dav_mi_linear([0.1] * 300_000, [0.2] * 300_000)
    finally:
        signal.setitimer(signal.ITIMER_REAL, 0)
        signal.signal(signal.SIGALRM, before)
    assert "data_tables._dav_mi_linear" in [entry.name for entry in interrupted.traceback]
