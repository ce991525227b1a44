"""
A steel I-section and its triangles
===================================

A :class:`~ostrel.geometry.Polygon` takes its area, centroid and second moments as sums over the
triangles of its ear clipping. Here an I-section of 300 x 150 mm: its outline, the triangles the
clipping cuts it into, the centroid and the two second moments through it.
"""
import matplotlib.pyplot as plt
from matplotlib.patches import Polygon as Patch

from ostrel.geometry import Point, Polygon


def i_section(height, width, web, flange):
    """The outline of an I-section centred on the origin, clockwise in plan (metres)."""
    h, w, t, f = height / 2, width / 2, web / 2, flange
    corners = [(-w, -h), (-w, -h + f), (-t, -h + f), (-t, h - f), (-w, h - f), (-w, h),
               (w, h), (w, h - f), (t, h - f), (t, -h + f), (w, -h + f), (w, -h)]
    return Polygon([Point(x, y) for x, y in corners])


section = i_section(height=0.300, width=0.150, web=0.0071, flange=0.0107)
area = section.cross_sectional_area
cx, cy = section.centroid
i_x, i_y = section.moment_of_inertia
print(f"area {area * 1e4:.2f} cm2, centroid ({cx:.4f}, {cy:.4f}) m")
print(f"I_x {i_x * 1e8:.0f} cm4, I_y {i_y * 1e8:.0f} cm4")

fig, ax = plt.subplots(figsize=(5, 7))
for k, triangle in enumerate(section._triangles()):
    corners = [(p.x * 1000, p.y * 1000) for p in triangle.profile]
    ax.add_patch(Patch(corners, closed=True, facecolor=plt.cm.Blues(0.25 + 0.5 * (k % 2)), edgecolor="white", lw=0.8))
outline = [(p.x * 1000, p.y * 1000) for p in section.points + section.points[:1]]
ax.plot(*zip(*outline), color="black", lw=1.5)
ax.plot(cx * 1000, cy * 1000, marker="+", color="crimson", markersize=18, mew=2)
ax.annotate(f"centroid\nA = {area * 1e4:.1f} cm²\nI_x = {i_x * 1e8:.0f} cm⁴\nI_y = {i_y * 1e8:.0f} cm⁴",
            (cx * 1000, cy * 1000), xytext=(12, 40), textcoords="offset points", color="crimson")
ax.set_aspect("equal")
ax.set_xlabel("x [mm]")
ax.set_ylabel("y [mm]")
ax.set_title(f"{len(section._triangles())} triangles of the ear clipping")
plt.show()
