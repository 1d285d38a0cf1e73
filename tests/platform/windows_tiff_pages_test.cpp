// What takes TIFF files apart on Windows asks the system for nothing but files, so it passes the
// tests of gdi_wrapper_tiff_test.cpp here too, where the codec can judge its pages.
#include <gtest/gtest.h>

#include "platform/tevrautil/windows/tiff_pages.h"
#include "tiff_pages_fixture.h"

namespace tvrscn::test {
namespace {

INSTANTIATE_TEST_SUITE_P(Windows, TiffPages,
                         ::testing::Values(TiffSplitter{"windows", imaging::splitTiffPages}));

}  // namespace
}  // namespace tvrscn::test
