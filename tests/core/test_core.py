import copy
import gc
import io
import pickle
from fractions import Fraction

import pytest

from ostrel.core import Color, File


class Index:
    """An integer-like object that is not an int."""

    def __init__(self, value):
        self.value = value

    def __index__(self):
        return self.value


def test_color_accepts_integer_likes_as_plain_ints():
    color = Color(Index(0), 128, Index(255))
    assert color.rgb == (color.r, color.g, color.b) == (0, 128, 255) and all(type(c) is int for c in color.rgb)


@pytest.mark.parametrize("position", ["r", "g", "b"])
@pytest.mark.parametrize("bad, error", [(True, TypeError), (1.0, TypeError), (Fraction(1), TypeError),
                                        (-1, ValueError), (256, ValueError)])
def test_color_rejects_bad_component_naming_it(position, bad, error):
    with pytest.raises(error, match=rf"\b{position}\b"):
        Color(**{"r": 1, "g": 2, "b": 3, position: bad})


@pytest.mark.parametrize("text, rgb, canonical", [
    ("#dddddd", (221, 221, 221), "#dddddd"), ("000000", (0, 0, 0), "#000000"), ("fF0110", (255, 1, 16), "#ff0110"),
])
def test_color_hex_round_trip(text, rgb, canonical):
    color = Color.from_hex(text)
    assert color.rgb == rgb and color.hex == canonical and repr(color) == "Color({}, {}, {})".format(*rgb)


@pytest.mark.parametrize("text", ["", "#fff", "#ff01100", "##ff0110", "ff0110\n", " ff0110", "#+f0110", b"#ffffff"])
def test_from_hex_rejects_malformed_text(text):
    with pytest.raises(TypeError if isinstance(text, bytes) else ValueError):
        Color.from_hex(text)


def test_color_is_an_immutable_value_that_copies_and_pickles():
    color = Color(1, 2, 3)
    assert color == Color(1, 2, 3) and color != Color(3, 2, 1)
    assert len({color, Color(1, 2, 3), Color(1, 2, 4)}) == 2
    assert color != (1, 2, 3) and color.__eq__((1, 2, 3)) is NotImplemented
    with pytest.raises(AttributeError):
        color.r = 5
    for clone in (copy.deepcopy(color), pickle.loads(pickle.dumps(color))):
        assert type(clone) is Color and clone == color


@pytest.mark.parametrize(
    "data, expected",
    [(b"\x00\xff", b"\x00\xff"), (bytearray(b"abc"), b"abc"),
     (memoryview(b"abc"), b"abc"), ("h\u00e9", "h\u00e9".encode("utf-8")),
     (None, TypeError), (["a"], TypeError)],
)
def test_from_data(data, expected):
    if expected is TypeError:
        with pytest.raises(TypeError):
            File.from_data(data)
    else:
        stored = File.from_data(data).getvalue_binary()
        assert type(stored) is bytes and stored == expected


def test_save_and_from_path_round_trip(tmp_path):
    payload = bytes(range(256)) + b"\r\n\n"
    File.from_data(payload).save(tmp_path / "out.bin")
    assert (tmp_path / "out.bin").read_bytes() == payload
    assert File.from_path(str(tmp_path / "out.bin")).getvalue_binary() == payload


def test_default_open_binary_starts_at_content_and_keeps_the_tail():
    file = File()  # the geometry module hands out exported GLB data this way
    assert file.getvalue_binary() == b"" and file.readlines() == []
    with file.open_binary() as stream:
        stream.write(b"0123456789")
    with file.open_binary() as stream:
        assert stream.read(2) == b"01"
        stream.seek(0)
        stream.write(b"ab")
    assert file.getvalue_binary() == b"ab23456789"


def test_write_mode_replaces_content_when_the_stream_closes():
    file = File.from_data(b"old and long")
    stream = file.open_binary("w")
    stream.write(b"new")
    assert file.getvalue_binary() == b"old and long"
    stream.close()
    assert file.getvalue_binary() == b"new"


@pytest.mark.parametrize("open_read", [lambda f: f.open_binary("r"), lambda f: f.open()])
def test_read_streams_are_read_only(open_read):
    file = File.from_data(b"data")
    with open_read(file) as stream:
        with pytest.raises(io.UnsupportedOperation):
            stream.write(stream.read())
    assert file.getvalue_binary() == b"data"


@pytest.mark.parametrize("mode", ["a", "rb", "w+", ""])
def test_invalid_mode(mode):
    with pytest.raises(ValueError):
        File().open_binary(mode)
    with pytest.raises(ValueError):
        File().open(mode)


@pytest.mark.parametrize("encoding", ["utf-8", "latin-1", "utf-16"])
def test_text_round_trip_with_encoding(encoding):
    text = "caf\u00e9\nline 2\n"
    file = File()
    with file.open("w", encoding=encoding) as stream:
        stream.write(text)
    assert file.getvalue_binary() == text.encode(encoding)
    assert file.getvalue(encoding) == text
    with file.open(encoding=encoding) as stream:
        assert stream.read() == text


def test_failed_text_open_leaves_content_alone():
    file = File.from_data("keep")
    with pytest.raises(LookupError):
        file.open("w", encoding="no-such-codec")
    gc.collect()
    assert file.getvalue() == "keep"


@pytest.mark.parametrize(
    "data, lines",
    [("a\nb\n", ["a\n", "b\n"]), ("a\nb", ["a\n", "b"]),
     ("a\r\nb\rc", ["a\n", "b\n", "c"]),
     # Only newlines split lines, not the other separators str.splitlines knows.
     ("a\x0cb\u2028c\n", ["a\x0cb\u2028c\n"])],
)
def test_readlines(data, lines):
    assert File.from_data(data).readlines() == lines
