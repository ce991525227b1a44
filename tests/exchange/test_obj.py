"""The OBJ and MTL readers on text with groups, materials, comments, n-gons and bad lines."""
import pytest

from ostrel.core import File
from ostrel.geometry import (_parse_obj_material_library, _parse_vertices_and_faces_from_obj,
                             _parse_vertices_and_grouped_faces_from_obj)


class Lines:
    """Anything with readlines(): here a generator, not a list."""

    def __init__(self, *lines):
        self.lines = lines

    def readlines(self):
        return (line for line in self.lines)


def text(source):
    return File.from_data(source)


HOUSE = """\
# a comment, and a comment glued to a keyword:
#v 9 9 9
mtllib house.mtl
o house
v 0 0 0
v 1 0 0 1.0 0.5
v\t1 1 0
v 0 1 0

vn 0 0 1
vt 0.5 0.5
usemtl wall
g walls
f 1/1/1 2/2/2 3/3/3 4/4/4
f 1//1 2//1
s off
l 1 2
g roof
g roof-again
usemtl tiles
usemtl slate
v 0.5 0.5 1
f 1 2 5
f 2 3 4 5 1
g empty-at-the-end
"""


def test_vertices_and_faces():
    vertices, faces = _parse_vertices_and_faces_from_obj(text(HOUSE))
    assert vertices == [[0.0, 0.0, 0.0], [1.0, 0.0, 0.0], [1.0, 1.0, 0.0], [0.0, 1.0, 0.0], [0.5, 0.5, 1.0]]
    assert all(type(c) is float for v in vertices for c in v)
    assert faces == [[0, 1, 2], [0, 2, 3], [0, 1, 4], [1, 2, 3], [1, 3, 4], [1, 4, 0]]
    assert all(type(i) is int for f in faces for i in f)


def test_grouped_faces():
    vertices, groups = _parse_vertices_and_grouped_faces_from_obj(text(HOUSE))
    assert len(vertices) == 5
    # "g roof" twice before any face, and the empty last group, change nothing.
    assert groups == [([[0, 1, 2], [0, 2, 3]], "wall"), ([[0, 1, 4], [1, 2, 3], [1, 3, 4], [1, 4, 0]], "slate")]
    assert all(type(g) is tuple for g in groups)


@pytest.mark.parametrize("source, expected", [
    ("usemtl a\nf 1 2 3\nusemtl b\nf 1 3 4\n", [([[0, 1, 2], [0, 2, 3]], "b")]),
    ("usemtl a\ng one\nf 1 2 3\n", [([[0, 1, 2]], "a")]),
    ("f 1 2 3\ng two\nf 1 2 3\n", [([[0, 1, 2]], None), ([[0, 1, 2]], None)]),
    ("usemtl a\nf 1 2 3\ng two\nf 1 2 3\n", [([[0, 1, 2]], "a"), ([[0, 1, 2]], None)]),
    ("usemtl a\n", []),
    ("", []),
])
def test_grouping_rules(source, expected):
    assert _parse_vertices_and_grouped_faces_from_obj(text(source))[1] == expected


@pytest.mark.parametrize("line, faces", [
    ("f 1 2", []),
    ("f a b", []),  # no triangle, so no index is read
    ("f -1 -2 -3", [[-2, -3, -4]]),  # relative indices are only lowered
    ("f 7/x/y 8 9/", [[6, 7, 8]]),
    ("f 1 2 3 4 5", [[0, 1, 2], [0, 2, 3], [0, 3, 4]]),
])
def test_face_statements(line, faces):
    assert _parse_vertices_and_faces_from_obj(text(line))[1] == faces


@pytest.mark.parametrize("source, error, message", [
    ("v 1 2\n", IndexError, "^list index out of range$"),
    ("v x\n", ValueError, "^could not convert string to float: 'x'$"),
    ("v 1 2 3\nv 1 y z\n", ValueError, "^could not convert string to float: 'y'$"),
    ("f 1 a 3\n", ValueError, r"^invalid literal for int\(\) with base 10: 'a'$"),
    ("f 1 2 3 b\n", ValueError, r"^invalid literal for int\(\) with base 10: 'b'$"),
    ("f /1 2 3\n", ValueError, r"^invalid literal for int\(\) with base 10: ''$"),
    ("f 1.0 2 3\n", ValueError, r"^invalid literal for int\(\) with base 10: '1.0'$"),
])
def test_bad_obj_lines(source, error, message):
    for parse in (_parse_vertices_and_faces_from_obj, _parse_vertices_and_grouped_faces_from_obj):
        with pytest.raises(error, match=message):
            parse(text(source))
    with pytest.raises(IndexError, match="^list index out of range$"):
        _parse_vertices_and_grouped_faces_from_obj(text("usemtl\n"))
    assert _parse_vertices_and_faces_from_obj(text("usemtl\ng\n")) == ([], [])


class Word(str):
    pass


def test_lines_of_other_kinds():
    assert _parse_vertices_and_faces_from_obj(Lines("v 1 2 3", "f 1 1 1")) == ([[1.0, 2.0, 3.0]], [[0, 0, 0]])
    # bytes lines split into bytes words, which equal no keyword
    assert _parse_vertices_and_faces_from_obj(Lines(b"v 1 2 3\n", b"f 1 2 3")) == ([], [])
    assert _parse_vertices_and_faces_from_obj(Lines(Word("v 1 2 3"), Word("f 1 2 3"))) == (
        [[1.0, 2.0, 3.0]], [[0, 1, 2]])
    with pytest.raises(AttributeError):
        _parse_vertices_and_faces_from_obj(Lines(1))
    with pytest.raises(AttributeError):
        _parse_vertices_and_faces_from_obj(object())


MATERIALS = """\
# a library
newmtl red
Ka 0.1 0.1 0.1
Kd 1.0 0.5 0.0
Ks 1 1 1 extra
Ns 10
d 0.5
Tr 0.5
Ni 1.5
illum 2
map_Kd red.png
newmtl no-properties
newmtl last-and-empty
"""


def test_material_library():
    assert _parse_obj_material_library(text(MATERIALS)) == {
        "red": {"Ka": (0.1, 0.1, 0.1), "Kd": (1.0, 0.5, 0.0), "Ks": (1.0, 1.0, 1.0), "Ns": 10.0, "d": 0.5,
                "Tr": 0.5, "Ni": 1.5, "illum": 2.0},
        "last-and-empty": {},
    }
    assert type(_parse_obj_material_library(text(MATERIALS))["red"]["illum"]) is float


@pytest.mark.parametrize("source, expected", [
    ("", {None: {}}),
    ("Kd 0 0 1\n", {None: {"Kd": (0.0, 0.0, 1.0)}}),
    ("newmtl a\nd 1\nnewmtl b\nd 2\nnewmtl a\nd 3\n", {"a": {"d": 3.0}, "b": {"d": 2.0}}),
])
def test_material_library_edges(source, expected):
    result = _parse_obj_material_library(text(source))
    assert result == expected and list(result) == list(expected)


@pytest.mark.parametrize("source, error", [("newmtl\n", IndexError), ("Kd 1 2\n", IndexError),
                                           ("Ns x\n", ValueError)])
def test_bad_material_lines(source, error):
    with pytest.raises(error):
        _parse_obj_material_library(text(source))
