// The homogeneous 4x4 matrices of translation, scaling, rotation and reflection, for
// column vectors: a point [x, y, z, 1] is multiplied from the right. They are built
// through NumPy step by step, so that results and errors for odd input are NumPy's.
#include "foundations/arrays.hpp"
#include "foundations/float_kernel.hpp"
#include "foundations/numpy_calls.hpp"
#include "module/class_builder.hpp"

namespace ostrel {

namespace {

// A Vector is taken as its coordinates; anything else as it comes.
Ref vector_like(PyObject* o) {
  if (isinstance(o, global<"Vector">().get())) return getattr(o, id<"coordinates">());
  return Ref::borrow(o);
}

Ref identity4() {
  Ref four = new_int(4);
  return call(np_attr<"identity">().get(), {four.get()});
}

// The keys [:3, 3] and [:3, :3].
Ref last_column_key() {
  Ref rows = slice_to(3), column = new_int(3);
  return tuple({rows.get(), column.get()});
}
Ref upper_left_key() {
  Ref rows = slice_to(3), columns = slice_to(3);
  return tuple({rows.get(), columns.get()});
}

enum class TranslationMatrix { direction };
Ref translation_matrix(const Args& a) {
  Ref direction = vector_like(a[TranslationMatrix::direction]);
  Ref matrix = identity4();
  Ref key = last_column_key();
  assign(matrix.get(), key.get(), direction.get());
  return matrix;
}
constexpr Member translation_matrix_member =
    function("translation_matrix", "(direction: Vector-like) -> np.ndarray", translation_matrix,
             "The 4x4 matrix that translates by `direction`, a Vector or three numbers.");

enum class ScalingMatrix { scaling_vector };
Ref scaling_matrix(const Args& a) {
  Ref scaling_vector = vector_like(a[ScalingMatrix::scaling_vector]);
  Ref four = new_int(4);
  Ref shape = tuple({four.get(), four.get()});
  Ref matrix = call(np_attr<"zeros">().get(), {shape.get()});
  for (Py_ssize_t i = 0; i < 3; ++i) {
    Ref value = getitem(scaling_vector.get(), i);
    Ref index = new_int(i);
    Ref key = tuple({index.get(), index.get()});
    assign(matrix.get(), key.get(), value.get());
  }
  Ref one = new_int(1), three = new_int(3);
  Ref key = tuple({three.get(), three.get()});
  assign(matrix.get(), key.get(), one.get());
  return matrix;
}
constexpr Member scaling_matrix_member =
    function("scaling_matrix", "(scaling_vector: Vector-like) -> np.ndarray", scaling_matrix,
             "The 4x4 matrix that scales along x, y and z by the three factors of `scaling_vector`.");

// Rodrigues' formula: cos(a) I + (1 - cos(a)) u u^T + sin(a) [u]x, with the axis made
// unit first; through `point`, the translation keeps that point in place.
enum class RotationMatrix { angle, direction, point };
Ref rotation_matrix(const Args& a) {
  Ref direction = vector_like(a[RotationMatrix::direction]);
  PyObject* point = a[RotationMatrix::point];
  const double angle = a.num(RotationMatrix::angle);
  const double sina = kernel::math_sin(angle);
  const double cosa = kernel::math_cos(angle);

  Ref unit_vector = global<"unit_vector">();
  Ref head = slice_to(3);
  Ref axis = subscript(direction.get(), head.get());
  Ref unit_direction = call(unit_vector.get(), {axis.get()});

  Ref c = new_float(cosa);
  Ref diagonal = list({c.get(), c.get(), c.get()});
  Ref rotation = call(np_attr<"diag">().get(), {diagonal.get()});
  Ref outer = call(np_attr<"outer">().get(), {unit_direction.get(), unit_direction.get()});
  Ref complement = new_float(1.0 - cosa);
  Ref symmetric = check(PyNumber_Multiply(outer.get(), complement.get()));
  rotation = check(PyNumber_InPlaceAdd(rotation.get(), symmetric.get()));

  Ref s = new_float(sina);
  unit_direction = check(PyNumber_InPlaceMultiply(unit_direction.get(), s.get()));
  PyObject* u = unit_direction.get();
  Ref zero = new_float(0.0);
  Ref u2 = getitem(u, 2);
  Ref minus_u2 = neg(u2.get());
  Ref u1 = getitem(u, 1);
  Ref row0 = list({zero.get(), minus_u2.get(), u1.get()});
  Ref u2_again = getitem(u, 2);
  Ref u0 = getitem(u, 0);
  Ref minus_u0 = neg(u0.get());
  Ref row1 = list({u2_again.get(), zero.get(), minus_u0.get()});
  Ref u1_again = getitem(u, 1);
  Ref minus_u1 = neg(u1_again.get());
  Ref u0_again = getitem(u, 0);
  Ref row2 = list({minus_u1.get(), u0_again.get(), zero.get()});
  Ref skew = float_array({row0.get(), row1.get(), row2.get()});
  rotation = check(PyNumber_InPlaceAdd(rotation.get(), skew.get()));

  Ref matrix = identity4();
  Ref block = upper_left_key();
  assign(matrix.get(), block.get(), rotation.get());
  if (point != Py_None) {
    // np.array(..., copy=False) of the documented step means "copy only if needed",
    // which is np.asarray in every NumPy version.
    Ref asarray = np_attr<"asarray">();
    Ref coordinates = check(PySequence_Tuple(point));
    Ref kwnames = tuple({id<"dtype">()});
    Ref origin = call(asarray.get(),
                      {coordinates.get(), reinterpret_cast<PyObject*>(&PyFloat_Type)}, kwnames.get());
    Ref moved = call(np_attr<"dot">().get(), {rotation.get(), origin.get()});
    Ref shift = check(PyNumber_Subtract(origin.get(), moved.get()));
    Ref column = last_column_key();
    assign(matrix.get(), column.get(), shift.get());
  }
  return matrix;
}
constexpr Member rotation_matrix_member =
    function("rotation_matrix", "(angle: float, direction: Vector-like, point: Point-like = None) -> np.ndarray",
             rotation_matrix,
             "The 4x4 matrix that rotates by `angle` radians, right-handed, about the axis `direction`\n"
             "through the origin or through `point`.");

// I - 2 n n^T with n made unit, and the translation 2 (p . n) n that puts the plane
// through `point`.
enum class ReflectionMatrix { point, normal };
Ref reflection_matrix(const Args& a) {
  PyObject* point = a[ReflectionMatrix::point];
  Ref given = vector_like(a[ReflectionMatrix::normal]);
  Ref unit_vector = global<"unit_vector">();
  Ref normal = call(unit_vector.get(), {given.get()});
  Ref matrix = identity4();

  Ref block = upper_left_key();
  Ref upper_left = subscript(matrix.get(), block.get());
  Ref two = new_float(2.0);
  Ref outer = call(np_attr<"outer">().get(), {normal.get(), normal.get()});
  Ref doubled = check(PyNumber_Multiply(two.get(), outer.get()));
  upper_left = check(PyNumber_InPlaceSubtract(upper_left.get(), doubled.get()));
  assign(matrix.get(), block.get(), upper_left.get());

  Ref dot = np_attr<"dot">();
  Ref coordinates = check(PySequence_Tuple(point));
  Ref distance = call(dot.get(), {coordinates.get(), normal.get()});
  Ref twice = check(PyNumber_Multiply(two.get(), distance.get()));
  Ref shift = check(PyNumber_Multiply(twice.get(), normal.get()));
  Ref column = last_column_key();
  assign(matrix.get(), column.get(), shift.get());
  return matrix;
}
constexpr Member reflection_matrix_member =
    function("reflection_matrix", "(point: Point-like, normal: Vector-like) -> np.ndarray", reflection_matrix,
             "The 4x4 matrix that mirrors in the plane through `point` with normal `normal`; the\n"
             "normal need not have unit length.");

}  // namespace

void define_matrices() {
  for (const Member& m :
       {translation_matrix_member, scaling_matrix_member, rotation_matrix_member, reflection_matrix_member})
    define_function(m);
}

}  // namespace ostrel
