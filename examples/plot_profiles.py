"""
Two profiles and their lower envelope
=====================================

A surveyed ground profile and a design level, both :class:`~ostrel.geometry.Polyline` objects
running from left to right. :meth:`~ostrel.geometry.Polyline.get_lowest_or_highest_profile_x` gives
the lower of the two at every x over the stretch both cover, with their crossings
(:meth:`~ostrel.geometry.Polyline.intersections_with_polyline`) as corners.
"""
import math

import matplotlib.pyplot as plt

from ostrel.geometry import Point, Polyline

surveyed = Polyline([Point(x, 2.0 + 0.8 * math.sin(x / 4) + 0.25 * math.sin(1.7 * x)) for x in range(0, 41)])
design = Polyline([Point(3, 2.3), Point(18, 1.9), Point(28, 2.2), Point(38, 1.7)])

lower = Polyline.get_lowest_or_highest_profile_x(surveyed, design, lowest=True)
crossings = surveyed.intersections_with_polyline(design)
print(f"{len(crossings)} crossings; the envelope has {len(lower.points)} points from x = {lower.x_min} to {lower.x_max}")

fig, ax = plt.subplots(figsize=(9, 4))
ax.plot([p.x for p in surveyed.points], [p.y for p in surveyed.points], color="tab:brown", lw=1, label="surveyed")
ax.plot([p.x for p in design.points], [p.y for p in design.points], color="tab:blue", lw=1, label="design")
ax.plot([p.x for p in lower.points], [p.y for p in lower.points], color="black", lw=2.5, alpha=0.6,
        label="lower envelope")
ax.scatter([p.x for p in crossings], [p.y for p in crossings], color="crimson", zorder=3, label="crossings")
ax.set_xlabel("x [m]")
ax.set_ylabel("level [m]")
ax.legend(loc="lower left")
plt.show()
