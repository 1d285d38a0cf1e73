// What it costs to make a page out of its strips, against the least that anybody has to do for it:
// decoding the same strips from memory into one page buffer and encoding that to a file with the
// same codec. Both run in turn within the same loop, and the fastest run of each counts: the time
// that the machine needs when nothing else disturbs it.
//
// Memory is that of a child process of its own, from before the page to its peak.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <benchmark/benchmark.h>
#include <jpeglib.h>

#include "tests/support/test_peers.h"
#include "tvrscn/hp_controller.h"

namespace {

constexpr double kMaxRatio = 1.15;
constexpr unsigned kChannels = 3;
constexpr int kStripQuality = 85;
constexpr int kPageQuality = 75;
constexpr double kMegabyte = 1024.0 * 1024.0;

using Blocks = ControllerTestPeer::Blocks;
using Pixels = std::vector<unsigned char>;

struct Sheet {
  unsigned dpi = 0;
  unsigned width = 0;
  unsigned height = 0;
  Pixels pixels;  // red, green, blue
};

// A small generator of our own: the same sheet on every machine.
class Noise {
 public:
  unsigned next() {
    state_ = state_ * 6364136223846793005U + 1442695040888963407U;
    return static_cast<unsigned>(state_ >> 33);
  }

 private:
  std::uint64_t state_ = 1;
};

// Strokes as of 10 point print: lines of 1/6 inch, marks of pseudo-random width and height.
bool isInk(const Sheet& sheet, unsigned x, unsigned y) {
  const unsigned unit = std::max(1U, sheet.dpi / 75);
  const unsigned line = y / (unit * 12);
  const unsigned inLine = y / unit % 12;
  const unsigned column = x / unit;
  if (inLine >= 8 || column % 97 > 90) return false;
  const unsigned mark = (column / 3 * 2654435761U + line * 40503U) >> 7;
  return mark % 5 < 3 && (column % 3 == mark % 3 || inLine == mark % 8);
}

// Printed text in the upper two thirds, a smooth picture with grain in the lower one.
Sheet makeSheet(unsigned dpi) {
  Sheet sheet;
  sheet.dpi = dpi;
  sheet.width = static_cast<unsigned>(std::lround(210 / 25.4 * dpi));
  sheet.height = static_cast<unsigned>(std::lround(297 / 25.4 * dpi));
  sheet.pixels.resize(std::size_t{sheet.width} * sheet.height * kChannels);
  Noise noise;
  unsigned char* out = sheet.pixels.data();
  for (unsigned y = 0; y < sheet.height; ++y) {
    const bool picture = y > sheet.height * 2 / 3;
    for (unsigned x = 0; x < sheet.width; ++x) {
      const unsigned grain = noise.next() % 7;
      const unsigned across = x * 200 / sheet.width;
      const unsigned down = y * 200 / sheet.height;
      const unsigned paper = !picture && isInk(sheet, x, y) ? 40 : 240;
      *out++ = static_cast<unsigned char>((picture ? 20 + across : paper) + grain);
      *out++ = static_cast<unsigned char>((picture ? 20 + down : paper - 4) + grain);
      *out++ = static_cast<unsigned char>((picture ? 220 - across : paper - 12) + grain);
    }
  }
  return sheet;
}

// Errors of the codec end the program: the strips are its own.
void encode(jpeg_compress_struct& codec, const unsigned char* rows, unsigned width, unsigned height,
            J_COLOR_SPACE space, int quality, unsigned dpi) {
  codec.image_width = width;
  codec.image_height = height;
  codec.input_components = kChannels;
  codec.in_color_space = space;
  jpeg_set_defaults(&codec);
  jpeg_set_quality(&codec, quality, TRUE);
  codec.density_unit = 1;
  codec.X_density = codec.Y_density = static_cast<UINT16>(dpi);
  jpeg_start_compress(&codec, TRUE);
  while (codec.next_scanline < height) {
    auto* row =
        const_cast<unsigned char*>(rows + std::size_t{codec.next_scanline} * width * kChannels);
    jpeg_write_scanlines(&codec, &row, 1);
  }
  jpeg_finish_compress(&codec);
  jpeg_destroy_compress(&codec);
}

std::pair<std::shared_ptr<unsigned char>, unsigned long> makeStrip(const Sheet& sheet, unsigned top,
                                                                   unsigned lines) {
  jpeg_compress_struct codec{};
  jpeg_error_mgr errors{};
  codec.err = jpeg_std_error(&errors);
  jpeg_create_compress(&codec);
  unsigned char* memory = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&codec, &memory, &size);
  encode(codec, sheet.pixels.data() + std::size_t{top} * sheet.width * kChannels, sheet.width,
         lines, JCS_RGB, kStripQuality, sheet.dpi);
  return {std::shared_ptr<unsigned char>(memory, std::free), size};
}

Blocks makeStrips(const Sheet& sheet, unsigned lines) {
  Blocks blocks;
  for (unsigned top = 0; top < sheet.height; top += lines)
    blocks.push_back(makeStrip(sheet, top, std::min(lines, sheet.height - top)));
  return blocks;
}

// The least that has to be done: one page buffer, each strip decoded into it, the page encoded.
void decodeInto(const Blocks::value_type& block, unsigned char*& target) {
  jpeg_decompress_struct codec{};
  jpeg_error_mgr errors{};
  codec.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&codec);
  jpeg_mem_src(&codec, block.first.get(), block.second);
  jpeg_read_header(&codec, TRUE);
  codec.out_color_space = JCS_EXT_BGR;
  jpeg_start_decompress(&codec);
  while (codec.output_scanline < codec.output_height) {
    JSAMPROW row = target;
    jpeg_read_scanlines(&codec, &row, 1);
    target += std::size_t{codec.output_width} * kChannels;
  }
  jpeg_finish_decompress(&codec);
  jpeg_destroy_decompress(&codec);
}

void makePageDirectly(const Blocks& blocks, unsigned width, unsigned height, unsigned dpi,
                      const std::filesystem::path& name) {
  const std::unique_ptr<unsigned char[]> page(
      new unsigned char[std::size_t{width} * height * kChannels]);
  unsigned char* target = page.get();
  for (const auto& block : blocks)
    decodeInto(block, target);
  jpeg_compress_struct codec{};
  jpeg_error_mgr errors{};
  codec.err = jpeg_std_error(&errors);
  jpeg_create_compress(&codec);
  std::FILE* const file = std::fopen(name.c_str(), "wb");
  if (file == nullptr) std::abort();
  jpeg_stdio_dest(&codec, file);
  encode(codec, page.get(), width, height, JCS_EXT_BGR, kPageQuality, dpi);
  std::fclose(file);
}

class Assembly {
 public:
  explicit Assembly(const std::filesystem::path& folder) {
    ControllerTestPeer::dataSource(controller_) = std::make_shared<CHPUSBScanDataSource>();
    ControllerTestPeer::imageFolder(controller_) = folder.wstring();
  }
  void run(Blocks& blocks, unsigned width, unsigned height) {
    ControllerTestPeer::prepareFinalImage(controller_, blocks, static_cast<unsigned short>(width),
                                          static_cast<unsigned short>(height), 1);
  }

 private:
  USB_HP_Controller controller_;
};

double statusMegabytes(const char* key) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    double kilobytes = 0;
    if (word == key && status >> kilobytes) return kilobytes / 1024;
  }
  return 0;
}

// What making the page adds to a process, at its peak.
double peakOfChild(const std::filesystem::path& folder, Blocks& blocks, const Sheet& sheet) {
  int ends[2];
  if (pipe(ends) != 0) return 0;
  const pid_t child = fork();
  if (child == 0) {
    Assembly assembly(folder);
    // A page of one strip first: what is loaded or kept once and for all is not the page's.
    Blocks one(blocks.begin(), blocks.begin() + 1);
    assembly.run(one, sheet.width, 1);
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";  // the peak begins anew
    const double before = statusMegabytes("VmRSS:");
    assembly.run(blocks, sheet.width, sheet.height);
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

template <typename Step>
double seconds(Step step) {
  const auto start = std::chrono::steady_clock::now();
  step();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double fastest(const std::vector<double>& values) {
  return *std::min_element(values.begin(), values.end());
}

std::filesystem::path makeFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "page_bench.XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) std::abort();
  return name;
}

void assembleA4(benchmark::State& state) {
  const Sheet sheet = makeSheet(static_cast<unsigned>(state.range(0)));
  const auto lines = static_cast<unsigned>(state.range(1));
  Blocks blocks = makeStrips(sheet, lines);
  const std::filesystem::path folder = makeFolder();
  const std::filesystem::path page = folder / "Image_1.JPG";
  const std::filesystem::path direct = folder / "direct.jpg";
  const double peak = peakOfChild(folder, blocks, sheet);

  Assembly assembly(folder);
  std::vector<double> ours;
  std::vector<double> theirs;
  while (state.KeepRunning()) {
    std::filesystem::remove(page);
    std::filesystem::remove(direct);
    theirs.push_back(
        seconds([&] { makePageDirectly(blocks, sheet.width, sheet.height, sheet.dpi, direct); }));
    ours.push_back(seconds([&] { assembly.run(blocks, sheet.width, sheet.height); }));
    state.SetIterationTime(ours.back());
  }
  const double row = sheet.width * kChannels;
  const auto encoded = static_cast<double>(std::filesystem::file_size(page));
  const double allowed = (row * (sheet.height + lines) + encoded) / kMegabyte;
  const double ratio = fastest(ours) / fastest(theirs);
  state.counters["ratio"] = ratio;
  state.counters["peak_MB"] = peak;
  state.counters["allowed_MB"] = allowed;
  const bool same = std::filesystem::file_size(direct) == std::filesystem::file_size(page);
  const bool reached = ratio <= kMaxRatio && peak > 0 && peak <= allowed;
  state.SetLabel(!same ? "NOT THE SAME PAGE" : reached ? "reached" : "missed");
  std::filesystem::remove_all(folder);
}

BENCHMARK(assembleA4)
    ->ArgNames({"dpi", "lines"})
    ->ArgsProduct({{300, 600}, {64, 128, 256}})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(3);

}  // namespace

BENCHMARK_MAIN();
