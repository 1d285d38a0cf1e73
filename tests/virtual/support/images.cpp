#include "tests/virtual/support/images.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>

#include <jpeglib.h>
#include <png.h>
#include <tiffio.h>

namespace tvrscn::virtual_device::testing {

std::vector<int> Picture::at(int x, int y) const {
  std::vector<int> pixel;
  const std::size_t start =
      static_cast<std::size_t>(y * width + x) * static_cast<std::size_t>(channels);
  for (int i = 0; i < channels; ++i)
    pixel.push_back(data.at(start + static_cast<std::size_t>(i)));
  return pixel;
}

Picture filled(int width, int height, const std::vector<std::uint8_t>& color) {
  Picture picture;
  picture.width = width;
  picture.height = height;
  picture.channels = static_cast<int>(color.size());
  for (int i = 0; i < width * height; ++i) {
    picture.data.insert(picture.data.end(), color.begin(), color.end());
  }
  return picture;
}

void fillBox(Picture& picture, int left, int top, int right, int bottom,
             const std::vector<std::uint8_t>& color) {
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; ++x) {
      std::copy(color.begin(), color.end(),
                picture.data.begin() + (y * picture.width + x) * picture.channels);
    }
  }
}

void writeJpegFile(const std::filesystem::path& file, const Picture& picture) {
  jpeg_compress_struct codec{};
  jpeg_error_mgr errors{};
  codec.err = jpeg_std_error(&errors);
  jpeg_create_compress(&codec);
  std::FILE* out = std::fopen(file.c_str(), "wb");
  if (out == nullptr) std::abort();
  jpeg_stdio_dest(&codec, out);
  codec.image_width = static_cast<JDIMENSION>(picture.width);
  codec.image_height = static_cast<JDIMENSION>(picture.height);
  codec.input_components = picture.channels;
  codec.in_color_space = JCS_RGB;
  if (picture.channels == 1) codec.in_color_space = JCS_GRAYSCALE;
  if (picture.channels == 4) codec.in_color_space = JCS_CMYK;
  jpeg_set_defaults(&codec);
  jpeg_set_quality(&codec, 95, TRUE);
  jpeg_start_compress(&codec, TRUE);
  std::vector<std::uint8_t> data = picture.data;
  while (codec.next_scanline < codec.image_height) {
    JSAMPROW line = data.data() + static_cast<std::size_t>(codec.next_scanline) *
                                      static_cast<std::size_t>(picture.width * picture.channels);
    jpeg_write_scanlines(&codec, &line, 1);
  }
  jpeg_finish_compress(&codec);
  jpeg_destroy_compress(&codec);
  std::fclose(out);
}

void writePngFile(const std::filesystem::path& file, const Picture& picture) {
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(picture.width);
  image.height = static_cast<png_uint_32>(picture.height);
  constexpr png_uint_32 kFormats[] = {0, PNG_FORMAT_GRAY, PNG_FORMAT_GA, PNG_FORMAT_RGB,
                                      PNG_FORMAT_RGBA};
  image.format = kFormats[picture.channels];
  if (png_image_write_to_file(&image, file.c_str(), 0, picture.data.data(), 0, nullptr) == 0) {
    std::abort();
  }
}

void writeTiffFile(const std::filesystem::path& file, const Picture& picture) {
  TIFF* tiff = TIFFOpen(file.c_str(), "w");
  if (tiff == nullptr) std::abort();
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, picture.channels);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
               picture.channels == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
  if (picture.channels == 4) {
    const std::uint16_t kind = EXTRASAMPLE_UNASSALPHA;
    TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
  }
  std::vector<std::uint8_t> data = picture.data;
  for (int y = 0; y < picture.height; ++y) {
    TIFFWriteScanline(tiff,
                      data.data() + static_cast<std::size_t>(y * picture.width * picture.channels),
                      static_cast<std::uint32_t>(y), 0);
  }
  TIFFClose(tiff);
}

Picture readJpegBytes(const std::vector<std::uint8_t>& bytes) {
  jpeg_decompress_struct codec{};
  jpeg_error_mgr errors{};
  codec.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&codec);
  jpeg_mem_src(&codec, bytes.data(), static_cast<unsigned long>(bytes.size()));
  jpeg_read_header(&codec, TRUE);
  Picture picture;
  picture.densityUnit = codec.density_unit;
  picture.densityX = codec.X_density;
  picture.densityY = codec.Y_density;
  jpeg_start_decompress(&codec);
  picture.width = static_cast<int>(codec.output_width);
  picture.height = static_cast<int>(codec.output_height);
  picture.channels = codec.output_components;
  const std::size_t lineBytes = static_cast<std::size_t>(picture.width * picture.channels);
  picture.data.resize(lineBytes * static_cast<std::size_t>(picture.height));
  while (codec.output_scanline < codec.output_height) {
    JSAMPROW line = picture.data.data() + lineBytes * codec.output_scanline;
    jpeg_read_scanlines(&codec, &line, 1);
  }
  jpeg_finish_decompress(&codec);
  jpeg_destroy_decompress(&codec);
  return picture;
}

namespace {

bool readPage(TIFF* tiff, BilevelPage& page) {
  std::uint16_t photometric = 0;
  std::uint16_t bits = 0;
  std::uint16_t compression = 0;
  std::uint16_t unit = 0;
  std::uint16_t number = 0;
  std::uint16_t count = 0;
  float across = 0;
  float down = 0;
  if (TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &page.width) == 0 ||
      TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &page.height) == 0 ||
      TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &bits) == 0 || bits != 1 ||
      TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric) == 0 ||
      photometric != PHOTOMETRIC_MINISWHITE ||
      TIFFGetField(tiff, TIFFTAG_COMPRESSION, &compression) == 0 ||
      TIFFGetField(tiff, TIFFTAG_RESOLUTIONUNIT, &unit) == 0 ||
      TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &across) == 0 ||
      TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &down) == 0 ||
      TIFFGetField(tiff, TIFFTAG_PAGENUMBER, &number, &count) == 0) {
    return false;
  }
  page.compression = compression;
  page.resolutionUnit = unit;
  page.resolutionX = static_cast<double>(across);
  page.resolutionY = static_cast<double>(down);
  page.pageNumber = number;
  page.pageCount = count;
  std::vector<std::uint8_t> line(static_cast<std::size_t>(TIFFScanlineSize(tiff)));
  for (int y = 0; y < page.height; ++y) {
    if (TIFFReadScanline(tiff, line.data(), static_cast<std::uint32_t>(y), 0) != 1) return false;
    for (unsigned x = 0; x < static_cast<unsigned>(page.width); ++x) {
      page.black.push_back((line[x / 8] >> (7 - x % 8)) & 1);
    }
  }
  return true;
}

}  // namespace

std::vector<BilevelPage> readTiffBytes(const std::vector<std::uint8_t>& bytes) {
  const TestFolder folder;
  const std::filesystem::path file = folder / "document.tif";
  std::ofstream(file, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  std::vector<BilevelPage> pages;
  // Warnings count too: a fax code that ends early is one.
  static bool complained = false;
  complained = false;
  const auto note = [](const char*, const char*, va_list) { complained = true; };
  TIFFSetWarningHandler(note);
  TIFFSetErrorHandler(note);
  TIFF* tiff = TIFFOpen(file.c_str(), "r");
  if (tiff == nullptr) return pages;
  do {
    BilevelPage page;
    if (!readPage(tiff, page) || complained) break;
    pages.push_back(std::move(page));
  } while (TIFFReadDirectory(tiff) == 1);
  TIFFClose(tiff);
  return pages;
}

TestFolder::TestFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "tvrscn-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) std::abort();
  path_ = pattern;
}

TestFolder::~TestFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string contentOf(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

}  // namespace tvrscn::virtual_device::testing
