"""Timing of the envelope of two ground profiles, their intersections and combine_with.

Two measured profiles of n points each, interleaved in x, that cross at about one point
in ten. Each case runs on ostrel.geometry, on the plain-Python transcription of the same
documented steps (polyline_steps.py) over plain-Python points and lines (those of
bench_lines.py, completed here), and, for the crossings, with shapely's LineString
intersection. Results are first checked to agree (the transcription is skipped where
it would take minutes), then timed; one table. Run it by hand:

    python bench/bench_polyline.py [--sizes 100 1000 10000]
"""
import argparse
import math
import os
import pathlib
import random
import sys
import time
import types

os.environ.setdefault("OPENBLAS_NUM_THREADS", "1")

HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE)]

import bench_lines as plain  # noqa: E402
import shapely  # noqa: E402
from polyline_steps import steps_polyline  # noqa: E402

from ostrel import geometry  # noqa: E402
from ostrel.core import ISCLOSE_ATOL  # noqa: E402


# ---- plain Python: what the transcription needs beyond bench_lines ---------------

class Vector(plain.Vector):
    squared_magnitude = property(lambda self: self.x ** 2 + self.y ** 2 + self.z ** 2)
    magnitude = property(lambda self: math.sqrt(self.squared_magnitude))

    def normalize(self):
        m = self.magnitude
        return Vector(self.x / m, self.y / m, self.z / m)


class Point(plain.Point):
    def vector_to(self, point):
        return Vector(point[0] - self.x, point[1] - self.y, point[2] - self.z)

    def __getitem__(self, index):
        return (self._x, self._y, self._z)[index]


def direction(self, normalize=True):
    v = self.start_point.vector_to(self.end_point)
    return v.normalize() if normalize else v


def point_is_on_bounded_line(point, line, inclusive=True):
    point = Point(*point)
    line = plain.Line(*line)
    if point == line.start_point or point == line.end_point:
        return inclusive
    v = line.start_point.vector_to(point)
    return v.normalize() == line.direction() and v.magnitude < line.direction(normalize=False).magnitude


plain.Point = Point  # the plain Line makes its points with the module's name
plain.Line.__iter__ = lambda self: iter((self._start_point, self._end_point))
plain.Line.direction = direction
names = types.SimpleNamespace(**{name: getattr(plain, name) for name in dir(plain) if not name.startswith("__")})
names.Point, names.point_is_on_bounded_line, names.ISCLOSE_ATOL = Point, point_is_on_bounded_line, ISCLOSE_ATOL
PlainPolyline = steps_polyline(names)


# ---- the profiles ------------------------------------------------------------------

def profiles(n, seed=1):
    """Ground levels on a 0.25 grid; the second between the first's points, above or
    below it by half a metre, changing side about every ten points."""
    r = random.Random(seed)
    first = [0.0]
    for _ in range(n - 1):
        first.append(first[-1] + r.choice([-0.5, -0.25, 0.0, 0.25, 0.5]))
    side, second = 1, []
    for i in range(n):
        if r.random() < 0.1:
            side = -side
        level = (first[i] + first[min(i + 1, n - 1)]) / 2
        second.append((i + 0.5, level + side * 0.5))
    return [(float(i), y) for i, y in enumerate(first)], second


def timed(function, budget=1.0):
    """The least time of a few runs, within about `budget` seconds."""
    best, spent, result = math.inf, 0.0, None
    while spent < budget:
        start = time.perf_counter()
        result = function()
        elapsed = time.perf_counter() - start
        best, spent = min(best, elapsed), spent + elapsed
    return best, result


def xy(points):
    return [(round(p.x, 9), round(p.y, 9)) for p in points]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--sizes", type=int, nargs="+", default=[100, 1000, 10000])
    parser.add_argument("--plain-limit", type=int, default=1000, help="largest n run in plain Python")
    args = parser.parse_args()

    rows = []
    for n in args.sizes:
        a, b = profiles(n)
        native = geometry.Polyline([geometry.Point(*p) for p in a]), geometry.Polyline([geometry.Point(*p) for p in b])
        steps = PlainPolyline([Point(*p) for p in a]), PlainPolyline([Point(*p) for p in b])
        lines = shapely.LineString(a), shapely.LineString(b)
        # The envelope so far, ending at a crossing, and the rest of the lower profile from there.
        envelope = geometry.Polyline.get_lowest_or_highest_profile_x(*native, True)
        middle = len(envelope.points) // 2
        head, tail = geometry.Polyline(envelope.points[:middle + 1]), geometry.Polyline(envelope.points[middle:])
        plain_head = PlainPolyline([Point(p.x, p.y) for p in head.points])
        plain_tail = PlainPolyline([Point(p.x, p.y) for p in tail.points])
        cases = [
            ("get_lowest_or_highest_profile_x", lambda: native[0].get_lowest_or_highest_profile_x(*native, True).points,
             lambda: PlainPolyline.get_lowest_or_highest_profile_x(*steps, True).points, None),
            ("intersections_with_polyline", lambda: native[0].intersections_with_polyline(native[1]),
             lambda: steps[0].intersections_with_polyline(steps[1]),
             lambda: shapely.intersection(*lines)),
            ("combine_with", lambda: head.combine_with(tail).points, lambda: plain_head.combine_with(plain_tail).points,
             None),
        ]
        crossings = len(native[0].intersections_with_polyline(native[1]))
        for name, ours, theirs, peer in cases:
            ours_time, ours_result = timed(ours)
            plain_time = peer_time = math.nan
            if n <= args.plain_limit:
                plain_time, plain_result = timed(theirs, budget=0.5)
                assert xy(ours_result) == xy(plain_result), (name, n)
            if peer:
                peer_time, peer_result = timed(peer)
                assert len(shapely.get_parts(peer_result)) == crossings, (name, n)
            rows.append((f"{name}, n={n} ({crossings} crossings)", ours_time, plain_time, peer_time))

    print(f"{'case':58} {'ostrel':>10} {'plain':>11} {'ratio':>8} {'shapely':>10}")
    for name, ours, theirs, peer in rows:
        ratio = f"{theirs / ours:7.0f}x" if not math.isnan(theirs) else f"{'-':>8}"
        plain_text = f"{theirs * 1e3:9.2f}ms" if not math.isnan(theirs) else f"{'-':>11}"
        peer_text = f"{peer * 1e3:8.3f}ms" if not math.isnan(peer) else f"{'-':>10}"
        print(f"{name:58} {ours * 1e3:8.3f}ms {plain_text} {ratio} {peer_text}")


if __name__ == "__main__":
    main()
