"""Third-party libraries, reached through one place.

``from ostrel._vendor import trimesh`` gives the installed trimesh.  Its API
has changed over the releases we support; the differences we depend on are
settled here once, at import, so that callers do not have to.
"""

import inspect

import trimesh


def _node_data_keyword(add_geometry):
    """Return the keyword ``add_geometry`` takes for per-node data.

    Older trimesh calls it ``extras``, newer ``metadata``; both write the dict
    as the glTF node's ``extras``.  ``scene.graph.update`` takes the same
    keyword, and silently drops a wrong one, so the name has to come from the
    signature rather than from trial and error.
    """
    parameters = inspect.signature(add_geometry).parameters
    for keyword in ("metadata", "extras"):
        if keyword in parameters:
            return keyword
    raise ImportError(
        f"trimesh {getattr(trimesh, '__version__', '?')} is not supported: "
        "Scene.add_geometry takes neither 'metadata' nor 'extras'"
    )


NODE_DATA_KEYWORD = _node_data_keyword(trimesh.Scene.add_geometry)
"""Keyword for per-node data in ``Scene.add_geometry`` and ``scene.graph.update``."""

__all__ = ["NODE_DATA_KEYWORD", "trimesh"]
