"""A native path stands in for documented steps only while everything those steps call is the
module's own. For every member and function of the module, called on plain instances (where a
native path may run) and on instances of an empty subclass (where the documented steps run), a
call counter on each class member the steps call, installed one at a time, and on all module
functions at once, must count the same calls both ways: a native path that misses a patch would
count none."""
import inspect
from contextlib import contextmanager

import pytest

from ostrel import geometry as g
from ostrel.geometry import Point as P

import differential

CLASSES = [v for _, v in sorted(vars(g).items()) if isinstance(v, type) and v.__module__ == g.__name__]
FUNCTIONS = [n for n, v in sorted(vars(g).items())
             if callable(v) and not isinstance(v, type) and getattr(v, "__module__", None) == g.__name__]
SKIP = {"__dict__", "__doc__", "__module__", "__weakref__", "__abstractmethods__", "_abc_impl", "__new__",
        "__init_subclass__", "__subclasshook__", "__class_getitem__"}
def make(cls, steps, *args):
    return (differential.steps(cls) if steps else cls)(*args)


def ring(steps, closed=False):
    return [make(P, steps, *xy) for xy in [(0, 0), (2, 0), (2, 2), (1, 1), (0, 2)] + [(0, 0)] * closed]


def polyline(steps, heights=(1, 0, 1, 0)):
    return make(g.Polyline, steps, [make(P, steps, x, y) for x, y in enumerate(heights)])


def assembly(steps):
    return make(g.TriangleAssembly, steps, [make(g.Triangle, steps, P(0, 0), P(1, 0), P(0, 1))])


# Arguments by annotation, and the constructor arguments of each class.
VALUES = {
    "float": lambda s: 1.5, "int": lambda s: 3, "bool": lambda s: True, "str": lambda s: "a",
    "Point": lambda s: make(P, s, 1, 1), "Vector": lambda s: make(g.Vector, s, 1, 2, 0),
    "Line": lambda s: make(g.Line, s, make(P, s, 0, 2), make(P, s, 2, 0)),
    "Polyline": lambda s: polyline(s, (0, 1, 0, 1)), "List[Point]": lambda s: ring(s, closed=True),
    "Sequence[Point]": ring,
    "Tuple[float, float]": lambda s: (1.0, 2.0), "Tuple[float, float, float]": lambda s: (1.0, 2.0, 0.5),
    "Arc": lambda s: make(g.Arc, s, make(P, s, 2, 0), make(P, s, 2, 1), make(P, s, 3, 0)),
    "List[Triangle]": lambda s: [make(g.Triangle, s, P(0, 0), P(1, 0), P(0, 1))], "Material": lambda s: g.Material("m"),
    "GeoPoint": lambda s: make(g.GeoPoint, s, 52.0, 5.0), "TransformableObject": assembly,
}
for union, single in [("Union[Point, Tuple[float, float, float]]", "Point"),
                      ("Union[Vector, Tuple[float, float, float]]", "Vector")]:
    VALUES[union] = VALUES[single]
CONSTRUCTED = {
    "Point": lambda s: (1.0, 2.0, 0.0), "Vector": lambda s: (1.0, -2.0, 0.5), "Line": lambda s: (P(0, 0), P(1, 2)),
    "Triangle": lambda s: (P(0, 0), P(1, 0), P(0, 1)), "Material": lambda s: ("steel",),
    "Polyline": lambda s: ([make(P, s, x, y) for x, y in enumerate((0, 2, 1, 3))],),
    "Polygon": lambda s: (ring(s),), "TriangleAssembly": lambda s: ([make(g.Triangle, s, P(0, 0), P(1, 0), P(0, 1))],),
    "Group": lambda s: ([assembly(s)],), "Arc": lambda s: (make(P, s, 2, 0), make(P, s, 3, 0), make(P, s, 2, 1)),
    "LineRevolve": lambda s: (make(g.Line, s, P(1, 0), P(2, 3)),), "ArcRevolve": lambda s: (g.Arc(P(2, 0), P(2, 1), P(3, 0)),),
    "Cone": lambda s: (1.0, 2.0), "Sphere": lambda s: (P(1, 2, 3), 1.0, 8.0, 6.0), "Torus": lambda s: (0.5, 2.0),
    "GeoPoint": lambda s: (52.0, 5.0), "GeoPolyline": lambda s: ([g.GeoPoint(52, 5), g.GeoPoint(52.1, 5.1)],),
    "RDWGSConverter": lambda s: (),
}


def arguments(parameters, steps):
    """Values for the required positional parameters, or None where one has no known value."""
    values = []
    for p in parameters:
        if p.kind not in (p.POSITIONAL_ONLY, p.POSITIONAL_OR_KEYWORD) or p.default is not p.empty:
            break
        if str(p.annotation) not in VALUES:
            return None
        values.append(VALUES[str(p.annotation)](steps))
    return values


def calls():
    """(label, call(steps)) for every member of a class that can be built and every function; the
    parameters are read before any counter hides them."""
    found = []
    for name in FUNCTIONS:
        parameters = list(inspect.signature(getattr(g, name)).parameters.values())
        if arguments(parameters, False) is not None:
            found.append((name, lambda steps, name=name, p=parameters: getattr(g, name)(*arguments(p, steps))))
    for cls in CLASSES:
        if cls.__name__ not in CONSTRUCTED:
            continue
        built = lambda steps, cls=cls: make(cls, steps, *CONSTRUCTED[cls.__name__](steps))
        for member in sorted(set(vars(cls)) - SKIP):
            raw = inspect.getattr_static(cls, member)
            if isinstance(raw, property):
                found.append((f"{cls.__name__}.{member}", lambda steps, b=built, m=member: getattr(b(steps), m)))
                continue
            static = isinstance(raw, (staticmethod, classmethod))
            if not (static or callable(raw)):
                continue
            parameters = list(inspect.signature(getattr(cls, member)).parameters.values())[0 if static else 1:]
            if arguments(parameters, False) is None:
                continue

            def call(steps, cls=cls, member=member, static=static, parameters=parameters, built=built):
                target = (differential.steps(cls) if steps else cls) if static else built(steps)
                return getattr(target, member)(*arguments(parameters, steps))
            found.append((f"{cls.__name__}.{member}", call))
    return found


def counting(raw, key, counts):
    """raw (a function, property, static or class method) wrapped to count its calls under key."""
    def counted(function):
        def wrapper(*args, **kwargs):
            counts[key] = counts.get(key, 0) + 1
            return function(*args, **kwargs)
        return wrapper
    if isinstance(raw, property):
        return property(counted(raw.fget), raw.fset, raw.fdel) if raw.fget else None
    if isinstance(raw, (staticmethod, classmethod)):
        return type(raw)(counted(raw.__func__))
    return counted(raw) if callable(raw) else None


@contextmanager
def counters(targets, counts):
    saved = []
    try:
        for owner, name in targets:
            raw = vars(owner)[name]
            replacement = counting(raw, (owner.__name__, name), counts)
            if replacement is not None:
                saved.append((owner, name, raw))
                setattr(owner, name, replacement)
        yield
    finally:
        for owner, name, raw in reversed(saved):
            setattr(owner, name, raw)


def outcome(call, steps, targets):
    counts = {}
    with counters(targets, counts):
        try:
            result = call(steps)
            kind = type(result).__name__.removeprefix("Steps")
        except Exception as error:  # the same exception both ways, by type
            kind = type(error).__name__
    return counts, kind


MEMBERS = [(cls, name) for cls in CLASSES for name in sorted(set(vars(cls)) - SKIP)]
CALLS = calls()


@pytest.mark.filterwarnings("ignore")
@pytest.mark.parametrize("label, call", CALLS, ids=[label for label, _ in CALLS])
def test_native_paths_step_aside_for_what_their_steps_call(label, call):
    steps_counts, _ = outcome(call, True, MEMBERS)
    problems = []
    for owner, name in MEMBERS:
        if (owner.__name__, name) in steps_counts:
            native, steps = outcome(call, False, [(owner, name)]), outcome(call, True, [(owner, name)])
            if native != steps:
                problems.append(f"{owner.__name__}.{name}: {native} with a native path, {steps} by the steps")
    native, steps = outcome(call, False, [(g, n) for n in FUNCTIONS]), outcome(call, True, [(g, n) for n in FUNCTIONS])
    if native != steps:
        problems.append(f"module functions: {native} with a native path, {steps} by the steps")
    assert not problems, "\n".join(problems)


def test_every_family_with_a_native_path_is_reached():
    labels = {label for label, _ in CALLS}
    for member in ["Polygon.cross_sectional_area", "Polygon._is_simple", "Polyline.intersections_with_polyline",
                   "Polyline.get_lowest_or_highest_profile_x", "Line.collinear", "Arc.discretize",
                   "calculate_intersection_bounded_lines", "circumference_is_clockwise", "Triangle.area",
                   "TriangleAssembly._get_vertices_and_faces", "RDWGSConverter.from_rd_to_wgs", "Vector.normalize"]:
        assert member in labels


def ring_points(*xy):
    return [P(*p) for p in xy]


# Module globals the documented steps call by name, with a call that reaches them through plain
# instances and the number of calls the steps make: a caller who replaces one sees the effect.
LOOKUPS = [
    ("_between_bounds", lambda: g.calculate_intersection_bounded_lines(g.Line((0, 0), (2, 2)), g.Line((0, 2), (2, 0))), 4),
    ("_between_bounds", lambda: g.x_between_bounds(1, 2, 3), 1),
    ("get_line_function_parameters", lambda: g.calculate_intersection_extended_line_with_y(g.Line((0, 0), (1, 1)), 5), 1),
    ("calculate_intersection_bounded_lines",
     lambda: g.Polyline(ring_points((0, 0), (2, 2))).intersections_with_polyline(g.Polyline(ring_points((1, -1), (1, 3)))), 1),
    ("find_overlap", lambda: g.Line((0, 0), (2, 2)).find_overlap(g.Line((1, 1), (3, 3)), True), 2),
    ("spherical_to_cartesian", lambda: g.Arc(P(1, 1), P(3, 1), P(1, 3)).discretize(5), 5),
    ("unit_vector", lambda: g.rotation_matrix(1.0, g.Vector(0, 0, 1)), 1),
    ("_current_next", lambda: g.circumference_is_clockwise(ring_points((0, 0), (0, 1), (1, 1), (1, 0), (0, 0))), 1),
    ("_current_next", lambda: g.ArcRevolve(g.Arc(P(3, 0), P(4, 0), P(3, 1)))._trimesh_linestring, 1),
    ("Vector", lambda: P(0, 0).vector_to((1, 2, 3)), 1),
    ("circumference_is_clockwise", lambda: g.Polygon(ring_points((0, 0), (1, 0), (1, 1), (0, 1))).centroid, 5),
    ("point_is_on_bounded_line", lambda: g.Polyline(ring_points((0, 0), (2, 0))).point_is_on_polyline(P(1, 0)), 1),
]


@pytest.mark.parametrize("name, call, count", LOOKUPS, ids=[name for name, _, _ in LOOKUPS])
def test_documented_steps_call_module_globals_by_name(monkeypatch, name, call, count):
    calls, original = [], getattr(g, name)
    monkeypatch.setattr(g, name, lambda *a, **k: calls.append(a) or original(*a, **k))
    call()
    assert len(calls) == count
