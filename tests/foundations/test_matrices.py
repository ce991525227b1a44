"""The 4x4 matrix builders, unit_vector and mirror_object."""
import math
import uuid

import numpy as np
import pytest
from hypothesis import given, strategies as st

from ostrel.geometry import (Point, Vector, mirror_object, reflection_matrix, rotation_matrix, scaling_matrix,
                             translation_matrix, unit_vector)

coordinate = st.floats(min_value=-100, max_value=100, allow_nan=False)
triple = st.tuples(coordinate, coordinate, coordinate)
direction = triple.filter(lambda d: math.hypot(*d) > 1e-3)


def apply(matrix, point):
    return (matrix @ [*point, 1.0])[:3]


class Shifted(Vector):
    coordinates = property(lambda self: (5.0, 6.0, 7.0))


def test_translation_and_scaling_read_vectors_through_coordinates():
    assert translation_matrix(Vector(1, 2, 3)).tolist() == [[1, 0, 0, 1], [0, 1, 0, 2], [0, 0, 1, 3], [0, 0, 0, 1]]
    scaling = scaling_matrix((2, 3, 4))
    assert scaling.dtype == float and scaling.tolist() == np.diag([2.0, 3.0, 4.0, 1.0]).tolist()
    assert translation_matrix(Shifted(1, 2, 3))[:3, 3].tolist() == [5, 6, 7]
    assert np.diag(scaling_matrix(Shifted(1, 2, 3))).tolist() == [5, 6, 7, 1]


@pytest.mark.parametrize("point, expected", [(None, (0, 1, 0)), ((1, 0, 0), (1, 0, 0)), (Point(0, 1), (1, 2, 0))])
def test_quarter_turn_about_z(point, expected):
    # cos(pi / 2) is not exactly zero: the matrix holds its rounding.
    assert np.allclose(apply(rotation_matrix(math.pi / 2, (0, 0, 1), point), (1, 0, 0)), expected)


@given(st.floats(min_value=-10, max_value=10), direction, triple)
def test_rotation_is_proper_and_fixes_its_axis_through_point(a, d, p):
    matrix = rotation_matrix(a, d, p)
    rotation = matrix[:3, :3]
    assert np.allclose(rotation @ rotation.T, np.eye(3), atol=1e-9)
    assert math.isclose(np.linalg.det(rotation), 1.0, rel_tol=1e-9)
    assert matrix[3].tolist() == [0, 0, 0, 1]
    assert np.allclose(apply(matrix, p), p, atol=1e-9)
    assert np.allclose(apply(matrix, np.add(p, d)), np.add(p, d), atol=1e-9)


@pytest.mark.parametrize("args, error, message", [
    ((None, (0, 0, 1)), TypeError, "must be real number, not NoneType"),
    ((math.inf, (0, 0, 1)), ValueError, "math domain error"),
    ((1.0, (0, 0, 1), ()), ValueError, "not aligned"),  # an empty point is not skipped
])
def test_rotation_errors(args, error, message):
    with pytest.raises(error, match=message):
        rotation_matrix(*args)


def test_reflection_normal_need_not_be_unit():
    assert apply(reflection_matrix((0, 0, 1), (0, 0, 2)), (0, 0, 0)).tolist() == [0, 0, 2]
    assert reflection_matrix(Point(0, 0), Vector(3, 0, 0)).tolist() == np.diag([-1.0, 1.0, 1.0, 1.0]).tolist()


@given(triple, direction)
def test_reflection_twice_is_identity_and_fixes_its_plane(p, n):
    matrix = reflection_matrix(p, n)
    assert np.allclose(matrix @ matrix, np.eye(4), atol=1e-9)
    assert math.isclose(np.linalg.det(matrix[:3, :3]), -1.0, rel_tol=1e-9)
    assert np.allclose(apply(matrix, p), p, atol=1e-9)


def test_unit_vector_modes():
    data = [3, 4]
    assert unit_vector(data).tolist() == [0.6, 0.8] and data == [3, 4]
    rows = np.array([[3.0, 4.0], [0.0, 2.0]])
    assert unit_vector(rows, axis=1).tolist() == [[0.6, 0.8], [0, 1]]
    assert np.array_equal(unit_vector(rows), rows / math.sqrt(29))
    out = np.empty((2, 2))
    assert unit_vector(rows, 1, out) is None and out.tolist() == [[0.6, 0.8], [0, 1]] and rows[0, 0] == 3.0
    assert unit_vector(rows, 0, rows) is None
    assert rows.tolist() == [[1, 4 / math.sqrt(20)], [0, 2 / math.sqrt(20)]]
    with pytest.warns(RuntimeWarning):
        assert np.isnan(unit_vector([0.0, 0.0, 0.0])).all()


class Mirrorable:
    def __init__(self):
        self.calls, self.parts = [], [1, 2]

    def mirror(self, point, normal):
        self.calls.append((point, normal))
        return "ignored"


def test_mirror_object_mirrors_a_deep_copy_with_a_new_uuid():
    original, point, normal = Mirrorable(), Point(1, 2), (0, 0, 1)
    copy = mirror_object(original, point, normal)
    assert type(copy) is Mirrorable and copy is not original and copy.parts is not original.parts
    assert copy.calls == [(point, normal)] and original.calls == []
    assert isinstance(copy._uuid, uuid.UUID) and copy._uuid.version == 1 and not hasattr(original, "_uuid")
    with pytest.raises(AttributeError, match="^Target object has no mirror method$"):
        mirror_object(Point(1, 2), Point(0, 0), (1, 0, 0))
