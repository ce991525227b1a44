"""The documented steps of Polyline, written out in plain Python.

`steps_polyline(g)` makes the class on the names of `g`: Point, Line, the line
functions and ISCLOSE_ATOL. With `ostrel.geometry` it is the reference for the
differential tests of the native paths; bench/bench_polyline.py runs it on plain-Python
points and lines as well.
"""
import math


def steps_polyline(g):
    def current_next(lst):
        items = list(lst)
        return zip(items, items[1:])

    def atol():
        return g.ISCLOSE_ATOL

    class Polyline:
        def __init__(self, points):
            self.points = list(points)

        @classmethod
        def _deserialize(cls, points):
            return cls([g.Point(p["x"], p["y"]) for p in points])

        @classmethod
        def from_lines(cls, lines):
            points = []
            for i, line in enumerate(lines):
                if i == 0:
                    points.append(line.start_point)
                if i > 0 and not points[-1] == line.start_point:
                    raise ValueError(f"Start point of line {i} does not coincide with end point of previous line.")
                points.append(line.end_point)
            return cls(points)

        def is_equal_to(self, other):
            if len(self.points) != len(other.points):
                return False
            for point_1, point_2 in zip(self.points, other.points):
                if not point_1 == point_2:
                    return False
            return True

        @property
        def start_point(self):
            return self.points[0]

        @property
        def end_point(self):
            return self.points[-1]

        @property
        def lines(self):
            lines = []
            for p1, p2 in current_next(self.points):
                try:
                    lines.append(g.Line(p1, p2))
                except ValueError:
                    pass
            return lines

        def _extent(self, name, smaller):
            found = None
            for point in self.points:
                value = getattr(point, name)
                if found is None or (value < found if smaller else value > found):
                    found = value
            return found

        x_min = property(lambda self: self._extent("x", True))
        x_max = property(lambda self: self._extent("x", False))
        y_min = property(lambda self: self._extent("y", True))
        y_max = property(lambda self: self._extent("y", False))
        z_min = property(lambda self: self._extent("z", True))
        z_max = property(lambda self: self._extent("z", False))

        def get_reversed_polyline(self):
            return Polyline(list(reversed(self.points)))

        def serialize(self):
            return [{"x": point.x, "y": point.y} for point in self.points]

        def filter_duplicate_points(self):
            points = [self.points[0]]
            for i, point in enumerate(self.points):
                if i > 0 and not point == self.points[i - 1]:
                    points.append(point)
            return Polyline(points)

        def _monotonic(self, name, strict):
            previous = None
            for point in self.points:
                value = getattr(point, name)
                if strict and previous is not None and (math.isclose(value, previous) or value < previous):
                    return False
                if not strict and previous is not None and not math.isclose(value, previous) and value < previous:
                    return False
                previous = value
            return True

        def is_monotonic_ascending_x(self, strict=True):
            return self._monotonic("x", strict)

        def is_monotonic_ascending_y(self, strict=True):
            return self._monotonic("y", strict)

        def point_is_on_polyline(self, point):
            for line in self.lines:
                if g.point_is_on_bounded_line(point, line):
                    return True
            return False

        def intersections_with_polyline(self, other_polyline):
            intersections = []
            for line in self.lines:
                line_intersections = []
                for other_line in other_polyline.lines:
                    intersection = g.calculate_intersection_bounded_lines(line, other_line, inclusive=True)
                    if intersection is None:
                        continue
                    if intersections and intersection == intersections[-1]:
                        continue
                    if line_intersections and intersection == line_intersections[-1]:
                        continue
                    line_intersections.append(intersection)
                if line_intersections:
                    start_point = line.start_point
                    line_intersections.sort(key=lambda p: start_point.vector_to(p).squared_magnitude)
                    intersections.extend(line_intersections)
            return intersections

        def intersections_with_x_location(self, x):
            x = float(x)
            x_line = g.Line(g.Point(x, 0), g.Point(x, 1))
            intersections = []
            for start_point, end_point in current_next(self.points):
                try:
                    line = g.Line(start_point, end_point)
                except ValueError:
                    continue
                intersection = g.calculate_intersection_bounded_line_extended_line(line, x_line)
                if intersection is not None:
                    if not (intersections and intersection == intersections[-1]):
                        intersections.append(intersection)
                elif (math.isclose(start_point.x, x, abs_tol=atol())
                      and math.isclose(end_point.x, x, abs_tol=atol())):
                    if not (intersections and start_point == intersections[-1]):
                        intersections.append(start_point)
                    if not (intersections and end_point == intersections[-1]):
                        intersections.append(end_point)
            return intersections

        def split(self, point):
            if not self.point_is_on_polyline(point):
                raise ValueError(f"Trying to split a polyline on point {point} that is not on the polyline "
                                 f"{self.points}")
            before_points, after_points, found = [], [], False
            for i, (start_point, end_point) in enumerate(current_next(self.points)):
                if i == 0:
                    before_points.append(start_point)
                try:
                    line = g.Line(start_point, end_point)
                    point_on_bounded_line = g.point_is_on_bounded_line(point, line)
                except ValueError:
                    point_on_bounded_line = start_point == point
                if point_on_bounded_line:
                    if point == start_point and point == end_point:
                        continue
                    if not point == end_point and not point == start_point:
                        before_points.append(point)
                        after_points.append(point)
                        found = True
                    elif point == start_point and not point == end_point:
                        after_points.append(point)
                        found = True
                if found:
                    after_points.append(end_point)
                else:
                    before_points.append(end_point)
            return Polyline(before_points), Polyline(after_points)

        def get_polyline_between(self, start_point, end_point, inclusive=False):
            if not self.point_is_on_polyline(start_point):
                raise ValueError("start_point not on given polyline")
            if not self.point_is_on_polyline(end_point):
                raise ValueError("end_point not on given polyline")
            line_after_start_point = self.split(start_point)[1]
            try:
                line_between = line_after_start_point.split(end_point)[0]
            except ValueError:
                return Polyline([])
            if inclusive:
                return line_between
            return Polyline(line_between.points[1:-1])

        @staticmethod
        def _concatenate(polyline_1, polyline_2):
            if polyline_1.points and polyline_2.points and not polyline_1.end_point == polyline_2.start_point:
                raise ValueError("Polylines can only be concatenated if the endpoint of the first line coincides "
                                 "with the start point of the second")
            if polyline_1.points:
                points = polyline_1.points + polyline_2.points[1:]
            else:
                points = list(polyline_2.points)
            return Polyline(points)

        def find_overlaps(self, other):
            overlap_polylines, overlap_lines = [], []

            def close():
                points = [overlap_lines[0][0]] + [piece[1] for piece in overlap_lines]
                overlap_polylines.append(Polyline(points))

            for own_start_point, own_end_point in current_next(self.points):
                local_overlap_lines = []
                try:
                    own_line = g.Line(own_start_point, own_end_point)
                except ValueError:
                    continue
                for other_start_point, other_end_point in current_next(other.points):
                    try:
                        other_line = g.Line(other_start_point, other_end_point)
                    except ValueError:
                        continue
                    overlap = own_line.find_overlap(other_line)
                    if overlap is None:
                        continue
                    if isinstance(overlap, g.Point):
                        local_overlap_lines.append((overlap, overlap))
                    elif isinstance(overlap, g.Line):
                        local_overlap_lines.append((overlap.start_point, overlap.end_point))
                    else:
                        raise NotImplementedError
                if not local_overlap_lines:
                    continue
                local_overlap_lines.sort(key=lambda piece: own_start_point.vector_to(piece[1]).squared_magnitude)
                if overlap_lines and not local_overlap_lines[0][0] == overlap_lines[-1][1]:
                    close()
                    overlap_lines = []
                overlap_lines.extend(local_overlap_lines)
            if overlap_lines:
                close()
            return overlap_polylines

        def combine_with(self, other):
            overlaps = self.find_overlaps(other)
            if len(overlaps) != 1:
                if not self.points or not other.points or self.end_point == other.start_point:
                    return Polyline._concatenate(self, other)
                if self.end_point == other.end_point:
                    return Polyline._concatenate(self, other.get_reversed_polyline())
                if self.start_point == other.end_point:
                    return Polyline._concatenate(other, self)
                if self.start_point == other.start_point:
                    return Polyline._concatenate(other.get_reversed_polyline(), self)
                raise ValueError(f"Only polylines with exactly one overlapping region can be combined, "
                                 f"{len(overlaps)} were found.")
            overlap = overlaps[0]
            combined = Polyline([])

            def add(part):
                nonlocal combined
                combined = Polyline._concatenate(combined, part)

            message = "The overlapping region of two combined polylines must lie at either end of those polylines"
            if overlap.end_point == self.end_point and not overlap.start_point == self.start_point:
                add(self.split(overlap.start_point)[0])
                add(overlap)
                if overlap.start_point == other.start_point:
                    add(other.split(overlap.end_point)[1])
                elif overlap.start_point == other.end_point:
                    add(other.get_reversed_polyline().split(overlap.end_point)[1])
                else:
                    raise ValueError(message)
            elif overlap.start_point == self.start_point and not overlap.end_point == self.end_point:
                if overlap.end_point == other.end_point:
                    add(other.split(overlap.start_point)[0])
                elif overlap.end_point == other.start_point:
                    add(other.get_reversed_polyline().split(overlap.start_point)[0])
                else:
                    raise ValueError(message)
                add(overlap)
                add(self.split(overlap.end_point)[1])
            elif ((overlap.start_point == other.start_point and overlap.end_point == other.end_point)
                  or (overlap.start_point == other.end_point and overlap.end_point == other.start_point)):
                add(self.split(overlap.start_point)[0])
                add(overlap)
                add(self.split(overlap.end_point)[1])
            elif overlap.start_point == self.start_point and overlap.end_point == self.end_point:
                if other.find_overlaps(overlap)[0].is_equal_to(overlap):
                    add(other.split(overlap.start_point)[0])
                    add(overlap)
                    add(other.split(overlap.end_point)[1])
                else:
                    other_reversed = other.get_reversed_polyline()
                    add(other_reversed.split(overlap.start_point)[0])
                    add(overlap)
                    add(other_reversed.split(overlap.end_point)[1])
            return combined

        @classmethod
        def get_lowest_or_highest_profile_x(cls, profile_1, profile_2, lowest):
            if not profile_1.is_monotonic_ascending_x(strict=False):
                raise ValueError("profile_1 is not monotonic ascending in x direction")
            if not profile_2.is_monotonic_ascending_x(strict=False):
                raise ValueError("profile_2 is not monotonic ascending in x direction")
            if not profile_1.points or not profile_2.points:
                return Polyline([])
            p1_x_min, p2_x_min = profile_1.x_min, profile_2.x_min
            p1_x_max, p2_x_max = profile_1.x_max, profile_2.x_max
            x_min, x_max = max(p1_x_min, p2_x_min), min(p1_x_max, p2_x_max)
            p1_start = profile_1.intersections_with_x_location(x_min)[-1]
            p1_end = profile_1.intersections_with_x_location(x_max)[0]
            p2_start = profile_2.intersections_with_x_location(x_min)[-1]
            p2_end = profile_2.intersections_with_x_location(x_max)[0]
            profile_1 = profile_1.get_polyline_between(p1_start, p1_end, True)
            profile_2 = profile_2.get_polyline_between(p2_start, p2_end, True)
            intersections = profile_1.intersections_with_polyline(profile_2)
            p1_section_ends = [p1_start] + intersections + [p1_end]
            p2_section_ends = [p2_start] + intersections + [p2_end]
            result_profile = cls([])
            for p1_section_start, p1_section_end, p2_section_start, p2_section_end in zip(
                    p1_section_ends[:-1], p1_section_ends[1:], p2_section_ends[:-1], p2_section_ends[1:]):
                p1_part = p2_part = None
                if not p1_section_start == p1_section_end:
                    p1_part = profile_1.get_polyline_between(p1_section_start, p1_section_end, True)
                if not p2_section_start == p2_section_end:
                    p2_part = profile_2.get_polyline_between(p2_section_start, p2_section_end, True)
                if p1_part is not None and p2_part is not None:
                    part = cls._find_lowest_or_highest_profile(p1_part, p2_part, lowest)
                    result_profile = result_profile.combine_with(part)
            return result_profile

        @staticmethod
        def _find_lowest_or_highest_profile(p1, p2, lowest):
            def differ(a, b):
                return not math.isclose(a, b, abs_tol=atol())

            for point in p1.points:
                profile_2_y = p2.intersections_with_x_location(point.x)[0].y
                if differ(point.y, profile_2_y):
                    if (point.y < profile_2_y) if lowest else (point.y > profile_2_y):
                        return p1
                    if (point.y > profile_2_y) if lowest else (point.y < profile_2_y):
                        return p2
            for point in p2.points:
                profile_1_y = p1.intersections_with_x_location(point.x)[0].y
                if differ(point.y, profile_1_y):
                    if (point.y < profile_1_y) if lowest else (point.y > profile_1_y):
                        return p2
                    if (point.y > profile_1_y) if lowest else (point.y < profile_1_y):
                        return p1
            return p1

    return Polyline
