"""Times Polygon on star-shaped profiles: construction (its three checks) plus
cross_sectional_area, centroid and moment_of_inertia, each of which clips the ears anew.

Beside it, in one run: the documented steps transcribed into Python (polygon_steps.py,
on the module's own Point, Line and Triangle, whose members run natively, so the figure
flatters plain Python), where they finish within a minute; mapbox_earcut's triangulation
alone; shapely's area and centroid. Run by hand: python bench/bench_polygon.py"""
import math
import time

import numpy as np

from ostrel.geometry import Point, Polygon

import polygon_steps as steps

try:
    import mapbox_earcut
except ImportError:
    mapbox_earcut = None
try:
    import shapely
except ImportError:
    shapely = None


def star(n):
    """n corners, alternately on circles of radius 1 and 0.8."""
    return [(r * math.cos(2 * math.pi * i / n), r * math.sin(2 * math.pi * i / n))
            for i, r in ((i, 1.0 if i % 2 else 0.8) for i in range(n))]


def ours(points):
    polygon = Polygon(points)
    return polygon.cross_sectional_area, polygon.centroid, polygon.moment_of_inertia


def documented(points):
    steps.check_duplicate_points(points)
    assert steps.is_simple(points)
    area = sum(t.area() for t in steps.triangulate(points))
    total = cx = cy = 0.0
    for t in steps.triangulate(points):
        a = t.area()
        cx, cy, total = cx + t.centroid[0] * a, cy + t.centroid[1] * a, total + a
    cx, cy = cx / total, cy / total
    ix = iy = 0.0
    for t in steps.triangulate(points):
        a = t.area()
        ix += (t.centroid[1] - cy) ** 2 * a + t.moment_of_inertia[0]
        iy += (t.centroid[0] - cx) ** 2 * a + t.moment_of_inertia[1]
    return area, (cx, cy), (ix, iy)


def best(call, budget=1.0):
    times, start = [], time.perf_counter()
    while not times or (time.perf_counter() - start < budget and len(times) < 50):
        t = time.perf_counter()
        call()
        times.append(time.perf_counter() - t)
    return min(times)


def main():
    print(f"{'corners':>8} {'ours ms':>9} {'documented ms':>14} {'ratio':>8} {'earcut ms':>10} "
          f"{'ours/earcut (clip)':>19} {'shapely ms':>11}")
    previous = None
    for n in (10, 100, 1000, 10000):
        xy = star(n)
        points = [Point(x, y) for x, y in xy]
        mine = best(lambda: ours(points))
        plain = best(lambda: documented(points)) if n <= 100 else None
        if plain is not None:
            assert ours(points)[0] == documented(points)[0]
        polygon = Polygon(points)
        clip = best(polygon._triangulate_by_earclipping)
        earcut = best(lambda: mapbox_earcut.triangulate_float64(np.array(xy), np.array([n], np.uint32))) \
            if mapbox_earcut else None
        shape = best(lambda: (lambda s: (s.area, s.centroid))(shapely.Polygon(xy))) if shapely else None
        print(f"{n:>8} {mine * 1e3:>9.2f} "
              f"{plain * 1e3 if plain else float('nan'):>14.1f} {plain / mine if plain else float('nan'):>8.0f} "
              f"{earcut * 1e3 if earcut else float('nan'):>10.3f} {clip / earcut if earcut else float('nan'):>19.1f} "
              f"{shape * 1e3 if shape else float('nan'):>11.3f}")
        if previous:
            print(f"{'':>8} growth x{mine / previous:.1f} for 10x the corners")
        previous = mine


if __name__ == "__main__":
    main()
