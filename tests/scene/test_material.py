import copy
import subprocess
import sys
import types
import uuid

import pytest

from ostrel import geometry
from ostrel.core import Color
from ostrel.geometry import Material


def test_defaults_and_stored_fields():
    first, second = Material("steel"), Material("concrete")
    assert (first.name, first.density, first.price) == ("steel", None, None)
    assert (first._roughness, first._metalness, first._opacity) == (0.7, 0.8, 1.0)
    assert first.color == Color(221, 221, 221) and first.color is second.color
    assert isinstance(first.uuid, uuid.UUID) and first.uuid != second.uuid
    assert list(vars(first)) == ["uuid", "_name", "_density", "_price", "color", "_roughness", "_metalness",
                                 "_opacity"]


def test_density_and_price_are_stored_as_given_and_factors_converted():
    m = Material(None, "dense", 3, threejs_roughness=1, threejs_metalness=True, threejs_opacity=0)
    assert m.name is None and m.density == "dense" and type(m.price) is int
    assert [(type(v), v) for v in (m._roughness, m._metalness, m._opacity)] == [(float, 1.0), (float, 1.0),
                                                                               (float, 0.0)]


class Text(str):
    pass


@pytest.mark.parametrize("args, kwargs, message", [
    ((1,), {}, "Argument 'name' has incorrect type (expected str, got int)"),
    ((Text("m"),), {}, "Argument 'name' has incorrect type (expected str, got Text)"),
    (("m",), {"threejs_type": b"x"}, "Argument 'threejs_type' has incorrect type (expected str, got bytes)"),
    (("m",), {"threejs_opacity": "1"}, "must be real number, not str"),
    ((), {}, "__init__() takes at least 2 positional arguments (1 given)"),
    (("m", 1, 2, 3), {}, "__init__() takes at most 4 positional arguments (5 given)"),
])
def test_boundary_rules(args, kwargs, message):
    with pytest.raises(TypeError) as error:
        Material(*args, **kwargs)
    assert str(error.value) == message


def test_density_setter_converts():
    m = Material("m")
    m.density = 5
    assert type(m.density) is float and m.density == 5.0
    with pytest.raises(TypeError):
        m.density = "x"


def test_price_setter_recurses_and_stores_nothing():
    m = Material("m", price=2.0)
    with pytest.raises(RecursionError):
        m.price = 1.0
    with pytest.raises(TypeError):
        m.price = "x"
    assert m.price == 2.0 and m._price == 2.0


def test_price_setter_does_not_crash_with_a_raised_recursion_limit():
    code = ("import sys; from ostrel.geometry import Material; sys.setrecursionlimit(200000); m = Material('m')\n"
            "try:\n    m.price = 1\nexcept RecursionError:\n    print('ok')")
    result = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, timeout=60)
    assert result.returncode == 0 and result.stdout.strip() == "ok", result.stderr


@pytest.fixture
def recorded(monkeypatch):
    """Replaces the module's trimesh by a recorder of the visual it is asked for."""
    calls = {}

    def record(name):
        def make(**kwargs):
            calls[name] = kwargs
            return name, kwargs
        return make

    fake = types.SimpleNamespace(visual=types.SimpleNamespace(
        material=types.SimpleNamespace(PBRMaterial=record("material")), TextureVisuals=record("visual")))
    monkeypatch.setattr(geometry, "trimesh", fake)
    return calls


@pytest.mark.parametrize("opacity, mode", [(1.0, "OPAQUE"), (0.9999999999, "OPAQUE"), (0.5, "BLEND"),
                                           (1.0 + 1e-8, "BLEND")])
def test_visual_arguments(recorded, opacity, mode):
    m = Material("glass", threejs_type="anything", threejs_opacity=opacity, threejs_metalness=0.1,
                 color=Color(255, 0, 51))
    assert m._to_trimesh() == ("visual", {"material": ("material", recorded["material"])})
    assert recorded["material"] == {
        "name": "glass", "metallicFactor": 0.1, "roughnessFactor": 0.7, "alphaMode": mode, "alphaCutoff": 1.0,
        "baseColorFactor": [1.0, 0.0, 51 / 255, opacity]}


def test_visual_is_a_trimesh_texture_visual():
    visual = Material("steel")._to_trimesh()
    assert isinstance(visual, geometry.trimesh.visual.TextureVisuals)
    assert isinstance(visual.material, geometry.trimesh.visual.material.PBRMaterial)
    assert (visual.material.name, visual.material.alphaMode) == ("steel", "OPAQUE")


@pytest.mark.parametrize("rgb, message", [((1, 2, 3, 4), "too many values to unpack (expected 3)"),
                                          ((1, 2), "not enough values to unpack (expected 3, got 2)")])
def test_colour_must_unpack_into_three(rgb, message):
    m = Material("m", color=types.SimpleNamespace(rgb=rgb))
    with pytest.raises(ValueError, match=message.replace("(", r"\(").replace(")", r"\)")):
        m._to_trimesh()


def test_tampered_name_and_deepcopy():
    m = Material("m", 7.8)
    clone = copy.deepcopy(m)
    assert (clone.name, clone.density, clone.uuid) == ("m", 7.8, m.uuid)
    m._name = 5
    with pytest.raises(TypeError, match="Expected unicode, got int"):
        m.name
