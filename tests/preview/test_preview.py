"""The preview draws what a person would see: a red tile in red where it stands, a blue one in blue,
white background around them, and the same from a GLB file as from the objects."""
import numpy as np
import pytest

pytest.importorskip("matplotlib")
from matplotlib.image import imread  # noqa: E402

from ostrel.core import Color  # noqa: E402
from ostrel.geometry import Material, Point, Triangle, TriangleAssembly, _GLTF  # noqa: E402
from ostrel.preview import VIEW, faces_in_view, figure, main  # noqa: E402


def tile(x, colour):
    """A unit square standing upright (in the xy plane, y up), at x .. x + 1."""
    a, b, c, d = Point(x, 0), Point(x + 1, 0), Point(x + 1, 1), Point(x, 1)
    return TriangleAssembly([Triangle(a, b, c), Triangle(a, c, d)], material=Material("tile", color=colour))


def pixel_of(fig, world):
    """The (row, column) where a world point lands in the saved picture."""
    right = np.cross([0.0, 1.0, 0.0], VIEW)
    right /= np.linalg.norm(right)
    screen = (np.dot(world, right), np.dot(world, np.cross(VIEW, right)))
    x, y = fig.axes[0].transData.transform(screen)
    return int(round(fig.get_figheight() * fig.dpi - y)), int(round(x))


def test_tiles_show_in_their_colours_where_they_stand(tmp_path):
    scene = [tile(0, Color(220, 20, 20)), tile(3, Color(20, 40, 220))]
    path = tmp_path / "tiles.png"
    fig = figure(scene, size=(4, 3))
    fig.savefig(path, facecolor="white")
    image = imread(path)[:, :, :3]
    red, blue = image[pixel_of(fig, (0.5, 0.5, 0))], image[pixel_of(fig, (3.5, 0.5, 0))]
    assert red[0] > 0.4 and red[0] > 3 * max(red[1], red[2])
    assert blue[2] > 0.4 and blue[2] > 3 * max(blue[0], blue[1])
    gap, corner = image[pixel_of(fig, (2.0, 0.5, 0))], image[0, 0]
    assert np.allclose(gap, 1.0) and np.allclose(corner, 1.0)


def test_a_glb_file_draws_as_its_objects_do(tmp_path):
    scene = [tile(0, Color(220, 20, 20)), tile(3, Color(20, 40, 220))]
    glb = tmp_path / "tiles.glb"
    _GLTF.to_gltf(*scene).save(str(glb))
    from_objects, from_file = faces_in_view(scene), faces_in_view(glb)
    assert all(np.allclose(a, b) for a, b in zip(from_objects, from_file)) and len(from_file[0]) == 4
    main([str(glb), "-o", str(tmp_path / "out.png")])
    assert imread(tmp_path / "out.png").shape[:2] == (600, 800)
