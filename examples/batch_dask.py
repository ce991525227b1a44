"""Many sections and profiles over Dask: the area, centroid and second moments of 100,000
cross-sections and the lower envelopes of 1,000 pairs of profiles, computed on a local cluster with
one worker and with two (or on the cluster a scheduler address names), and checked against a serial
run. The objects go to the workers as they are, pickled, in chunks.

    pip install 'ostrel[dask]'
    python examples/batch_dask.py                         # a local cluster, 1 and 2 workers
    python examples/batch_dask.py tcp://scheduler:8786    # a cluster of your own
"""
import argparse
import math
import random
import time

import numpy as np

from ostrel.geometry import Point, Polygon, Polyline


def sections(count, seed=1):
    """The corners of I-sections of assorted sizes (metres), clockwise, as one array (count x 12 x 2):
    a cluster gets the numbers and makes the polygons where it measures them."""
    rng = np.random.default_rng(seed)
    h, w = rng.uniform(0.1, 0.6, count) / 2, rng.uniform(0.08, 0.3, count) / 2
    t, f = rng.uniform(0.004, 0.012, count) / 2, rng.uniform(0.006, 0.02, count)
    x = np.stack([-w, -w, -t, -t, -w, -w, w, w, t, t, w, w], axis=1)
    y = np.stack([-h, -h + f, -h + f, h - f, h - f, h, h, h - f, h - f, -h + f, -h + f, -h], axis=1)
    return np.stack([x, y], axis=2)


def profiles(count, points=100, seed=2):
    """Pairs of ground profiles that cross each other now and then."""
    rng = random.Random(seed)
    pairs = []
    for _ in range(count):
        phase = rng.uniform(0, 6)
        first = Polyline([Point(x, math.sin(x / 7 + phase) + rng.uniform(-0.2, 0.2)) for x in range(points)])
        second = Polyline([Point(x + 0.5, 0.3 * math.cos(x / 11)) for x in range(0, points - 1, 3)])
        pairs.append((first, second))
    return pairs


def measure(chunk):
    """Area, centroid (x, y) and second moments (about x, about y) of each section of a chunk of
    outlines, one row each."""
    results = np.empty((len(chunk), 5))
    for row, corners in zip(results, chunk.tolist()):
        section = Polygon([Point(x, y) for x, y in corners])
        row[:] = (section.cross_sectional_area, *section.centroid, *section.moment_of_inertia)
    return results


def envelopes(chunk):
    """The lower envelope of each pair of profiles of a chunk; the profiles arrive pickled."""
    return [[(p.x, p.y) for p in Polyline.get_lowest_or_highest_profile_x(a, b, True).points] for a, b in chunk]


def chunked(items, size):
    return [items[i:i + size] for i in range(0, len(items), size)]


def run(client, section_chunks, profile_chunks):
    """Both batches on the cluster, the results in order. The inputs are data, not recipes: they are
    neither hashed nor cached (hash=False, pure=False), which would cost more than the work."""
    started = time.perf_counter()
    measured = client.map(measure, client.scatter(section_chunks, hash=False), pure=False)
    enveloped = client.map(envelopes, client.scatter(profile_chunks, hash=False), pure=False)
    results = np.concatenate(client.gather(measured)), [r for chunk in client.gather(enveloped) for r in chunk]
    return results, time.perf_counter() - started


def same(first, second):
    return np.array_equal(first[0], second[0]) and first[1] == second[1]


def main(argv=None):
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("scheduler", nargs="?", help="address of a Dask scheduler (default: a local cluster)")
    parser.add_argument("--sections", type=int, default=100_000)
    parser.add_argument("--profiles", type=int, default=1_000)
    options = parser.parse_args(argv)
    from dask.distributed import Client, LocalCluster

    all_sections, all_profiles = sections(options.sections), profiles(options.profiles)
    section_chunks, profile_chunks = chunked(all_sections, 2_000), chunked(all_profiles, 50)
    started = time.perf_counter()
    serial = (np.concatenate([measure(c) for c in section_chunks]), [r for c in profile_chunks for r in envelopes(c)])
    print(f"serial:    {time.perf_counter() - started:6.2f} s for {len(all_sections)} sections "
          f"and {len(all_profiles)} profile pairs")
    if options.scheduler:
        with Client(options.scheduler) as client:
            results, seconds = run(client, section_chunks, profile_chunks)
            print(f"cluster:   {seconds:6.2f} s, same as serial: {same(results, serial)}")
        return
    for workers in (1, 2):
        with LocalCluster(n_workers=workers, threads_per_worker=1, processes=True, dashboard_address=None) as cluster, \
                Client(cluster) as client:
            results, seconds = run(client, section_chunks, profile_chunks)
            print(f"{workers} worker{'s' if workers > 1 else ' '}: {seconds:6.2f} s, same as serial: {same(results, serial)}")


if __name__ == "__main__":
    main()
