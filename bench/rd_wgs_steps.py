"""The RD and WGS series of RDWGSConverter as plain Python, written from the published tables:
the reference the tests and the benchmark compare with."""
import warnings

X_WARNING = "The given x-coordinate lies outside of the RD coordinate system bounds."
Y_WARNING = "The given y-coordinate lies outside of the RD coordinate system bounds."
LAT_WARNING = "The given latitude lies outside of the RD coordinate system bounds."
LON_WARNING = "The given longitude lies outside of the RD coordinate system bounds."

# The series as plain Python, written from the published tables.
LATITUDE = [(0, 1, 3235.65389), (2, 0, -32.58297), (0, 2, -0.2475), (2, 1, -0.84978), (0, 3, -0.0655),
            (2, 2, -0.01709), (1, 0, -0.00738), (4, 0, 0.0053), (2, 3, -0.00039), (4, 1, 0.00033), (1, 1, -0.00012)]
LONGITUDE = [(1, 0, 5260.52916), (1, 1, 105.94684), (1, 2, 2.45656), (3, 0, -0.81885), (1, 3, 0.05594),
             (3, 1, -0.05607), (0, 1, 0.01199), (3, 2, -0.00256), (1, 4, 0.00128), (0, 2, 0.00022),
             (2, 0, -0.00022), (5, 0, 0.00026)]
RD_X = [(0, 1, 190094.945), (1, 1, -11832.228), (2, 1, -114.221), (0, 3, -32.391), (1, 0, -0.705), (3, 1, -2.34),
        (1, 3, -0.608), (0, 2, -0.008), (2, 3, 0.148)]
RD_Y = [(1, 0, 309056.544), (0, 2, 3638.893), (2, 0, 73.077), (1, 2, -157.984), (3, 0, 59.788), (0, 1, 0.433),
        (2, 2, -6.439), (1, 1, -0.032), (0, 4, 0.092), (1, 4, -0.054)]


def rd_to_wgs(coords, x0=155000, y0=463000, phi0=52.1551744, lam0=5.38720621):
    if coords[0] < -7000 or coords[0] > 300000:
        warnings.warn(X_WARNING)
    if coords[1] < 289000 or coords[1] > 629000:
        warnings.warn(Y_WARNING)
    dx, dy = 1e-5 * (coords[0] - x0), 1e-5 * (coords[1] - y0)
    phi = lam = 0.0
    for p, q, c in LATITUDE:
        phi = phi + c * dx ** p * dy ** q
    for p, q, c in LONGITUDE:
        lam = lam + c * dx ** p * dy ** q
    return [phi0 + phi / 3600.0, lam0 + lam / 3600.0]


def wgs_to_rd(coords):
    if coords[0] < 50.56846369435836 or coords[0] > 53.627020058901856:
        warnings.warn(LAT_WARNING)
    if coords[1] < 3.100559333335453 or coords[1] > 7.578928993560541:
        warnings.warn(LON_WARNING)
    dphi, dlam = 0.36 * (coords[0] - 52.1551744), 0.36 * (coords[1] - 5.38720621)
    x = y = 0.0
    for p, q, c in RD_X:
        x += c * dphi ** p * dlam ** q
    for p, q, c in RD_Y:
        y += c * dphi ** p * dlam ** q
    return [x + 155000, y + 463000]
