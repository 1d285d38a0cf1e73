// Numbers from a seed, the same on every system: the distributions of the standard library are not.
#ifndef TVRSCN_VIRTUAL_LOWEND_RANDOM_NUMBERS_H
#define TVRSCN_VIRTUAL_LOWEND_RANDOM_NUMBERS_H

#include <cstddef>
#include <cstdint>
#include <random>

namespace tvrscn::virtual_device {

class RandomNumbers {
 public:
  explicit RandomNumbers(std::uint64_t seed) : engine_(seed) {}

  // From 0 to limit - 1. REQUIRES: limit above 0.
  std::size_t below(std::size_t limit) { return static_cast<std::size_t>(engine_() % limit); }
  // From least to most, both included.
  std::size_t between(std::size_t least, std::size_t most) {
    return least + below(most - least + 1);
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_LOWEND_RANDOM_NUMBERS_H
