// The ear-clipping members of Polygon (surfaces/ear_clipping.cpp), for its class body.
#pragma once

#include "module/class_builder.hpp"

namespace ostrel {

extern const Member convex_angle_when_ccw_member;
extern const Member on_triangle_member;
extern const Member in_triangle_member;
extern const Member get_ear_member;
extern const Member triangulate_by_earclipping_member;

}  // namespace ostrel
