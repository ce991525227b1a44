"""The OBJ and MTL readers on text with groups, materials, comments, n-gons and bad lines."""
import gc

import pytest
from hypothesis import given, strategies as st

from obj_steps import plain_parse
from ostrel.core import File
from ostrel.geometry import (_GLTF, _Mesh, _parse_obj_material_library, _parse_vertices_and_faces_from_obj,
                             _parse_vertices_and_grouped_faces_from_obj)


class Lines:
    """Anything with readlines(); by default a generator, not a list."""

    def __init__(self, *lines, kind=lambda lines: (line for line in lines)):
        self.lines, self.kind = lines, kind

    def readlines(self):
        return self.kind(self.lines)


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


def test_house():
    vertices, faces = _parse_vertices_and_faces_from_obj(text(HOUSE))
    assert vertices == [[0.0, 0.0, 0.0], [1.0, 0.0, 0.0], [1.0, 1.0, 0.0], [0.0, 1.0, 0.0], [0.5, 0.5, 1.0]]
    assert faces == [[0, 1, 2], [0, 2, 3], [0, 1, 4], [1, 2, 3], [1, 3, 4], [1, 4, 0]]
    assert {type(c) for v in vertices for c in v} == {float} and {type(i) for f in faces for i in f} == {int}
    # "g roof" twice before any face, and the empty last group, change nothing.
    assert _parse_vertices_and_grouped_faces_from_obj(text(HOUSE)) == (vertices, [(faces[:2], "wall"), (faces[2:], "slate")])


@pytest.mark.parametrize("source, expected", [
    ("usemtl a\nf 1 2 3\nusemtl b\nf 1 3 4\n", [([[0, 1, 2], [0, 2, 3]], "b")]),
    ("usemtl a\ng one\nf 1 2 3\n", [([[0, 1, 2]], "a")]),
    ("f 1 2 3\ng two\nf 1 2 3\n", [([[0, 1, 2]], None), ([[0, 1, 2]], None)]),
    ("usemtl a\nf 1 2 3\ng two\nf 1 2 3\n", [([[0, 1, 2]], "a"), ([[0, 1, 2]], None)]),
    ("usemtl a\n", []),
    ("usemtl\n", (IndexError, "list index out of range")),
])
def test_grouping_rules(source, expected):
    assert outcome(_parse_vertices_and_grouped_faces_from_obj, text(source)) == (
        repr(([], expected)) if isinstance(expected, list) else (expected[0].__name__, expected[1]))


@pytest.mark.parametrize("source, expected", [
    ("f 1 2\nf a b\n", []),  # no triangle, so no index is read
    ("f -1 -2 -3", [[-2, -3, -4]]),  # relative indices are only lowered
    ("f 7/x/y 8 9/", [[6, 7, 8]]),
    ("f 1 2 3 4 5", [[0, 1, 2], [0, 2, 3], [0, 3, 4]]),
    ("v 1 2\n", (IndexError, "list index out of range")),
    ("v 1 2 3\nv 1 y z\n", (ValueError, "could not convert string to float: 'y'")),
    ("f 1 a 3 b\n", (ValueError, "invalid literal for int() with base 10: 'a'")),
    ("f /1 2 3\n", (ValueError, "invalid literal for int() with base 10: ''")),
    ("f 1 2 3.0\n", (ValueError, "invalid literal for int() with base 10: '3.0'")),
])
def test_single_statements(source, expected):
    readers = (_parse_vertices_and_faces_from_obj, _parse_vertices_and_grouped_faces_from_obj)
    if isinstance(expected, tuple):
        assert [outcome(read, text(source)) for read in readers] == [(expected[0].__name__, expected[1])] * 2
    else:
        assert _parse_vertices_and_faces_from_obj(text(source))[1] == expected
        assert _parse_vertices_and_grouped_faces_from_obj(text(source))[1] == ([(expected, None)] if expected else [])


def test_lines_of_other_kinds():
    # bytes lines split into bytes words, which equal no keyword
    assert _parse_vertices_and_faces_from_obj(Lines(b"v 1 2 3\n", b"f 1 2 3")) == ([], [])
    with pytest.raises(AttributeError):
        _parse_vertices_and_faces_from_obj(Lines(1))


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
    ("newmtl\n", IndexError), ("Kd 1 2\n", IndexError), ("Ns x\n", ValueError),
])
def test_material_library_edges(source, expected):
    if isinstance(expected, dict):
        result = _parse_obj_material_library(text(source))
        assert result == expected and list(result) == list(expected)
    else:
        with pytest.raises(expected):
            _parse_obj_material_library(text(source))


def outcome(parse, lines):
    try:
        return repr(parse(lines))
    except (IndexError, ValueError) as error:
        return type(error).__name__, str(error)


AWKWARD = ["0", "-0", "+0.5", ".5", "5.", "0.3", "-4.35", "007", "1e5", "1E-5", "-1.5e+300", "1e400", "-1e400", "1e-400",
           "4.9e-324", "2.4703282292062328e-324", "2.2250738585072011e-308", "1_000.5", "1__0", "_1", "1_",
           "1_0e1_0", "inf", "-Infinity", "nAn", "-nan", "+inf", "infinit", "0x10", "1e", "e5", ".", "+-1",
           "1.2.3", "--1", "\u0661\u0662", "\uff11\uff12.5", "0.1000000000000000055511151231257827021181583404541015625",
           "9007199254740993", "6.4708321257442331", "0.12345678901234567", "1" * 30, "-" + "9" * 18, "9" * 19, "1" * 5000, "1." + "0" * 400 + "1", "\x00",
           "12/3", "4//", "/", "1/x", "é", ""]
SEPARATORS = [" ", "\t", "  ", "\x0b", "\x0c", "\x1c", "\x1f", "\xa0", "\u2003", "\r"]


@pytest.mark.parametrize("word", AWKWARD)
def test_numbers_read_as_the_host_reads_them(word):
    for line in (f"v {word} 1 2\n", f"f {word} 1 2\n", f"f 1 2 {word}\n", f"f 1 {word}/5 2 3"):
        for kind in (list, iter):
            assert outcome(_parse_vertices_and_faces_from_obj, Lines(line, kind=kind)) == outcome(plain_parse, [line])


@given(st.lists(st.lists(st.sampled_from(["v", "f", "g", "#", "v#"] + AWKWARD[:40]), max_size=6).map(tuple),
                max_size=6),
       st.lists(st.sampled_from(SEPARATORS), min_size=1))
def test_any_line_reads_as_the_documented_steps_read_it(rows, separators):
    lines = [separators[i % len(separators)].join(row) + "\n" for i, row in enumerate(rows)]
    expected = outcome(plain_parse, lines)
    for kind in (list, tuple, iter):
        assert outcome(_parse_vertices_and_faces_from_obj, Lines(*lines, kind=kind)) == expected


def test_the_callers_lines_and_collector_are_left_as_they_were():
    kept = ["v 1 2 3\n", "f 1 1 1\n", "v 1 x 2\n"]
    with pytest.raises(ValueError):
        _parse_vertices_and_faces_from_obj(Lines(kind=lambda _: kept))
    assert kept == ["v 1 2 3\n", "f 1 1 1\n", "v 1 x 2\n"] and gc.isenabled()
    seen = []

    class Spy(str):
        def split(self, *args):
            seen.append(gc.isenabled())
            return super().split(*args)

    assert _parse_vertices_and_faces_from_obj(Lines("v 1 2 3", Spy("f 1 1 2"), kind=list)) == (
        [[1.0, 2.0, 3.0]], [[0, 0, 1]])
    assert seen == [True]


@pytest.mark.parametrize("index, named", [("99999999999", 99999999998), ("4", 3), ("-1", -2), ("0", -1)])
def test_a_face_that_names_no_vertex_stops_the_export(index, named):
    # The file stores 32-bit indices: written as it came, 99999999998 would wrap to 1215752190.
    mesh = _Mesh.from_obj(text(f"v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\nf 1 2 {index}\n"))
    with pytest.raises(ValueError, match=f"names vertex {named}, which does not exist: the mesh has 3 vertices"):
        _GLTF.to_gltf(mesh)
    assert _GLTF.to_gltf(_Mesh.from_obj(text("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"))).getvalue_binary()
