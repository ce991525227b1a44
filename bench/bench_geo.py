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

LATITUDE = [(0, 1, 3235.65389), (2, 0, -32.58297), (0, 2, -0.2475), (2, 1, -0.84978), (0, 3, -0.0655),
            (2, 2, -0.01709), (1, 0, -0.00738), (4, 0, 0.0053), (2, 3, -0.00039), (4, 1, 0.00033), (1, 1, -0.00012)]
LONGITUDE = [(1, 0, 5260.52916), (1, 1, 105.94684), (1, 2, 2.45656), (3, 0, -0.81885), (1, 3, 0.05594),
             (3, 1, -0.05607), (0, 1, 0.01199), (3, 2, -0.00256), (1, 4, 0.00128), (0, 2, 0.00022),
             (2, 0, -0.00022), (5, 0, 0.00026)]
RD_X = [(0, 1, 190094.945), (1, 1, -11832.228), (2, 1, -114.221), (0, 3, -32.391), (1, 0, -0.705), (3, 1, -2.34),
        (1, 3, -0.608), (0, 2, -0.008), (2, 3, 0.148)]
RD_Y = [(1, 0, 309056.544), (0, 2, 3638.893), (2, 0, 73.077), (1, 2, -157.984), (3, 0, 59.788), (0, 1, 0.433),
        (2, 2, -6.439), (1, 1, -0.032), (0, 4, 0.092), (1, 4, -0.054)]


def py_rd_to_wgs(coords):
    """The documented steps in plain Python."""
    if coords[0] < -7000 or coords[0] > 300000:
        warnings.warn("The given x-coordinate lies outside of the RD coordinate system bounds.")
    if coords[1] < 289000 or coords[1] > 629000:
        warnings.warn("The given y-coordinate lies outside of the RD coordinate system bounds.")
    dx, dy = 1e-5 * (coords[0] - 155000), 1e-5 * (coords[1] - 463000)
    phi = lam = 0.0
    for p, q, c in LATITUDE:
        phi = phi + c * dx ** p * dy ** q
    for p, q, c in LONGITUDE:
        lam = lam + c * dx ** p * dy ** q
    return [52.1551744 + phi / 3600.0, 5.38720621 + lam / 3600.0]


def py_wgs_to_rd(coords):
    if coords[0] < 50.56846369435836 or coords[0] > 53.627020058901856:
        warnings.warn("The given latitude lies outside of the RD coordinate system bounds.")
    if coords[1] < 3.100559333335453 or coords[1] > 7.578928993560541:
        warnings.warn("The given longitude lies outside of the RD coordinate system bounds.")
    dphi, dlam = 0.36 * (coords[0] - 52.1551744), 0.36 * (coords[1] - 5.38720621)
    x = y = 0.0
    for p, q, c in RD_X:
        x += c * dphi ** p * dlam ** q
    for p, q, c in RD_Y:
        y += c * dphi ** p * dlam ** q
    return [x + 155000, y + 463000]


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
                       ("plain Python", py_rd_to_wgs, rd_points),
                       ("pyproj", lambda p: to_wgs.transform(p[0], p[1]), rd_points)]),
        ("WGS to RD", [("ostrel", RDWGSConverter.from_wgs_to_rd, wgs_points),
                       ("plain Python", py_wgs_to_rd, wgs_points),
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
