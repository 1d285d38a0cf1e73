// The fixture of the tests in gdi_wrapper_tiff_test.cpp, which run on each splitter that is
// instantiated.
#ifndef TVRSCN_TESTS_PLATFORM_TIFF_PAGES_FIXTURE_H
#define TVRSCN_TESTS_PLATFORM_TIFF_PAGES_FIXTURE_H

#include <cstdint>
#include <filesystem>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "imaging_test_support.h"
#include "tests/support/temporary_folder.h"

namespace tvrscn::test {

struct TiffSplitter {
  const char* name;
  std::uint32_t (*split)(const std::wstring& source, const std::wstring& prefix,
                         std::uint32_t firstNumber);
};
inline std::ostream& operator<<(std::ostream& out, const TiffSplitter& splitter) {
  return out << splitter.name;
}

class TiffPages : public ::testing::TestWithParam<TiffSplitter> {
 protected:
  std::filesystem::path source() const { return folder_.path() / "job.tif"; }
  std::filesystem::path pageFile(unsigned number) const {
    return folder_.path() / ("Image_" + std::to_string(number) + ".tif");
  }
  std::uint32_t split(std::uint32_t first) const {
    return GetParam().split(source().wstring(), (folder_.path() / "Image_").wstring(), first);
  }
  std::uint32_t splitBytes(const Bytes& file) const {
    storeBytes(source(), file);
    return split(1);
  }
  void removePages() const;
  // Page `number` of the source against the only page of its file.
  void expectSamePage(unsigned number, unsigned fileNumber) const;
  // As many pages as there are files, and not more bytes in them than the source could hold.
  void expectHarmless(std::uint32_t pages) const;

  TemporaryFolder folder_;
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_PLATFORM_TIFF_PAGES_FIXTURE_H
