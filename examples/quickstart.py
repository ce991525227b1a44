"""
Quickstart
==========

A first look at ostrel.geometry: points, vectors, conversions, and a small scene written
as a binary glTF file (quickstart.glb) that any glTF viewer opens.
"""
import math
import sys

from ostrel.geometry import (Group, LinearPattern, Material, Point, Triangle, TriangleAssembly, Vector,
                             _GLTF, cartesian_to_spherical, spherical_to_cartesian)
from ostrel.core import Color
from ostrel.preview import picture_beside


def square_tile(size, material):
    """A flat square of two triangles, as a mesh object."""
    a, b, c, d = Point(0, 0), Point(size, 0), Point(size, size), Point(0, size)
    return TriangleAssembly([Triangle(a, b, c), Triangle(a, c, d)], material=material)


def main(path="quickstart.glb"):
    a = Point(1, 2)          # z defaults to 0
    b = Point(4, 6, 0)
    v = a.vector_to(b)       # the Vector from a to b
    print("a =", a)
    print("b =", b)
    print("a -> b =", v, "length", v.magnitude)
    print("unit direction:", v.normalize())
    print("normal of the xy plane:", Vector(1, 0, 0).cross(Vector(0, 1, 0)))

    # Points coincide by tolerance, so rounding noise does not split them.
    print("a == Point(1, 2 + 1e-12):", a == Point(1, 2 + 1e-12))

    r, theta, phi = cartesian_to_spherical(b.coordinates)
    print(f"b in spherical coordinates: r={r:.3f}, theta={math.degrees(theta):.1f} deg, "
          f"phi={math.degrees(phi):.1f} deg")
    print("and back:", spherical_to_cartesian((r, theta, phi)))

    # A scene: a row of five blue tiles, one metre apart, and a red tile standing upright.
    blue = Material("blue", color=Color(40, 90, 200))
    red = Material("red", color=Color(200, 50, 40))
    row = LinearPattern(square_tile(0.8, blue), [1, 0, 0], 5, 1.0)
    upright = square_tile(0.8, red).rotate(math.pi / 2, (1, 0, 0)).translate((0, 2, 0))
    glb = _GLTF.to_gltf(Group([row, upright]))
    glb.save(path)
    print(f"wrote {path} ({len(glb.getvalue_binary())} bytes)")
    if picture := picture_beside(path):
        print("and a picture of it,", picture)


if __name__ == "__main__":
    main(*sys.argv[1:])
