"""Scene objects of the tests' own, built on the module's abstract base."""
from ostrel import geometry


class Box(geometry.TransformableObject):
    """A leaf: a unit box mesh."""

    @property
    def _name(self):
        return "box"

    def _to_trimesh(self):
        return geometry.trimesh.creation.box()
