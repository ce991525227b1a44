// Material: what a scene object is made of (name, density, price) and how it looks
// (physically based roughness, metalness, opacity and base colour). Scene objects ask
// it for their trimesh visual when they are exported.
#include "foundations/tolerance.hpp"
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

enum class Init { self, name, density, price, threejs_type, roughness, metalness, opacity, color };

Ref init(const Args& a) {
  PyObject* self = a.self();
  Ref uuid1 = getattr(global<"uuid">().get(), id<"uuid1">());
  Ref uuid = call(uuid1.get(), {});
  setattr(self, id<"uuid">(), uuid.get());
  setattr(self, id<"_name">(), a[Init::name]);
  // Defaulting to None, density and price are stored as given, unconverted.
  setattr(self, id<"_density">(), a[Init::density]);
  setattr(self, id<"_price">(), a[Init::price]);
  setattr(self, id<"color">(), a[Init::color]);
  // threejs_type is checked as text on entry and otherwise ignored: old callers pass it.
  Ref r = new_float(a.num(Init::roughness)), m = new_float(a.num(Init::metalness)), o = new_float(a.num(Init::opacity));
  setattr(self, id<"_roughness">(), r.get());
  setattr(self, id<"_metalness">(), m.get());
  setattr(self, id<"_opacity">(), o.get());
  return none();
}
constexpr Member init_member =
    method("__init__",
           "(name: str, density: float = None, price: float = None, *, "
           "threejs_type: str = \"MeshStandardMaterial\", threejs_roughness: float = 0.7, "
           "threejs_metalness: float = 0.8, threejs_opacity: float = 1.0, "
           "color: Color = Color(221, 221, 221)) -> None",
           init,
           "Make a material. Roughness closer to 1 looks rougher, metalness closer to 1 looks\n"
           "more like shiny metal, opacity closer to 0 is less visible. threejs_type is\n"
           "accepted for compatibility and has no effect.");

Ref get_name(const Args& a) { return getattr(a.self(), id<"_name">()); }
constexpr Member get_name_member = property("name", "() -> str", get_name, "The name of the material.");
Ref get_density(const Args& a) { return getattr(a.self(), id<"_density">()); }

Ref get_price(const Args& a) { return getattr(a.self(), id<"_price">()); }

enum class Setter { self, value };

Ref set_density(const Args& a) {
  Ref value = new_float(a.num(Setter::value));
  setattr(a.self(), id<"_density">(), value.get());
  return none();
}
constexpr Member density_member = property("density", "() -> Optional[float]", get_density, "(value: float) -> None",
                                           set_density, "The density, or None.");

// Assigns to the public `price`, i.e. to this very setter, not to `_price`: an
// assignment recurses until the host raises RecursionError and stores nothing. Kept so
// on purpose: `_price` is set through the constructor only.
Ref set_price(const Args& a) {
  Ref value = new_float(a.num(Setter::value));
  setattr(a.self(), id<"price">(), value.get());
  return none();
}
constexpr Member price_member = property("price", "() -> Optional[float]", get_price, "(value: float) -> None",
                                         set_price, "The price, or None; it can only be given to the constructor.");

Ref to_trimesh(const Args& a) {
  PyObject* self = a.self();
  // Plain math.isclose, no tolerance arguments: 0.9999999999 still counts as opaque.
  Ref opacity = getattr(self, id<"_opacity">());
  Ref alpha_mode =
      new_str(kernel::isclose(as_double(opacity.get()), 1.0, kernel::plain_tolerance) ? "OPAQUE" : "BLEND");

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
constexpr Member to_trimesh_member = method("_to_trimesh", "() -> trimesh.visual.TextureVisuals", to_trimesh,
                                            "A new trimesh visual holding a PBR material of this appearance.");

}  // namespace

void define_material() {
  define_class("Material", {},
               "What an object is made of and how it looks: a name, optional density and price,\n"
               "and the factors of a physically based appearance (roughness, metalness and\n"
               "opacity, each between 0 and 1) with a base colour.",
               {init_member, get_name_member, density_member, price_member, to_trimesh_member});
}

}  // namespace ostrel
