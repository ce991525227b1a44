"""
An I-section extruded into a beam
=================================

A steel I-section: its area, centroid and second moments, then extruded into a 6 m beam and
written as section_profile.glb.
"""
import sys

from ostrel.core import Color
from ostrel.geometry import Line, Material, Point, Polygon, _GLTF
from ostrel.preview import picture_beside


def i_section(height, width, web, flange):
    """The outline of an I-section centred on the origin, clockwise in plan."""
    h, w, t, f = height / 2, width / 2, web / 2, flange
    corners = [(-w, -h), (-w, -h + f), (-t, -h + f), (-t, h - f), (-w, h - f), (-w, h),
               (w, h), (w, h - f), (t, h - f), (t, -h + f), (w, -h + f), (w, -h)]
    return Polygon([Point(x, y) for x, y in corners])


def main(path="section_profile.glb"):
    section = i_section(height=0.300, width=0.150, web=0.0071, flange=0.0107)  # metres
    print(f"area:     {section.cross_sectional_area * 1e4:.2f} cm2")
    print("centroid: ({:.4f}, {:.4f}) m".format(*section.centroid))
    i_x, i_y = section.moment_of_inertia
    print(f"I_x:      {i_x * 1e8:.0f} cm4, I_y: {i_y * 1e8:.0f} cm4")

    steel = Material("steel", color=Color(120, 130, 150))
    beam = section.extrude(Line(Point(0, 0, 0), Point(6, 0, 0)), material=steel)
    print(f"beam of {beam.length} m made of {len(beam._children)} parts (two caps and the side wall)")
    _GLTF.to_gltf(beam).save(path)
    print("wrote", path)
    if picture := picture_beside(path):
        print("and a picture of it,", picture)


if __name__ == "__main__":
    main(*sys.argv[1:])
