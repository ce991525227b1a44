import math
import warnings

import numpy as np
import pytest
from hypothesis import example, given, strategies as st

from ostrel import geometry
from ostrel.geometry import RDWGSConverter
from rd_wgs_steps import LAT_WARNING, LON_WARNING, X_WARNING, Y_WARNING, rd_to_wgs, wgs_to_rd

class Exotic(float):
    """A float of a subclass: the arithmetic goes through the host, step by step."""


def converted(function, coords):
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        try:
            return function(coords), [str(w.message) for w in caught]
        except OverflowError as error:
            return str(error), [str(w.message) for w in caught]


def test_class_attributes_in_order():
    values = [(k, v) for k, v in vars(RDWGSConverter).items() if not k.startswith("_") and not callable(v)]
    assert values == [("X0", 155000), ("Y0", 463000), ("phi0", 52.1551744), ("lam0", 5.38720621)]
    assert type(RDWGSConverter.X0) is int and type(RDWGSConverter.phi0) is float
    assert isinstance(vars(RDWGSConverter)["from_rd_to_wgs"], staticmethod)


def test_reference_point_is_exact_both_ways():
    assert RDWGSConverter.from_rd_to_wgs((155000, 463000)) == [52.1551744, 5.38720621]
    assert RDWGSConverter.from_wgs_to_rd((52.1551744, 5.38720621)) == [155000.0, 463000.0]
    assert type(RDWGSConverter.from_wgs_to_rd([52.1551744, 5.38720621])) is list


coordinate = st.one_of(st.floats(allow_nan=False, allow_infinity=False, width=64, min_value=-1e7, max_value=1e7),
                       st.integers(-10**6, 10**6), st.integers(), st.floats())


@given(coordinate, coordinate)
@example(0.0, 2**57 + 1)
def test_series_match_the_plain_python_steps(a, b):
    for function, reference in ((RDWGSConverter.from_rd_to_wgs, rd_to_wgs),
                                (RDWGSConverter.from_wgs_to_rd, wgs_to_rd)):
        for coords in ((a, b), [a, b], (Exotic(a), Exotic(b))):
            # An int beyond 2**53 and its float differ: each form against the steps on that form.
            expected = converted(reference, coords)
            result = converted(function, coords)
            assert repr(result) == repr(expected)
            if isinstance(result[0], list):
                assert all(type(v) is float for v in result[0])


def test_numpy_scalars_take_the_host_arithmetic():
    result = RDWGSConverter.from_rd_to_wgs(np.array([120000.0, 480000.0]))
    assert result == rd_to_wgs([120000.0, 480000.0]) and type(result[0]) is np.float64


@pytest.mark.filterwarnings("ignore")
@pytest.mark.parametrize("function, coords, expected", [
    (RDWGSConverter.from_rd_to_wgs, (-7000, 289000), []),
    (RDWGSConverter.from_rd_to_wgs, (300000, 629000.0), []),
    (RDWGSConverter.from_rd_to_wgs, (-7000.001, 289000), [X_WARNING]),
    (RDWGSConverter.from_rd_to_wgs, (0, 0), [Y_WARNING]),
    (RDWGSConverter.from_rd_to_wgs, (300000.001, 635000.0), [X_WARNING, Y_WARNING]),
    (RDWGSConverter.from_rd_to_wgs, (-7000, 288999.999), [Y_WARNING]),
    (RDWGSConverter.from_wgs_to_rd, (50.5684636943583, 7.5789289935606), [LAT_WARNING, LON_WARNING]),
    (RDWGSConverter.from_wgs_to_rd, (53.6270200589019, 3.1005593333354), [LAT_WARNING, LON_WARNING]),
    (RDWGSConverter.from_rd_to_wgs, (Exotic(300001), 629001), [X_WARNING, Y_WARNING]),
    (RDWGSConverter.from_wgs_to_rd, (50.56846369435836, 7.578928993560541), []),
    (RDWGSConverter.from_wgs_to_rd, [0, 0], [LAT_WARNING, LON_WARNING]),
])
def test_bounds_warnings(function, coords, expected):
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        result = function(coords)
    assert [(w.category, str(w.message)) for w in caught] == [(UserWarning, m) for m in expected]
    assert len(result) == 2
    if expected:
        with pytest.warns(UserWarning, match=expected[0]):
            function(coords)


def test_warnings_can_become_errors():
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        with pytest.raises(UserWarning, match="^The given y-coordinate"):
            RDWGSConverter.from_rd_to_wgs((0, 0))
        warnings.filterwarnings("ignore", message="The given latitude")
        with pytest.raises(UserWarning, match="^The given longitude"):
            RDWGSConverter.from_wgs_to_rd((0, 0))


@pytest.mark.parametrize("coords, error, message", [
    ((1,), IndexError, "tuple index out of range"),
    ([], IndexError, "list index out of range"),
    (("a", 0), TypeError, "'<' not supported between instances of 'str' and 'int'"),
    (None, TypeError, "'NoneType' object is not subscriptable"),
    ((1e300, 463000), OverflowError, "Numerical result out of range"),
])
@pytest.mark.filterwarnings("ignore")
def test_bad_coordinates_fail_as_the_steps_do(coords, error, message):
    with pytest.raises(error, match=message):
        RDWGSConverter.from_rd_to_wgs(coords)


@pytest.mark.filterwarnings("ignore")
def test_a_patched_reference_point_is_read_at_each_call(monkeypatch):
    monkeypatch.setattr(RDWGSConverter, "X0", 0)
    assert RDWGSConverter.from_rd_to_wgs((1000.0, 463000.0)) == rd_to_wgs((1000.0, 463000.0), x0=0)
    monkeypatch.undo()
    monkeypatch.setattr(geometry, "RDWGSConverter", type("Other", (), {"X0": 0, "Y0": 0, "phi0": 0.0, "lam0": 0.0}))
    assert RDWGSConverter.from_rd_to_wgs((1000.0, 0.0)) == rd_to_wgs((1000.0, 0.0), 0, 0, 0.0, 0.0)


@pytest.mark.filterwarnings("ignore")
def test_round_trip_agrees_to_the_accuracy_of_the_series():
    for x in range(0, 300001, 50000):
        for y in range(300000, 620001, 40000):
            back = RDWGSConverter.from_wgs_to_rd(RDWGSConverter.from_rd_to_wgs((x, y)))
            assert math.dist(back, (x, y)) < 0.01


def test_a_warning_hook_that_changes_the_input_or_the_class(monkeypatch):
    coords = [-10000.0, 0.0]

    def hook(*args):
        coords[1] = 463000.0
        monkeypatch.setattr(RDWGSConverter, "X0", 0)

    with warnings.catch_warnings():
        warnings.simplefilter("always")
        warnings.showwarning = hook
        assert RDWGSConverter.from_rd_to_wgs(coords) == rd_to_wgs([-10000.0, 463000.0], x0=0)
        monkeypatch.undo()
        assert RDWGSConverter.from_rd_to_wgs((-10000.0, 0.0)) == rd_to_wgs((-10000.0, 0.0), x0=0)
