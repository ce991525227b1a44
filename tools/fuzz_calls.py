"""Hostile calls against every callable of ostrel.geometry, run as a child process by
tests/module/test_fuzz.py, or by hand:

    python tools/fuzz_calls.py SEED START COUNT

makes calls START .. START+COUNT-1 and prints "call I: DESCRIPTION" before each one, so that the
parent can name the call a crash happened in, and "FAIL I: ..." for every SystemError. Call I
depends only on SEED and I, so one call can be replayed on its own. A watchdog ends the process
with "RUNAWAY I" when one call holds more than MEMORY_LIMIT bytes or runs for TIME_LIMIT seconds.
"""
import faulthandler
import gc
import inspect
import logging
import math
import os
import random
import sys
import threading
import time
import warnings
from types import ModuleType as Module

import numpy as np

from ostrel import geometry as g

BUGGY = ("returned NULL without setting", "returned a result with an exception set")
SKIP = {"__dict__", "__doc__", "__module__", "__weakref__", "__abstractmethods__", "_abc_impl", "__slots__"}
MEMORY_LIMIT, TIME_LIMIT = 2 << 30, 30.0


def own(value):
    return getattr(value, "__module__", None) == "ostrel.geometry"


def P(x=0.0, y=0.0, z=0.0):
    return g.Point(x, y, z)


def assembly():
    return g.TriangleAssembly([g.Triangle(P(), P(1), P(0, 1))])


# Known-good constructor arguments; classes without an entry get arguments tried from VALID.
KNOWN = {"Point": lambda: (1.0, 2.0, 3.0), "Vector": lambda: (1.0, -2.0, 0.5), "Line": lambda: (P(), P(1, 2)),
         "Triangle": lambda: (P(), P(1), P(0, 1)), "Material": lambda: ("steel", 7.8, 2.0),
         "TriangleAssembly": lambda: ([g.Triangle(P(), P(1), P(0, 1))],), "Group": lambda: ([assembly()],),
         "Pattern": lambda: (assembly(), [[0, 0, 0], [1, 0, 0]]),
         "LinearPattern": lambda: (assembly(), [1, 0, 0], 2, 1.5),
         "BidirectionalPattern": lambda: (assembly(), [1, 0, 0], [0, 1, 0], 2, 2, 1.0, 1.0),
         "Extrusion": lambda: ([P(), P(0, 1), P(1, 1), P(1, 0), P()], g.Line(P(), P(0, 0, 2))),
         "RectangularExtrusion": lambda: (1.0, 2.0, g.Line(P(), P(3, 0, 0))), "SquareBeam": lambda: (1.0, 2.0, 3.0),
         "Arc": lambda: (P(2), P(3), P(2, 1)), "LineRevolve": lambda: (g.Line(P(1), P(2, 3)),),
         "ArcRevolve": lambda: (g.Arc(P(2), P(2, 1), P(3)),),
         "ArcExtrusion": lambda: ([P(), P(0, 1), P(1, 1), P(1, 0), P()], g.Arc(P(), P(2), P(0, 2)), 0.0, 3),
         "CircularExtrusion": lambda: (0.5, g.Line(P(), P(1, 2, 3))), "Cone": lambda: (1.0, 2.0),
         "Sphere": lambda: (P(1, 2, 3), 1.0, 8.0, 6.0), "Torus": lambda: (0.5, 2.0), "CartesianAxes": lambda: ()}

VALID = [lambda c: P(1, 2), lambda c: P(-1, 0.5, 3), lambda c: g.Vector(1, 0, 0), lambda c: g.Vector(0, 0, 0),
         lambda c: g.Line(P(), P(3, 4)), lambda c: g.Line(P(0, 1), P(0, 5)), lambda c: g.Triangle(P(), P(1), P(0, 1)),
         lambda c: [P(), P(1), P(1, 1), P(0, 1)], lambda c: [P(), P(1, 1), P(2, 0), P(3, 2)],
         lambda c: (1.0, 2.0, 3.0), lambda c: [0.5, -1.0, 2.0], lambda c: [g.Triangle(P(), P(1), P(0, 1))],
         lambda c: assembly(), lambda c: g.Material("m"), lambda c: 0, lambda c: 2, lambda c: 0.5, lambda c: True,
         lambda c: "#ff8000", lambda c: (0.0, 1.0), lambda c: np.eye(4), lambda c: "v 0 0 0\nf 1 2 3\n",
         lambda c: type("SubPoint", (g.Point,), {})(1, 1)]


def bounded(index):
    """Ends iteration by the sequence protocol, which would otherwise never stop."""
    if isinstance(index, int) and index > 4:
        raise IndexError(index)
    return True


class Trap:
    """Every protocol slot of this object raises, runs code that empties the call's lists, or lies.

    A trap that sits in a list empties lists only from its comparison, hash and attribute slots:
    numpy keeps borrowed items of a list while it converts the list's items to numbers, and would
    crash on a list emptied meanwhile (so would a plain Python caller handing numpy the same list).
    """

    def __init__(self, ctx, rng, contained=False):
        self.ctx, self.mode = ctx, {n: rng.randrange(4) for n in
                                    ("float", "index", "iter", "len", "item", "eq", "hash", "bool", "attr")}
        if contained:
            for slot in ("float", "index", "iter", "len", "item", "bool"):
                self.mode[slot] = rng.choice([0, 2, 3])

    def act(self, slot, good, odd):
        mode = self.mode[slot]
        if mode == 0:
            raise RuntimeError(f"trap {slot}")
        if mode == 1:
            self.ctx.wreck()
        return odd if mode == 2 else good

    __float__ = lambda s: s.act("float", 0.5, 1.5)
    __index__ = __int__ = lambda s: s.act("index", 1, 2)
    __iter__ = lambda s: iter(s.act("iter", [1.0, 2.0, 3.0], [1.0, s]))
    __len__ = lambda s: s.act("len", 3, 7)
    __getitem__ = lambda s, i: bounded(i) and s.act("item", 1.0, "text")
    __eq__ = lambda s, o: s.act("eq", False, np.array([1, 0]))
    __hash__ = lambda s: s.act("hash", 7, hash("_x"))
    __bool__ = lambda s: s.act("bool", True, False)
    __getattr__ = lambda s, n: s.act("attr", 1.0, s) if not n.startswith("__") else object.__getattribute__(s, n)


class ShadowKey:
    """A dict key that hashes like a field name; comparing it (a field read) wrecks the call's lists."""

    def __init__(self, ctx, name):
        self.ctx, self.name, self.armed = ctx, name, False

    __hash__ = lambda s: hash(s.name)

    def __eq__(self, other):
        if self.armed:
            self.ctx.wreck()
        return False


class Ctx:
    """The values of one call; wreck() empties every list among them and inside them."""

    def __init__(self, rng):
        self.rng, self.values, self.labels = rng, [], []

    def wreck(self):
        for value in list(self.values):
            fields = vars(value).values() if hasattr(value, "__dict__") and not isinstance(value, (type, Module)) else ()
            for item in [value, *fields]:
                if isinstance(item, (list, dict)):
                    item.clear()
        if self.rng.random() < 0.2:
            gc.collect()

    def typed(self, annotation):
        """A value of the annotated class (points on a coarse grid, so that they coincide and line
        up), of a meddling subclass now and then, or a list of them."""
        name, many = annotation
        cls, rng = getattr(g, name), self.rng

        def one():
            if cls is g.Point:
                return P(rng.randrange(-2, 3), rng.randrange(-2, 3))
            if cls is g.Polyline:
                xs = sorted(rng.randrange(-3, 4) for _ in range(rng.randrange(2, 8)))
                return rng.choice([cls, meddling_subclass(self, cls)])([P(x, rng.randrange(-2, 3)) for x in xs])
            return instance(self, cls, meddled=rng.random() < 0.3)
        value = [one() for _ in range(rng.randrange(7))] if many else one()
        self.values.append(value)
        self.labels.append(f"typed:{type(value).__name__}")
        return value

    def shadowed(self, obj):
        d = vars(obj)
        name = self.rng.choice([k for k in d if isinstance(k, str)] or ["_x"])
        key, items = ShadowKey(self, name), dict(d)
        d.clear()
        d[key] = None
        d.update(items)
        key.armed = True
        return obj

    def value(self, hostile=0.6, count=False):
        rng = self.rng
        if rng.random() < hostile:
            label, make = rng.choice(HOSTILE)
            value = make(self)
            if count and isinstance(value, int) and abs(value) > 64:
                value = rng.choice([-1, 0, 3])  # the documented steps loop once per element: no runaway counts
        else:
            label, value = "valid", rng.choice(VALID)(self)
            if rng.random() < 0.15 and hasattr(value, "__dict__") and vars(value):
                key = rng.choice(list(vars(value)))  # a valid object with one field replaced
                setattr(value, key, self.value(0.8))
                label = f"valid with .{key} wrong"
        self.values.append(value)
        self.labels.append(f"{label}:{type(value).__name__}")
        return value


def shrinking_list(ctx, cls=list):
    items = cls([P(), P(1), P(1, 1)])
    trap = Trap(ctx, ctx.rng, contained=True)
    trap.mode["eq"] = 1
    items.insert(ctx.rng.randrange(4), trap)
    ctx.values.append(items)
    return items


HOSTILE = [(repr(v), lambda c, v=v: v) for v in
           [None, "text", "", b"bytes", math.nan, math.inf, -math.inf, -0.0, 1e308, 5e-324, 10**400, -(10**400),
            2**63, -(2**63) - 1, 2**31, True, False, -1, 0, 1 + 2j]]
HOSTILE += [
    ("lists", lambda c: c.rng.choice([[], [1], [1.0, 2.0], [1, 2, 3], [1, 2, 3, 4], list(range(40)), [[0, 0, 0]] * 3,
                                       [None] * 3, [[P(), P(1)]], [P()] * 2, [P(), P(1), P()], [P(), P(1), P(2)]])),
    ("tuples", lambda c: c.rng.choice([(), (1,), (1.0, 2.0), (1, 2, 3), (math.nan,) * 3, ("a", "b", "c")])),
    ("numpy", lambda c: c.rng.choice([np.zeros(3), np.array([math.nan] * 3), np.zeros((4, 4)), np.zeros(0),
                                       np.array(["a", "b"]), np.array([[1, 2], [3, 4]]), np.float64(1), np.int64(2)])),
    ("object", lambda c: c.rng.choice([object(), {}, set(), range(3), iter([1, 2, 3]), type, g])),
    ("float subclass", lambda c: type("F", (float,), {})(1e-9)),
    ("trap", lambda c: Trap(c, c.rng)),
    ("list of traps", lambda c: [Trap(c, c.rng, contained=True) for _ in range(3)]),
    ("shrinking list", shrinking_list),
    ("shrinking list subclass", lambda c: shrinking_list(c, type("L", (list,), {}))),
    ("point with shadowed field", lambda c: c.shadowed(P(1, 2, 3))),
    ("points, one with a shadowed field", lambda c: [P(), c.shadowed(P(1, 1)), P(0, 1)]),
    ("triangle with a shadowed point", lambda c: g.Triangle(P(), c.shadowed(P(1)), P(0, 1))),
    ("assembly with a shadowed point", lambda c: g.TriangleAssembly([g.Triangle(P(), c.shadowed(P(1)), P(0, 1))])),
    ("line with a shadowed point", lambda c: g.Line(c.shadowed(P()), P(1, 2))),
    ("pair of points, shadowed", lambda c: [c.shadowed(P()), P(2, 2)]),
    ("point-like", lambda c: type("PointLike", (), {"x": 1.0, "y": Trap(c, c.rng), "z": 0.0, "_x": 1.0})()),
    ("instance of a subclass", lambda c: instance(c, c.rng.choice(CLASSES), derived=True)),
    ("instance of a meddling subclass", lambda c: instance(c, c.rng.choice(CLASSES), meddled=True)),
    ("instance", lambda c: instance(c, c.rng.choice(CLASSES))),
]


def subclass(ctx, cls):
    """A subclass of cls with two members replaced by traps."""
    attrs = {}
    for name in ctx.rng.sample(["__eq__", "__iter__", "__getitem__", "__len__", "__float__", "x", "_name"], 2):
        trap = Trap(ctx, ctx.rng)
        if name in ("x", "_name"):
            attrs[name] = property(lambda s, t=trap: t.act("attr", 1.0, t))
        else:
            attrs[name] = lambda s, *a, t=trap: bounded(a[0] if a else 0) and t.act("eq", False, t)
    try:
        return type("Sub" + cls.__name__, (cls,), attrs)
    except TypeError:
        return cls


def empty_lists_holding(ctx, objects):
    """Empties every small list that holds one of the objects, or an item or field of one of them
    (the points of a polyline, say): the lists a native member is walking, which a caller
    reaches through the collector."""
    reached = list(objects)
    for obj in objects:
        parts = list(obj) if isinstance(obj, (list, tuple)) else list(getattr(obj, "__dict__", {}).values())
        reached += parts + [item for part in parts if isinstance(part, list) for item in part]
    kept = {id(ctx.values), id(reached), id(CLASSES), id(TARGETS), id(VALID), id(HOSTILE)}
    for obj in reached:
        if isinstance(obj, (int, float, str, type(None), type, Module)):
            continue
        for holder in gc.get_referrers(obj):
            if type(holder) is list and len(holder) < 1000 and id(holder) not in kept:
                holder.clear()


def odd_result(ctx, result):
    """The result of a member, turned into an object of another type than the caller expects."""
    class Sums(tuple):  # a sequence whose `+` gives tuples either way round
        __add__ = lambda s, o: Sums(tuple(s) + tuple(o))
        __radd__ = lambda s, o: Sums(tuple(o) + tuple(s))
    choices = [None, Trap(ctx, ctx.rng), 1.5, "text"]
    if isinstance(result, (list, tuple)):
        choices += [tuple(result), Sums(result), iter(result), list(result)[::-1], list(result) + [Trap(ctx, ctx.rng)],
                    result[:1]]
    return ctx.rng.choice(choices)


def meddling(ctx, original, meddles, modes=(0, 1, 2)):
    """`original` wrapped so that its first calls empty the lists that hold their arguments (mode 0),
    or the result (1), or give a result of an unexpected type (2)."""
    mode, calls = ctx.rng.choice(modes), [0]

    def wrapper(*args, **kwargs):
        calls[0] += 1
        active = calls[0] <= meddles
        if active and mode == 0:
            empty_lists_holding(ctx, args)
        result = original(*args, **kwargs)
        if active and mode == 1:
            empty_lists_holding(ctx, (result, *args))
        return odd_result(ctx, result) if active and mode == 2 else result
    return wrapper


def meddling_subclass(ctx, cls, names=None, modes=(0, 1, 2)):
    """A subclass of cls whose own methods and properties (the names given, or three at random)
    call the module's and then meddle: they empty the lists being read or return objects of
    unexpected types."""
    if names is None:
        names = sorted({n for k in cls.__mro__ if own(k) for n in vars(k)} - SKIP - {"__init__", "__new__", "__repr__"})
        names = ctx.rng.sample(names, min(3, len(names)))
    attrs = {}
    for name in names:
        raw = inspect.getattr_static(cls, name)
        meddles = ctx.rng.choice([1, 3])
        if isinstance(raw, staticmethod):
            attrs[name] = staticmethod(meddling(ctx, raw.__func__, meddles, modes))
        elif isinstance(raw, classmethod):
            attrs[name] = classmethod(meddling(ctx, raw.__func__, meddles, modes))
        elif isinstance(raw, property) and raw.fget is not None:
            attrs[name] = property(meddling(ctx, raw.fget, meddles, modes), raw.fset)
        elif callable(raw):
            attrs[name] = meddling(ctx, raw, meddles, modes)
    try:
        return type("Meddling" + cls.__name__, (cls,), attrs)
    except TypeError:
        return cls


def instance(ctx, cls, derived=False, meddled=False):
    make = BUILDERS.get(cls)
    if make is None:
        return None
    kind = meddling_subclass(ctx, cls) if meddled else subclass(ctx, cls) if derived or ctx.rng.random() < 0.1 else cls
    try:
        return kind(*make(ctx))
    except Exception:
        return cls(*make(ctx))


def find_builder(cls, rng):
    """Constructor arguments for cls: the known ones, else the first of some random tries that works."""
    if cls.__name__ in KNOWN:
        return lambda ctx: KNOWN[cls.__name__]()
    for _ in range(200):
        picks = [rng.randrange(len(VALID)) for _ in range(rng.randrange(5))]
        try:
            cls(*[VALID[i](None) for i in picks])
        except Exception:
            continue
        return lambda ctx, picks=picks: [VALID[i](ctx) for i in picks]
    return None


def parameters(function):
    """(required positional, most positional, positional names, keyword-only names, the annotations
    of the positional parameters that name a class of the module, or a list of one)."""
    try:
        params = inspect.signature(function).parameters.values()
    except (TypeError, ValueError):
        return 0, 3, [], [], []
    positional = [p for p in params if p.kind in (p.POSITIONAL_ONLY, p.POSITIONAL_OR_KEYWORD)]
    required = sum(p.default is p.empty for p in positional)
    star = any(p.kind == p.VAR_POSITIONAL for p in params)
    classes = [str(p.annotation).removeprefix("List[").removesuffix("]") for p in positional]
    return (required, len(positional) + 2 * star, [p.name for p in positional],
            [p.name for p in params if p.kind == p.KEYWORD_ONLY],
            [(name, str(p.annotation).startswith("List[")) if isinstance(getattr(g, name, None), type) else None
             for name, p in zip(classes, positional)])


def is_count(name):
    return name.startswith(("number", "n_", "count")) or name in ("n", "sections", "segments")


def plan(ctx, function, skip_self=False):
    rng = ctx.rng
    low, high, names, keywords, annotations = parameters(function)
    names, annotations = names[skip_self:], annotations[skip_self:]
    low, high = max(low - skip_self, 0), max(high - skip_self, 0)
    n = rng.randint(low, high) if rng.random() < 0.8 else rng.randrange(6)
    args = [ctx.typed(annotations[i]) if i < len(annotations) and annotations[i] and rng.random() < 0.75
            else ctx.value(count=i < len(names) and is_count(names[i])) for i in range(n)]
    kwargs = {k: ctx.value(count=is_count(k)) for k in keywords if rng.random() < 0.3}
    if rng.random() < 0.05:
        kwargs["bogus"] = 1
    return args, kwargs


class Patch:
    """Replaces a module global or a class member for the duration of one call."""

    def __init__(self, ctx):
        rng, self.name = ctx.rng, None
        odd = [-1, "x", None, type("F", (float,), {})(1e-6), math.nan, object(), Trap(ctx, rng), 0.0]
        if rng.random() < 0.5:
            self.target, self.name = g, rng.choice([n for n in vars(g) if n[:2] != "__"])
            original = getattr(g, self.name)
            if isinstance(original, type) and rng.random() < 0.5:
                odd.append(subclass(ctx, original))
            if own(original) and not isinstance(original, type):
                odd += [meddling(ctx, original, 3)] * 4
            self.value = rng.choice(odd)
        else:
            self.target = rng.choice(CLASSES)
            names = [n for n in vars(self.target) if n not in SKIP]
            if not names:
                return
            self.name = rng.choice(names)
            self.value = rng.choice([property(lambda s, v=rng.choice(odd): v), lambda *a: rng.choice(odd),
                                     property(lambda s: 1.0 / 0), rng.choice(odd)])
            if rng.random() < 0.5:
                self.value = meddling_subclass(ctx, self.target, [self.name]).__dict__.get(self.name, self.value)
        self.label = f" with {getattr(self.target, '__name__', '?')}.{self.name} replaced by {type(self.value).__name__}"

    def __enter__(self):
        self.saved = self.target.__dict__.get(self.name, self) if self.name else self
        if self.name:
            setattr(self.target, self.name, self.value)

    def __exit__(self, *exc):
        if self.saved is not self:
            setattr(self.target, self.name, self.saved)


class MeddlingWorld:
    """For the duration of one call, the module's functions and its classes' members meddle: in
    most worlds half of them at random empty the lists being walked, in the others a few return
    objects of unexpected types. Native paths step aside, and the documented steps meet it all."""

    def __init__(self, ctx):
        self.saved, rng = [], ctx.rng
        functions = [(g, n) for n, v in vars(g).items() if own(v) and not isinstance(v, type) and callable(v)]
        members = [(cls, n) for cls in CLASSES for n in vars(cls) if n not in SKIP | {"__init__", "__new__"}]
        if rng.random() < 0.7:
            self.modes, self.targets = (0, 1), [t for t in functions + members if rng.random() < 0.5]
        else:
            self.modes, self.targets = (2,), rng.sample(functions + members, 3)
        self.ctx, self.label = ctx, f" in a meddling world {self.modes}"

    def __enter__(self):
        for owner, name in self.targets:
            raw = owner.__dict__[name]
            replacement = meddling_subclass(self.ctx, owner, [name], self.modes).__dict__.get(name) \
                if isinstance(owner, type) else meddling(self.ctx, raw, 3, self.modes)
            if replacement is not None:
                self.saved.append((owner, name, raw))
                setattr(owner, name, replacement)

    def __exit__(self, *exc):
        for owner, name, raw in reversed(self.saved):
            setattr(owner, name, raw)


def make_call(seed, index):
    """Call I: the first pass over TARGETS on the module's classes, the second on subclasses that
    meddle, and from there on a random target, meddling one time in three."""
    ctx = Ctx(random.Random(f"{seed}:{index}"))
    name, kind, owner = TARGETS[index % len(TARGETS)] if index < 2 * len(TARGETS) else ctx.rng.choice(TARGETS)
    base = owner
    if index // len(TARGETS) == 1 or (index >= 2 * len(TARGETS) and ctx.rng.random() < 0.35):
        owner = meddling_subclass(ctx, owner) if isinstance(owner, type) and owner in BUILDERS else owner
    if kind == "function":
        function = owner
        args, kwargs = plan(ctx, function)
    elif kind == "class-level":
        function = getattr(owner, name)
        args, kwargs = plan(ctx, function)  # a class method bound to its class: no cls in the signature
    elif kind == "unbound":  # the class's function with any first argument
        function = getattr(owner, name)
        args, kwargs = plan(ctx, function)
    else:
        try:
            obj = owner(*BUILDERS[base](ctx)) if owner is not base else instance(ctx, owner)
        except Exception:  # a meddling member that the constructor calls
            obj = instance(ctx, base)
        ctx.values.append(obj)
        if ctx.rng.random() < 0.15 and vars(obj):
            setattr(obj, ctx.rng.choice(list(vars(obj))), ctx.value(0.9))
        if kind == "method":
            function = getattr(obj, name)
            args, kwargs = plan(ctx, function, skip_self=True)
        else:  # property: read, write, delete
            action = ctx.rng.choice(["get", "get", "set", "del"])
            args = [obj, name] + ([ctx.value()] if action == "set" else [])
            function, kwargs = {"get": getattr, "set": setattr, "del": delattr}[action], {}
            name = f"{action} .{name}"
    draw = ctx.rng.random()
    patch = Patch(ctx) if draw < 0.12 else MeddlingWorld(ctx) if draw < 0.35 else None
    label = name if kind == "function" and owner is base else f"{owner.__name__}.{name}"
    description = f"{label}({', '.join(ctx.labels)}){getattr(patch, 'label', '')}"
    return function, args, kwargs, patch, description


class Watchdog(threading.Thread):
    """Ends the process when the current call holds too much memory or time: the documented
    steps of some members loop once per element, and a hostile size would run for hours."""

    def __init__(self):
        super().__init__(daemon=True)
        self.index, self.started = None, time.monotonic()

    def run(self):
        page = os.sysconf("SC_PAGE_SIZE")
        while True:
            time.sleep(0.2)
            with open("/proc/self/statm") as statm:
                resident = int(statm.read().split()[1]) * page
            if resident > MEMORY_LIMIT or time.monotonic() - self.started > TIME_LIMIT:
                print(f"RUNAWAY {self.index}: {resident >> 20} MiB after {time.monotonic() - self.started:.0f} s",
                      flush=True)
                os._exit(3)

    def start_call(self, index):
        self.index, self.started = index, time.monotonic()


def run(seed, start, count):
    watchdog = Watchdog()
    watchdog.start()
    failures = 0
    for index in range(start, start + count):
        function, args, kwargs, patch, description = make_call(seed, index)
        print(f"call {index}: {description}", flush=True)
        watchdog.start_call(index)
        result = None
        try:
            if patch:
                with patch:
                    result = function(*args, **kwargs)
            else:
                result = function(*args, **kwargs)
            repr(result)
        except BaseException as error:  # noqa: B036 - everything but a SystemError is a clean outcome
            chain = [error]
            while chain[-1].__context__ is not None and len(chain) < 20:
                chain.append(chain[-1].__context__)
            bad = [e for e in chain if isinstance(e, SystemError) or any(t in str(e) for t in BUGGY)]
            if bad:
                failures += 1
                print(f"FAIL {index}: {description} -> {type(bad[0]).__name__}: {bad[0]}", flush=True)
        del args, kwargs, result
        if index % 64 == 0:
            gc.collect()
    print(f"done {failures}", flush=True)


faulthandler.enable()
warnings.simplefilter("ignore")
logging.disable(logging.CRITICAL)
CLASSES = [v for _, v in sorted(vars(g).items()) if own(v) and isinstance(v, type)]
BUILDERS = {cls: b for cls in CLASSES if (b := find_builder(cls, random.Random(cls.__name__))) is not None}
TARGETS = []
for _name, _value in sorted(vars(g).items()):
    if not own(_value) or not callable(_value):
        continue
    TARGETS.append((_name, "function", _value))  # a function, or a class's constructor
    if not isinstance(_value, type):
        continue
    for _member in sorted({n for k in _value.__mro__ if own(k) for n in vars(k)} - SKIP):
        raw = inspect.getattr_static(_value, _member)
        if isinstance(raw, (staticmethod, classmethod)):
            TARGETS.append((_member, "class-level", _value))
        elif callable(raw):
            TARGETS.append((_member, "unbound", _value))
            if _value in BUILDERS:
                TARGETS.append((_member, "method", _value))
        elif hasattr(raw, "__get__") and _value in BUILDERS:
            TARGETS.append((_member, "property", _value))

if __name__ == "__main__":
    run(sys.argv[1], int(sys.argv[2]), int(sys.argv[3]))
