// Allocations of the whole program, counted and refused. Linking this replaces operator new and
// operator delete, and catches calloc, so the programs that do are small ones of their own.
#ifndef TVRSCN_TESTS_SUPPORT_ALLOCATION_H
#define TVRSCN_TESTS_SUPPORT_ALLOCATION_H

#include <cstddef>

namespace tvrscn::test {

// Allocations of exactly `size` bytes that are live.
long liveAllocations(std::size_t size);

// While it stands, allocations of `least` to `most` bytes cannot be had.
class RefusedAllocations {
 public:
  RefusedAllocations(std::size_t least, std::size_t most);
  RefusedAllocations(const RefusedAllocations&) = delete;
  RefusedAllocations& operator=(const RefusedAllocations&) = delete;
  ~RefusedAllocations();

  // How many were refused so far.
  static int count();
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_SUPPORT_ALLOCATION_H
