// What it costs to take the block markers out of bytes in memory, against a plain copy of the same
// bytes. Both go into a buffer that has been used before and are measured in turn within the same
// loop; the fastest run of each counts.
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/measure.h"
#include "family_lowend/lowend_framing.h"

namespace {

using tvrscn::bench::fastest;
using tvrscn::bench::fillWithNoise;
using tvrscn::bench::seconds;

constexpr double kMaxRatio = 4;
constexpr double kMinBytesPerSecond = 1e9;
constexpr std::size_t kSize = 64U << 20U;
constexpr char kMarker[] = "BLOCK012345678TES\n";
constexpr std::size_t kMarkerSize = 18;

// Pseudo-random bytes with a marker at every `every` bytes.
std::string makeStream(std::size_t every) {
  std::string stream(kSize, '\0');
  fillWithNoise(stream.data(), stream.size());
  for (std::size_t i = every; i + kMarkerSize <= stream.size(); i += every)
    std::memcpy(stream.data() + i, kMarker, kMarkerSize);
  return stream;
}

std::size_t clean(std::string_view stream, char* cleaned) {
  tvrscn::BlockMarkerFilter filter;
  std::size_t kept = 0;
  const auto keep = [&](std::string_view bytes) {
    std::memcpy(cleaned + kept, bytes.data(), bytes.size());
    kept += bytes.size();
  };
  while (!stream.empty())
    keep(filter.next(stream));
  keep(filter.finish());
  return kept;
}

void cleanInMemory(benchmark::State& state) {
  const auto every = static_cast<std::size_t>(state.range(0));
  const std::string stream = makeStream(every);
  const std::size_t markers = (kSize - kMarkerSize) / every;
  std::vector<char> cleaned(kSize);
  std::vector<char> copy(kSize);
  std::vector<double> ours;
  std::vector<double> theirs;
  std::size_t kept = 0;
  while (state.KeepRunning()) {
    theirs.push_back(seconds([&] {
      std::memcpy(copy.data(), stream.data(), kSize);
      benchmark::ClobberMemory();
    }));
    ours.push_back(seconds([&] { kept = clean(stream, cleaned.data()); }));
    state.SetIterationTime(ours.back());
  }
  const double ratio = fastest(ours) / fastest(theirs);
  const double rate = static_cast<double>(kSize) / fastest(ours);
  state.counters["ratio"] = ratio;
  state.counters["GB/s"] = rate / 1e9;
  state.SetLabel(kept != kSize - markers * kMarkerSize              ? "NOT THE SAME BYTES"
                 : ratio <= kMaxRatio && rate >= kMinBytesPerSecond ? "reached"
                                                                    : "missed");
}

BENCHMARK(cleanInMemory)
    ->ArgName("every")
    ->Arg(1 << 20)
    ->Arg(1 << 16)
    ->Arg(1 << 12)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(1);

}  // namespace

BENCHMARK_MAIN();
