"""Growth of memory and of live objects over many calls of the module, per group of calls.

    python tools/leak_check.py            # 10**6 calls in all
    python tools/leak_check.py --short    # about 10**5, for CI

Each group runs in equal rounds: up to three to warm up (until a round adds no more than a
few pages: the allocator's heap settles at a plateau, a leak grows in every round), then
one more, whose growth of the resident set and of the number of objects the collector
tracks is what a call leaks (where it grows too much, a second one, which must grow as well:
one late growth is a cache or a buffer filled, not a leak). Exits
with 1 when any group grows by more than 0.001 objects per call, or by more than a byte
per call once the growth exceeds the few pages the allocator takes now and then.
"""
import gc
import os
import sys
import warnings

from ostrel import geometry as g

P, V, L, T = g.Point, g.Vector, g.Line, g.Triangle
p, q, r = P(0, 0), P(1, 0), P(0, 1)
v, w = V(1, 2, 3), V(3, 2, 1)
a, b = L(P(0, 0), P(2, 2)), L(P(0, 2), P(2, 0))
grid = [T(P(i, j), P(i + 1, j), P(i, j + 1)) for i in range(4) for j in range(4)]
tile = g.TriangleAssembly([T(p, q, r)])
place = g.GeoPoint(52.1, 5.2)
obj_text = g.File.from_data("v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 0\ng a\nusemtl red\nf 1 2 3 4\nf 1/1 2/2 1_0\n"
                            "v 1e400 -0 .5\ng b\nf 1 2 3\n")
bad_obj_text = g.File.from_data("v 0 0 0\nf 1 2 x\n")
mtl_text = g.File.from_data("newmtl red\nKd 1 0.5 0\n")
l_shape = [P(0, 0), P(2, 0), P(2, 1), P(1, 1), P(1, 2), P(0, 2)]
rising = g.Polyline([P(0, 0), P(1, 1), P(2, 0), P(3, 1)])
falling = g.Polyline([P(0, 1), P(1, 0), P(2, 1), P(3, 0)])
arc, dot = g.Arc(P(0, 0), P(2, 0), P(0, 2)), g.Arc(p, p, p)
dome = g.ArcRevolve(g.Arc(P(3, 1), P(3, 3), P(5, 1)))


def raises(call, *args):
    try:
        call(*args)
    except Exception:
        pass


GROUPS = {
    "constructors": (1.0, lambda: (P(1, 2, 3), V(1, 2), L(p, q), T(p, q, r), g.Material("m"),
                                   g.TriangleAssembly([T(p, q, r)]))),
    "operators": (1.0, lambda: (v + w, v - w, v * 2.0, 2.0 * v, v == w, p == q, v.dot(w), v.cross(w), v.normalize(),
                                p.vector_to(q))),
    "intersections": (1.0, lambda: (g.calculate_intersection_bounded_lines(a, b), a.find_overlap(a),
                                    g.point_is_on_bounded_line((1, 1), a), a.collinear((3, 3)))),
    "polylines": (0.3, lambda: (g.Polyline.get_lowest_or_highest_profile_x(rising, falling, True),
                                rising.split(P(0.5, 0.5)), rising.find_overlaps(rising), rising.get_polyline_between(p, P(3, 1)),
                                raises(rising.combine_with, falling), raises(rising.split, P(5, 5)))),
    "assembly merging": (0.1, lambda: g.get_vertices_faces(grid)),
    "GLB export": (0.005, lambda: g._GLTF.to_gltf(tile)),
    "geographic": (1.0, lambda: (g.RDWGSConverter.from_rd_to_wgs((120000.0, 480000)), g.GeoPoint.from_rd((0, 0)),
                                 place.rd, place == place, repr(g.GeoPolygon(place, place, place)))),
    "polygons": (0.1, lambda: (lambda s: (s.cross_sectional_area, s.centroid, s.moment_of_inertia, s._triangles(),
                                          raises(g.Polygon, l_shape[:2])))(g.Polygon(l_shape))),
    "extrusions": (0.01, lambda: g.SquareBeam(1, 2, 3).material),
    "arcs and revolves": (0.3, lambda: (arc.discretize(20), arc.angle, arc.theta1_theta2, dome.inner_volume,
                                         dome._trimesh_linestring, dot.discretize(3), raises(arc.discretize, 1),
                                         raises(g.Arc(P(0, 0), P(1, 0), P(-1, 0)).revolve),
                                         g.Line(p, P(1, 1)).revolve().surface_area)),
    "solids": (0.02, lambda: g._GLTF.to_gltf(g.Cone(1, 2), g.CircularExtrusion(0.1, a), g.Torus(0.2, 1))),
    "OBJ and MTL": (0.05, lambda: (g._MeshAssembly.from_obj(obj_text, mtl_text),
                                   raises(g._parse_vertices_and_faces_from_obj, bad_obj_text))),
    "error paths": (1.0, lambda: (raises(V(0, 0, 0).normalize), raises(L, p, p), raises(P, 1),
                                  raises(g.Point, "x", 1), raises(a.__getitem__, 5))),
}


def resident_bytes():
    with open("/proc/self/statm") as f:
        return int(f.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def measure(call, count):
    for _ in range(max(count // 10, 10)):
        call()
    gc.collect()
    start_rss, start_objects = resident_bytes(), len(gc.get_objects())
    for _ in range(count):
        call()
    gc.collect()
    return (resident_bytes() - start_rss) / count, (len(gc.get_objects()) - start_objects) / count


def main():
    total = 10**5 if "--short" in sys.argv else 10**6
    per_group = total // len(GROUPS)
    warnings.simplefilter("ignore")
    failed = False
    print(f"{'group':<18}{'calls':>9}{'bytes/call':>12}{'objects/call':>14}")
    for name, (share, call) in GROUPS.items():
        count = max(int(per_group * share), 50)
        # Warm-up rounds fill caches, interned names and allocator pools; the allocator's
        # heap settles at its plateau within a few rounds, while a leak grows in every one.
        for _ in range(3):
            warm, _ = measure(call, count)
            if warm * count <= 256 * 1024:
                break
        # A leak grows in every round; a cache or a thread's buffers filled late grow once.
        for _ in range(2):
            grown, objects = measure(call, count)
            leaks = (grown > 1.0 and grown * count > 256 * 1024) or objects > 0.001
            if not leaks:
                break
        failed |= leaks
        print(f"{name:<18}{count:>9}{grown:>12.3f}{objects:>14.4f}")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
