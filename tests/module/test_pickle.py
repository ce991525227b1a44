"""Objects cross process boundaries (a batch on many machines) by pickling: a round trip gives an
object of the same class, with the same state, that computes the same results."""
import pickle

import pytest

from ostrel.core import Color
from ostrel.geometry import (Arc, Cone, GeoPoint, GeoPolygon, GeoPolyline, Group, Line, LineRevolve, Material,
                             Point, Polygon, Polyline, RectangularExtrusion, Sphere, Triangle, TriangleAssembly,
                             Vector)

P = Point
SQUARE = [P(0, 0), P(0, 1), P(1, 1), P(1, 0)]
OBJECTS = {
    "Point": (lambda: P(1, 2, 3), lambda p: p.vector_to(P(0, 0))),
    "Vector": (lambda: Vector(1, -2, 0.5), lambda v: v.normalize()),
    "Line": (lambda: Line(P(0, 0), P(2, 1)), lambda line: line.get_line_function_parameters()),
    "Arc": (lambda: Arc(P(0, 0), P(2, 0), P(0, 2)), lambda arc: arc.discretize(4)),
    "Polyline": (lambda: Polyline([P(0, 0), P(1, 2), P(3, 1)]), lambda p: p.intersections_with_x_location(2)),
    "Polygon": (lambda: Polygon(SQUARE, material=Material("steel", 7850, color=Color(1, 2, 3))),
                lambda p: (p.cross_sectional_area, p.centroid, p.moment_of_inertia)),
    "Triangle": (lambda: Triangle(P(0, 0), P(2, 0), P(0, 1)), lambda t: t.moment_of_inertia),
    "TriangleAssembly": (lambda: TriangleAssembly([Triangle(P(0, 0), P(2, 0), P(0, 1))]).translate((1, 0, 0)),
                         lambda a: a._get_vertices_and_faces()),
    "Group": (lambda: Group([TriangleAssembly([Triangle(P(0, 0), P(2, 0), P(0, 1))])]), lambda g: len(g._children)),
    "RectangularExtrusion": (lambda: RectangularExtrusion(0.2, 0.4, Line(P(0, 0, 0), P(3, 0, 0))),
                             lambda e: e.cross_sectional_area),
    "LineRevolve": (lambda: LineRevolve(Line(P(1, 1), P(3, 2))), lambda r: (r.surface_area, r.inner_volume)),
    "Cone": (lambda: Cone(1.0, 2.0), lambda c: sorted(g.vertices.tolist() for g in c._to_trimesh().geometry.values())),
    "Sphere": (lambda: Sphere(P(1, 2, 3), 1.0, 8.0, 6.0), lambda s: (s.volume(), s.surface_area())),
    "GeoPoint": (lambda: GeoPoint.from_rd((136000, 456000)), lambda g: g.rd),
    "GeoPolyline": (lambda: GeoPolyline(GeoPoint(52, 5), GeoPoint(52.1, 5.1)), lambda g: len(g.points)),
    "GeoPolygon": (lambda: GeoPolygon(GeoPoint(52, 5), GeoPoint(52.1, 5.2), GeoPoint(52, 5.1)),
                   lambda g: len(g.points)),
}


@pytest.mark.parametrize("name", OBJECTS)
def test_a_pickled_object_comes_back_whole(name):
    make, use = OBJECTS[name]
    original = make()
    copy = pickle.loads(pickle.dumps(original))
    assert type(copy) is type(original) and copy is not original
    assert pickle.dumps(copy) == pickle.dumps(original)  # the same state, field by field
    assert repr(use(copy)) == repr(use(original))
