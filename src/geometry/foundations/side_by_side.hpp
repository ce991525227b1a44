// Two independent pieces of work on two cores, for the long loops of large inputs. The
// second runs on a thread of its own while the caller runs the first; it must touch
// nothing of the host's (no Python object, no reference count) and nothing the first
// writes. Whatever either throws reaches the caller after both have ended, the first's
// before the second's, so a failure never leaves the other running on freed memory.
#pragma once

#include <cstddef>
#include <future>
#if defined(__linux__)
#include <sched.h>
#endif
#include <system_error>
#include <thread>

namespace ostrel {

// Below this many items a thread costs more than it saves.
constexpr size_t kSideBySideFrom = 8192;

// The cores this process may run on now (a process pinned to one core gains nothing from
// a second thread, and loses what the two take from each other).
inline unsigned usable_cores() {
#if defined(__linux__)
  cpu_set_t set;
  if (sched_getaffinity(0, sizeof set, &set) == 0) return static_cast<unsigned>(CPU_COUNT(&set));
#endif
  return std::thread::hardware_concurrency();
}

template <typename First, typename Second>
void side_by_side(size_t items, First&& first, Second&& second) {
  std::future<void> beside;
  if (items >= kSideBySideFrom && usable_cores() >= 2) {
    try {
      beside = std::async(std::launch::async, second);
    } catch (const std::system_error&) {
      // no thread to be had: both run here
    }
  }
  if (!beside.valid()) {
    first();
    second();
    return;
  }
  first();  // a throw here waits in the future's destructor for the second to end
  beside.get();
}

// f(i) for each i in [0, n), the upper half beside the lower.
template <typename F>
void for_each_index_in_halves(size_t n, const F& f) {
  const size_t middle = n / 2;
  side_by_side(
      n,
      [&] {
        for (size_t i = 0; i < middle; ++i) f(i);
      },
      [&] {
        for (size_t i = middle; i < n; ++i) f(i);
      });
}

}  // namespace ostrel
