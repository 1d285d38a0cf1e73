// Image files made and JPEG strips read with the codec libraries directly, apart from the device's
// own codec.
#ifndef TVRSCN_TESTS_VIRTUAL_SUPPORT_IMAGES_H
#define TVRSCN_TESTS_VIRTUAL_SUPPORT_IMAGES_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace tvrscn::virtual_device::testing {

struct Picture {
  int width = 0;
  int height = 0;
  int channels = 3;
  int densityUnit = 0;  // of a JPEG: 1 is dots per inch
  int densityX = 0;
  int densityY = 0;
  std::vector<std::uint8_t> data;

  // The first channel and the two behind it, of one pixel.
  std::vector<int> at(int x, int y) const;
};

// A picture filled with a colour of as many channels.
Picture filled(int width, int height, const std::vector<std::uint8_t>& color);
void fillBox(Picture& picture, int left, int top, int right, int bottom,
             const std::vector<std::uint8_t>& color);

void writeJpegFile(const std::filesystem::path& file, const Picture& picture);
void writePngFile(const std::filesystem::path& file, const Picture& picture);   // 1 to 4 channels
void writeTiffFile(const std::filesystem::path& file, const Picture& picture);  // 1, 3 or 4

// Ends the test program when the bytes are no JPEG stream.
Picture readJpegBytes(const std::vector<std::uint8_t>& bytes);

// A page of a black-and-white TIFF file.
struct BilevelPage {
  int width = 0;
  int height = 0;
  int compression = 0;
  int resolutionUnit = 0;  // 2 is inches
  double resolutionX = 0;
  double resolutionY = 0;
  int pageNumber = 0;  // as the page says of itself, from 0
  int pageCount = 0;
  std::vector<std::uint8_t> black;  // one byte a pixel, 0 or 1
};
// Its pages, up to the first that cannot be read.
std::vector<BilevelPage> readTiffBytes(const std::vector<std::uint8_t>& bytes);

// A folder that goes with its owner.
class TestFolder {
 public:
  TestFolder();
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;
  ~TestFolder();
  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

std::string contentOf(const std::filesystem::path& file);

}  // namespace tvrscn::virtual_device::testing

#endif  // TVRSCN_TESTS_VIRTUAL_SUPPORT_IMAGES_H
