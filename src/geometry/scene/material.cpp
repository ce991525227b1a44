// Material: what a scene object is made of (name, density, price) and how it looks
// (physically based roughness, metalness, opacity and base colour). Scene objects ask
// it for their trimesh visual when they are exported.
#include "foundations/tolerance.hpp"
#include "module/class_builder.hpp"
#include "module/definitions.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

// Parameter positions of __init__, self at 0.
enum Init { name = 1, density, price, threejs_type, roughness, metalness, opacity, color };

Ref init(const Args& a) {
  PyObject* self = a.self();
  Ref uuid1 = getattr(global<"uuid">().get(), id<"uuid1">());
  Ref uuid = call(uuid1.get(), {});
  setattr(self, id<"uuid">(), uuid.get());
  setattr(self, id<"_name">(), a[name]);
  // Defaulting to None, density and price are stored as given, unconverted.
  setattr(self, id<"_density">(), a[density]);
  setattr(self, id<"_price">(), a[price]);
  setattr(self, id<"color">(), a[color]);
  // threejs_type is checked as text on entry and otherwise ignored: old callers pass it.
  Ref r = new_float(a.num(roughness)), m = new_float(a.num(metalness)), o = new_float(a.num(opacity));
  setattr(self, id<"_roughness">(), r.get());
  setattr(self, id<"_metalness">(), m.get());
  setattr(self, id<"_opacity">(), o.get());
  return none();
}

Ref get_name(const Args& a) { return getattr(a.self(), id<"_name">()); }
Ref get_density(const Args& a) { return getattr(a.self(), id<"_density">()); }
Ref get_price(const Args& a) { return getattr(a.self(), id<"_price">()); }

Ref set_density(const Args& a) {
  Ref value = new_float(a.num(1));
  setattr(a.self(), id<"_density">(), value.get());
  return none();
}

// Holds one level of the host's recursion count, so that the setter re-entering itself
// ends in RecursionError at the host's limit. A limit raised far above its default
// would let the C stack run out first, so the nesting is capped as well.
class RecursionLevel {
 public:
  RecursionLevel() {
    if (Py_EnterRecursiveCall("")) throw PyError{};
    if (++depth > max_depth) {
      leave();
      raise(PyExc_RecursionError, "maximum recursion depth exceeded");
    }
  }
  ~RecursionLevel() { leave(); }
  RecursionLevel(const RecursionLevel&) = delete;
  RecursionLevel& operator=(const RecursionLevel&) = delete;

 private:
  static constexpr int max_depth = 1000;  // well under a megabyte of C stack
  static void leave() {
    --depth;
    Py_LeaveRecursiveCall();
  }
  static thread_local int depth;
};

thread_local int RecursionLevel::depth = 0;

// Assigns to the public `price`, i.e. to this very setter, not to `_price`: an
// assignment recurses until the host raises RecursionError and stores nothing. Kept so
// on purpose: `_price` is set through the constructor only.
Ref set_price(const Args& a) {
  RecursionLevel level;
  Ref value = new_float(a.num(1));
  setattr(a.self(), id<"price">(), value.get());
  return none();
}

Ref to_trimesh(const Args& a) {
  PyObject* self = a.self();
  // Plain math.isclose, no tolerance arguments: 0.9999999999 still counts as opaque.
  Ref opacity = getattr(self, id<"_opacity">());
  Ref alpha_mode = new_str(isclose(as_double(opacity.get()), 1.0, plain_tolerance) ? "OPAQUE" : "BLEND");

  Ref color = getattr(self, id<"color">());
  Ref rgb_attribute = getattr(color.get(), id<"rgb">());
  Ref rgb[3];
  unpack(rgb_attribute.get(), 3, rgb);

  Ref trimesh = global<"trimesh">();
  Ref visual = getattr(trimesh.get(), id<"visual">());
  Ref material_module = getattr(visual.get(), id<"material">());
  Ref pbr_material = getattr(material_module.get(), id<"PBRMaterial">());

  Ref name = getattr(self, id<"_name">());
  Ref metalness = getattr(self, id<"_metalness">());
  Ref roughness = getattr(self, id<"_roughness">());
  Ref cutoff = new_float(1.0);
  Ref full = new_int(255);
  Ref r = div(rgb[0].get(), full.get());
  Ref g = div(rgb[1].get(), full.get());
  Ref b = div(rgb[2].get(), full.get());
  Ref opacity_again = getattr(self, id<"_opacity">());
  Ref base_color = list({r.get(), g.get(), b.get(), opacity_again.get()});

  Ref keywords = tuple({id<"name">(), id<"metallicFactor">(), id<"roughnessFactor">(), id<"alphaMode">(),
                        id<"alphaCutoff">(), id<"baseColorFactor">()});
  Ref material = call(pbr_material.get(),
                      {name.get(), metalness.get(), roughness.get(), alpha_mode.get(), cutoff.get(), base_color.get()},
                      keywords.get());

  Ref visual_again = getattr(global<"trimesh">().get(), id<"visual">());
  Ref texture_visuals = getattr(visual_again.get(), id<"TextureVisuals">());
  Ref material_keyword = tuple({id<"material">()});
  return call(texture_visuals.get(), {material.get()}, material_keyword.get());
}

}  // namespace

void define_material() {
  ClassBuilder("Material", {},
               "What an object is made of and how it looks: a name, optional density and price,\n"
               "and the factors of a physically based appearance (roughness, metalness and\n"
               "opacity, each between 0 and 1) with a base colour.")
      .method("__init__",
              "(name: str, density: float = None, price: float = None, *, "
              "threejs_type: str = \"MeshStandardMaterial\", threejs_roughness: float = 0.7, "
              "threejs_metalness: float = 0.8, threejs_opacity: float = 1.0, "
              "color: Color = Color(221, 221, 221)) -> None",
              init,
              "Make a material. Roughness closer to 1 looks rougher, metalness closer to 1 looks\n"
              "more like shiny metal, opacity closer to 0 is less visible. threejs_type is\n"
              "accepted for compatibility and has no effect.")
      .property("name", "() -> str", get_name, "The name of the material.")
      .property("density", "() -> Optional[float]", get_density, "(value: float) -> None", set_density,
                "The density, or None.")
      .property("price", "() -> Optional[float]", get_price, "(value: float) -> None", set_price,
                "The price, or None; it can only be given to the constructor.")
      .method("_to_trimesh", "() -> trimesh.visual.TextureVisuals", to_trimesh,
              "A new trimesh visual holding a PBR material of this appearance.")
      .build();
}

}  // namespace ostrel
