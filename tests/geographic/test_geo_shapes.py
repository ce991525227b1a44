import copy
import warnings

import pytest

from ostrel import geometry
from ostrel.core import ISCLOSE_ATOL
from ostrel.geometry import GeoPoint, GeoPolygon, GeoPolyline, RDWGSConverter


class MyGeoPoint(GeoPoint):
    pass


def test_point_fields_are_floats_and_writable():
    p = GeoPoint(1, True)
    assert (p.lat, p.lon) == (1.0, 1.0) and type(p.lat) is float and type(p.lon) is float
    p.lat = "anything"
    assert p.lat == "anything"
    with pytest.raises(TypeError, match="must be real number, not str"):
        GeoPoint("52", 5)
    assert GeoPoint(lon=5, lat=-1e9).lat == -1e9  # no range check


def test_point_equality_uses_the_absolute_tolerance_only(monkeypatch):
    assert GeoPoint(52.0, 5.0) == GeoPoint(52.0 + 1e-12, 5.0)
    assert GeoPoint(0.0, 0.0) == GeoPoint(ISCLOSE_ATOL, -ISCLOSE_ATOL)
    assert GeoPoint(1e7, 0.0) == GeoPoint(1e7 + 1e-3, 0.0)  # rel_tol 1e-9 of math.isclose
    assert GeoPoint(0.0, 0.0) != GeoPoint(0.0, 3 * ISCLOSE_ATOL)
    assert GeoPoint(0.0, 0.0) == MyGeoPoint(0.0, 0.0)
    assert GeoPoint(52.0, 5.0).__eq__("x") is NotImplemented and GeoPoint(52.0, 5.0) != "x"
    monkeypatch.setattr(geometry, "ISCLOSE_ATOL", 1.0)
    assert GeoPoint(0.0, 0.0) == GeoPoint(0.5, 0.5)
    monkeypatch.setattr(geometry, "ISCLOSE_ATOL", -1.0)
    with pytest.raises(ValueError, match="tolerances must be non-negative"):
        GeoPoint(0.0, 0.0) == GeoPoint(0.5, 0.5)


def test_point_text_form():
    assert repr(GeoPoint(52.1551744, 5.38720621)) == "GeoPoint(lat=5.216e+01, lon=5.387e+00)"
    assert repr(GeoPoint(-0.0, 1e-300)) == "GeoPoint(lat=-0.000e+00, lon=1.000e-300)"


def test_from_rd_and_rd():
    p = GeoPoint.from_rd((155000, 463000))
    assert (p.lat, p.lon) == (52.1551744, 5.38720621)
    assert p.rd == (155000.0, 463000.0) and type(p.rd) is tuple
    q = MyGeoPoint.from_rd([120000.0, 480000.0])
    assert type(q) is MyGeoPoint and [q.lat, q.lon] == RDWGSConverter.from_rd_to_wgs((120000.0, 480000.0))
    with pytest.warns(UserWarning, match="y-coordinate"):
        assert isinstance(GeoPoint.from_rd((0, 0)), GeoPoint)
    with pytest.warns(UserWarning, match="latitude"):
        GeoPoint(0, 5).rd


def test_points_are_unhashable_and_copyable():
    for value in (GeoPoint(1, 2), GeoPolyline(GeoPoint(1, 2), GeoPoint(3, 4)),
                  GeoPolygon(GeoPoint(1, 2), GeoPoint(3, 4), GeoPoint(5, 6))):
        with pytest.raises(TypeError, match="unhashable"):
            hash(value)
        assert copy.deepcopy(value) == value


P = [GeoPoint(52.0, 5.0), GeoPoint(52.1, 5.1), GeoPoint(52.2, 5.0), GeoPoint(52.0, 5.2)]


@pytest.mark.parametrize("cls, minimum, message", [
    (GeoPolyline, 2, "GeoPolyline should have at least two points."),
    (GeoPolygon, 3, "GeoPolygon should have at least three points."),
])
def test_sequences(cls, minimum, message):
    for count in range(minimum):
        with pytest.raises(ValueError, match=f"^{message}$"):
            cls(*P[:count])
    shape = cls(*P[:minimum])
    assert shape._points == tuple(P[:minimum]) and shape._points[0] is P[0]
    points = shape.points
    points.append(P[3])
    assert type(points) is list and shape.points == P[:minimum] and shape.points is not shape.points
    assert repr(shape) == f"{cls.__name__}(" + ", ".join(map(repr, P[:minimum])) + ")"
    assert cls(*P) == cls(*[GeoPoint(p.lat + 1e-12, p.lon) for p in P])
    assert cls(*P) != cls(*P[::-1]) and cls(*P) != cls(*P[:-1])
    assert cls(*P).__eq__(P) is NotImplemented and cls(*P) != P
    assert cls(1, 2, 3) == cls(1, 2, 3)  # items are not checked


def test_polyline_and_polygon_are_separate_classes():
    assert GeoPolyline(*P[:3]) != GeoPolygon(*P[:3]) and GeoPolygon(*P[:3]) != GeoPolyline(*P[:3])
    assert not issubclass(GeoPolygon, GeoPolyline) and not issubclass(GeoPolyline, GeoPolygon)


def test_sequence_equality_stops_at_the_first_unequal_pair():
    compared = []

    class Spy:
        def __init__(self, name, equal):
            self.name, self.equal = name, equal

        def __eq__(self, other):
            compared.append(self.name)
            return self.equal

    line = GeoPolyline(Spy("a", True), Spy("b", False), Spy("c", True))
    assert (line == GeoPolyline(1, 2, 3)) is False and compared == ["a", "b"]
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        assert GeoPolyline(1, 2) != GeoPolyline(1, 2, 3)
