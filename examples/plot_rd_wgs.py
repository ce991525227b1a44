"""
Dutch grid positions in latitude and longitude
==============================================

:class:`~ostrel.geometry.RDWGSConverter` turns RD coordinates (the Dutch national grid, metres) into
WGS latitude and longitude (degrees) and back, by the published polynomial series. Here a few towns
given in RD, converted to WGS, and a square kilometre grid over the country to show how the RD axes
lie on the map.
"""
import matplotlib.pyplot as plt

from ostrel.geometry import GeoPoint, RDWGSConverter

towns = {"Amsterdam": (121000, 487000), "Utrecht": (136000, 456000), "Rotterdam": (92000, 437000),
         "Groningen": (233000, 582000), "Maastricht": (176000, 317000), "Middelburg": (31000, 391000)}

fig, ax = plt.subplots(figsize=(6, 7))
for x in range(0, 300001, 50000):
    line = [RDWGSConverter.from_rd_to_wgs((x, y)) for y in range(300000, 625001, 25000)]
    ax.plot([lon for lat, lon in line], [lat for lat, lon in line], color="0.85", lw=0.8)
for y in range(300000, 625001, 50000):
    line = [RDWGSConverter.from_rd_to_wgs((x, y)) for x in range(0, 300001, 25000)]
    ax.plot([lon for lat, lon in line], [lat for lat, lon in line], color="0.85", lw=0.8)
for name, rd in towns.items():
    place = GeoPoint.from_rd(rd)
    back = place.rd
    print(f"{name:11} RD {rd} -> lat {place.lat:.5f}, lon {place.lon:.5f}; back within "
          f"{max(abs(back[0] - rd[0]), abs(back[1] - rd[1])) * 1000:.1f} mm")
    ax.plot(place.lon, place.lat, "o", color="tab:orange")
    ax.annotate(name, (place.lon, place.lat), xytext=(5, 3), textcoords="offset points")
ax.set_xlabel("longitude [deg]")
ax.set_ylabel("latitude [deg]")
ax.set_title("RD grid lines every 50 km, in WGS")
ax.set_aspect(1 / 0.61)  # a degree of longitude is about 0.61 of one of latitude here
plt.show()
