"""Builds the site of ostrel.geometry from the installed module: the API reference from the module's
own signatures and docstrings, the gallery by running the examples.

    pip install '.[docs]' && python -m sphinx -W --keep-going -b html docs docs/_build/html
"""
import inspect
import pathlib

from sphinx.util import inspect as sphinx_inspect

from ostrel import geometry

project = "ostrel.geometry"
author = "the ostrel developers"
copyright = "2026, the ostrel developers"
extensions = ["sphinx.ext.autodoc", "sphinx.ext.mathjax", "sphinx_gallery.gen_gallery"]
html_theme = "furo"
html_title = "ostrel.geometry"
exclude_patterns = ["_build", "auto_examples/*.ipynb", "auto_examples/*.py", "auto_examples/*.zip",
                    "auto_examples/*.md5", "auto_examples/*.json"]
autodoc_member_order = "bysource"
autodoc_typehints = "signature"
nitpicky = False

HERE = pathlib.Path(__file__).parent
sphinx_gallery_conf = {
    "examples_dirs": str(HERE.parent / "examples"),
    "gallery_dirs": str(HERE / "auto_examples"),
    "filename_pattern": r"/plot_",          # run these; show the others as code
    # batch_dask starts a cluster (see the page on batches); the others are the README's scripts,
    # which the plot_ examples draw.
    "ignore_pattern": r"^(batch_dask|quickstart|section_profile)\.py$",
    "download_all_examples": False,
    "remove_config_comments": True,
    "matplotlib_animations": False,
    "image_scrapers": ("matplotlib",),
}

# The classes and functions users call, in the order the module defines them. `_GLTF`, `_Mesh` and
# `_MeshAssembly` are the way to files, so they are in too.
OWN = [name for name, value in vars(geometry).items()
       if getattr(value, "__module__", None) == geometry.__name__ and callable(value)
       and (not name.startswith("_") or name in ("_GLTF", "_Mesh", "_MeshAssembly"))]
classes = [n for n in OWN if inspect.isclass(getattr(geometry, n))]
functions = [n for n in OWN if n not in classes]
lines = ["API reference", "=============", "",
         "Every class and function of ``ostrel.geometry``, with the signature and docstring the module itself",
         "carries (``inspect.signature`` and ``help()`` give the same in Python).", "",
         ".. currentmodule:: ostrel.geometry", "", "Classes", "-------", ""]
for name in classes:
    lines += [f".. autoclass:: {name}", "   :members:", "   :show-inheritance:", ""]
lines += ["Functions", "---------", ""] + [f".. autofunction:: {name}" for name in functions] + [""]
api = HERE / "api.rst"
if not api.exists() or api.read_text() != "\n".join(lines):
    api.write_text("\n".join(lines))

# The module's methods are native function objects: descriptors that autodoc would take for
# attributes, so they would lose their signatures. They are routines like a Python function.
NATIVE_FUNCTION = type(vars(geometry.Point)["copy"])
_attribute_like = sphinx_inspect.isattributedescriptor
sphinx_inspect.isattributedescriptor = lambda obj: not isinstance(obj, NATIVE_FUNCTION) and _attribute_like(obj)
