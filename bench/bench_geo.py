"""Times RDWGSConverter one point per call, both ways, against the same series written in plain
Python and against pyproj (EPSG:28992 to EPSG:4326 and back, one reused Transformer), and
measures how far the series lies from pyproj over a 1 km grid covering the Netherlands.
Run by hand: python bench/bench_geo.py"""
import math
import random
import time
import warnings

import pyproj

from ostrel.geometry import RDWGSConverter

from rd_wgs_steps import rd_to_wgs, wgs_to_rd

def best_time(convert, points, repeat=5):
    best = math.inf
    for _ in range(repeat):
        start = time.perf_counter()
        for point in points:
            convert(point)
        best = min(best, time.perf_counter() - start)
    return best


def main():
    # PROJ's first choice of operation, named, so that the comparison says what it is against.
    to_wgs = pyproj.transformer.TransformerGroup("EPSG:28992", "EPSG:4326").transformers[0]
    to_rd = pyproj.transformer.TransformerGroup("EPSG:4326", "EPSG:28992").transformers[0]
    random.seed(1)
    rd_points = [(random.uniform(10000, 280000), random.uniform(300000, 620000)) for _ in range(100_000)]
    wgs_points = [tuple(RDWGSConverter.from_rd_to_wgs(p)) for p in rd_points]

    rows = [
        ("RD to WGS", [("ostrel", RDWGSConverter.from_rd_to_wgs, rd_points),
                       ("plain Python", rd_to_wgs, rd_points),
                       ("pyproj", lambda p: to_wgs.transform(p[0], p[1]), rd_points)]),
        ("WGS to RD", [("ostrel", RDWGSConverter.from_wgs_to_rd, wgs_points),
                       ("plain Python", wgs_to_rd, wgs_points),
                       ("pyproj", lambda p: to_rd.transform(p[0], p[1]), wgs_points)]),
    ]
    print("100,000 points, one call per point\n")
    print(f"{'direction':<10} {'peer':<13} {'seconds':>8} {'ns/call':>8} {'vs ostrel':>9}")
    for direction, peers in rows:
        times = [(name, best_time(convert, points)) for name, convert, points in peers]
        for name, seconds in times:
            print(f"{direction:<10} {name:<13} {seconds:>8.3f} {seconds / 1e5 * 1e9:>8.0f} "
                  f"{seconds / times[0][1]:>8.1f}x")

    # The grid: every kilometre of the RD box of the Netherlands.
    geod = pyproj.Geod(ellps="WGS84")
    worst_wgs = worst_rd = (0.0, None)
    differences = []
    for x in range(0, 300_001, 1000):
        for y in range(300_000, 625_001, 1000):
            phi, lam = RDWGSConverter.from_rd_to_wgs((x, y))
            p_phi, p_lam = to_wgs.transform(x, y)
            metres = geod.inv(lam, phi, p_lam, p_phi)[2]
            differences.append(metres)
            worst_wgs = max(worst_wgs, (metres, (x, y)))
            back = RDWGSConverter.from_wgs_to_rd((p_phi, p_lam))
            worst_rd = max(worst_rd, (math.dist(back, (x, y)), (x, y)))
    differences.sort()
    print(f"\nSeries against pyproj's '{to_wgs.description}' on {len(differences):,} points 1 km apart,")
    print("x 0 to 300 km, y 300 to 625 km:")
    print(f"  RD to WGS: median {differences[len(differences) // 2]:.2f} m, 99% below "
          f"{differences[int(len(differences) * 0.99)]:.2f} m, largest {worst_wgs[0]:.2f} m at RD {worst_wgs[1]}")
    print(f"  WGS to RD: largest {worst_rd[0]:.2f} m at RD {worst_rd[1]}")


if __name__ == "__main__":
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        main()
