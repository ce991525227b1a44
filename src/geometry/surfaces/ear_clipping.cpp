// The ear clipping of Polygon: take the first ear from the start of the counter-clockwise
// circumference, cut it off, repeat on the shorter list. The tests of one corner read x
// and y; the comparisons of points and the on-edge test work on whole Points.
//
// For an unchanged Polygon of plain Points the whole clipping runs in the kernel
// (surfaces/ear_clipping_kernel.hpp) and gives the same triangles in the same order;
// otherwise each step below runs through the instance, as written.
#include "surfaces/ear_clipping.hpp"

#include "foundations/point.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"
#include "surfaces/ear_clipping_kernel.hpp"
#include "surfaces/polygon_native.hpp"

namespace ostrel {

namespace {

Ref x_of(PyObject* p) { return getattr(p, id<"x">()); }
Ref y_of(PyObject* p) { return getattr(p, id<"y">()); }

enum class Convex { p1, p2, p3 };
Ref convex_angle_when_ccw(const Args& a) {
  PyObject *p1 = a[Convex::p1], *p2 = a[Convex::p2], *p3 = a[Convex::p3];
  if (point_natives().hold()) {
    const auto v1 = read_point(p1), v2 = read_point(p2), v3 = read_point(p3);
    if (v1 && v2 && v3) return boolean(kernel::convex_when_ccw(*v1, *v2, *v3));
  }
  // (p2.x - p1.x) * (p3.y - p1.y) - (p2.y - p1.y) * (p3.x - p1.x) >= 0
  Ref x2 = x_of(p2), x1 = x_of(p1);
  Ref dx2 = sub(x2.get(), x1.get());
  Ref y3 = y_of(p3), y1 = y_of(p1);
  Ref dy3 = sub(y3.get(), y1.get());
  Ref left = mul(dx2.get(), dy3.get());
  Ref y2 = y_of(p2), y1b = y_of(p1);
  Ref dy2 = sub(y2.get(), y1b.get());
  Ref x3 = x_of(p3), x1b = x_of(p1);
  Ref dx3 = sub(x3.get(), x1b.get());
  Ref right = mul(dy2.get(), dx3.get());
  Ref crossp = sub(left.get(), right.get());
  Ref zero = new_int(0);
  return check(PyObject_RichCompare(crossp.get(), zero.get(), Py_GE));
}

enum class OnTriangle { p1, p2, p3, p };
Ref on_triangle(const Args& a) {
  PyObject *p1 = a[OnTriangle::p1], *p2 = a[OnTriangle::p2], *p3 = a[OnTriangle::p3], *p = a[OnTriangle::p];
  Ref result;
  for (auto [start, end] : {std::pair{p1, p2}, {p2, p3}, {p3, p1}}) {
    Ref line = call(global<"Line">().get(), {start, end});
    result = call(global<"point_is_on_bounded_line">().get(), {p, line.get()});
    if (truth(result.get())) break;
  }
  return result;
}

enum class InTriangle { p1, p2, p3, p };
Ref in_triangle(const Args& a) {
  PyObject *p1 = a[InTriangle::p1], *p2 = a[InTriangle::p2], *p3 = a[InTriangle::p3], *p = a[InTriangle::p];
  if (point_natives().hold()) {
    const auto v1 = read_point(p1), v2 = read_point(p2), v3 = read_point(p3), v = read_point(p);
    if (v1 && v2 && v3 && v) return boolean(kernel::strictly_in_triangle(*v1, *v2, *v3, *v));
  }
  Ref eps = new_float(1e-7);
  // (a.y - b.y) * (c.x - d.x) + (b.x - a.x) * (c.y - d.y), the shape of all three numerators
  auto form = [](PyObject* a, PyObject* b, PyObject* c, PyObject* d) {
    Ref ay = y_of(a), by = y_of(b);
    Ref dy = sub(ay.get(), by.get());
    Ref cx = x_of(c), dx_ = x_of(d);
    Ref dx = sub(cx.get(), dx_.get());
    Ref left = mul(dy.get(), dx.get());
    Ref bx = x_of(b), ax = x_of(a);
    Ref ex = sub(bx.get(), ax.get());
    Ref cy = y_of(c), dy_ = y_of(d);
    Ref ey = sub(cy.get(), dy_.get());
    Ref right = mul(ex.get(), ey.get());
    return add(left.get(), right.get());
  };
  Ref twice_area = form(p2, p3, p1, p3);
  Ref denominator = add(twice_area.get(), eps.get());
  Ref alpha_numerator = form(p2, p3, p, p3);
  Ref alpha = div(alpha_numerator.get(), denominator.get());
  Ref beta_numerator = form(p3, p1, p, p3);
  Ref beta = div(beta_numerator.get(), denominator.get());
  Ref one = new_int(1), zero = new_int(0);
  Ref rest = sub(one.get(), alpha.get());
  Ref gamma = sub(rest.get(), beta.get());
  for (PyObject* x : {alpha.get(), beta.get(), gamma.get()}) {
    Ref at_least_one = check(PyObject_RichCompare(x, one.get(), Py_GE));
    if (truth(at_least_one.get())) return boolean(false);
    Ref at_most_zero = check(PyObject_RichCompare(x, zero.get(), Py_LE));
    if (truth(at_most_zero.get())) return boolean(false);
  }
  return boolean(true);
}

// closed_circumference = circumference + [circumference[0]]; raise if it runs clockwise.
void require_counter_clockwise(PyObject* circumference) {
  Ref ring = closed(circumference);
  Ref clockwise = call(global<"circumference_is_clockwise">().get(), {ring.get()});
  if (truth(clockwise.get())) raise(PyExc_ValueError, "Circumference should be counter clockwise");
}

bool differ(PyObject* a, PyObject* b) { return truth(check(PyObject_RichCompare(a, b, Py_NE)).get()); }

enum class GetEar { self, circumference };
Ref get_ear(const Args& a) {
  PyObject *self = a.self(), *circumference = a[GetEar::circumference];
  require_counter_clockwise(circumference);
  const Py_ssize_t size = check(PyObject_Length(circumference));
  if (size < 3) raise(PyExc_ValueError, "Insufficient number of points on circumference, minimum of 3");
  if (size == 3) {
    Ref new_circumference = check(PyList_New(0));
    Ref c0 = getitem(circumference, 0), c1 = getitem(circumference, 1), c2 = getitem(circumference, 2);
    Ref triangle = call(global<"Triangle">().get(), {c0.get(), c1.get(), c2.get()});
    return tuple({triangle.get(), new_circumference.get()});
  }
  Ref new_circumference = check(PySequence_List(circumference));
  for (Py_ssize_t i = 0; i < size; ++i) {
    bool tritest = false;
    Ref p1 = getitem(circumference, (i - 1 + size) % size);
    Ref p2 = getitem(circumference, i % size);
    Ref p3 = getitem(circumference, (i + 1) % size);
    Ref convex = call_method(self, id<"_convex_angle_when_ccw">(), {p1.get(), p2.get(), p3.get()});
    if (!truth(convex.get())) continue;
    Ref it = check(PyObject_GetIter(circumference));
    while (Ref p = Ref::steal(PyIter_Next(it.get()))) {
      if (!differ(p.get(), p1.get()) || !differ(p.get(), p2.get()) || !differ(p.get(), p3.get())) continue;
      Ref inside = call_method(self, id<"_in_triangle">(), {p1.get(), p2.get(), p3.get(), p.get()});
      if (!truth(inside.get())) {
        Ref on_edge = call_method(self, id<"_on_triangle">(), {p1.get(), p2.get(), p3.get(), p.get()});
        if (!truth(on_edge.get())) continue;
      }
      tritest = true;
    }
    if (PyErr_Occurred()) throw PyError{};
    if (!tritest) {
      check(PySequence_DelItem(new_circumference.get(), i % size));
      Ref triangle = call(global<"Triangle">().get(), {p1.get(), p2.get(), p3.get()});
      return tuple({triangle.get(), new_circumference.get()});
    }
  }
  raise(PyExc_ValueError, "No ear found, unexpected error");
}

Ref triangulate_by_earclipping(const Args& a) {
  PyObject* self = a.self();
  if (Ref native = native_triangulation(self)) return native;
  Ref triangles = check(PyList_New(0));
  Ref clockwise = call_method(self, id<"has_clockwise_circumference">(), {});
  Ref points = getattr(self, id<"points">());
  Ref step = new_int(truth(clockwise.get()) ? -1 : 1);
  Ref all = check(PySlice_New(nullptr, nullptr, step.get()));
  Ref circumference = check(PyObject_GetItem(points.get(), all.get()));
  while (check(PyObject_Length(circumference.get())) >= 3) {
    require_counter_clockwise(circumference.get());
    Ref ear = call_method(self, id<"_get_ear">(), {circumference.get()});
    Ref parts[2];
    unpack(ear.get(), 2, parts);
    circumference = std::move(parts[1]);
    check(PyList_Append(triangles.get(), parts[0].get()));
  }
  return triangles;
}

}  // namespace

constexpr Member convex_angle_when_ccw_member =
    static_method("_convex_angle_when_ccw", "(p1: Point, p2: Point, p3: Point) -> bool", convex_angle_when_ccw,
                  "Whether the turn p1, p2, p3 is not to the right (a straight angle counts as convex).");
constexpr Member on_triangle_member =
    static_method("_on_triangle", "(p1: Point, p2: Point, p3: Point, p: Point) -> bool", on_triangle,
                  "Whether p lies on an edge of the triangle, ends included.");
constexpr Member in_triangle_member =
    static_method("_in_triangle", "(p1: Point, p2: Point, p3: Point, p: Point) -> bool", in_triangle,
                  "Whether p lies strictly inside the triangle (barycentric, 1e-7 added to the denominator).");
constexpr Member get_ear_member =
    method("_get_ear", "(circumference: List[Point]) -> Tuple[Triangle, List[Point]]", get_ear,
           "The first ear of a counter-clockwise circumference and the circumference without its tip.");
constexpr Member triangulate_by_earclipping_member =
    method("_triangulate_by_earclipping", "() -> List[Triangle]", triangulate_by_earclipping,
           "All triangles of the polygon, counter-clockwise, in clipping order.");

}  // namespace ostrel
