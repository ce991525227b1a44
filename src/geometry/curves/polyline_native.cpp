#include "curves/polyline_native.hpp"

#include "curves/line.hpp"
#include "curves/polyline.hpp"
#include "foundations/tolerance.hpp"
#include "foundations/vector.hpp"

namespace ostrel {

namespace {

// The classes whose members the documented steps of Polyline use, directly or through
// the line functions.
Natives natives{{&polyline_class(), &point_class(), &line_class(), &vector_class()}};

}  // namespace

std::optional<NativePolylines> NativePolylines::start() {
  if (!natives.hold()) return std::nullopt;
  const auto t = native_tolerances();
  if (!t) return std::nullopt;
  return NativePolylines(*t);
}

bool NativePolylines::read(PyObject* polyline, kernel::Chain& out) {
  if (!polyline_class().admits(polyline) || !holds_only_fields(polyline, 1)) return false;
  Ref dict = Ref::borrow(instance_dict(polyline));
  Ref points = Ref::borrow(dict ? PyDict_GetItemWithError(dict.get(), id<"points">()) : nullptr);
  if (!points || !PyList_CheckExact(points.get())) {
    PyErr_Clear();
    return false;
  }
  // Held: the list is the caller's, and reading a point may run a key's __eq__.
  const Py_ssize_t n = PyList_GET_SIZE(points.get());
  std::vector<Ref> items;
  items.reserve(static_cast<std::size_t>(n));
  for (Py_ssize_t i = 0; i < n && i < PyList_GET_SIZE(points.get()); ++i)
    items.push_back(Ref::borrow(PyList_GET_ITEM(points.get(), i)));
  out.clear();
  out.reserve(items.size());
  const int source = static_cast<int>(sources_.size());
  for (std::size_t i = 0; i < items.size(); ++i) {
    const auto p = ostrel::read_point(items[i].get());
    if (!p) return false;
    out.push_back({*p, source, static_cast<std::int64_t>(i)});
  }
  if (!kernel::tame(out)) return false;
  sources_.push_back(std::move(items));
  return true;
}

bool NativePolylines::read_point(PyObject* point, kernel::Node& out) {
  kernel::Chain one;
  const auto p = ostrel::read_point(point);
  if (!p) return false;
  one.push_back({*p, static_cast<int>(sources_.size()), 0});
  if (!kernel::tame(one)) return false;
  sources_.push_back({Ref::borrow(point)});
  out = one.front();
  return true;
}

Ref NativePolylines::point(const kernel::Node& n) {
  if (n.source != kernel::fresh) return sources_[static_cast<std::size_t>(n.source)][static_cast<std::size_t>(n.index)];
  Ref& made = made_[n.index];
  if (!made) made = make_point(n.at);
  return made;
}

Ref NativePolylines::list(const kernel::Chain& c) {
  Ref items = check(PyList_New(static_cast<Py_ssize_t>(c.size())));
  for (std::size_t i = 0; i < c.size(); ++i)
    PyList_SET_ITEM(items.get(), static_cast<Py_ssize_t>(i), point(c[i]).release());
  return items;
}

Ref NativePolylines::polyline(const kernel::Chain& c) {
  Ref points = list(c);
  return new_instance(polyline_class(), {{id<"points">(), points.get()}});
}

}  // namespace ostrel
