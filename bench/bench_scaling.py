"""How the time of each operation grows with the input: 1,000, 10,000 and 100,000 points,
on friendly and on degenerate inputs, with a peer beside ours where one does the same job
(shapely, mapbox_earcut, pyproj, trimesh). One table in Markdown; "growth" is the time at
the largest size over the time at the size ten times smaller (n log n gives about 12).

    python bench/bench_scaling.py [--sizes 1000 10000 100000] [--budget 20] [--only Polygon Envelope]

A case that takes longer than the budget at one size is not run at the larger ones. Slow
cases run once, fast ones (below 0.2 s) the best of a few runs.
"""
import argparse
import io
import math
import platform
import random
import time

import mapbox_earcut
import numpy as np
import pyproj
import shapely

from ostrel import geometry
from ostrel._vendor import trimesh
from ostrel.geometry import Point, Polygon, Polyline, RDWGSConverter

from bench_obj import scan_like_mesh
from bench_polyline import profiles


# ---- inputs ----

def ring(n, radius):
    radii = [radius(i) for i in range(n)]
    return [(r * math.cos(2 * math.pi * i / n), r * math.sin(2 * math.pi * i / n)) for i, r in enumerate(radii)]


def star(n):
    rng = random.Random(n)
    return ring(n, lambda i: rng.uniform(10, 15))


def circle(n):
    return ring(n, lambda i: 10.0)


def regular_star(n):
    return ring(n, lambda i: 10.0 if i % 2 else 5.0)


def straight_side(n):
    """A rectangle whose bottom side holds all but three corners."""
    return [(float(i), 0.0) for i in range(n - 2)] + [(n - 3.0, 10.0), (0.0, 10.0)]


def comb(n):
    """A base along x with n // 4 teeth standing up from it."""
    teeth = n // 4
    corners = [(0.0, -1.0), (2.0 * teeth, -1.0)]
    for k in reversed(range(teeth)):
        x = 2.0 * k
        corners += [(x + 1.5, 0.0), (x + 1.5, 10.0), (x + 0.5, 10.0), (x + 0.5, 0.0)]
    return corners


def random_profile(n, rng):
    return [(x, rng.uniform(0, 10)) for x in sorted(rng.uniform(0, 1000) for _ in range(n))]


def points(xy):
    return [Point(x, y) for x, y in xy]


# ---- cases: each makes its input once, then gives (ours, peer or None) as calls ----

def measures(polygon):
    return polygon.cross_sectional_area, polygon.centroid, polygon.moment_of_inertia


def alternating(calls):
    """One call after the other in turn: a polygon keeps its last clipping, and a measurement
    should clip as a first call does, so runs alternate between two copies of the input,
    the second moved by half a unit."""
    turn = iter(int(i % 2) for i in range(10**9))
    return lambda: calls[next(turn)]()


def moved(xy):
    return [(x + 0.5, y) for x, y in xy]


def polygon_case(shape):
    def make(n):
        xy = shape(n)
        copies = [points(xy), points(moved(xy))]
        return (alternating([lambda ours=ours: measures(Polygon(ours)) for ours in copies]),
                lambda: (lambda s: (s.area, s.centroid))(shapely.Polygon(xy)))
    return make


def clipping_case(shape):
    def make(n):
        xy = shape(n)
        polygons = [Polygon(points(xy)), Polygon(points(moved(xy)))]
        rings = np.array([len(xy)], dtype=np.uint32)
        return (alternating([polygon._triangulate_by_earclipping for polygon in polygons]),
                lambda: mapbox_earcut.triangulate_float64(np.array(xy), rings))
    return make


def regular_star_case(n):
    corners = points(regular_star(n))

    def ours():
        try:
            return Polygon(corners)
        except ValueError as error:  # two meeting points of steep neighbours that differ
            return error
    return ours, None


def crossing_star_case(n):
    """A star with one corner pushed through the far side: its edges cross the star's."""
    xy = star(n)
    xy[n // 2] = (-2 * xy[n // 2][0], -2 * xy[n // 2][1])
    corners = points(xy)

    def ours():
        try:
            return Polygon(corners)
        except ValueError as error:  # "Constructed polygon has self-intersecting lines, ..."
            return error
    return ours, None


def intersections_case(n):
    rng = random.Random(7)
    first, second = random_profile(n, rng), random_profile(n, rng)
    mine, theirs = Polyline(points(first)), Polyline(points(second))

    def ours():
        try:
            return mine.intersections_with_polyline(theirs)
        except ValueError as error:  # two segments whose crossings from either side differ
            return error
    return (ours,
            lambda: shapely.LineString(first).intersection(shapely.LineString(second)))


def vertical_case(n):
    line = Polyline([Point(0, i) for i in range(n)])
    column = shapely.LineString([(0, i) for i in range(n)])
    return lambda: line.intersections_with_polyline(line), lambda: column.intersection(column)


def vertical_overlap_case(n):
    """Two profiles along one vertical line, the second half a unit higher: one overlap."""
    first = Polyline([Point(0, i) for i in range(n)])
    second = Polyline([Point(0, i + 0.5) for i in range(n)])
    return lambda: first.combine_with(second), None


def envelope_case(n):
    first, second = (Polyline(points(p)) for p in profiles(n))
    return lambda: Polyline.get_lowest_or_highest_profile_x(first, second, True), None


OUTCOMES = []  # what the failing envelope gave at each size


def failing_envelope_case(n):
    """The first of a row of random pairs of profiles whose envelope raises."""
    def envelope(first, second):
        try:
            return Polyline.get_lowest_or_highest_profile_x(first, second, True)
        except (ValueError, IndexError) as error:
            return error

    for seed in range(100):
        rng = random.Random(seed)
        first, second = Polyline(points(random_profile(n, rng))), Polyline(points(random_profile(n, rng)))
        outcome = envelope(first, second)
        if isinstance(outcome, Exception):
            OUTCOMES.append(f"{n:,} (seed {seed}): {outcome!r}")
            return (lambda: envelope(first, second)), None
    raise SystemExit(f"no pair of random profiles of {n} points raised")


def obj_case(n):
    text, _ = scan_like_mesh(n)
    return (lambda: geometry._parse_vertices_and_faces_from_obj(io.StringIO(text)),
            lambda: trimesh.exchange.obj.load_obj(io.StringIO(text), maintain_order=True, skip_materials=True))


def rd_case(n):
    rng = random.Random(3)
    rd = [(rng.uniform(10_000, 280_000), rng.uniform(310_000, 620_000)) for _ in range(n)]
    to_wgs = pyproj.Transformer.from_crs("EPSG:28992", "EPSG:4326")
    return (lambda: [RDWGSConverter.from_rd_to_wgs(p) for p in rd],
            lambda: [to_wgs.transform(x, y) for x, y in rd])


CASES = [
    ("Polygon star: construction, area, centroid, moments", "shapely area, centroid", polygon_case(star)),
    ("Polygon circle: the same", "shapely area, centroid", polygon_case(circle)),
    ("Polygon, all but 3 corners on one side: the same", "shapely area, centroid", polygon_case(straight_side)),
    ("Polygon of a regular star: construction", None, regular_star_case),
    ("Polygon of a star with a corner pushed through the far side, which raises", None, crossing_star_case),
    ("Ear clipping of a comb", "mapbox_earcut", clipping_case(comb)),
    ("Ear clipping of a star", "mapbox_earcut", clipping_case(star)),
    ("intersections_with_polyline, random profiles", "shapely intersection", intersections_case),
    ("intersections_with_polyline, one vertical line with itself", "shapely intersection", vertical_case),
    ("combine_with of two profiles along one vertical line", None, vertical_overlap_case),
    ("Envelope of two profiles", None, envelope_case),
    ("Envelope of two random profiles, which raises", None, failing_envelope_case),
    ("OBJ reading (n faces)", "trimesh load_obj", obj_case),
    ("RD to WGS, one call per point", "pyproj, one call per point", rd_case),
]


def timed(call):
    """The best of five calls, of three where a call takes more than 0.2 s, of one past 2 s."""
    start = time.perf_counter()
    call()
    once = time.perf_counter() - start
    if once > 2:
        return once
    best = once
    for _ in range(2 if once > 0.2 else 4):
        start = time.perf_counter()
        call()
        best = min(best, time.perf_counter() - start)
    return best


def seconds(value):
    if value is None:
        return "-"
    if isinstance(value, tuple):
        return f"> {value[1]:.0f} s"
    return f"{value * 1e3:.3g} ms" if value < 1 else f"{value:.3g} s"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--sizes", type=int, nargs="+", default=[1_000, 10_000, 100_000])
    parser.add_argument("--budget", type=float, default=20.0, help="seconds after which larger sizes are skipped")
    parser.add_argument("--only", nargs="+", default=[""], help="the cases whose name holds one of these texts")
    options = parser.parse_args()
    sizes = options.sizes
    cpu = next((line.split(":", 1)[1].strip() for line in open("/proc/cpuinfo") if line.startswith("model name")),
               platform.processor())
    print(f"{cpu}, Python {platform.python_version()}\n")
    header = ["case"] + [f"{n:,}" for n in sizes] + ["growth", "peer"] + [f"peer {n:,}" for n in sizes]
    print("| " + " | ".join(header) + " |")
    print("|" + "---|" * len(header))
    for name, peer_name, make in (case for case in CASES if any(text in case[0] for text in options.only)):
        ours, theirs, over = [], [], False
        for n in sizes:
            if over:
                ours.append(("over", options.budget))
                theirs.append(None)
                continue
            mine, peer = make(n)
            ours.append(timed(mine))
            theirs.append(timed(peer) if peer else None)
            over = ours[-1] > options.budget
        growth = "-"
        if len(sizes) > 1 and not isinstance(ours[-1], tuple) and not isinstance(ours[-2], tuple):
            growth = f"{ours[-1] / ours[-2]:.1f}x"
        row = [name] + [seconds(t) for t in ours] + [growth, peer_name or "-"] + [seconds(t) for t in theirs]
        print("| " + " | ".join(row) + " |", flush=True)
    if OUTCOMES:
        print("\nThe envelope of random profiles gave " + "; ".join(OUTCOMES) + ".")


if __name__ == "__main__":
    main()
