"""A picture of a scene: a GLB file, or scene objects of ostrel.geometry, drawn to a PNG with each
mesh shaded in its material colour under a fixed isometric camera. y is up, as in glTF.

    python -m ostrel.preview scene.glb -o scene.png

or from Python::

    from ostrel.preview import draw, render
    render("scene.glb", "scene.png")              # a file
    render([beam, column], "structure.png")       # scene objects, exported on the way
    draw([beam, column], plt.subplots()[1])       # on axes of your own

Needs matplotlib (``pip install 'ostrel[preview]'``). The faces are drawn far to near (a painter's
algorithm), lit from over the viewer's shoulder; good for a look at a model, not a renderer.
"""
import argparse
import io
import pathlib

import numpy as np

from ostrel._vendor import trimesh

# From the scene towards the viewer: the camera looks down on x, y and z from the front right.
VIEW = np.array([1.0, 0.9, 1.3]) / np.linalg.norm([1.0, 0.9, 1.3])
LIGHT = np.array([0.6, 1.0, 0.8]) / np.linalg.norm([0.6, 1.0, 0.8])
BACKGROUND = (1.0, 1.0, 1.0)
DEFAULT_COLOUR = (0.7, 0.7, 0.7)


def _scene(source):
    """A trimesh scene of a GLB path, GLB bytes, or a sequence of scene objects."""
    if isinstance(source, (str, pathlib.Path)):
        data = pathlib.Path(source).read_bytes()
    elif isinstance(source, (bytes, bytearray)):
        data = bytes(source)
    else:
        from ostrel.geometry import _GLTF
        objects = list(source) if isinstance(source, (list, tuple)) else [source]
        data = _GLTF.to_gltf(*objects).getvalue_binary()
    return trimesh.load(io.BytesIO(data), file_type="glb", force="scene")


def _colour(geometry):
    """The base colour of a mesh's material, as RGB in 0..1."""
    material = getattr(geometry.visual, "material", None)
    for name in ("baseColorFactor", "main_color", "diffuse"):
        value = getattr(material, name, None)
        if value is not None:
            rgb = np.asarray(value, dtype=float)[:3]
            return tuple(rgb / 255.0 if rgb.max() > 1.0 else rgb)
    colours = getattr(geometry.visual, "face_colors", None)
    if colours is not None and len(colours):
        return tuple(np.asarray(colours[0][:3], dtype=float) / 255.0)
    return DEFAULT_COLOUR


def faces_in_view(source):
    """Every triangle of the scene on screen: (screen corners n x 3 x 2, depth n, RGB n x 3) in the order
    of drawing: the faces turned away first, then the others, each far to near."""
    scene = _scene(source)
    right = np.cross([0.0, 1.0, 0.0], VIEW)
    right /= np.linalg.norm(right)
    up = np.cross(VIEW, right)
    corners, depths, colours, facing = [], [], [], []
    for node in scene.graph.nodes_geometry:
        transform, name = scene.graph[node]
        mesh = scene.geometry[name]
        if not hasattr(mesh, "faces") or len(mesh.faces) == 0:
            continue
        world = trimesh.transformations.transform_points(np.asarray(mesh.vertices, dtype=float), transform)
        triangles = world[np.asarray(mesh.faces)]
        normals = np.cross(triangles[:, 1] - triangles[:, 0], triangles[:, 2] - triangles[:, 0])
        lengths = np.linalg.norm(normals, axis=1)
        keep = lengths > 0
        triangles, normals = triangles[keep], normals[keep] / lengths[keep, None]
        # Faces turned away from the viewer (their winding read the other way round under a
        # mirroring placement) are drawn before all others: the back of a solid never shows
        # through its front, and the back of a single sheet still shows where nothing hides it.
        turned = (normals @ VIEW) * np.sign(np.linalg.det(transform[:3, :3])) > 0
        light = 0.35 + 0.65 * np.abs(normals @ LIGHT)
        corners.append(np.stack([triangles @ right, triangles @ up], axis=-1))
        depths.append(triangles.mean(axis=1) @ VIEW)
        facing.append(turned)
        colours.append(np.clip(np.outer(light, _colour(mesh)), 0.0, 1.0))
    if not corners:
        return np.zeros((0, 3, 2)), np.zeros(0), np.zeros((0, 3))
    corners, depths, colours = np.concatenate(corners), np.concatenate(depths), np.concatenate(colours)
    order = np.lexsort((depths, np.concatenate(facing)))
    return corners[order], depths[order], colours[order]


def draw(source, axes):
    """Draw the scene on matplotlib axes (e.g. of ``plt.subplots()``), filling them."""
    from matplotlib.collections import PolyCollection

    corners, _, colours = faces_in_view(source)
    axes.set_facecolor(BACKGROUND)
    axes.add_collection(PolyCollection(corners, facecolors=colours, edgecolors=colours, linewidths=0.3))
    if len(corners):
        low, high = corners.reshape(-1, 2).min(axis=0), corners.reshape(-1, 2).max(axis=0)
        margin = 0.05 * max(high - low)
        axes.set_xlim(low[0] - margin, high[0] + margin)
        axes.set_ylim(low[1] - margin, high[1] + margin)
    axes.set_aspect("equal")
    axes.axis("off")
    return axes


def figure(source, size=(8.0, 6.0), dpi=100):
    """A matplotlib figure of the scene, made without pyplot."""
    from matplotlib.figure import Figure

    fig = Figure(figsize=size, dpi=dpi, facecolor=BACKGROUND)
    draw(source, fig.add_axes((0, 0, 1, 1)))
    return fig


def render(source, path, size=(8.0, 6.0), dpi=100):
    """Draw a GLB file (path or bytes) or scene objects to a PNG at `path`; returns the path."""
    figure(source, size, dpi).savefig(path, facecolor=BACKGROUND)
    return path


def picture_beside(glb_path):
    """A PNG of a GLB file, written beside it, when matplotlib is installed: its path, else None."""
    try:
        import matplotlib  # noqa: F401
    except ImportError:
        return None
    return render(glb_path, str(pathlib.Path(glb_path).with_suffix(".png")))


def main(argv=None):
    parser = argparse.ArgumentParser(prog="python -m ostrel.preview", description=__doc__.split("\n\n")[0])
    parser.add_argument("glb", help="the GLB file to draw")
    parser.add_argument("-o", "--output", help="the PNG to write (default: beside the GLB)")
    parser.add_argument("--size", type=float, nargs=2, default=(8.0, 6.0), metavar=("WIDTH", "HEIGHT"),
                        help="inches at 100 pixels each (default 8 6)")
    options = parser.parse_args(argv)
    output = options.output or str(pathlib.Path(options.glb).with_suffix(".png"))
    print("wrote", render(options.glb, output, tuple(options.size)))


if __name__ == "__main__":
    main()
