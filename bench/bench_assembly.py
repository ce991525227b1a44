"""Times TriangleAssembly's vertex merging against the same steps written in plain Python
(assembly_steps.py),
and the glTF export of a pattern of assemblies split into our scene building and
trimesh's writing. Run by hand: python bench/bench_assembly.py"""
import math
import time

from ostrel import geometry
from ostrel.geometry import LinearPattern, Point, Triangle, TriangleAssembly, _GLTF

from assembly_steps import PlainPoint, PlainTriangle, vertices_and_faces


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
    theirs = grid_triangles(25, 20, PlainPoint, PlainTriangle)
    assert len(ours) == 1000
    for skip in (False, True):
        assembly = TriangleAssembly(ours, skip_duplicate_vertices_check=skip)
        assert assembly._get_vertices_and_faces() == vertices_and_faces(theirs, skip)
        native = best_of(assembly._get_vertices_and_faces, 20)
        python = best_of(lambda: vertices_and_faces(theirs, skip), 3 if not skip else 20)
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
