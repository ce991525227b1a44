import math

import numpy as np
import pytest
from hypothesis import given, strategies as st

from ostrel.geometry import (cartesian_to_cylindrical, cartesian_to_spherical, cylindrical_to_cartesian,
                             spherical_to_cartesian)


@pytest.mark.parametrize("function, argument, expected", [
    (spherical_to_cartesian, (1, 0, 0), [0.0, 0.0, 1.0]),
    (cartesian_to_spherical, (0, 0, 2), [2.0, 0.0, 0.0]),
    (cartesian_to_spherical, (0, 0, -2), [2.0, math.pi, 0.0]),
    (cartesian_to_spherical, (1, 0, 0), [1.0, math.pi / 2, 0.0]),
    (cartesian_to_spherical, (-1, 0.0, 0), [1.0, math.pi / 2, math.pi]),
    (cartesian_to_spherical, (-1, -0.0, 0), [1.0, math.pi / 2, -math.pi]),
    (cartesian_to_cylindrical, (3, 4, 5), [5.0, math.atan2(4, 3), 5.0]),
    (cylindrical_to_cartesian, (2, 0, 7), [2.0, 0.0, 7.0]),
])
def test_known_values(function, argument, expected):
    result = function(argument)
    assert isinstance(result, np.ndarray) and result.dtype == float and result.shape == (3,)
    assert result.tolist() == expected


def test_round_trip_is_not_cleaned_up():
    x, y, z = spherical_to_cartesian(cartesian_to_spherical((1, 0, 0)))
    assert x == 1.0 and y == 0.0 and 0 < z < 1e-16


@pytest.mark.parametrize("call, error, message", [
    *[(lambda f=f: f((1, 2)), ValueError, "^not enough values to unpack \\(expected 3, got 2\\)$")
      for f in (spherical_to_cartesian, cylindrical_to_cartesian, cartesian_to_cylindrical)],
    *[(lambda f=f: f((1, 2, 3, 4)), ValueError, "^too many values to unpack \\(expected 3\\)$")
      for f in (spherical_to_cartesian, cylindrical_to_cartesian, cartesian_to_cylindrical)],
    (lambda: cartesian_to_spherical((0, 0, 0)), ZeroDivisionError, None),  # plain numbers; arrays give NaN
    (lambda: spherical_to_cartesian((1, math.inf, 0)), ValueError, "math domain error"),
    (lambda: cartesian_to_cylindrical(("a", 1, 2)), TypeError, None),
])
def test_errors(call, error, message):
    with pytest.raises(error, match=message):
        call()


def test_origin_as_array_gives_nan():
    with np.errstate(invalid="ignore", divide="ignore"):
        r, theta, phi = cartesian_to_spherical(np.zeros(3))
    assert r == 0 and math.isnan(theta) and phi == 0


coordinate = st.floats(min_value=-1e3, max_value=1e3, allow_nan=False)


@given(coordinate, coordinate, coordinate)
def test_round_trips(x, y, z):
    r = math.hypot(x, y, z)
    if r < 1e-6:
        return
    back = spherical_to_cartesian(cartesian_to_spherical((x, y, z)))
    # theta comes from acos, which loses digits close to the z axis: allow for that there.
    near_axis = math.hypot(x, y) < 1e-3 * r
    assert np.allclose(back, (x, y, z), atol=1e-9 * r * (1e6 if near_axis else 1))
    back = cylindrical_to_cartesian(cartesian_to_cylindrical((x, y, z)))
    assert np.allclose(back, (x, y, z), atol=1e-9)
