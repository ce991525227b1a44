import math
import os

import numpy as np
import pytest
from hypothesis import example, given, settings, strategies as st

from ostrel import geometry
from ostrel.geometry import Point, Polygon, Triangle

import polygon_steps as steps
from differential import steps as documented_steps


def corners(triangles):
    return [tuple(id(p) for p in t.profile) for t in triangles]


def outcome(call):
    try:
        return call()
    except (ValueError, IndexError, ZeroDivisionError, TypeError) as error:
        return type(error), str(error)


Documented = documented_steps(Polygon)


def star(n, seed, grid=None, clockwise=False):
    """A star-shaped ring of n corners around the origin; on a coarse grid, with collinear and
    touching corners."""
    import random
    rng = random.Random(seed)
    angles = sorted(rng.uniform(0, 2 * math.pi) for _ in range(n))
    points = []
    for a in angles:
        r = rng.uniform(0.3, 1.0)
        x, y = r * math.cos(a), r * math.sin(a)
        if grid:
            x, y = round(x * grid) / grid, round(y * grid) / grid
        points.append(Point(x, y))
    return points[::-1] if clockwise else points


@settings(max_examples=300, deadline=None)
@given(st.integers(3, 40), st.integers(0, 10**6), st.sampled_from([None, 4, 8, 1e7]), st.booleans())
def test_native_checks_and_clipping_match_the_documented_steps(n, seed, grid, clockwise):
    points = star(n, seed, grid, clockwise)
    expected = outcome(lambda: (steps.check_duplicate_points(points), steps.is_simple(points)))
    built = outcome(lambda: Polygon(points))
    if not isinstance(built, Polygon):
        assert built == outcome(lambda: Documented(points))
        if expected[1] is True:
            assert built == (ValueError, "All points of the polygon are collinear.")
        elif expected[1] is False:
            assert built == (ValueError, "Constructed polygon has self-intersecting lines, which is not supported.")
        else:
            assert built == expected
        return
    assert expected == (None, True)
    reference = outcome(lambda: steps.triangulate(points))
    native = outcome(built._triangles)
    if isinstance(reference, list):
        assert corners(native) == corners(reference)
        assert built.cross_sectional_area == sum(t.area() for t in reference)
        documented = Documented(points)
        assert built.centroid == documented.centroid
        assert built.moment_of_inertia == documented.moment_of_inertia
    else:
        assert native == reference


MEASURES = [lambda p: p.cross_sectional_area, lambda p: p.centroid, lambda p: p.moment_of_inertia,
            lambda p: corners(p._triangles()), lambda p: corners(p._triangulate_by_earclipping()),
            lambda p: p._triangle_vertices_and_faces()]


@settings(max_examples=400, deadline=None)
@given(st.lists(st.tuples(st.integers(0, 2), st.integers(0, 2)), max_size=8) |
       st.lists(st.tuples(st.integers(0, 5), st.integers(0, 5)), min_size=17, max_size=30) |
       st.lists(st.tuples(st.integers(0, 5), st.integers(0, 5)).map(lambda c: (c[0] * 1e-4, c[1] * 1e-4)),
                min_size=17, max_size=30), st.booleans())
@example([(x * 1e-4, y * 1e-4) for x, y in [(0, 1), (4, 2), (4, 5), (5, 1), (4, 4), (5, 5), (4, 2), (4, 5), (5, 2),
                                           (4, 3), (3, 5), (4, 2), (3, 1), (0, 2), (3, 3), (0, 5), (2, 4), (2, 5),
                                           (4, 4), (1, 1), (1, 4)]], False)
def test_any_ring_given_after_construction_measures_as_the_documented_steps_measure_it(coordinates, shared):
    """Rings nobody checked: duplicates, repeated and collinear corners, rings that turn clockwise
    while clipped. A plain Polygon (native paths) and a subclass (the documented steps) give the same
    values and raise the same errors; with `shared` both hold the very same Point objects. Rings of
    more than 16 corners have points in more than one box of the clipping's search; on a grid of
    1e-4 the 1e-7 added to the denominator of the in-triangle test lets points far beyond a small
    triangle count as inside it."""
    ring = [P(x, y) for x, y in coordinates]
    native, documented = Polygon([P(0, 0), P(1, 0), P(0, 1)]), Documented([P(0, 0), P(1, 0), P(0, 1)])
    native.points, documented.points = ring, ring if shared else [P(p.x, p.y) for p in ring]
    with np.errstate(all="ignore"):
        for measure in MEASURES:
            got, expected = outcome(lambda: measure(native)), outcome(lambda: measure(documented))
            if shared or not isinstance(got, list):
                assert got == expected or (got != got and expected != expected)


def test_a_candidate_between_coinciding_neighbours_raises_as_the_steps_do():
    # Turned counter-clockwise, corner (2, 0) lies between (0, 0) and its copy: the steps make the
    # edge between the two copies for (0, 1) and raise, though (1, 0) lies on an earlier edge.
    polygon = Polygon([P(0, 0), P(1, 0), P(0, 1)])
    polygon.points = [P(0, 0), P(0, 1), P(1, 0), P(0, 0), P(2, 0)]
    with pytest.raises(ValueError, match="^Start and end point may not coincide$"):
        polygon.cross_sectional_area


@settings(max_examples=200, deadline=None)
@given(st.lists(st.tuples(st.integers(-3, 3), st.integers(-3, 3)), min_size=1, max_size=12))
@example([(3.0, 1), (3.0, 1), (0.0005, 1e3)])  # an edge of coinciding ends: Line refuses it
# Steep neighbours whose two meeting points differ by rounding: a ValueError without a text.
@example([(2.0, -1e6), (2.000467936631378, 0), (1.0002968762565632, -1e6), (2.0003558515802746, 1)])
def test_is_simple_matches_the_documented_steps_on_any_ring(coordinates):
    points = [Point(x, y) for x, y in coordinates]
    assert outcome(lambda: Polygon._is_simple(points)) == outcome(lambda: steps.is_simple(points))
    assert outcome(lambda: Polygon._check_duplicate_points(type("P", (), {"points": points})())) == \
        outcome(lambda: steps.check_duplicate_points(points))


def long_ring(shape, n, seed, disturbance):
    """Rings of more than 32 corners, where the simplicity check sweeps instead of pairing
    edges band by band: stars, packed spikes, hairpins and combs whose gaps close to nothing,
    each with one corner moved onto, next to or across another edge, or made the end of a
    nearly vertical edge."""
    import random
    rng = random.Random(seed)
    if shape == "star":
        angles = sorted(rng.uniform(0, 2 * math.pi) for _ in range(n))
        xy = [(r * math.cos(a), r * math.sin(a)) for a in angles for r in [rng.uniform(0.3, 1.0)]]
    elif shape == "spikes":
        xy = [(r * math.cos(2 * math.pi * i / n), r * math.sin(2 * math.pi * i / n))
              for i in range(n) for r in [5.0 if i % 2 else 10.0]]
    elif shape == "hairpins":
        gap = rng.choice([1e-3, 1e-9, 0.0])
        xy = [c for i in range(n // 2) for c in [(0.0, 3 * i * gap), (10.0, 3 * i * gap + gap)]]
        xy += [(10.0, -5.0), (0.0, -5.0)]
    else:
        gap = rng.choice([0.5, 1e-7, 1e-12, 0.0])
        xy = [(0.0, -1.0), (2.0 * (n // 4), -1.0)]
        for k in reversed(range(n // 4)):
            xy += [(2.0 * k + 2 - gap, 0.0), (2.0 * k + 2 - gap, 10.0), (2.0 * k + 0.5, 10.0), (2.0 * k + 0.5, 0.0)]
    k, j = rng.randrange(len(xy)), rng.randrange(len(xy))
    (ax, ay), (bx, by) = xy[j], xy[(j + 1) % len(xy)]
    if disturbance == "steep":
        xy[(k + 1) % len(xy)] = (xy[k][0] + rng.choice([1e-15, 1e-12, 1e-9]), xy[(k + 1) % len(xy)][1])
    elif disturbance is not None:
        xy[k] = (ax + disturbance * (bx - ax), ay + disturbance * (by - ay))
    return [P(x, y) for x, y in xy]


@settings(max_examples=150, deadline=None)
@given(st.sampled_from(["star", "spikes", "hairpins", "comb"]), st.integers(33, 120), st.integers(0, 10**6),
       st.sampled_from([None, None, None, "steep", 0.0, 0.5, 1e-12, -1e-9, 1.0 + 1e-9]))
@example("spikes", 100, 0, None)  # steep neighbours meet at two points that differ
@example("hairpins", 60, 2, None)
@example("hairpins", 100, 4, -1e-9)  # decided by the edges of the crossing that stopped a sweep
def test_is_simple_of_long_rings_matches_the_documented_steps(shape, n, seed, disturbance):
    points = long_ring(shape, n, seed, disturbance)
    assert outcome(lambda: Polygon._is_simple(points)) == outcome(lambda: steps.is_simple(points))


def teeth(start, step, across, count=60):
    """Corners of a zigzag of `count` long, thin teeth: from `start`, each `step` farther on and
    alternately `across` away. Edges as long as the shape is tall or wide make the simplicity
    check sweep instead of pairing edges band by band."""
    (x, y), (dx, dy), (ax, ay) = start, step, across
    return [(x + i * dx + ax * (i % 2), y + i * dy + ay * (i % 2)) for i in range(count)]


def near_wall(gap, turns):
    """A slot whose left wall has a bump reaching to `gap` (along x) of a steep right wall (slope
    1000): the wall passes the bump's tip on the tip's horizontal line within the tolerance, but a
    thousand times farther along its vertical line. Tall teeth on the left are steeper still, so
    the wall is not among the few steepest edges that are held against every edge; wide teeth
    below do the same once the ring is turned. Turned by quarter turns, the tip sits left or right
    of, above or below the wall."""
    xy = [(4, 0), (4, 3), (2.002, 3), (2, 1), (1, 1), (1, 1.8), (2.001 - gap, 2), (1, 2.2), (1, 3), (0, 3)]
    xy += teeth((-0.001, 0.1), (-0.001, 0), (0, 2.9)) + [(-0.1, -0.05)]
    xy += teeth((0.1, -0.1), (0, -0.001), (3.8, 0))
    for _ in range(turns):
        xy = [(-y, x) for x, y in xy]
    return xy


def under_roof(h=5e-7):
    """A spike whose edges are steep (slopes 2**29 and more, exact line functions) under a roof
    `h` above its tip, farther than the tolerance: the roof's meeting point with the steep line
    extended, computed from the steep line's function, rounds into the edge, so the two meeting
    points differ. The roof is the first edge, so the steps raise at that pair."""
    tip = 1 + 2**-29
    roof = lambda x: 10 + h - (x - tip) / 20  # noqa: E731
    return ([(20.0, roof(20.0)), (0.0, roof(0.0)), (0.0, 0.0), (1.0, 0.0), (tip, 10.0), (1 + 2**-28, 9.0)] +
            teeth((1.1, 0.5), (0.1, 0), (0, 8.0)) + [(19.9, 0.5), (20.0, 0.5)])


def hidden_crossing():
    """Two edges that cross far from any corner, kept apart in the order of both sweeps until
    an edge between them ends: a notch from the left along x, a spike from below along y."""
    return ([(0, 0), (10, 4), (10, 0), (0, 4), (0, 2.1), (3, 2), (0, 1.9), (-1, 1.9)] +
            teeth((-1.05, 1.8), (-0.015, 0), (0, -5.7)) +
            [(-1, -4), (4.9, -4), (5, 1), (5.1, -4), (6, -4), (6, 1.5), (0.3, 0.1)])


@pytest.mark.parametrize("ring, simple", [(near_wall(gap, turns), gap > 3e-9) for gap in (1e-9, 4e-9)
                                          for turns in range(4)] +
                         [(under_roof(), "raises"), (hidden_crossing(), False)])
def test_long_rings_whose_edges_nearly_touch_away_from_their_corners(ring, simple):
    """The simplicity check of a long ring finds a corner that nearly touches an edge on either
    line through it, on either side, pairs with a steep edge that rounding makes meet, and a
    crossing that shows only when an edge between the two ends."""
    points = [P(x, y) for x, y in ring]
    expected = outcome(lambda: steps.is_simple(points))
    assert outcome(lambda: Polygon._is_simple(points)) == expected
    assert expected == ((ValueError, "") if simple == "raises" else simple)


def P(x, y, z=0.0):
    return Point(x, y, z)


@pytest.mark.parametrize("cls", [Polygon, Documented])
def test_clipping_order_and_corners(cls):
    a, b, c, d = P(0, 0), P(1, 0), P(1, 1), P(0, 1)
    assert corners(cls([a, b, c, d])._triangles()) == corners([Triangle(d, a, b), Triangle(b, c, d)])
    # Given clockwise, the list is reversed first: [b, c, d, a].
    assert corners(cls([a, d, c, b])._triangles()) == corners([Triangle(a, b, c), Triangle(c, d, a)])
    # L-shape: corner 0 holds (1, 1) on its edge, so corner 1 is the first ear.
    l_shape = [P(0, 0), P(2, 0), P(2, 1), P(1, 1), P(1, 2), P(0, 2)]
    assert [[(p.x, p.y) for p in t.profile] for t in cls(l_shape)._triangles()] == [
        [(0, 0), (2, 0), (2, 1)], [(0, 0), (2, 1), (1, 1)], [(0, 2), (0, 0), (1, 1)], [(1, 1), (1, 2), (0, 2)]]
    # A straight corner is a candidate: (1, 0) is clipped as a flat triangle once nothing lies on it.
    flat = cls([P(0, 0), P(1, 0), P(2, 0), P(1, 1)])
    assert [[(p.x, p.y) for p in t.profile] for t in flat._triangles()] == [
        [(1, 1), (0, 0), (1, 0)], [(1, 0), (2, 0), (1, 1)]]
    assert flat.cross_sectional_area == 1.0


@pytest.mark.parametrize("cls", [Polygon, Documented])
def test_checks_in_order_with_their_messages(cls):
    square = [P(0, 0), P(1, 0), P(1, 1), P(0, 1)]
    with pytest.raises(ValueError, match=r"^Duplicate points are not supported \(Point\(1.000e\+00, 0.000e\+00"):
        cls(square + [P(1, 0), P(2, 2)], skip_duplicate_vertices_check=True)
    with pytest.raises(ValueError, match=r"^Duplicate points are not supported \(Point\(0.000e\+00"):
        cls(square + [P(1e-12, 0)])
    with pytest.raises(ValueError, match="^Constructed polygon has self-intersecting lines"):
        cls([P(0, 0), P(1, 1), P(1, 0), P(0, 1)])
    with pytest.raises(ValueError, match="^All points of the polygon are collinear.$"):
        cls([P(0, 0), P(1, 1)])
    with pytest.raises(ValueError, match="^All points of the polygon are collinear.$"):
        cls([P(0, 0), P(1, 1), P(3, 3)])
    with pytest.raises(IndexError):
        cls([])
    first, second = cls(square), cls(square)
    assert first.material.name == "default-material" and first.material is not second.material


@pytest.mark.parametrize("cls", [Polygon, Documented])
def test_measures_do_not_depend_on_orientation(cls):
    points = [P(0, 0), P(3, 0), P(3, 1), P(1, 1), P(1, 4), P(0, 4)]
    ccw, cw = cls(points), cls(points[::-1])
    assert not ccw.has_clockwise_circumference() and cw.has_clockwise_circumference()
    assert ccw.cross_sectional_area == pytest.approx(cw.cross_sectional_area) == 6.0
    assert ccw.centroid == pytest.approx(cw.centroid)
    assert ccw.moment_of_inertia == pytest.approx(cw.moment_of_inertia)
    assert all(type(m).__name__ == "float64" for m in ccw.moment_of_inertia)


@pytest.mark.parametrize("surface_orientation", [False, True])
def test_face_orientation_follows_the_rule_the_way_round_it_stands(surface_orientation):
    square = [P(0, 0), P(1, 0), P(1, 1), P(0, 1)]
    for points, clockwise in ((square, False), (square[::-1], True)):
        vertices, faces = Polygon(points, surface_orientation=surface_orientation)._triangle_vertices_and_faces()
        v = np.array(vertices)
        normals = [np.cross(v[f[1]] - v[f[0]], v[f[2]] - v[f[0]])[2] for f in faces]
        upward = surface_orientation is False or clockwise
        assert all((n > 0) == upward for n in normals)


def test_corner_tests():
    a, b, c = P(0, 0), P(2, 0), P(0, 2)
    assert Polygon._in_triangle(a, b, c, P(0.5, 0.5)) and not Polygon._in_triangle(a, b, c, P(1, 1))
    # Next to a corner the third coordinate rounds to exactly 1: not strictly inside.
    assert Polygon._in_triangle(P(1, 0), P(0, 1), P(0, 0), P(1e-20, 1e-20)) is False
    assert Polygon._on_triangle(a, b, c, P(1, 1)) and not Polygon._on_triangle(a, b, c, P(0.5, 0.5))
    # The 1e-7 in the denominator lifts the third coordinate above 0 on the edge p1-p2.
    assert Polygon._in_triangle(a, b, c, P(1, 0))
    assert Polygon._convex_angle_when_ccw(a, P(1, 0), b)
    polygon = Polygon([a, b, c])
    # Two points enclose no area, which counts as clockwise: asked first, that is the error.
    for two in ([b, a], [a, b]):
        with pytest.raises(ValueError, match="^Circumference should be counter clockwise$"):
            polygon._get_ear(two)
    with pytest.raises(ZeroDivisionError):
        Polygon._in_triangle(P(0, 1), P(1e-7, 0), P(0, 0), P(5, 5))



def test_a_clipping_is_made_anew_when_the_tolerances_change(monkeypatch):
    # (2 + 5e-10, 1) lies on the edge from (2, 0) to (2, 2) by the module's tolerances, and off it without them.
    ring = [P(2, 2), P(2.0000000005, 1), P(2, 0), P(1, 1)]
    native, documented = Polygon(ring), Documented(ring)

    def clipping(polygon):
        return [[(c.x, c.y) for c in t.profile] for t in polygon._triangulate_by_earclipping()]

    before = clipping(native)
    monkeypatch.setattr(geometry, "ISCLOSE_RTOL", 0.0)
    monkeypatch.setattr(geometry, "ISCLOSE_ATOL", 0.0)
    assert clipping(native) == clipping(documented) != before


def spike_to_the_closing_edge(direction, length, sine, side):
    """A ring whose first candidate ear closes with an edge of the given direction and length,
    and whose corner q comes down to that edge: at 0.6 of its length, off it by an angle of the
    given sine seen from the edge's start. The on-edge test compares unit vectors coordinate by
    coordinate, so how far off q may be and still count depends on the edge's direction."""
    ux, uy = math.cos(direction), math.sin(direction)
    start, end = (length * ux, length * uy), (0.0, 0.0)  # the edge runs from p3 back to p1
    back = (-ux, -uy)
    normal = (back[1], -back[0])  # right of the edge: the side the rest of the ring lies on
    t, offset = 0.6 * length, side * sine * 0.6 * length
    q = (start[0] + t * back[0] + offset * normal[0], start[1] + t * back[1] + offset * normal[1])
    tip = (0.5 * length * ux + 0.2 * length * uy, 0.5 * length * uy - 0.2 * length * ux)
    far = 3.0 * length
    x_of, y_of = start[0] + far * normal[0], start[1] + far * normal[1]
    y_end = (end[0] + far * normal[0], end[1] + far * normal[1])
    return [P(*tip), P(*start), P(x_of, y_of), P(*q), P(*y_end), P(*end)]


@pytest.mark.parametrize("direction", [0.0, math.pi / 6, math.pi / 4, 2.0, -math.pi / 4])
@pytest.mark.parametrize("length", [1.0, 3e4])
def test_a_corner_beside_an_ear_counts_on_its_edge_as_the_unit_vectors_compare(direction, length):
    polygon, documented = Polygon([P(0, 0), P(1, 0), P(0, 1)]), Documented([P(0, 0), P(1, 0), P(0, 1)])
    for sine in (0.5e-9, 0.9e-9, 1.1e-9, 1.35e-9, 1.45e-9, 3e-9):
        for side in (1, -1):
            ring = spike_to_the_closing_edge(direction, length, sine, side)
            polygon.points = documented.points = ring
            assert corners(polygon._triangulate_by_earclipping()) == corners(documented._triangulate_by_earclipping())


def long_star(n, seed=7):
    """A star of n corners at random radii, long enough for the work of a ring to be split over
    two cores."""
    import random
    rng = random.Random(seed)
    return [P(r * math.cos(2 * math.pi * i / n), r * math.sin(2 * math.pi * i / n))
            for i in range(n) for r in [rng.uniform(10, 15)]]


def test_measures_of_a_long_ring_are_the_documented_sums_over_its_triangles():
    """Each triangle's measures are made in two halves on two cores and summed in order: the
    documented sums over the same triangles give the same floats."""
    points = long_star(9000)
    polygon = Polygon(points)
    triangles = polygon._triangulate_by_earclipping()

    class SameTriangles(Documented):
        def _triangulate_by_earclipping(self):
            return triangles

    documented = SameTriangles.__new__(SameTriangles)
    documented.__dict__.update(vars(polygon))
    for name in ("cross_sectional_area", "centroid", "moment_of_inertia"):
        assert repr(getattr(polygon, name)) == repr(getattr(documented, name)), name


@pytest.mark.parametrize("ring, expected", [
    (under_roof()[:6] + teeth((1.1, 0.5), (0.002, 0), (0, 8.0), count=9000) + [(19.9, 0.5), (20.0, 0.5)],
     (ValueError, "")),
    (hidden_crossing()[:8] + teeth((-1.05, 1.8), (-0.0002, 0), (0, -5.7), count=9000) + hidden_crossing()[68:],
     False),
    (near_wall(1e-9, 1)[:10] + [(-y, x) for x, y in teeth((-0.001, 0.1), (-1e-5, 0), (0, 2.9), count=9000)]
     + near_wall(1e-9, 1)[70:], False),
])
def test_long_rings_decided_on_two_cores(ring, expected):
    """Rings of more than 9,000 corners, whose sweeps and pair tests run on two cores: a pair of
    steep edges whose meeting points differ raises, and a hidden crossing and a corner within the
    tolerance of an edge make the ring not simple. Each ring is its short form above, decided
    there against the documented steps, with more teeth packed in."""
    points = [P(x, y) for x, y in ring]
    assert len(points) > 9000
    assert outcome(lambda: Polygon._is_simple(points)) == expected


@pytest.mark.parametrize("n", [9000, 20000])
def test_a_long_ring_clipped_with_a_look_ahead_covers_its_area_once(n):
    """Ears found ahead on a second core are taken only for a corner between the same
    neighbours: had one been taken for a corner whose triangle has since changed, a triangle
    would hold a corner, the triangles would overlap, and their areas would sum to more than
    the ring's."""
    points = long_star(n, seed=n)
    triangles = Polygon(points)._triangulate_by_earclipping()
    assert len(triangles) == n - 2
    xy = [(p.x, p.y) for p in points]
    ring_area = math.fsum(x0 * y1 - x1 * y0 for (x0, y0), (x1, y1) in zip(xy, xy[1:] + xy[:1])) / 2
    turns = [(b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0])
             for a, b, c in ([tuple(v[:2]) for v in t.vertices] for t in triangles)]
    assert min(turns) >= 0
    assert math.fsum(turns) / 2 == pytest.approx(ring_area, rel=1e-12)


@pytest.mark.skipif(not hasattr(os, "sched_setaffinity"), reason="needs the process's CPU affinity")
def test_long_rings_give_the_same_results_on_one_core_as_on_two():
    """Pinned to one core, the module does on one thread what it otherwise splits over two (the
    sweeps, the pair tests, the point tree, the look-ahead, the moments): the same triangles,
    floats and decisions."""
    cores = os.sched_getaffinity(0)
    if len(cores) < 2:
        pytest.skip("the process runs on one core")
    points = long_star(12000, seed=3)
    pushed = points[:100] + [P(-20.0, 0.5)] + points[101:]  # a corner pushed through the far side
    square = Polygon([P(0, 0), P(1, 0), P(1, 1), P(0, 1)])

    def results():
        polygon = Polygon(points)
        square.cross_sectional_area  # the polygon's clipping is made anew below
        return (corners(polygon._triangulate_by_earclipping()), repr(polygon.cross_sectional_area),
                repr(polygon.centroid), repr(polygon.moment_of_inertia), outcome(lambda: Polygon._is_simple(pushed)))

    on_two = results()
    os.sched_setaffinity(0, {min(cores)})
    try:
        on_one = results()
    finally:
        os.sched_setaffinity(0, cores)
    assert on_one == on_two
    assert on_two[-1] is False
