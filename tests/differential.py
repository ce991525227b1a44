"""What the differential tests share. A plain instance of a module class takes the module's native
paths; an instance of an empty subclass (`steps(cls)`) takes the documented steps one by one. Both
must give the same results and raise the same exceptions with the same messages, which `outcome`
turns into comparable values."""
from ostrel.geometry import Line, Point, Vector

_SUBCLASSES = {}


def steps(cls):
    """An empty subclass of cls, made once: its instances take the documented steps."""
    if cls not in _SUBCLASSES:
        _SUBCLASSES[cls] = type("Steps" + cls.__name__, (cls,), {"__doc__": "Takes the documented steps."})
    return _SUBCLASSES[cls]


def xyz(p):
    return (p.x, p.y, p.z)


def describe(value):
    """Floats exactly (NaN equal to NaN), points, vectors and lines by their coordinates whatever
    their class, sequences item by item, exceptions by type and message."""
    if value is None or isinstance(value, bool):
        return value
    if isinstance(value, float):
        return repr(value)
    if isinstance(value, BaseException):
        return type(value).__name__, str(value)
    if isinstance(value, Line):
        return "Line", describe(value.start_point), describe(value.end_point)
    if isinstance(value, (Point, Vector)):
        return type(value).__mro__[-2].__name__, tuple(repr(c) for c in (value.x, value.y, value.z))
    if isinstance(value, (tuple, list)):
        return type(value).__name__, tuple(describe(v) for v in value)
    return repr(value)


def outcome(call, *args):
    """describe() of call(*args), or of the exception it raised."""
    try:
        return describe(call(*args))
    except Exception as error:  # the exception is part of the result
        return describe(error)
