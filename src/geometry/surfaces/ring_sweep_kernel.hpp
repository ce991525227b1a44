// The edges of a closed ring that come close to each other, found in n log n for a ring
// whose edges do not cross, however long and packed they are.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "foundations/vec3_kernel.hpp"

namespace ostrel::kernel {

// The pairs of edges of the closed ring of `corners` (in plan; edge k runs from corner k
// to corner k + 1) that may come close, where the edges not `left_out` certainly meet only
// their neighbours in the ring, at the corner they share: every pair of those edges that
// are not neighbours, may come within `window` of each other and that `close(i, j)`
// accepts (in doubt, yes), some more than once. nullopt where two of them may cross or
// touch (or rounding leaves an orientation in doubt), for fewer than four corners and for
// values not finite; `stopped` then holds the edges whose test stopped the sweep, if any.
// For a long ring `close` is called from two threads at once.
std::optional<std::vector<std::pair<size_t, size_t>>> close_pairs(std::span<const Vec3> corners, double window,
                                                                  const std::function<bool(size_t, size_t)>& close,
                                                                  const std::vector<bool>& left_out,
                                                                  std::vector<size_t>& stopped);

}  // namespace ostrel::kernel
