// Native calls that reach native calls again (a setter assigning to itself, a group
// that holds itself) count against the host's recursion limit as the same Python code
// would, and end in RecursionError. A limit raised far above its default would let the
// C stack run out first, so the nesting is capped as well.
#pragma once

#include "module/ref.hpp"

namespace ostrel {

// One level of recursion for as long as it lives.
class RecursionLevel {
 public:
  RecursionLevel() {
    if (Py_EnterRecursiveCall(" in ostrel.geometry")) throw PyError{};
    if (++depth > max_depth) {
      leave();
      raise(PyExc_RecursionError, "maximum recursion depth exceeded");
    }
  }
  ~RecursionLevel() { leave(); }
  RecursionLevel(const RecursionLevel&) = delete;
  RecursionLevel& operator=(const RecursionLevel&) = delete;

 private:
  static constexpr int max_depth = 1000;  // well under a megabyte of C stack
  static void leave() {
    --depth;
    Py_LeaveRecursiveCall();
  }
  // Initial-exec: a plain offset from the thread pointer, not a call per access.
  [[gnu::tls_model("initial-exec")]] static inline thread_local int depth = 0;
};

}  // namespace ostrel
