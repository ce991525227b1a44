// The double polynomial series between RD (the Dutch national grid, metres) and WGS
// latitude and longitude (degrees), on plain doubles. Every term is the coefficient
// times the first power times the second, multiplied left to right, and the terms are
// summed in table order, so the results are those of the same float arithmetic done
// step by step by the host.
#pragma once

#include <array>

namespace ostrel::kernel {

// The reference point of the series, which the class carries as X0, Y0, phi0, lam0.
inline constexpr double rd_x0 = 155000.0;
inline constexpr double rd_y0 = 463000.0;
inline constexpr double wgs_phi0 = 52.1551744;
inline constexpr double wgs_lam0 = 5.38720621;

// The domain of a coordinate; a position outside it is converted all the same. The
// bounds are strict: a position on a bound lies inside. NaN lies inside too, as no
// comparison holds for it. The RD bounds are whole metres, compared as integers.
struct Domain {
  double low, high;
  bool outside(double v) const { return v < low || v > high; }
};
inline constexpr Domain rd_x_domain{-7000.0, 300000.0};
inline constexpr Domain rd_y_domain{289000.0, 629000.0};
inline constexpr Domain wgs_latitude_domain{50.56846369435836, 53.627020058901856};
inline constexpr Domain wgs_longitude_domain{3.100559333335453, 7.578928993560541};

// One term of a series: the coefficient and the powers of its two variables.
struct SeriesTerm {
  double coefficient;
  int p, q;
};

// The four series, in table order: latitude and longitude of RD dX and dY; RD x and y
// of WGS dPhi and dLam.

inline constexpr std::array<SeriesTerm, 11> latitude_series{{
    {3235.65389, 0, 1},
    {-32.58297, 2, 0},
    {-0.2475, 0, 2},
    {-0.84978, 2, 1},
    {-0.0655, 0, 3},
    {-0.01709, 2, 2},
    {-0.00738, 1, 0},
    {0.0053, 4, 0},
    {-0.00039, 2, 3},
    {0.00033, 4, 1},
    {-0.00012, 1, 1},
}};
inline constexpr std::array<SeriesTerm, 12> longitude_series{{
    {5260.52916, 1, 0},
    {105.94684, 1, 1},
    {2.45656, 1, 2},
    {-0.81885, 3, 0},
    {0.05594, 1, 3},
    {-0.05607, 3, 1},
    {0.01199, 0, 1},
    {-0.00256, 3, 2},
    {0.00128, 1, 4},
    {0.00022, 0, 2},
    {-0.00022, 2, 0},
    {0.00026, 5, 0},
}};
inline constexpr std::array<SeriesTerm, 9> x_series{{
    {190094.945, 0, 1},
    {-11832.228, 1, 1},
    {-114.221, 2, 1},
    {-32.391, 0, 3},
    {-0.705, 1, 0},
    {-2.34, 3, 1},
    {-0.608, 1, 3},
    {-0.008, 0, 2},
    {0.148, 2, 3},
}};
inline constexpr std::array<SeriesTerm, 10> y_series{{
    {309056.544, 1, 0},
    {3638.893, 0, 2},
    {73.077, 2, 0},
    {-157.984, 1, 2},
    {59.788, 3, 0},
    {0.433, 0, 1},
    {-6.439, 2, 2},
    {-0.032, 1, 1},
    {0.092, 0, 4},
    {-0.054, 1, 4},
}};

// [phi, lam] of RD (x, y). Throws ArithmeticFault where a power overflows, as the
// host's float power raises there.
std::array<double, 2> rd_to_wgs(double x, double y);

// [X, Y] of WGS (phi, lam); throws likewise.
std::array<double, 2> wgs_to_rd(double phi, double lam);

}  // namespace ostrel::kernel
