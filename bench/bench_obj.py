"""Times the OBJ reader on generated meshes of 10,000, 100,000 and 1,000,000 triangles against
the same steps written in plain Python and against trimesh's own OBJ loader, all on the same
text, and reports the reader's peak memory against the size of the lists it returns.
Run by hand: python bench/bench_obj.py [largest number of faces]"""
import gc
import io
import math
import sys
import time
import tracemalloc

from ostrel import geometry
from ostrel._vendor import trimesh

from obj_steps import plain_parse


def py_vertices_and_faces(file):
    """The documented steps of the reader, in plain Python."""
    return plain_parse(file.readlines())


def trimesh_loader(file):
    return trimesh.exchange.obj.load_obj(file, maintain_order=True, skip_materials=True)


def scan_like_mesh(faces):
    """An OBJ text of a rolling surface: a grid of vertices with 6 decimals, two triangles
    per cell, a header and a group line as exporters write them."""
    n = math.isqrt(faces // 2)
    rows, columns = n, faces // 2 // n
    lines = ["# generated\n", "o surface\n"]
    for i in range(rows + 1):
        for j in range(columns + 1):
            lines.append(f"v {i * 0.25:.6f} {j * 0.25:.6f} {math.sin(i * 0.1) * math.cos(j * 0.1):.6f}\n")
    lines.append("g surface\n")
    for i in range(rows):
        for j in range(columns):
            a = i * (columns + 1) + j + 1
            b, c, d = a + 1, a + columns + 2, a + columns + 1
            lines.append(f"f {a} {b} {c}\n")
            lines.append(f"f {a} {c} {d}\n")
    return "".join(lines), 2 * rows * columns


class ReadLines:
    """The lines of a text already read: readlines() hands out a new list of them."""

    def __init__(self, text):
        self.lines = io.StringIO(text).readlines()

    def readlines(self):
        return list(self.lines)


def timed(function, text, repeat, source=io.StringIO):
    """Best wall time of a call on a fresh source, the young collection it leaves included."""
    best = math.inf
    for _ in range(repeat):
        stream = source(text)
        gc.collect()
        start = time.perf_counter()
        result = function(stream)
        gc.collect(0)
        best = min(best, time.perf_counter() - start)
        del result
    return best


def size_of_lists(vertices, faces):
    """Bytes held by the result: the lists, their floats and the distinct int objects."""
    total = sys.getsizeof(vertices) + sys.getsizeof(faces)
    total += sum(sys.getsizeof(v) + sum(sys.getsizeof(c) for c in v) for v in vertices)
    ints = {id(i): i for f in faces for i in f}
    return total + sum(sys.getsizeof(f) for f in faces) + sum(sys.getsizeof(i) for i in ints.values())


def peak_memory(function, text):
    stream = io.StringIO(text)
    gc.collect()
    tracemalloc.start()
    result = function(stream)
    peak = tracemalloc.get_traced_memory()[1]
    tracemalloc.stop()
    return peak, result


def main():
    largest = int(sys.argv[1]) if len(sys.argv) > 1 else 1_000_000
    sizes = [n for n in (10_000, 100_000, 1_000_000) if n <= largest]
    print("Seconds per call on a text stream (readlines() included), and the readers alone on lines\n"
          "read already; peak memory of a call against the size of the lists it returns.\n")
    print(f"{'faces':>9} {'lines':>9} {'ostrel':>8} {'python':>8} {'trimesh':>8} {'x python':>8} "
          f"{'x trimesh':>9} | {'ostrel':>8} {'python':>8} {'x python':>8} | {'peak MB':>7} {'lists MB':>8} "
          f"{'ratio':>5}")
    for wanted in sizes:
        text, faces = scan_like_mesh(wanted)
        repeat = 5 if faces < 1_000_000 else 3
        ours = timed(geometry._parse_vertices_and_faces_from_obj, text, repeat)
        python = timed(py_vertices_and_faces, text, max(1, repeat - 2))
        loader = timed(trimesh_loader, text, repeat)
        ours_read = timed(geometry._parse_vertices_and_faces_from_obj, text, repeat, ReadLines)
        python_read = timed(py_vertices_and_faces, text, max(1, repeat - 2), ReadLines)
        peak, (vertices, face_list) = peak_memory(geometry._parse_vertices_and_faces_from_obj, text)
        assert (vertices, face_list) == py_vertices_and_faces(io.StringIO(text))
        lists = size_of_lists(vertices, face_list)
        print(f"{faces:>9,} {text.count(chr(10)):>9,} {ours:>8.3f} {python:>8.3f} {loader:>8.3f} "
              f"{python / ours:>7.1f}x {loader / ours:>8.1f}x | {ours_read:>8.3f} {python_read:>8.3f} "
              f"{python_read / ours_read:>7.1f}x | {peak / 1e6:>7.1f} {lists / 1e6:>8.1f} {peak / lists:>5.2f}")
        del vertices, face_list


if __name__ == "__main__":
    main()
