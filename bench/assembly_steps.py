"""TriangleAssembly's vertex merging, the documented steps in plain Python: the benchmark's peer
and the tests' independent oracle. Its points compare as the module's Point does, with the
module's tolerances read at each comparison."""
import math

from ostrel import geometry


class PlainPoint:
    def __init__(self, x, y, z=0.0):
        self._x, self._y, self._z = float(x), float(y), float(z)

    x = property(lambda self: self._x)
    y = property(lambda self: self._y)
    z = property(lambda self: self._z)

    def __eq__(self, other):
        if not isinstance(other, PlainPoint):
            return NotImplemented
        rtol, atol = geometry.ISCLOSE_RTOL, geometry.ISCLOSE_ATOL
        return (math.isclose(self._x, other._x, rel_tol=rtol, abs_tol=atol)
                and math.isclose(self._y, other._y, rel_tol=rtol, abs_tol=atol)
                and math.isclose(self._z, other._z, rel_tol=rtol, abs_tol=atol))


class PlainTriangle:
    def __init__(self, p1, p2, p3):
        self.profile = [p1, p2, p3]


def vertices_and_faces(triangles, skip_duplicate_vertices_check=False):
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
