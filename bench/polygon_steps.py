"""The documented steps of Polygon's checks and ear clipping, transcribed into plain Python on the
module's own Point, Line and Triangle: the reference the native paths are compared with."""
from ostrel.geometry import (Line, Triangle, _current_next, calculate_intersection_bounded_lines,
                             circumference_is_clockwise, point_is_on_bounded_line)


def check_duplicate_points(points):
    for index_1 in range(len(points)):
        for index_2 in range(len(points)):
            if index_1 != index_2 and points[index_1] == points[index_2]:
                raise ValueError(f"Duplicate points are not supported ({points[index_1]})")


def is_simple(points):
    all_points = points + [points[0]]
    lines = [Line(p1, p2) for p1, p2 in _current_next(all_points)]
    for line1 in lines:
        for line2 in lines:
            if line1 is line2:
                continue
            if calculate_intersection_bounded_lines(line1, line2) is not None:
                line1_line2 = line1.end_point == line2.start_point
                line2_line1 = line2.end_point == line1.start_point
                if not line1_line2 and not line2_line1:
                    return False
    return True


def convex_angle_when_ccw(p1, p2, p3):
    return (p2.x - p1.x) * (p3.y - p1.y) - (p2.y - p1.y) * (p3.x - p1.x) >= 0


def on_triangle(p1, p2, p3, p):
    return (point_is_on_bounded_line(p, Line(p1, p2)) or point_is_on_bounded_line(p, Line(p2, p3))
            or point_is_on_bounded_line(p, Line(p3, p1)))


def in_triangle(p1, p2, p3, p):
    eps = 1e-7
    denominator = (p2.y - p3.y) * (p1.x - p3.x) + (p3.x - p2.x) * (p1.y - p3.y) + eps
    alpha = ((p2.y - p3.y) * (p.x - p3.x) + (p3.x - p2.x) * (p.y - p3.y)) / denominator
    beta = ((p3.y - p1.y) * (p.x - p3.x) + (p1.x - p3.x) * (p.y - p3.y)) / denominator
    gamma = 1 - alpha - beta
    return all(not (x >= 1 or x <= 0) for x in (alpha, beta, gamma))


def get_ear(circumference):
    if circumference_is_clockwise(circumference + [circumference[0]]):
        raise ValueError("Circumference should be counter clockwise")
    size = len(circumference)
    if size < 3:
        raise ValueError("Insufficient number of points on circumference, minimum of 3")
    if size == 3:
        return Triangle(circumference[0], circumference[1], circumference[2]), []
    new_circumference = list(circumference)
    for i in range(size):
        tritest = False
        p1, p2, p3 = circumference[(i - 1) % size], circumference[i % size], circumference[(i + 1) % size]
        if convex_angle_when_ccw(p1, p2, p3):
            for p in circumference:
                if p != p1 and p != p2 and p != p3 and (in_triangle(p1, p2, p3, p) or on_triangle(p1, p2, p3, p)):
                    tritest = True
            if not tritest:
                del new_circumference[i % size]
                return Triangle(p1, p2, p3), new_circumference
    raise ValueError("No ear found, unexpected error")


def triangulate(points):
    triangles = []
    circumference = points[::-1] if circumference_is_clockwise(points + [points[0]]) else points[:]
    while len(circumference) >= 3:
        if circumference_is_clockwise(circumference + [circumference[0]]):
            raise ValueError("Circumference should be counter clockwise")
        triangle, circumference = get_ear(circumference)
        triangles.append(triangle)
    return triangles
