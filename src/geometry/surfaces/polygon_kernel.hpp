// The checks of Polygon on plain doubles: duplicate corners and crossing edges, with the
// tolerance forms and the order of the Python checks they stand for, found by sorting
// instead of by comparing every pair.
#pragma once

#include <cstddef>
#include <optional>
#include <span>

#include "foundations/vec3_kernel.hpp"

namespace ostrel::kernel {

// Polygon._check_duplicate_points: the lowest index whose corner equals (Point.__eq__)
// another corner, which the walk over every ordered pair meets first. Finite corners.
std::optional<size_t> first_duplicate(std::span<const Vec3> corners, Tolerance module);

// Polygon._is_simple over the closed ring of `corners`: whether any two edges that are
// not the same meet (calculate_intersection_bounded_lines) without sharing a corner
// (the end of one equal to the start of the other). Where the documented steps raise,
// the same error (StepsRaise): an edge with coinciding ends (making the Line), or, at
// the first pair in their order that decides, two meeting points that differ.
// `undecided` leaves to the steps what rounding or size puts in doubt (a division by
// zero, a bound beyond the finite range).
enum class Simplicity { simple, not_simple, undecided };
Simplicity is_simple(std::span<const Vec3> corners, const Tolerances& t);

}  // namespace ostrel::kernel
