"""The documented steps of the plain OBJ reader in Python: the reference the tests and the
benchmark compare with."""


def plain_parse(lines):
    """The documented steps of the plain reader, in Python."""
    vertices, faces = [], []
    for line in lines:
        split = line.split()
        if not split:
            continue
        if split[0] == "v":
            vertices.append([float(split[1]), float(split[2]), float(split[3])])
        elif split[0] == "f":
            corners = split[1:]
            for i in range(1, len(corners) - 1):
                faces.append([int(corners[0].split("/")[0]) - 1, int(corners[i].split("/")[0]) - 1,
                              int(corners[i + 1].split("/")[0]) - 1])
    return vertices, faces
