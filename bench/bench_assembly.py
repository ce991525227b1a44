"""Times TriangleAssembly's vertex merging against the same steps written in plain Python,
and the glTF export of a pattern of assemblies split into our scene building and
trimesh's writing. Run by hand: python bench/bench_assembly.py"""
import math
import time

from ostrel import geometry
from ostrel.core import ISCLOSE_ATOL, ISCLOSE_RTOL
from ostrel.geometry import LinearPattern, Point, Triangle, TriangleAssembly, _GLTF


class PyPoint:
    def __init__(self, x, y, z=0.0):
        self._x, self._y, self._z = float(x), float(y), float(z)

    x = property(lambda self: self._x)
    y = property(lambda self: self._y)
    z = property(lambda self: self._z)

    def __eq__(self, other):
        if not isinstance(other, PyPoint):
            return NotImplemented
        return (math.isclose(self._x, other._x, rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL)
                and math.isclose(self._y, other._y, rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL)
                and math.isclose(self._z, other._z, rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL))


class PyTriangle:
    def __init__(self, p1, p2, p3):
        self.profile = [p1, p2, p3]


def py_vertices_and_faces(triangles, skip_duplicate_vertices_check=False):
    faces = []
    vertex_index = 0
    unique_points = [None] * len(triangles) * 3
    for triangle in triangles:
        p1, p2, p3 = triangle.profile
        p1_index = p2_index = p3_index = None
        if not skip_duplicate_vertices_check:
            for index, point in enumerate(unique_points):
                if point is None:
                    break
                if point == p1:
                    p1_index = index
                elif point == p2:
                    p2_index = index
                elif point == p3:
                    p3_index = index
        if p1_index is None:
            p1_index = vertex_index
            unique_points[p1_index] = p1
            vertex_index += 1
        if p2_index is None:
            p2_index = vertex_index
            unique_points[p2_index] = p2
            vertex_index += 1
        if p3_index is None:
            p3_index = vertex_index
            unique_points[p3_index] = p3
            vertex_index += 1
        faces.append([p1_index, p2_index, p3_index])
    vertices = [[float(p.x), float(p.y), float(p.z)] for p in unique_points if p is not None]
    return vertices, faces


def grid_triangles(columns, rows, point, triangle):
    """Two triangles per cell of a columns x rows grid, sharing the grid's points."""
    points = [[point(i * 0.5, j * 0.25, 0.1 * math.sin(i + j)) for j in range(rows + 1)] for i in range(columns + 1)]
    triangles = []
    for i in range(columns):
        for j in range(rows):
            a, b, c, d = points[i][j], points[i + 1][j], points[i + 1][j + 1], points[i][j + 1]
            triangles += [triangle(a, b, c), triangle(a, c, d)]
    return triangles


def best_of(function, repeat):
    times = []
    for _ in range(repeat):
        start = time.perf_counter()
        function()
        times.append(time.perf_counter() - start)
    return min(times)


def bench_merging_against_python():
    print("1,000 triangles of a grid (25 x 20 cells):")
    ours = grid_triangles(25, 20, Point, Triangle)
    theirs = grid_triangles(25, 20, PyPoint, PyTriangle)
    assert len(ours) == 1000
    for skip in (False, True):
        assembly = TriangleAssembly(ours, skip_duplicate_vertices_check=skip)
        assert assembly._get_vertices_and_faces() == py_vertices_and_faces(theirs, skip)
        native = best_of(assembly._get_vertices_and_faces, 20)
        python = best_of(lambda: py_vertices_and_faces(theirs, skip), 3 if not skip else 20)
        label = "without the duplicate check" if skip else "with the duplicate check   "
        print(f"  {label}: ours {native * 1e3:8.3f} ms, plain Python {python * 1e3:8.1f} ms, "
              f"{python / native:6.0f}x")


def bench_large_assembly():
    triangles = grid_triangles(250, 200, Point, Triangle)
    assert len(triangles) == 100_000
    assembly = TriangleAssembly(triangles)
    merging = best_of(assembly._get_vertices_and_faces, 5)
    vertices, faces = assembly._get_vertices_and_faces()
    mesh = best_of(assembly._to_trimesh, 3)
    print(f"100,000 triangles with the duplicate check: {merging * 1e3:.0f} ms "
          f"({len(vertices)} vertices); _to_trimesh {mesh * 1e3:.0f} ms")


def bench_pattern_export():
    leaf = TriangleAssembly(grid_triangles(2, 2, Point, Triangle))
    pattern = LinearPattern(leaf, [1, 0, 0], 1000, 2.0)
    export_glb = geometry.trimesh.exchange.gltf.export_glb
    scene = pattern._to_trimesh()
    building = best_of(pattern._to_trimesh, 5)
    writing = best_of(lambda: export_glb(scene), 5)
    total = best_of(lambda: _GLTF.to_gltf(pattern), 5)
    print(f"to_gltf of a LinearPattern of 1,000 leaves: total {total * 1e3:.0f} ms; "
          f"our scene building {building * 1e3:.0f} ms ({building / total:.0%}), "
          f"trimesh's export_glb {writing * 1e3:.0f} ms")


if __name__ == "__main__":
    bench_merging_against_python()
    bench_large_assembly()
    bench_pattern_export()
