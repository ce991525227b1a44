"""A first look at ostrel.geometry: points, vectors and coordinate conversions."""
import math

from ostrel.geometry import Point, Vector, cartesian_to_spherical, spherical_to_cartesian


def main():
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


if __name__ == "__main__":
    main()
