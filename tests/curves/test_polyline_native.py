"""The native paths of Polyline against the documented steps.

Each operation runs three ways on the same inputs: natively (the module's own classes),
through the documented steps one by one (a subclass with an extra attribute sends every
member down that path), and in the plain-Python transcription of those steps. All three
must give the same points, in the same order, with the same objects where the steps pass
the caller's points through, the same result kinds and the same exceptions.
"""
import math
import random
import subprocess
import sys
import textwrap

import pytest
from hypothesis import example, given, settings, strategies as st

from ostrel import geometry
from ostrel.geometry import Point, Polyline

from polyline_steps import steps_polyline

Steps = steps_polyline(geometry)


class StepPolyline(Polyline):
    marker = True


def describe(value, inputs):
    """Points by the input object they are, or as new points by their coordinates."""
    if isinstance(value, BaseException):
        return type(value).__name__, str(value)
    if isinstance(value, Point):
        for name, point in inputs:
            if value is point:
                return name
        return "new", type(value).__name__, tuple(repr(c) for c in value)
    if isinstance(value, (Polyline, Steps)):
        return "Polyline", [describe(p, inputs) for p in value.points]
    if isinstance(value, (list, tuple)):
        return type(value).__name__, [describe(v, inputs) for v in value]
    return value


def run(cls, first, second, at, x, flag):
    p, q = cls(first), cls(second)
    inputs = [(f"first[{i}]", o) for i, o in enumerate(first)] + [(f"second[{i}]", o) for i, o in enumerate(second)]
    inputs.append(("at", at))
    calls = {
        "intersections": lambda: p.intersections_with_polyline(q),
        "at x": lambda: p.intersections_with_x_location(x),
        "on": lambda: p.point_is_on_polyline(at),
        "split": lambda: p.split(at),
        "between": lambda: p.get_polyline_between(at, second[0], flag),
        "between ends": lambda: p.get_polyline_between(first[-1], at, True),
        "overlaps": lambda: p.find_overlaps(q),
        "combine": lambda: p.combine_with(q),
        "envelope": lambda: cls.get_lowest_or_highest_profile_x(p, q, flag),
        "part": lambda: cls._find_lowest_or_highest_profile(p, q, flag),
    }
    results = {}
    for name, call in calls.items():
        try:
            result = call()
        except (ValueError, IndexError, OverflowError) as error:
            result = error
        if name == "part" and not isinstance(result, BaseException):
            result = "first" if result is p else "second"
        results[name] = describe(result, inputs)
    return results


# Coordinates on a coarse grid meet, touch and run along each other often; a few are off
# by less than the tolerance.
value = st.one_of(st.integers(-3, 3).map(float), st.sampled_from([0.5, 1.5, 1 + 1e-12, 1e-10, -2.5]))
point = st.builds(Point, value, value, st.sampled_from([0.0, 0.0, 0.0, 1.0]))
points = st.lists(point, min_size=0, max_size=8)


@settings(max_examples=400, deadline=None)
@given(points, points, point, value, st.booleans(), st.sampled_from([(1e-9, 1e-9), (1e-9, 0.0), (0.01, 0.3)]))
@example([Point(0, 0), Point(1, 1), Point(2, 0)], [Point(0, 1), Point(1, 0), Point(2, 1)], Point(0.5, 0.5), 1.0,
         True, (1e-9, 1e-9))
# Horizontal pairs whose heights differ by less than the tolerance overlap, though their y ranges do not.
@example([Point(0.0, 0.0), Point(3.0, 0.0)], [Point(1.0, 1e-10), Point(2.0, 1e-10)], Point(0.5, 0.0), 1.0,
         False, (1e-9, 1e-9))
def test_native_paths_take_the_documented_steps(first, second, at, x, flag, tolerance):
    with pytest.MonkeyPatch.context() as patch:
        patch.setattr(geometry, "ISCLOSE_RTOL", tolerance[0])
        patch.setattr(geometry, "ISCLOSE_ATOL", tolerance[1])
        native = run(Polyline, first, second, at, x, flag)
        assert run(Steps, first, second, at, x, flag) == native
        generic = run(StepPolyline, first, second, at, x, flag)
        # The envelope of a subclass is built with cls([]); everything else is the same.
        assert {k: v for k, v in generic.items() if k != "envelope"} == \
               {k: v for k, v in native.items() if k != "envelope"}


@st.composite
def crossing_profiles(draw):
    n = draw(st.integers(2, 40))
    xs = sorted(draw(st.lists(st.integers(0, 60), min_size=n, max_size=n)))
    first = [Point(x / 4, draw(st.integers(-4, 4)) / 2) for x in xs]
    m = draw(st.integers(2, 40))
    xs = sorted(draw(st.lists(st.integers(0, 60), min_size=m, max_size=m)))
    second = [Point(x / 4, draw(st.integers(-4, 4)) / 2) for x in xs]
    return first, second


def envelope(cls, first, second, lowest):
    """The envelope of two profiles of cls, or its error, described by the input points."""
    inputs = [(f"first[{i}]", o) for i, o in enumerate(first)] + [(f"second[{i}]", o) for i, o in enumerate(second)]
    try:
        return describe(cls.get_lowest_or_highest_profile_x(cls(first), cls(second), lowest), inputs)
    except (ValueError, IndexError) as error:
        return describe(error, inputs)


@settings(max_examples=150, deadline=None)
@given(crossing_profiles(), st.booleans())
def test_envelopes_of_long_profiles_take_the_documented_steps(profiles, lowest):
    assert envelope(Polyline, *profiles, lowest) == envelope(Steps, *profiles, lowest)


@pytest.mark.parametrize("n, seed", [(50, 0), (200, 60), (200, 136), (400, 79)])
def test_envelopes_of_random_profiles_fail_where_the_steps_fail(n, seed):
    # Surveyed-looking profiles: a success, and the steps' three failures (an end of a
    # section not on its profile, a location list empty where it is indexed, and two
    # segments whose crossings from either side differ), which the native path decides.
    rng = random.Random(seed)
    first, second = ([Point(x, rng.uniform(0, 10)) for x in sorted(rng.uniform(0, 1000) for _ in range(n))]
                     for _ in range(2))
    assert envelope(Polyline, first, second, True) == envelope(StepPolyline, first, second, True)


def test_crossings_that_differ_from_either_side_raise_in_the_walk_over_pairs():
    # Segments crossing near y = 0 far out: the two one-sided intersections round apart.
    first = [Point(4841190.888957689, -19.072162012404725), Point(4841210.888957689, 19.072162012404725)]
    second = [Point(4841190.888957689, -19.08185015590592), Point(4841210.888957689, 19.08185035590592)]
    for cls in (Polyline, StepPolyline):
        with pytest.raises(ValueError) as error:
            cls(first + [Point(4841230, 0)]).intersections_with_polyline(cls([Point(4841180, 5)] + second))
        assert error.value.args == ()


def test_points_the_kernel_cannot_take_go_down_the_documented_steps():
    huge = Polyline([Point(0, 0), Point(1e200, 1e200)])
    with pytest.raises(OverflowError):
        huge.split(Point(1e100, 1e100))
    odd = Polyline([Point(0, 0), Point(math.nan, 1), Point(2, 2)])
    assert odd.intersections_with_polyline(Polyline([Point(0, 2), Point(2, 0)])) == \
        Steps(odd.points).intersections_with_polyline(Steps([Point(0, 2), Point(2, 0)]))


def test_pairs_of_segments_are_visited_without_being_stored():
    # On one vertical line every pair of segments has meeting x ranges: 8 million pairs here,
    # which a list of them would hold in over 100 MB. The walk holds the input and the output.
    code = textwrap.dedent("""
        import resource
        from ostrel.geometry import Point, Polyline
        line = Polyline([Point(0, i) for i in range(4000)])
        before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
        print(line.intersections_with_polyline(line), line.find_overlaps(line)[0].points[-1].y)
        print((resource.getrusage(resource.RUSAGE_SELF).ru_maxrss - before) // 1024)
    """)
    out = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, timeout=300)
    result, growth = out.stdout.split("\n")[:2]
    assert result == "[] 3999.0" and int(growth) < 40, out.stderr[-2000:]
