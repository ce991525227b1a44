import math
import warnings

import numpy as np
import pytest
from hypothesis import given, strategies as st

from ostrel import geometry
from ostrel.geometry import RDWGSConverter

X_WARNING = "The given x-coordinate lies outside of the RD coordinate system bounds."
Y_WARNING = "The given y-coordinate lies outside of the RD coordinate system bounds."
LAT_WARNING = "The given latitude lies outside of the RD coordinate system bounds."
LON_WARNING = "The given longitude lies outside of the RD coordinate system bounds."

# The series as plain Python, written from the published tables.
LATITUDE = [(0, 1, 3235.65389), (2, 0, -32.58297), (0, 2, -0.2475), (2, 1, -0.84978), (0, 3, -0.0655),
            (2, 2, -0.01709), (1, 0, -0.00738), (4, 0, 0.0053), (2, 3, -0.00039), (4, 1, 0.00033), (1, 1, -0.00012)]
LONGITUDE = [(1, 0, 5260.52916), (1, 1, 105.94684), (1, 2, 2.45656), (3, 0, -0.81885), (1, 3, 0.05594),
             (3, 1, -0.05607), (0, 1, 0.01199), (3, 2, -0.00256), (1, 4, 0.00128), (0, 2, 0.00022),
             (2, 0, -0.00022), (5, 0, 0.00026)]
RD_X = [(0, 1, 190094.945), (1, 1, -11832.228), (2, 1, -114.221), (0, 3, -32.391), (1, 0, -0.705), (3, 1, -2.34),
        (1, 3, -0.608), (0, 2, -0.008), (2, 3, 0.148)]
RD_Y = [(1, 0, 309056.544), (0, 2, 3638.893), (2, 0, 73.077), (1, 2, -157.984), (3, 0, 59.788), (0, 1, 0.433),
        (2, 2, -6.439), (1, 1, -0.032), (0, 4, 0.092), (1, 4, -0.054)]


def rd_to_wgs(coords, x0=155000, y0=463000, phi0=52.1551744, lam0=5.38720621):
    if coords[0] < -7000 or coords[0] > 300000:
        warnings.warn(X_WARNING)
    if coords[1] < 289000 or coords[1] > 629000:
        warnings.warn(Y_WARNING)
    dx, dy = 1e-5 * (coords[0] - x0), 1e-5 * (coords[1] - y0)
    phi = lam = 0.0
    for p, q, c in LATITUDE:
        phi = phi + c * dx ** p * dy ** q
    for p, q, c in LONGITUDE:
        lam = lam + c * dx ** p * dy ** q
    return [phi0 + phi / 3600.0, lam0 + lam / 3600.0]


def wgs_to_rd(coords):
    if coords[0] < 50.56846369435836 or coords[0] > 53.627020058901856:
        warnings.warn(LAT_WARNING)
    if coords[1] < 3.100559333335453 or coords[1] > 7.578928993560541:
        warnings.warn(LON_WARNING)
    dphi, dlam = 0.36 * (coords[0] - 52.1551744), 0.36 * (coords[1] - 5.38720621)
    x = y = 0.0
    for p, q, c in RD_X:
        x += c * dphi ** p * dlam ** q
    for p, q, c in RD_Y:
        y += c * dphi ** p * dlam ** q
    return [x + 155000, y + 463000]


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
def test_series_match_the_plain_python_steps(a, b):
    for function, reference in ((RDWGSConverter.from_rd_to_wgs, rd_to_wgs),
                                (RDWGSConverter.from_wgs_to_rd, wgs_to_rd)):
        expected = converted(reference, (a, b))
        for coords in ((a, b), [a, b], (Exotic(a), Exotic(b))):
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
