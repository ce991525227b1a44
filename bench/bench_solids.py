"""Times Arc.discretize and ArcRevolve.inner_volume against the same documented steps written
in plain Python, and splits the glTF export of an ArcExtrusion of 50 segments and of a scene
with one of each solid into trimesh's part and ours. Run by hand: python bench/bench_solids.py"""
import functools
import math
import time

import numpy as np

from ostrel import geometry
from ostrel.geometry import (Arc, ArcExtrusion, ArcRevolve, CartesianAxes, CircularExtrusion, Cone, Line, LineRevolve,
                             Point, Sphere, Torus, _GLTF)

trimesh = geometry.trimesh


# The plain-Python transcription: points, the conversions, the arc and its revolve.

def cartesian_to_spherical(c):
    r = math.sqrt(c[0] ** 2 + c[1] ** 2 + c[2] ** 2)
    return np.array([r, math.acos(c[2] / r), math.atan2(c[1], c[0])], dtype=float)


def spherical_to_cartesian(spherical_coordinates):
    r, theta, phi = spherical_coordinates
    return np.array([r * math.sin(theta) * math.cos(phi), r * math.sin(theta) * math.sin(phi),
                     r * math.cos(theta)], dtype=float)


class PyPoint:
    def __init__(self, x, y, z=0.0):
        self._x, self._y, self._z = float(x), float(y), float(z)

    x = property(lambda self: self._x)
    y = property(lambda self: self._y)
    z = property(lambda self: self._z)

    def __iter__(self):
        yield from (self._x, self._y, self._z)

    def get_local_coordinates(self, local_origin, spherical=False):
        local_coordinates = np.array(tuple(self)) - np.array(tuple(local_origin))
        return cartesian_to_spherical(local_coordinates) if spherical else local_coordinates


class PyArc:
    def __init__(self, centre_point, start_point, end_point, short_arc=True):
        self._centre_point, self._start_point, self._end_point, self._short_arc = (
            centre_point, start_point, end_point, short_arc)

    centre_point = property(lambda self: self._centre_point)
    start_point = property(lambda self: self._start_point)
    end_point = property(lambda self: self._end_point)

    @property
    def radius(self):
        c, s = self.centre_point, self.start_point
        return math.sqrt((s.x - c.x) ** 2 + (s.y - c.y) ** 2 + (s.z - c.z) ** 2)

    def discretize(self, num=2):
        if num < 2:
            raise ValueError("Provides at least two points (start and end)")
        start = self.start_point.get_local_coordinates(local_origin=self.centre_point, spherical=True)
        end = self.end_point.get_local_coordinates(local_origin=self.centre_point, spherical=True)
        coordinates_local_spherical = np.tile(start, (num, 1))
        start_phi = start[2] if start[2] > 0 else 2 * math.pi + start[2]
        end_phi = end[2] if end[2] > 0 else 2 * math.pi + end[2]
        diff_total = end_phi - start_phi
        if self._short_arc:
            if diff_total < -math.pi:
                diff_total += 2 * math.pi
            elif diff_total > math.pi:
                diff_total -= 2 * math.pi
        else:
            if -math.pi < diff_total < 0:
                diff_total += 2 * math.pi
            elif 0 < diff_total < math.pi:
                diff_total -= 2 * math.pi
        d_angle = diff_total / (num - 1)
        angles = []
        for i in range(num):
            if i == 0:
                angle = start_phi
            elif i == num - 1:
                angle = end_phi
            else:
                angle = (start_phi + i * d_angle) % (2 * math.pi)
            if math.pi < angle <= 2 * math.pi:
                angle = angle - 2 * math.pi
            angles.append(angle)
        coordinates_local_spherical[:, 2] = angles
        points = []
        for coordinates in coordinates_local_spherical:
            g = spherical_to_cartesian(coordinates) + np.array(tuple(self.centre_point))
            points.append(PyPoint(g[0], g[1], g[2]))
        return points


class PyArcRevolve:
    def __init__(self, arc, rotation_angle=None):
        self._arc = arc
        self._rotation_angle = 2 * math.pi if rotation_angle is None else rotation_angle

    arc = property(lambda self: self._arc)

    @property
    def inner_volume(self):
        start_point, end_point, centre_point = self._arc.start_point, self._arc.end_point, self._arc.centre_point
        relative_start_x = start_point.x - centre_point.x
        relative_start_y = start_point.y - centre_point.y
        relative_end_x = end_point.x - centre_point.x
        relative_end_y = end_point.y - centre_point.y
        points_on_same_side = relative_start_x * relative_end_x >= 0
        outer_oriented_surface = points_on_same_side and (
            (centre_point.x >= 0 and start_point.y > end_point.y) or (centre_point.x < 0 and start_point.y < end_point.y))
        if not self._arc._short_arc:
            raise ValueError("Inner volume of arc-revolve is not defined when using long arc")
        if not points_on_same_side:
            raise ValueError("Start- and end-point should lie on the same vertical side from the centre")
        if not outer_oriented_surface:
            raise ValueError("Inner volume of arc-revolve is not defined with inner oriented surface")
        xc, r = centre_point.x, self.arc.radius
        theta1 = math.atan2(relative_end_y, relative_end_x)
        theta2 = math.atan2(relative_start_y, relative_start_x)

        def f(t):
            return ((1 / 12) * r ** 3 * (9 * math.sin(t) + math.sin(3 * t)) + r ** 2 * xc * (t + math.sin(t) * math.cos(t))
                    + xc ** 2 * r * math.sin(t))

        total_volume = abs(math.pi * (f(theta1) - f(theta2)))
        return self._rotation_angle / (2 * math.pi) * total_volume


def best_of(function, repeat):
    times = []
    for _ in range(repeat):
        start = time.perf_counter()
        function()
        times.append(time.perf_counter() - start)
    return min(times)


# The export: the time spent inside the trimesh calls the module makes, outermost calls only.

class TrimeshClock:
    def __init__(self):
        self.depth, self.spent, self.patches = 0, 0.0, []

    def wrap(self, owner, name):
        original = getattr(owner, name)

        @functools.wraps(original)
        def timed(*args, **kwargs):
            if self.depth:
                return original(*args, **kwargs)
            self.depth += 1
            start = time.perf_counter()
            try:
                return original(*args, **kwargs)
            finally:
                self.spent += time.perf_counter() - start
                self.depth -= 1

        self.patches.append((owner, name, original))
        setattr(owner, name, timed)

    def __enter__(self):
        # Classes by their constructors, so that isinstance() still sees the classes.
        for owner, names in [(trimesh.Scene, ["__init__", "add_geometry", "copy"]), (trimesh.Trimesh, ["__init__"]),
                             (trimesh.creation, ["revolve", "uv_sphere"]), (trimesh.geometry, ["align_vectors"]),
                             (trimesh.exchange.gltf, ["export_glb"]), (trimesh.visual.TextureVisuals, ["__init__"]),
                             (trimesh.visual.material.PBRMaterial, ["__init__"]),
                             (trimesh.scene.transforms.SceneGraph, ["update", "from_edgelist", "to_edgelist"])]:
            for name in names:
                self.wrap(owner, name)
        return self

    def __exit__(self, *exc):
        for owner, name, original in reversed(self.patches):
            setattr(owner, name, original)


def export_share(objects, repeat):
    total = best_of(lambda: _GLTF.to_gltf(*objects), repeat)
    spent = []
    for _ in range(repeat):
        with TrimeshClock() as clock:
            _GLTF.to_gltf(*objects)
        spent.append(clock.spent)
    in_trimesh = min(spent)
    return total, in_trimesh, max(total - in_trimesh, 0.0)


def main():
    rows = []
    centre, start, end = (0.5, -0.25), (2.5, -0.25), (0.5, 1.75)
    ours = Arc(Point(*centre), Point(*start), Point(*end))
    theirs = PyArc(PyPoint(*centre), PyPoint(*start), PyPoint(*end))
    assert [tuple(p) for p in ours.discretize(1000)] == [tuple(p) for p in theirs.discretize(1000)]
    native, python = best_of(lambda: ours.discretize(1000), 50), best_of(lambda: theirs.discretize(1000), 5)
    rows.append(("Arc.discretize(1000)", native, python))

    arc = (Point(3, 1), Point(3, 3), Point(5, 1))
    revolve, py_revolve = ArcRevolve(Arc(*arc)), PyArcRevolve(PyArc(*(PyPoint(p.x, p.y) for p in arc)))
    assert revolve.inner_volume == py_revolve.inner_volume
    loops = 10_000
    native = best_of(lambda: [revolve.inner_volume for _ in range(loops)], 5) / loops
    python = best_of(lambda: [py_revolve.inner_volume for _ in range(loops)], 5) / loops
    rows.append(("ArcRevolve.inner_volume", native, python))

    square = [Point(x, y) for x, y in [(0, 0), (0, 0.2), (0.2, 0.2), (0.2, 0), (0, 0)]]
    bend = ArcExtrusion(square, Arc(Point(0, 0), Point(3, 0), Point(0, 3)), n_segments=50)
    each = [CircularExtrusion(0.2, Line(Point(0, 0, 0), Point(0, 0, 3))), Cone(1, 2), Sphere(Point(5, 0, 0), 1),
            Torus(0.3, 2), CartesianAxes(), LineRevolve(Line(Point(1, 0), Point(2, 1))),
            ArcRevolve(Arc(Point(3, 0), Point(3, 1), Point(4, 0))),
            ArcExtrusion(square, Arc(Point(0, 0), Point(3, 0), Point(0, 3)), n_segments=4)]
    exports = [(f"to_gltf: {label}", *export_share(objects, 5))
               for label, objects in [("ArcExtrusion, 50 segments", [bend]), ("one of each solid", each)]]

    print(f"{'':38} {'ours':>10} {'peer':>10}  {'peer':14} {'result':>10}")
    for label, native, python in rows:
        print(f"{label:38} {native * 1e6:7.1f} us {python * 1e6:7.1f} us  {'plain Python':14} "
              f"{python / native:9.1f}x")
    for label, total, in_trimesh, own in exports:
        print(f"{label:38} {own * 1e3:7.1f} ms {in_trimesh * 1e3:7.1f} ms  {'in trimesh':14} "
              f"{own / total:6.0%} ours")


if __name__ == "__main__":
    main()
