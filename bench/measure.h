// What the benchmarks measure with.
#ifndef TVRSCN_BENCH_MEASURE_H
#define TVRSCN_BENCH_MEASURE_H

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <malloc.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tvrscn::bench {

template <typename Step>
double seconds(Step step) {
  const auto start = std::chrono::steady_clock::now();
  step();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The time that the machine needs when nothing else disturbs it.
inline double fastest(const std::vector<double>& values) {
  return *std::min_element(values.begin(), values.end());
}

inline double statusMegabytes(const char* key) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    double kilobytes = 0;
    if (word == key && status >> kilobytes) return kilobytes / 1024;
  }
  return 0;
}

// What step adds to a process of its own at its peak, in megabytes; 0 when it cannot be had.
// prepare comes first and gives step what it works on: what is loaded or kept once and for all is
// not counted.
template <typename Prepare, typename Step>
double peakOfChild(Prepare prepare, Step step) {
  int ends[2];
  if (pipe(ends) != 0) return 0;
  const pid_t child = fork();
  if (child == 0) {
    auto prepared = prepare();
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";  // the peak begins anew
    const double before = statusMegabytes("VmRSS:");
    step(*prepared);
    const double peak = statusMegabytes("VmHWM:") - before;
    const bool sent = write(ends[1], &peak, sizeof peak) == sizeof peak;
    _exit(sent ? 0 : 1);
  }
  close(ends[1]);
  double peak = 0;
  if (read(ends[0], &peak, sizeof peak) != sizeof peak) peak = 0;
  close(ends[0]);
  waitpid(child, nullptr, 0);
  return peak;
}

// What the system takes to give memory of this size, to be touched once, and to take it back: a
// cost of every buffer that is needed whole, whoever fills it. Machines differ in it by a factor of
// ten.
inline double secondsOfFreshMemory(std::size_t size) {
  constexpr std::size_t kSmallestPage = 4096;
  return seconds([size] {
    void* const memory =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) std::abort();
    for (std::size_t i = 0; i < size; i += kSmallestPage)
      static_cast<volatile char*>(memory)[i] = 1;
    munmap(memory, size);
  });
}

// A folder of the benchmark's own in the one for temporary files.
inline std::filesystem::path makeFolder(const std::string& name) {
  std::string path = (std::filesystem::temp_directory_path() / (name + ".XXXXXX")).string();
  if (mkdtemp(path.data()) == nullptr) std::abort();
  return path;
}

// The same pseudo-random bytes on every machine.
inline void fillWithNoise(char* bytes, std::size_t size) {
  std::uint64_t state = 1;
  for (std::size_t i = 0; i + sizeof state <= size; i += sizeof state) {
    state = state * 6364136223846793005U + 1442695040888963407U;
    std::memcpy(bytes + i, &state, sizeof state);
  }
}

}  // namespace tvrscn::bench

#endif  // TVRSCN_BENCH_MEASURE_H
