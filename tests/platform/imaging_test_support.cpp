// The codec's errors end a test program here: recipes and files that reach it are meant to be good.
#include "imaging_test_support.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>

#include <sys/resource.h>

#include <jpeglib.h>

#include "tests/support/temporary_folder.h"

namespace tvrscn::test {
namespace {

J_COLOR_SPACE colourSpace(int channels) {
  if (channels == 1) return JCS_GRAYSCALE;
  return channels == 3 ? JCS_RGB : JCS_CMYK;
}

void configure(jpeg_compress_struct& codec, const JpegRecipe& recipe) {
  codec.image_width = recipe.width;
  codec.image_height = recipe.height;
  codec.input_components = recipe.channels;
  codec.in_color_space = colourSpace(recipe.channels);
  jpeg_set_defaults(&codec);
  jpeg_set_quality(&codec, recipe.quality, TRUE);
  codec.write_JFIF_header = recipe.jfif ? TRUE : FALSE;
  codec.density_unit = static_cast<UINT8>(recipe.densityUnit);
  codec.X_density = static_cast<UINT16>(recipe.xDensity);
  codec.Y_density = static_cast<UINT16>(recipe.yDensity);
  codec.restart_interval = recipe.restartInterval;
  codec.arith_code = recipe.arithmetic ? TRUE : FALSE;
  if (recipe.channels == 4) codec.write_Adobe_marker = TRUE;
  if (recipe.fullChroma) codec.comp_info[0].h_samp_factor = codec.comp_info[0].v_samp_factor = 1;
  if (recipe.progressive) jpeg_simple_progression(&codec);
}

}  // namespace

TestBitmap::TestBitmap(INT width, INT height, Gdiplus::PixelFormat format)
    : status_(gdip::GdipCreateBitmapFromScan0(width, height, 0, format, nullptr, &bitmap_)) {}

TestBitmap::TestBitmap(const std::filesystem::path& file)
    : status_(gdip::GdipCreateBitmapFromFile(file.wstring().c_str(), &bitmap_)) {}

TestBitmap::~TestBitmap() {
  if (bitmap_ != nullptr) gdip::GdipDisposeImage(bitmap_);
}

imaging::Bitmap& TestBitmap::inside() const {
  auto& bitmap = static_cast<imaging::Bitmap&>(*bitmap_);
  bitmap.complete();
  return bitmap;
}

Bytes TestBitmap::pixels() const {
  const imaging::Bitmap& bitmap = inside();
  return {bitmap.row(0), bitmap.row(0) + bitmap.stride() * bitmap.height()};
}

void TestBitmap::setPixels(const Bytes& pixels) {
  imaging::Bitmap& bitmap = inside();
  if (pixels.size() != bitmap.stride() * bitmap.height()) std::abort();
  std::memcpy(bitmap.row(0), pixels.data(), pixels.size());
}

Gdiplus::GpStatus TestBitmap::draw(const TestBitmap& picture, INT x, INT y) {
  Gdiplus::GpGraphics* graphics = nullptr;
  const auto made = gdip::GdipGetImageGraphicsContext(bitmap_, &graphics);
  if (made != Gdiplus::Ok) return made;
  const auto drawn = gdip::GdipDrawImageI(graphics, picture.get(), x, y);
  gdip::GdipDeleteGraphics(graphics);
  return drawn;
}

Gdiplus::GpStatus TestBitmap::save(const std::filesystem::path& file) const {
  constexpr CLSID kJpeg = {
      0x557CF401, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
  return gdip::GdipSaveImageToFile(bitmap_, file.wstring().c_str(), &kJpeg, nullptr);
}

Bytes makeJpeg(const JpegRecipe& recipe, const PixelSource& value) {
  jpeg_compress_struct codec{};
  jpeg_error_mgr errors{};
  codec.err = jpeg_std_error(&errors);
  jpeg_create_compress(&codec);
  unsigned char* memory = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&codec, &memory, &size);
  configure(codec, recipe);
  jpeg_start_compress(&codec, TRUE);
  const auto channels = static_cast<unsigned>(recipe.channels);
  Bytes row(std::size_t{recipe.width} * channels);
  for (unsigned y = 0; y < recipe.height; ++y) {
    for (unsigned x = 0; x < recipe.width; ++x)
      for (unsigned c = 0; c < channels; ++c)
        row[x * channels + c] = static_cast<std::uint8_t>(value(x, y, static_cast<int>(c)));
    JSAMPROW pointer = row.data();
    jpeg_write_scanlines(&codec, &pointer, 1);
  }
  jpeg_finish_compress(&codec);
  jpeg_destroy_compress(&codec);
  Bytes result(memory, memory + size);
  std::free(memory);
  return result;
}

Bytes makeJpeg(const JpegRecipe& recipe, unsigned level) {
  return makeJpeg(recipe, [level](unsigned, unsigned, int) { return level; });
}

JpegFacts jpegFacts(const Bytes& file) {
  JpegFacts facts;
  if (file.size() < 2 || file[0] != 0xFF || file[1] != 0xD8) return facts;
  jpeg_decompress_struct codec{};
  jpeg_error_mgr errors{};
  codec.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&codec);
  jpeg_mem_src(&codec, file.data(), file.size());
  jpeg_read_header(&codec, TRUE);
  facts.valid = true;
  facts.width = codec.image_width;
  facts.height = codec.image_height;
  facts.components = codec.num_components;
  facts.lumaAcross = codec.comp_info[0].h_samp_factor;
  facts.lumaDown = codec.comp_info[0].v_samp_factor;
  facts.densityUnit = codec.density_unit;
  facts.xDensity = codec.X_density;
  facts.yDensity = codec.Y_density;
  const auto& table = codec.quant_tbl_ptrs[0]->quantval;
  facts.lumaTable.assign(std::begin(table), std::end(table));
  jpeg_destroy_decompress(&codec);
  return facts;
}

std::size_t findMarker(const Bytes& file, std::uint8_t marker) {
  for (std::size_t i = 0; i + 1 < file.size(); ++i)
    if (file[i] == 0xFF && file[i + 1] == marker) return i;
  return file.size();
}

Bytes prefix(const Bytes& file, std::size_t length) {
  return {file.data(), file.data() + std::min(length, file.size())};
}

void storeBytes(const std::filesystem::path& file, const Bytes& bytes) {
  // A new file costs less than one that is emptied: some file systems bring that one to disk at
  // once.
  std::filesystem::remove(file);
  writeFile(file, std::string(bytes.begin(), bytes.end()));
}

Bytes loadBytes(const std::filesystem::path& file) {
  return readFile(file);
}

FileSizeLimit::FileSizeLimit(unsigned long bytes) {
  handler_ = std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  before_ = limit.rlim_cur;
  limit.rlim_cur = bytes;
  setrlimit(RLIMIT_FSIZE, &limit);
}

FileSizeLimit::~FileSizeLimit() {
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = before_;
  setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, handler_);
}

}  // namespace tvrscn::test
