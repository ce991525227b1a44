"""Callers whose objects run code in the middle of a native read, structures that contain
themselves, replaced module globals and patched members: each ends in a value or a
Python exception, and the interpreter survives. Crash-prone cases run in a child."""
import subprocess
import sys
import textwrap

import pytest

from ostrel import geometry
from ostrel.geometry import Point, Polyline, Triangle


def survives(code, python=sys.executable):
    out = subprocess.run([python, "-c", textwrap.dedent(code)], capture_output=True, text=True, timeout=120)
    assert out.returncode == 0, out.stderr[-2000:]
    return out.stdout.split()


CLEARING_KEY = """
    from ostrel import geometry
    from ostrel.geometry import Point, Triangle
    target = []

    class ClearingKey(str):
        # Hashes as '_x' does, so the dict lookup of '_x' compares with it and runs __eq__.
        def __hash__(self):
            return hash("_x")
        def __eq__(self, other):
            target.clear()
            return False

    def booby_trapped():
        p = Point(1, 2)
        p.__dict__[ClearingKey("k")] = 0
        return p
"""


def test_sequences_emptied_while_their_points_are_read():
    outcome = survives(CLEARING_KEY + """
    triangle = Triangle(Point(0, 0), Point(1, 0), Point(0, 1))
    triangle.profile = target
    for points, call in (([booby_trapped(), Point(1, 0), Point(0, 1)], lambda: geometry.get_vertices_faces([triangle])),
                         ([booby_trapped(), Point(3, 0)], lambda: geometry.point_is_on_bounded_line((0.5, 0), target)),
                         ([booby_trapped(), booby_trapped()], lambda: geometry.add_point(target, Point(9, 9))[1])):
        target[:] = points
        try:
            print(call())
        except Exception as error:
            print(type(error).__name__)
    """)
    assert len(outcome) >= 3


@pytest.mark.parametrize("count", [2**40 + 2**31, 2**62])
def test_counts_beyond_int_raise_memory_error(count):
    with pytest.raises(MemoryError):
        geometry.get_vertices_faces(range(count))


def test_a_borrowed_self_outlives_the_callers_last_reference():
    # list.__repr__ passes its items borrowed; the field read empties the list and so drops
    # the point's last reference while its __repr__ still reads it.
    assert survives(CLEARING_KEY + """
    target[:] = [booby_trapped()]
    print(repr(target))
    """) == ["[Point(1.000e+00,", "2.000e+00,", "0.000e+00)]"]


def test_groups_that_contain_themselves_raise_recursion_error():
    assert survives("""
        from ostrel.geometry import Group, _GLTF
        group = Group([])
        group.add(group)
        chain = Group([])
        for _ in range(50_000):
            chain = Group([chain])
        for call in (group.duplicate, group._to_trimesh, lambda: _GLTF.to_gltf(group), chain.duplicate):
            try:
                call()
            except RecursionError:
                print("RecursionError")
    """) == ["RecursionError"] * 4


@pytest.mark.parametrize("name", ["Group", "Pattern", "LinearPattern", "BidirectionalPattern"])
def test_super_names_the_defining_class_when_the_global_is_replaced(monkeypatch, name):
    original = getattr(geometry, name)
    replacement = type(name, (original,), {})
    monkeypatch.setattr(geometry, name, replacement)
    leaf = geometry.TriangleAssembly([Triangle(Point(0, 0), Point(1, 0), Point(0, 1))])
    arguments = {"Group": ([leaf],), "Pattern": (leaf, [[1, 0, 0]]), "LinearPattern": (leaf, [1, 0, 0], 2, 1.0),
                 "BidirectionalPattern": (leaf, [1, 0, 0], [0, 1, 0], 2, 2, 1.0, 1.0)}[name]
    for cls in (original, replacement):
        assert isinstance(cls(*arguments), original)


def test_orientation_reads_a_patched_coordinate(monkeypatch):
    ring = [Point(0, 0), Point(0, 1), Point(1, 1), Point(1, 0), Point(0, 0)]
    assert geometry.circumference_is_clockwise(ring) is True
    monkeypatch.setattr(Point, "x", property(lambda self: -self._x))
    assert geometry.circumference_is_clockwise(ring) is False


def test_collector_copying_objects_during_native_reads():
    # A gc callback that copies the very objects a native read is turning into dicts.
    assert survives("""
        import copy, gc
        from ostrel import geometry
        from ostrel.geometry import Line, Point
        held = []
        gc.callbacks.append(lambda phase, info: held and copy.deepcopy(held[-1]))
        gc.set_threshold(1, 1, 1)
        for i in range(400):
            p, q = Point(i, 1), Point(i + 1, 2)
            line = Line(p, q)
            held[:] = [p, q, line]
            line.collinear((i + 2, 3))
            geometry.circumference_is_clockwise([p, q, Point(i, 5), p])
            line.find_overlap(Line(p, q))
        print("done")
    """) == ["done"]


def test_arc_fields_dropped_while_they_are_read():
    """The arc's own dict loses its fields while the native read looks them up."""
    out = survives("""
        from ostrel.geometry import Arc, ArcRevolve, Point

        class Dropping(str):
            def __hash__(self):
                return hash("_end_point")
            def __eq__(self, other):
                arc.__dict__.clear()
                return False

        for member in ("discretize", "angle", "theta1_theta2", "inner_volume", "_trimesh_linestring"):
            arc = Arc(Point(0, 0), Point(1, 0), Point(0, 1))
            revolve = ArcRevolve(arc)
            arc.__dict__[Dropping("k")] = 0
            try:
                result = arc.discretize(5) if member == "discretize" else getattr(
                    revolve if member in ("inner_volume", "_trimesh_linestring") else arc, member)
                print(member, "value")
            except AttributeError:
                print(member, "AttributeError")
    """)
    assert out == ["discretize", "AttributeError", "angle", "AttributeError", "theta1_theta2", "AttributeError",
                   "inner_volume", "AttributeError", "_trimesh_linestring", "AttributeError"]


def test_loops_over_lists_that_caller_code_empties():
    """The generic paths walk their own lists while caller code runs; a caller that reaches a list
    through the collector and empties it ends the walk as a Python for loop would."""
    out = survives("""
        import gc
        from ostrel import geometry as g
        from ostrel.geometry import Point as P

        def empty_lists_holding(item, kind):
            for holder in gc.get_referrers(item):
                if isinstance(holder, list) and all(isinstance(x, kind) for x in holder):
                    holder.clear()

        bounded = g.calculate_intersection_bounded_lines
        def clearing(line1, line2):
            empty_lists_holding(line1, g.Line)
            return bounded(line1, line2)
        g.calculate_intersection_bounded_lines = clearing
        print(g.Polygon._is_simple([P(0, 0), P(1, 0), P(1, 1), P(0, 1)]))
        g.calculate_intersection_bounded_lines = bounded

        class Emptying(g.Polyline):
            def combine_with(self, other):
                for p in other.points:
                    empty_lists_holding(p, P)
                return super().combine_with(other)
        envelope = Emptying.get_lowest_or_highest_profile_x(
            Emptying([P(0, 0), P(2, 2), P(4, 0)]), Emptying([P(0, 1), P(4, 1)]), True)
        print(type(envelope).__name__)
    """)
    assert out == ["True", "Polyline"]


def test_envelope_takes_the_intersections_as_any_sequence(monkeypatch):
    """`[start] + intersections + [end]` is whatever the caller's `+` makes of them; a tuple is
    walked as the documented zip walks it."""
    class Crossings(tuple):
        def __radd__(self, other):
            return Crossings(tuple(other) + tuple(self))

        def __add__(self, other):
            return Crossings(tuple(self) + tuple(other))

    profiles = Polyline([Point(0, 0), Point(2, 2), Point(4, 0)]), Polyline([Point(0, 1), Point(4, 1)])
    expected = [(p.x, p.y) for p in Polyline.get_lowest_or_highest_profile_x(*profiles, True).points]
    crossings = Polyline.intersections_with_polyline
    monkeypatch.setattr(Polyline, "intersections_with_polyline", lambda self, other: Crossings(crossings(self, other)))
    assert [(p.x, p.y) for p in Polyline.get_lowest_or_highest_profile_x(*profiles, True).points] == expected
    monkeypatch.setattr(Polyline, "intersections_with_polyline", lambda self, other: (Point(1, 1),))
    with pytest.raises(TypeError, match="can only concatenate list"):
        Polyline.get_lowest_or_highest_profile_x(*profiles, True)
