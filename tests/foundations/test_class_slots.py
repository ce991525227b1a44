"""Point and Vector answer a call of the class and == / != from their own slots while the class is
as built; a patched class, a subclass and awkward arguments take the host's protocol and so run
the members as they stand."""
import math

import pytest
from hypothesis import example, given, settings, strategies as st

from ostrel import geometry
from ostrel.geometry import Point, Vector


@pytest.mark.parametrize("cls", [Point, Vector])
def test_a_patched_class_is_called_through_its_members(monkeypatch, cls):
    calls, init, eq = [], cls.__init__, cls.__eq__
    monkeypatch.setattr(cls, "__init__", lambda self, *a, **k: calls.append(a) or init(self, *a, **k))
    monkeypatch.setattr(cls, "__eq__", lambda self, other: calls.append("==") or eq(self, other))
    assert cls(1, 2) == cls(1, 2.0) and not cls(1, 2) != cls(1, 2) and cls(1, 2) != cls(1, 3)
    assert calls == [(1, 2), (1, 2.0), "==", (1, 2), (1, 2), "==", (1, 2), (1, 3), "=="]
    monkeypatch.undo()
    assert cls(1, 2) == cls(1, 2 + 1e-12) and cls(1, 2) != cls(1, 2.1) and not cls(1, 2) != cls(1, 2)


@pytest.mark.parametrize("cls", [Point, Vector])
def test_subclasses_and_awkward_arguments_take_the_hosts_protocol(cls):
    class Own(cls):
        def __eq__(self, other):
            return "own"
    assert (Own(1, 2) == cls(1, 2), cls(1, 2) == Own(1, 2), Own(1, 2) != cls(5, 5)) == ("own", "own", False)
    assert type(Own(1, 2)) is Own and cls(True, 2**53 + 1, z=-0.0)[1] == float(2**53 + 1)
    assert cls(1, 2) != (1.0, 2.0, 0.0) and not cls(1, 2) == (1.0, 2.0, 0.0)
    for arguments, error in [((1,), TypeError), ((1, 2, 3, 4), TypeError), ((10**400, 1), OverflowError),
                             (("1", 2), TypeError), ((None, 2), TypeError)]:
        with pytest.raises(error):
            cls(*arguments)


@pytest.mark.parametrize("cls", [Point, Vector])
def test_the_own_slots_return_once_a_patch_is_undone(monkeypatch, cls):
    monkeypatch.setattr(cls, "__eq__", lambda self, other: "patched")
    monkeypatch.setattr(cls, "__init__", lambda self, *a: None)
    assert cls(1, 2) == cls(3, 4) == "patched"
    monkeypatch.undo()
    cls(1, 2) == cls(1, 2)  # through the host's slots once, which puts the class's own back
    assert type(cls).__call__(cls, 1, 2).x == 1.0 and (cls(1, 2) != cls(1, 2.5)) is True


@settings(max_examples=300, deadline=None)
@example(1.0, 1.5, 0.4, 0.0)
@example(1.5, 1.0, 0.4, 0.0)
@example(math.inf, math.inf, 0.0, 0.0)
@given(st.floats(allow_nan=True), st.floats(allow_nan=True), st.sampled_from([0.0, 1e-9, 1e-3, 0.4, 0.6]),
       st.sampled_from([0.0, 1e-12, 1e-9, 0.5]))
def test_equality_is_math_isclose_with_the_module_tolerances(a, b, rel, abs_):
    with pytest.MonkeyPatch.context() as patch:
        patch.setattr(geometry, "ISCLOSE_RTOL", rel)
        patch.setattr(geometry, "ISCLOSE_ATOL", abs_)
        expected = math.isclose(a, b, rel_tol=rel, abs_tol=abs_)
        assert (Point(a, 0) == Point(b, 0), Vector(0, 0, a) != Vector(0, 0, b)) == (expected, not expected)
