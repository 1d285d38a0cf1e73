// Compares the JPEG and TIFF pages of two folders by name: size, resolution and picture have to
// agree. Made for the pages of one job on two systems, whose JPEG encoders differ in rounding and
// in the components that they give a grey page. TIFF pages have to be the same in every pixel.
//
//   compare_pages FOLDER FOLDER
//
// Exit status 0 when all pages agree, 1 when one does not or is missing, 2 when there is nothing to
// compare.
#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <jpeglib.h>
#include <tiffio.h>

namespace {

namespace fs = std::filesystem;

constexpr double kLeastPsnr = 35;  // decibels
constexpr double kIdentical = 99;

struct Page {
  unsigned width = 0;
  unsigned height = 0;
  unsigned density[3] = {};           // unit, across, down
  std::vector<unsigned char> pixels;  // red, green, blue
};

// The decoder's errors end the decoding, not the program.
struct ErrorExit {
  jpeg_error_mgr base{};
  std::jmp_buf back{};
};

[[noreturn]] void leave(j_common_ptr decoder) {
  std::longjmp(reinterpret_cast<ErrorExit*>(decoder->err)->back, 1);
}

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

bool decode(std::FILE* file, Page& page) {
  jpeg_decompress_struct decoder{};
  ErrorExit errors;
  decoder.err = jpeg_std_error(&errors.base);
  errors.base.error_exit = leave;
  jpeg_create_decompress(&decoder);
  if (setjmp(errors.back) != 0) {
    jpeg_destroy_decompress(&decoder);
    return false;
  }
  jpeg_stdio_src(&decoder, file);
  jpeg_read_header(&decoder, TRUE);
  decoder.out_color_space = JCS_RGB;
  jpeg_start_decompress(&decoder);
  page.width = decoder.output_width;
  page.height = decoder.output_height;
  page.density[0] = decoder.density_unit;
  page.density[1] = decoder.X_density;
  page.density[2] = decoder.Y_density;
  const std::size_t stride = std::size_t{page.width} * 3;
  page.pixels.resize(stride * page.height);
  while (decoder.output_scanline < decoder.output_height) {
    unsigned char* row = page.pixels.data() + stride * decoder.output_scanline;
    jpeg_read_scanlines(&decoder, &row, 1);
  }
  jpeg_finish_decompress(&decoder);
  jpeg_destroy_decompress(&decoder);
  return true;
}

// One page a file, as those of a job are.
std::optional<Page> loadTiff(const fs::path& path) {
  const std::unique_ptr<TIFF, void (*)(TIFF*)> file(TIFFOpen(path.c_str(), "r"), TIFFClose);
  Page page;
  if (file == nullptr || TIFFGetField(file.get(), TIFFTAG_IMAGEWIDTH, &page.width) != 1 ||
      TIFFGetField(file.get(), TIFFTAG_IMAGELENGTH, &page.height) != 1) {
    return std::nullopt;
  }
  std::uint16_t unit = RESUNIT_INCH;
  float across = 0;
  float down = 0;
  TIFFGetFieldDefaulted(file.get(), TIFFTAG_RESOLUTIONUNIT, &unit);
  TIFFGetField(file.get(), TIFFTAG_XRESOLUTION, &across);
  TIFFGetField(file.get(), TIFFTAG_YRESOLUTION, &down);
  page.density[0] = unit;
  page.density[1] = static_cast<unsigned>(std::lround(across));
  page.density[2] = static_cast<unsigned>(std::lround(down));
  std::vector<std::uint32_t> pixels(std::size_t{page.width} * page.height);
  if (TIFFReadRGBAImage(file.get(), page.width, page.height, pixels.data(), 1) != 1 ||
      TIFFReadDirectory(file.get()) != 0) {
    return std::nullopt;
  }
  for (const std::uint32_t pixel : pixels) {
    page.pixels.push_back(static_cast<unsigned char>(TIFFGetR(pixel)));
    page.pixels.push_back(static_cast<unsigned char>(TIFFGetG(pixel)));
    page.pixels.push_back(static_cast<unsigned char>(TIFFGetB(pixel)));
  }
  return page;
}

bool isTiff(const fs::path& path) {
  return path.extension() == ".tif";
}

std::optional<Page> load(const fs::path& path) {
  if (isTiff(path)) return loadTiff(path);
  const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rb"));
  Page page;
  if (file == nullptr || !decode(file.get(), page)) return std::nullopt;
  return page;
}

double psnr(const Page& left, const Page& right) {
  double squares = 0;
  for (std::size_t i = 0; i < left.pixels.size(); ++i) {
    const double difference = int{left.pixels[i]} - int{right.pixels[i]};
    squares += difference * difference;
  }
  if (squares == 0) return kIdentical;
  return 10 * std::log10(255.0 * 255.0 * static_cast<double>(left.pixels.size()) / squares);
}

// Empty when the pages agree, else what is wrong.
std::string compare(const fs::path& left, const fs::path& right, double& likeness) {
  const std::optional<Page> first = load(left);
  if (!first) return "cannot be read: " + left.string();
  const std::optional<Page> second = load(right);
  if (!second) return "cannot be read: " + right.string();
  if (first->width != second->width || first->height != second->height) {
    return "sizes differ: " + std::to_string(first->width) + "x" + std::to_string(first->height) +
           " and " + std::to_string(second->width) + "x" + std::to_string(second->height);
  }
  if (!std::equal(std::begin(first->density), std::end(first->density),
                  std::begin(second->density))) {
    return "resolutions differ";
  }
  likeness = psnr(*first, *second);
  return likeness >= (isTiff(left) ? kIdentical : kLeastPsnr) ? "" : "pictures differ";
}

std::set<std::string> pagesOf(const fs::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (entry.path().extension() == ".jpg" || isTiff(entry.path()))
      names.insert(entry.path().filename().string());
  }
  return names;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: compare_pages FOLDER FOLDER\n", stderr);
    return 2;
  }
  const fs::path left = argv[1];
  const fs::path right = argv[2];
  std::set<std::string> names = pagesOf(left);
  names.merge(pagesOf(right));
  if (names.empty()) {
    std::fputs("compare_pages: no pages in either folder\n", stderr);
    return 2;
  }
  bool agree = true;
  for (const std::string& name : names) {
    double likeness = 0;
    const std::string wrong = compare(left / name, right / name, likeness);
    std::printf("%-28s %5.1f dB  %s\n", name.c_str(), likeness,
                wrong.empty() ? "ok" : wrong.c_str());
    agree = agree && wrong.empty();
  }
  return agree ? 0 : 1;
}
