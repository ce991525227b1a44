"""
A small structure, drawn from its GLB file
==========================================

A concrete column, a steel beam on top of it, a round bar as a brace, a cone and the axes, written
as one binary glTF file, ``small_structure.glb`` (y is up, as glTF viewers expect), and drawn with
:mod:`ostrel.preview`. Each node of the file names its kind in its extras
("rectangular-extrusion", "circular-extrusion-cylinder", "cone-cone", ...).
"""
import matplotlib.pyplot as plt

from ostrel.core import Color
from ostrel.geometry import (CartesianAxes, CircularExtrusion, Cone, Line, Material, Point, RectangularExtrusion,
                             Vector, _GLTF)
from ostrel.preview import draw, picture_beside

concrete = Material("concrete", 2400, color=Color(190, 190, 185))
steel = Material("steel", 7850, color=Color(120, 130, 150))
marker = Material("marker", color=Color(230, 120, 20))
column = RectangularExtrusion(0.4, 0.4, Line(Point(0, 0, 0), Point(0, 3, 0)), material=concrete)
beam = RectangularExtrusion(0.2, 0.4, Line(Point(-0.5, 3.2, 0), Point(5, 3.2, 0)), material=steel)
brace = CircularExtrusion(0.06, Line(Point(0.2, 1.0, 0), Point(2.5, 3.0, 0)), material=steel)
cone = Cone(0.3, 0.5, origin=Point(5, 3.4, 0), orientation=Vector(0, 1, 0), material=marker)
axes = CartesianAxes(Point(0, 0, 1), axis_length=1.0, axis_diameter=0.05)

print(f"column: {column.inner_volume:.2f} m3 of concrete, {column.inner_volume * 2400:.0f} kg")
print(f"beam:   {beam.cross_sectional_area * 1e4:.0f} cm2 over {beam.length:.1f} m")
print(f"brace:  {brace.length:.2f} m of round bar, {brace.cross_sectional_area * 1e6:.0f} mm2")
glb = _GLTF.to_gltf(column, beam, brace, cone, axes)
glb.save("small_structure.glb")
print(f"wrote small_structure.glb ({len(glb.getvalue_binary())} bytes) and a picture of it,",
      picture_beside("small_structure.glb"))

fig, ax = plt.subplots(figsize=(8, 6))
draw(glb.getvalue_binary(), ax)
plt.show()
