// Patterns: a Group of one base object and copies of it at given translations. At
// export the base geometry is made once; a plain mesh is then shared by one graph node
// per copy, a nested scene is copied with every node renamed so the copies can live
// side by side.
#include "exchange/gltf.hpp"
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

// The classes as built: super() in a method names the class that defines it.
ClassGuard pattern_guard, linear_guard, bidirectional_guard;

enum class PatternInit { self, base_object, duplicate_translation_list };
Ref pattern_init(const Args& a) {
  PyObject *self = a.self(), *base_object = a[PatternInit::base_object];
  Ref parent = super_of(pattern_guard.cls(), self);
  Ref first = list({base_object});
  call_method(parent.get(), id<"__init__">(), {first.get()});
  setattr(self, id<"base_object">(), base_object);
  Ref it = check(PyObject_GetIter(a[PatternInit::duplicate_translation_list]));
  while (Ref translation = Ref::steal(PyIter_Next(it.get()))) {
    Ref components = check(PySequence_Tuple(translation.get()));
    Ref vector = check(PyObject_Call(global<"Vector">().get(), components.get(), nullptr));
    call_method(self, id<"_add_base_object_copy">(), {vector.get()});
  }
  if (PyErr_Occurred()) throw PyError{};
  return none();
}
constexpr Member pattern_init_member =
    method("__init__", "(base_object: TransformableObject, duplicate_translation_list: List[List[float]])",
           pattern_init, "Make the pattern: the base object, then one copy per translation [x, y, z].");

enum class AddBaseObjectCopy { self, translation_vector };
Ref add_base_object_copy(const Args& a) {
  PyObject* self = a.self();
  Ref base = getattr(self, id<"base_object">());
  Ref new_object;
  if (isinstance(base.get(), global<"Group">().get())) {
    Ref again = getattr(self, id<"base_object">());
    new_object = call_method(again.get(), id<"duplicate">(), {});
  } else {
    Ref deepcopy = getattr(global<"copy">().get(), id<"deepcopy">());
    Ref again = getattr(self, id<"base_object">());
    new_object = call(deepcopy.get(), {again.get()});
  }
  call_method(new_object.get(), id<"translate">(), {a[AddBaseObjectCopy::translation_vector]});
  Ref parent = super_of(pattern_guard.cls(), self);
  call_method(parent.get(), id<"add">(), {new_object.get()});
  return none();
}
constexpr Member add_base_object_copy_member =
    method("_add_base_object_copy", "(translation_vector: Vector) -> None", add_base_object_copy,
           "Add a copy of the base object, moved by the vector.");

Ref pattern_name(const Args&) { return new_str("pattern"); }
constexpr Member pattern_name_member = property("_name", "() -> str", pattern_name, "\"pattern\"");

// A copy of `geometry` (a scene) whose graph nodes all bear new random names.
Ref renamed_copy(PyObject* geometry) {
  Ref edges = check(PyList_New(0));
  Ref names = check(PyDict_New());
  Ref graph = getattr(geometry, id<"graph">());
  Ref edgelist = call_method(graph.get(), id<"to_edgelist">(), {});
  Ref it = check(PyObject_GetIter(edgelist.get()));
  while (Ref edge = Ref::steal(PyIter_Next(it.get()))) {
    Ref parts[3];
    unpack(edge.get(), 3, parts);
    Ref fresh_a = random_hex();
    Ref a_ = call_method(names.get(), id<"setdefault">(), {parts[0].get(), fresh_a.get()});
    Ref fresh_b = random_hex();
    Ref b_ = call_method(names.get(), id<"setdefault">(), {parts[1].get(), fresh_b.get()});
    Ref renamed = tuple({a_.get(), b_.get(), parts[2].get()});
    check(PyList_Append(edges.get(), renamed.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  Ref copied = call_method(geometry, id<"copy">(), {});
  Ref copied_graph = getattr(copied.get(), id<"graph">());
  call_method(copied_graph.get(), id<"clear">(), {});
  Ref copied_graph_again = getattr(copied.get(), id<"graph">());
  call_method(copied_graph_again.get(), id<"from_edgelist">(), {edges.get()});
  Ref base_frame = getattr(graph.get(), id<"base_frame">());
  Ref new_base = check(PyObject_GetItem(names.get(), base_frame.get()));
  Ref target_graph = getattr(copied.get(), id<"graph">());
  setattr(target_graph.get(), id<"base_frame">(), new_base.get());
  return copied;
}

Ref pattern_to_trimesh(const Args& a) {
  PyObject* self = a.self();
  Ref scene = new_scene();
  Ref base = getattr(self, id<"base_object">());
  Ref geometry = call_method(base.get(), id<"_to_trimesh">(), {});
  Ref base_transform = getattr(base.get(), id<"_transformation">());
  Ref base_name = getattr(base.get(), id<"_name">());
  Ref geom_name = add_to_scene(scene.get(), geometry.get(), base_transform.get(), base_name.get());

  Ref children = getattr(self, id<"_children">());
  Ref copies = check(PySequence_GetSlice(children.get(), 1, PY_SSIZE_T_MAX));
  Ref it = check(PyObject_GetIter(copies.get()));
  long long i = 1;
  while (Ref child = Ref::steal(PyIter_Next(it.get()))) {
    Ref child_name = getattr(child.get(), id<"_name">());
    Ref name = check(PyUnicode_FromFormat("%S-%lld", child_name.get(), i++));
    Ref scene_class = getattr(global<"trimesh">().get(), id<"Scene">());
    if (isinstance(geometry.get(), scene_class.get())) {
      Ref copied = renamed_copy(geometry.get());
      Ref transform = getattr(child.get(), id<"_transformation">());
      add_to_scene(scene.get(), copied.get(), transform.get(), name.get());
    } else {
      Ref graph = getattr(scene.get(), id<"graph">());
      Ref update = getattr(graph.get(), id<"update">());
      Ref frame = random_hex();
      Ref transform = getattr(child.get(), id<"_transformation">());
      Ref extras = node_extras(name.get());
      call_kw(update.get(), {},
              {{id<"frame_to">(), frame.get()},
               {id<"geometry">(), geom_name.get()},
               {id<"matrix">(), transform.get()},
               {node_data_keyword(), extras.get()}});
    }
  }
  if (PyErr_Occurred()) throw PyError{};
  return scene;
}
constexpr Member pattern_to_trimesh_member = method("_to_trimesh", "() -> trimesh.Scene", pattern_to_trimesh,
                                                    "A scene with the base geometry once and a node per copy.");

// The translation `[first * index * c for c in direction]`, or the sum of two such
// terms over zip(direction_1, direction_2), with Python's arithmetic on the components.
Ref scaled_components(PyObject* spacing, PyObject* index, PyObject* direction) {
  Ref factor = mul(spacing, index);
  Ref result = check(PyList_New(0));
  Ref it = check(PyObject_GetIter(direction));
  while (Ref component = Ref::steal(PyIter_Next(it.get()))) {
    Ref value = mul(factor.get(), component.get());
    check(PyList_Append(result.get(), value.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  return result;
}

Ref python_range(PyObject* start, PyObject* stop) {
  return check(PyObject_CallFunctionObjArgs(reinterpret_cast<PyObject*>(&PyRange_Type), start, stop, nullptr));
}

enum class LinearInit { self, base_object, direction, number_of_elements, spacing };
Ref linear_init(const Args& a) {
  Ref translations = check(PyList_New(0));
  Ref spacing = new_float(a.num(LinearInit::spacing));
  Ref one = new_int(1);
  Ref indices = python_range(one.get(), a[LinearInit::number_of_elements]);
  Ref it = check(PyObject_GetIter(indices.get()));
  while (Ref index = Ref::steal(PyIter_Next(it.get()))) {
    Ref translation = scaled_components(spacing.get(), index.get(), a[LinearInit::direction]);
    check(PyList_Append(translations.get(), translation.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  Ref parent = super_of(linear_guard.cls(), a.self());
  call_method(parent.get(), id<"__init__">(), {a[LinearInit::base_object], translations.get()});
  return none();
}
constexpr Member linear_init_member = method(
    "__init__", "(base_object: TransformableObject, direction: List[float], number_of_elements: int, spacing: float)",
    linear_init, "Make the row of copies.");

enum class BidirectionalInit {
  self,
  base_object,
  direction_1,
  direction_2,
  number_of_elements_1,
  number_of_elements_2,
  spacing_1,
  spacing_2
};
Ref bidirectional_init(const Args& a) {
  Ref translations = check(PyList_New(0));
  Ref spacing_1 = new_float(a.num(BidirectionalInit::spacing_1)),
      spacing_2 = new_float(a.num(BidirectionalInit::spacing_2));
  Ref zero = new_int(0);
  Ref outer = python_range(zero.get(), a[BidirectionalInit::number_of_elements_1]);
  Ref outer_it = check(PyObject_GetIter(outer.get()));
  while (Ref index_1 = Ref::steal(PyIter_Next(outer_it.get()))) {
    Ref inner = python_range(zero.get(), a[BidirectionalInit::number_of_elements_2]);
    Ref inner_it = check(PyObject_GetIter(inner.get()));
    while (Ref index_2 = Ref::steal(PyIter_Next(inner_it.get()))) {
      if (PyLong_AsLong(index_1.get()) == 0 && PyLong_AsLong(index_2.get()) == 0) continue;
      Ref factor_1 = mul(spacing_1.get(), index_1.get());
      Ref factor_2 = mul(spacing_2.get(), index_2.get());
      Ref pairs = check(PyObject_CallFunctionObjArgs(global<"zip">().get(), a[BidirectionalInit::direction_1],
                                                     a[BidirectionalInit::direction_2], nullptr));
      Ref translation = check(PyList_New(0));
      Ref pair_it = check(PyObject_GetIter(pairs.get()));
      while (Ref pair = Ref::steal(PyIter_Next(pair_it.get()))) {
        Ref c[2];
        unpack(pair.get(), 2, c);
        Ref term_1 = mul(factor_1.get(), c[0].get());
        Ref term_2 = mul(factor_2.get(), c[1].get());
        Ref value = add(term_1.get(), term_2.get());
        check(PyList_Append(translation.get(), value.get()));
      }
      if (PyErr_Occurred()) throw PyError{};
      check(PyList_Append(translations.get(), translation.get()));
    }
    if (PyErr_Occurred()) throw PyError{};
  }
  if (PyErr_Occurred()) throw PyError{};
  Ref parent = super_of(bidirectional_guard.cls(), a.self());
  call_method(parent.get(), id<"__init__">(), {a[BidirectionalInit::base_object], translations.get()});
  return none();
}
constexpr Member bidirectional_init_member =
    method("__init__",
           "(base_object: TransformableObject, direction_1: List[float], direction_2: List[float], "
           "number_of_elements_1: int, number_of_elements_2: int, spacing_1: float, spacing_2: float)",
           bidirectional_init, "Make the grid of copies; the second direction runs fastest.");

}  // namespace

void define_patterns() {
  define_class("Pattern", {global<"Group">().get()},
               "A base object and copies of it at the given translations. The base geometry is made once\n"
               "at export and shared by the copies.",
               {pattern_init_member, add_base_object_copy_member, pattern_name_member, pattern_to_trimesh_member},
               &pattern_guard);
  define_class("LinearPattern", {global<"Pattern">().get()},
               "number_of_elements objects in all along `direction`, `spacing` apart for a unit direction.",
               {linear_init_member}, &linear_guard);
  define_class("BidirectionalPattern", {global<"Pattern">().get()},
               "A grid of number_of_elements_1 by number_of_elements_2 objects along two directions.",
               {bidirectional_init_member}, &bidirectional_guard);
}

}  // namespace ostrel
