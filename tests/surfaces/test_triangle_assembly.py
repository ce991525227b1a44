import copy
import math
import subprocess
import sys

import numpy as np
import pytest
from hypothesis import given, settings, strategies as st

from ostrel import geometry
from ostrel.core import Color
from ostrel.geometry import Material, Point, TransformableObject, Triangle, TriangleAssembly, get_vertices_faces

from assembly_steps import PlainPoint, PlainTriangle, vertices_and_faces


def documented_scan(triangles):
    """The vertex merging step by step as documented, on plain points that compare as Point does."""
    plain = [PlainTriangle(*(PlainPoint(p.x, p.y, p.z) if isinstance(p, Point) else p for p in t.profile))
             for t in triangles]
    return vertices_and_faces(plain)


class SubPoint(Point):
    """Takes the scan on the objects, with the module's own equality."""


def triangles_of(corners, point=Point):
    return [Triangle(*(point(*c) for c in corners[i:i + 3])) for i in range(0, len(corners), 3)]


def same(a, b):
    """Equal results, NaN coordinates included."""
    return repr(a) == repr(b)


SQUARE = [(0, 0, 0), (1, 0, 0), (0, 1, 0), (0, 1, 0), (1, 0, 0), (1, 1, 0)]


@pytest.mark.parametrize("point", [Point, SubPoint])
def test_shared_edge_and_skipped_check(point):
    triangles = triangles_of(SQUARE, point)
    vertices, faces = TriangleAssembly(triangles)._get_vertices_and_faces()
    assert vertices == [[0.0, 0.0, 0.0], [1.0, 0.0, 0.0], [0.0, 1.0, 0.0], [1.0, 1.0, 0.0]]
    assert faces == [[0, 1, 2], [2, 1, 3]]
    assert all(type(c) is float for v in vertices for c in v) and all(type(i) is int for f in faces for i in f)
    vertices, faces = TriangleAssembly(triangles, skip_duplicate_vertices_check=True)._get_vertices_and_faces()
    assert vertices == [list(map(float, c)) for c in SQUARE] and faces == [[0, 1, 2], [3, 4, 5]]
    assert TriangleAssembly([])._get_vertices_and_faces() == ([], [])
    assert get_vertices_faces(triangles) == documented_scan(triangles)


@pytest.mark.parametrize("point", [Point, SubPoint])
@pytest.mark.parametrize("corners, faces", [
    # Two equal corners of one new triangle are not compared with each other.
    ([(0, 0, 0), (0, 0, 0), (1, 0, 0)], [[0, 1, 2]]),
    # A stored point equal to two corners goes to p1 only; the later equal slot wins.
    ([(0, 0, 0), (0, 0, 0), (5, 0, 0), (0, 0, 0), (0, 0, 0), (5, 0, 0)], [[0, 1, 2], [1, 3, 2]]),
    # Non-transitive chain: the middle point equals both stored ends, which differ; the last wins.
    ([(0, 0, 0), (1.2e-9, 0, 0), (9, 9, 0), (6e-10, 0, 0), (5, 0, 0), (9, 9, 0)], [[0, 1, 2], [1, 3, 2]]),
    # NaN equals nothing, not even the same coordinates; an infinity only itself.
    ([(math.nan, 0, 0), (math.inf, 0, 0), (-math.inf, 0, 0), (math.nan, 0, 0), (math.inf, 0, 1e-12), (math.inf, 1, 0)],
     [[0, 1, 2], [3, 1, 4]]),
    # The relative tolerance at huge magnitudes.
    ([(1e300, 0, 0), (-1e300, 0, 0), (0, 0, 0), (1e300 * (1 + 5e-10), 0, 0), (-1e300 * (1 - 5e-10), 0, 0),
      (1e300 * (1 + 2e-9), 0, 0)], [[0, 1, 2], [0, 1, 3]]),
])
def test_merging_rules(point, corners, faces):
    triangles = triangles_of(corners, point)
    result = TriangleAssembly(triangles)._get_vertices_and_faces()
    assert result[1] == faces and same(result, documented_scan(triangles))


def cell_size(largest):
    """The merge grid's cell size for the default tolerances and a largest coordinate magnitude
    (vertex_merge.cpp): eight times the reach of the tolerances, at least largest * 2**-40."""
    return max(8.0 * max(1e-9 * largest, 1e-9), math.ldexp(largest, -40))


def straddling_pair(near, largest):
    """Two coordinates equal by the tolerances, on either side of the grid's cell boundary nearest `near`."""
    size = cell_size(largest)
    boundary = round(near / size) * size
    low, high = boundary - 1e-7, boundary + 1e-7
    assert math.floor(low / size) != math.floor(high / size) and math.isclose(low, high, rel_tol=1e-9)
    return low, high


@pytest.mark.parametrize("point", [Point, SubPoint])
@pytest.mark.parametrize("low, high, largest", [
    ((-1e-10, 0, 0), (1e-10, 0, 0), 1.0),  # the boundary at 0, for any cell size
    # Far from the origin, across a boundary on all three axes at once: the other cell is a diagonal neighbour.
    (*zip(*[straddling_pair(768.0, 1000.0)] * 3), 1000.0),
])
def test_equal_points_in_neighbouring_cells_are_merged(point, low, high, largest):
    """A merge grid that looks up only a corner's own cell keeps these two apart."""
    triangles = triangles_of([low, (largest, 0, 0), (0, largest, 0), high, (0, 0, largest), (0, 0, -1)], point)
    expected = ([list(map(float, c)) for c in (low, (largest, 0, 0), (0, largest, 0), (0, 0, largest), (0, 0, -1))],
                [[0, 1, 2], [0, 3, 4]])
    assert TriangleAssembly(triangles)._get_vertices_and_faces() == get_vertices_faces(triangles) == expected


def test_same_nan_point_object_is_not_merged():
    p = Point(math.nan, 0)
    result = TriangleAssembly([Triangle(p, p, Point(0, 0)), Triangle(p, Point(0, 0), p)])._get_vertices_and_faces()
    assert result[1] == [[0, 1, 2], [3, 2, 4]]


@pytest.mark.parametrize("rtol, atol", [(1e-9, 1e-9), (0.0, 0.0), (0.1, 0.0), (0.0, 0.5), (0.0, math.inf),
                                        (math.nan, 1e-3), (1e-3, math.nan)])
def test_tolerances_are_read_at_call_time(monkeypatch, rtol, atol):
    corners = [(0, 0, 0), (1, 0, 0), (0, 1, 0), (0.3, 0, 0), (1.05, 0, 0), (0, 1 + 1e-12, 0), (1e5, 0, 0),
               (-0.0, 0.2, 0), (2, 2, 2)]
    triangles = triangles_of(corners)
    monkeypatch.setattr(geometry, "ISCLOSE_RTOL", rtol)
    monkeypatch.setattr(geometry, "ISCLOSE_ATOL", atol)
    assert same(TriangleAssembly(triangles)._get_vertices_and_faces(), documented_scan(triangles))


def test_invalid_tolerance_raises_only_when_points_are_compared(monkeypatch):
    monkeypatch.setattr(geometry, "ISCLOSE_ATOL", -1.0)
    one = triangles_of(SQUARE[:3])
    assert TriangleAssembly(one)._get_vertices_and_faces()[1] == [[0, 1, 2]]
    two = triangles_of(SQUARE)
    assert TriangleAssembly(two, skip_duplicate_vertices_check=True)._get_vertices_and_faces()[1] == [[0, 1, 2],
                                                                                                    [3, 4, 5]]
    with pytest.raises(ValueError, match="tolerances must be non-negative"):
        TriangleAssembly(two)._get_vertices_and_faces()
    # The second triangle's profile is unpacked before the first comparison.
    bad = two[:1] + [Triangle(Point(0, 0), Point(1, 1), Point(2, 2))]
    bad[1].profile.pop()
    with pytest.raises(ValueError, match="not enough values to unpack"):
        TriangleAssembly(bad)._get_vertices_and_faces()


def test_comparisons_on_the_objects_follow_the_scan():
    log = []

    class Logged(Point):
        def __eq__(self, other):
            log.append((self.x, other.x))
            return super().__eq__(other)

    triangles = triangles_of([(0, 0, 0), (1, 0, 0), (2, 0, 0), (3, 0, 0), (1, 0, 0), (0, 0, 0)], Logged)
    assert TriangleAssembly(triangles)._get_vertices_and_faces()[1] == [[0, 1, 2], [3, 1, 0]]
    # Stored point on the left; p1, then p2, then p3 until one is equal; no stop at a match.
    assert log == [(0, 3), (0, 1), (0, 0), (1, 3), (1, 1), (2, 3), (2, 1), (2, 0)]


class Spot:
    """A corner that is no Point: equal only to itself."""

    def __init__(self, x):
        self.x, self.y, self.z = x, 0, 0


def assembly_of(*profiles, **kwargs):
    triangles = []
    for profile in profiles:
        triangle = Triangle(Point(0, 0), Point(0, 0), Point(0, 0))
        triangle.profile = profile
        triangles.append(triangle)
    return TriangleAssembly(triangles, **kwargs)


def test_profiles_of_other_objects():
    a, b, c = Spot(1), Spot(2), Point(3, 0)
    vertices, faces = assembly_of([a, b, c], [Spot(1), b, Point(3, 0)])._get_vertices_and_faces()
    assert faces == [[0, 1, 2], [3, 1, 2]] and vertices[3] == [1.0, 0.0, 0.0]
    # A stored None ends the scan and is left out of the vertices.
    vertices, faces = assembly_of([a, None, b], [b, a, c])._get_vertices_and_faces()
    assert faces == [[0, 1, 2], [3, 0, 4]] and vertices == [[1.0, 0, 0], [2.0, 0, 0], [2.0, 0, 0], [3.0, 0, 0]]
    with pytest.raises(ValueError, match="not enough values to unpack"):
        assembly_of([a, b])._get_vertices_and_faces()
    with pytest.raises(AttributeError):
        assembly_of([a, b, (0.0, 0.0, 0.0)], skip_duplicate_vertices_check=True)._get_vertices_and_faces()


def test_replaced_point_global_takes_the_scan(monkeypatch):
    triangles = triangles_of(SQUARE)
    monkeypatch.setattr(geometry, "Point", SubPoint)
    # Point.__eq__ now tests against SubPoint: plain points are never equal.
    assert TriangleAssembly(triangles)._get_vertices_and_faces()[1] == [[0, 1, 2], [3, 4, 5]]


def test_replaced_point_eq_takes_the_scan():
    # In a process of its own: a changed class keeps its new version tag for good.
    code = (
        "from ostrel.geometry import Point, Triangle, TriangleAssembly\n"
        "Point.__eq__ = lambda self, other: self.x == other.x\n"
        "p = [Point(0, 0), Point(1, 0), Point(0, 1), Point(0, 1), Point(1, 0), Point(1, 1)]\n"
        "print(TriangleAssembly([Triangle(*p[:3]), Triangle(*p[3:])])._get_vertices_and_faces()[1])\n")
    result = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, timeout=60)
    assert result.stdout == "[[0, 1, 2], [2, 1, 3]]\n", result.stderr


COORDINATES = [0.0, 1.0, -1.0, 1e-9, 3.0, 1e6, -2.5e7]
JITTERS = [0.0, 0.4, -0.4, 0.999, -0.999, 1.0, 1.001, -1.001, 1.6, 2.5]
SPECIAL = [(math.nan, 0.0, 0.0), (math.inf, 1.0, 0.0), (-math.inf, 1.0, 0.0), (1e300, 0.0, 0.0)]

@st.composite
def corner_lists(draw):
    """Corners around a few sites, each coordinate off by a jitter in steps of the tolerance
    at the site (taken when the tolerances are in force), and a few special points."""
    sites = draw(st.lists(st.tuples(*[st.sampled_from(COORDINATES)] * 3), min_size=1, max_size=6))
    jitters = st.tuples(*[st.sampled_from(JITTERS)] * 3)
    corner = st.one_of(st.tuples(st.sampled_from(sites), jitters), st.tuples(st.sampled_from(SPECIAL), st.none()))
    cs = draw(st.lists(corner, max_size=90))
    return cs[:len(cs) - len(cs) % 3]


def jittered(corner):
    site, jitters = corner
    if jitters is None:
        return site
    return tuple(c + j * max(geometry.ISCLOSE_ATOL, geometry.ISCLOSE_RTOL * abs(c)) for c, j in zip(site, jitters))


@settings(max_examples=300, deadline=None)
@given(corner_lists(), st.sampled_from([(1e-9, 1e-9), (0.0, 1e-9), (1e-6, 0.0), (0.0, 0.0), (1e-3, 1e-3)]))
def test_merging_equals_the_documented_scan(cs, tolerances):
    with pytest.MonkeyPatch.context() as patch:
        patch.setattr(geometry, "ISCLOSE_RTOL", tolerances[0])
        patch.setattr(geometry, "ISCLOSE_ATOL", tolerances[1])
        cs = [jittered(c) for c in cs]
        expected = documented_scan(triangles_of(cs))
        for point in (Point, SubPoint):
            assert same(TriangleAssembly(triangles_of(cs, point))._get_vertices_and_faces(), expected)


class Falsy:
    def __bool__(self):
        return False


@pytest.mark.parametrize("material", [None, 0, "", Falsy()])
def test_falsy_material_gives_a_new_default(material):
    a, b = TriangleAssembly([], material=material), TriangleAssembly([], material=material)
    assert type(a.material) is Material and a.material.name == "default-material" and a.material is not b.material


def test_construction():
    triangles = triangles_of(SQUARE)
    material = Material("steel")
    a = TriangleAssembly(triangles, material=material, skip_duplicate_vertices_check=1)
    assert a._triangles is triangles and a.material is material and a._skip_duplicate_vertices_check == 1
    assert a._name == "assembly" and isinstance(a, TransformableObject)
    assert np.array_equal(a._transformation, np.identity(4))
    with pytest.raises(TypeError, match=r"^__init__\(\) takes exactly 2 positional arguments \(3 given\)$"):
        TriangleAssembly(triangles, material)
    clone = copy.deepcopy(a.translate((1, 2, 3)))
    assert clone._get_vertices_and_faces() == a._get_vertices_and_faces() and clone._transformation[0, 3] == 1


def test_to_trimesh_keeps_vertices_as_computed():
    triangles = triangles_of(SQUARE)
    material = Material("glass", threejs_opacity=0.5, color=Color(255, 0, 0))
    mesh = TriangleAssembly(triangles, material=material, skip_duplicate_vertices_check=True)
    mesh = mesh.translate((5, 0, 0))._to_trimesh()
    assert isinstance(mesh, geometry.trimesh.Trimesh)
    assert mesh.vertices.tolist() == [list(map(float, c)) for c in SQUARE]  # unmerged, unmoved
    assert mesh.faces.tolist() == [[0, 1, 2], [3, 4, 5]]
    assert mesh.visual.material.name == "glass" and mesh.visual.material.alphaMode == "BLEND"
    assert list(mesh.visual.material.baseColorFactor) == list(material._to_trimesh().material.baseColorFactor)

    class Moved(TriangleAssembly):
        def _get_vertices_and_faces(self):
            vertices, faces = super()._get_vertices_and_faces()
            return [[x + 1, y, z] for x, y, z in vertices], faces

    assert Moved(triangles)._to_trimesh().vertices[:, 0].tolist() == [1, 2, 1, 2]
