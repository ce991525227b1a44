"""Basic value types shared by the whole library: tolerances, colours, files."""

import io
import operator
import re
from pathlib import Path

__all__ = ["ISCLOSE_ATOL", "ISCLOSE_RTOL", "Color", "File"]

# Two points or vectors are equal when every coordinate pair satisfies
# math.isclose(a, b, rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL).
# ISCLOSE_ATOL is the absolute tolerance, ISCLOSE_RTOL the relative one.
ISCLOSE_ATOL = 1e-9
ISCLOSE_RTOL = 1e-9


def _component(name, value):
    """Check one colour component and return it as a plain int."""
    if isinstance(value, bool):
        raise TypeError(f"Color component {name} must be an integer, not bool")
    try:
        value = operator.index(value)
    except TypeError:
        raise TypeError(
            f"Color component {name} must be an integer, "
            f"not {type(value).__name__}"
        ) from None
    if not 0 <= value <= 255:
        raise ValueError(f"Color component {name} must be in 0..255, got {value}")
    return value


_HEX_RE = re.compile(r"#?([0-9a-fA-F]{6})")


class Color:
    """An RGB colour with integer components in 0..255.

    Colours are immutable values: they compare equal when their components
    are equal and can be used as dict keys.

    >>> Color(221, 221, 221).hex
    '#dddddd'
    >>> Color.from_hex("#DDDDDD")
    Color(221, 221, 221)
    """

    __slots__ = ("_rgb",)

    def __init__(self, r, g, b):
        self._rgb = (_component("r", r), _component("g", g), _component("b", b))

    @classmethod
    def from_hex(cls, text):
        """Make a colour from ``"#rrggbb"`` or ``"rrggbb"`` (any letter case)."""
        if not isinstance(text, str):
            raise TypeError(f"hex colour must be a str, not {type(text).__name__}")
        match = _HEX_RE.fullmatch(text)
        if match is None:
            raise ValueError(f"not a hex colour of the form '#rrggbb': {text!r}")
        digits = match.group(1)
        return cls(*(int(digits[i : i + 2], 16) for i in (0, 2, 4)))

    @property
    def r(self):
        """Red component, 0..255."""
        return self._rgb[0]

    @property
    def g(self):
        """Green component, 0..255."""
        return self._rgb[1]

    @property
    def b(self):
        """Blue component, 0..255."""
        return self._rgb[2]

    @property
    def rgb(self):
        """The components as a tuple ``(r, g, b)``."""
        return self._rgb

    @property
    def hex(self):
        """The colour as ``"#rrggbb"`` in lower case."""
        return "#{:02x}{:02x}{:02x}".format(*self._rgb)

    def __eq__(self, other):
        if not isinstance(other, Color):
            return NotImplemented
        return self._rgb == other._rgb

    def __hash__(self):
        return hash(self._rgb)

    def __repr__(self):
        return "Color({}, {}, {})".format(*self._rgb)

    def __reduce__(self):
        # Rebuild through __init__ so copies and unpickled colours are checked
        # like any other.
        return (type(self), self._rgb)


class _WriteBackStream(io.BytesIO):
    """A BytesIO that hands its whole value to a File when it is closed."""

    def __init__(self, owner, initial):
        super().__init__(initial)
        self._owner = owner

    def close(self):
        if not self.closed and self._owner is not None:
            self._owner._data = self.getvalue()
        super().close()

    def discard(self):
        """Close without touching the File."""
        self._owner = None
        self.close()


class File:
    """File content held in memory.

    A File is made empty (``File()``), from bytes or text
    (:meth:`from_data`) or from a file on disk (:meth:`from_path`).  It is
    read and written through streams like those of the built-in ``open()``
    (:meth:`open_binary`, :meth:`open`), and can be written to disk with
    :meth:`save`.
    """

    def __init__(self):
        self._data = b""

    @classmethod
    def from_data(cls, data):
        """Make a File holding ``data``: bytes-like, or str (stored as UTF-8)."""
        file = cls()
        if isinstance(data, str):
            file._data = data.encode("utf-8")
        elif isinstance(data, (bytes, bytearray, memoryview)):
            file._data = bytes(data)
        else:
            raise TypeError(f"File data must be bytes or str, not {type(data).__name__}")
        return file

    @classmethod
    def from_path(cls, path):
        """Make a File holding the content of the file at ``path``."""
        file = cls()
        file._data = Path(path).read_bytes()
        return file

    def open_binary(self, mode=None):
        """Open the content as a binary stream; use it in a ``with`` block.

        ``mode`` is one of:

        - ``"r"``: read-only, from the start of the content.
        - ``"w"``: starts empty; what is written replaces the content.
        - ``None`` (the default): readable and writable, starting with the
          current content at position 0.  Writes overwrite from the current
          position, so writing 3 bytes into longer content keeps the rest;
          use ``"w"`` to replace the content outright.

        In the writable modes the stream's whole value becomes the File's
        content when the stream is closed: on leaving the ``with`` block, on
        ``close()``, or, as with files on disk, when an unclosed stream is
        garbage collected.  Nothing written is visible in the File before.
        """
        if mode == "r":
            return io.BufferedReader(io.BytesIO(self._data))
        if mode == "w":
            return _WriteBackStream(self, b"")
        if mode is None:
            return _WriteBackStream(self, self._data)
        raise ValueError(f"invalid mode {mode!r}: expected 'r', 'w' or None")

    def open(self, mode="r", encoding="utf-8", newline=None):
        """Open the content as a text stream; use it in a ``with`` block.

        ``mode`` is as for :meth:`open_binary` (``"r"``, ``"w"`` or ``None``)
        but defaults to ``"r"``.  ``encoding`` and ``newline`` mean what they
        do for the built-in ``open()``.
        """
        stream = self.open_binary(mode)
        try:
            return io.TextIOWrapper(stream, encoding=encoding, newline=newline)
        except BaseException:
            # A bad encoding or newline must not leave a stream behind that
            # would empty the File when it is collected.
            if isinstance(stream, _WriteBackStream):
                stream.discard()
            raise

    def readlines(self, encoding="utf-8"):
        """Return the text lines, each with its line ending, as io's readlines."""
        with self.open("r", encoding=encoding) as stream:
            return stream.readlines()

    def getvalue_binary(self):
        """Return the content as bytes."""
        return self._data

    def getvalue(self, encoding="utf-8"):
        """Return the content decoded as text."""
        return self._data.decode(encoding)

    def save(self, path):
        """Write the content to the file at ``path``, replacing it if present."""
        Path(path).write_bytes(self._data)

    def __repr__(self):
        return f"<File of {len(self._data)} bytes>"
