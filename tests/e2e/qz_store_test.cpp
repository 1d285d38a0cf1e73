// The entry of store applications, in a process with a root folder of its own, since that is where
// the pages go.
#include <string>

#include "tests/e2e/e2e_support.h"

namespace tvrscn::test {
namespace {

using virtual_device::QzScannerOptions;
using Lines = std::vector<std::string>;

class QzStore : public ScannerTest {
 protected:
  void startWithSheets(int sheets) {
    QzScannerOptions options;
    options.feeder = true;
    options.sheets = sheets;
    startQz(options);
  }
  // Scans; the pages come to out_. Their number, or kNoOwnRoot where the system denies namespaces,
  // as some containers do. There the tests below skip and say so: on the machine's own root they
  // would overwrite people's files. The steps themselves are tested on fakes in every run.
  int scanWith(const std::string& settings) {
    ChildProcess application({kStoreScanArgument, out_.string(), settings});
    return application.wait();
  }
  fs::path page(int number) const { return out_ / ("Image_" + std::to_string(number) + ".jpg"); }
};

TEST_F(QzStore, ScanLeavesItsPagesAtTheRootOfTheDrive) {
  startWithSheets(2);
  const int pages = scanWith("Grayscale,100x100,OneSided,100,80,0,0,0,Off,0," +
                             qzDevice().hardwareId + ",ISO_A6SEF");
  if (pages == kNoOwnRoot) GTEST_SKIP() << "this machine gives a process no root of its own";
  ASSERT_EQ(pages, 2);
  // 1000 and 800 tenths of a millimetre at 100 dots per inch.
  EXPECT_EQ(readJpegHead(page(2)).width, 394);
  EXPECT_EQ(readJpegHead(page(2)).height, 315);
  EXPECT_EQ(logLines(), Lines{" Discovered the USB End Point from Store App! "});
}

TEST_F(QzStore, PageLimitOfOneTakesOneSheet) {
  startWithSheets(3);
  const int pages = scanWith("FullColor,75x75,OneSided,100,80,0,-160,0,Off,1," +
                             qzDevice().hardwareId + ",ISO_A6SEF");
  if (pages == kNoOwnRoot) GTEST_SKIP() << "this machine gives a process no root of its own";
  EXPECT_EQ(pages, 1);
}

TEST_F(QzStore, DeviceThatIsNotThereGetsNoCommand) {
  startQz({});
  const int pages = scanWith("FullColor,75x75,OneSided,100,80,0,0,0,Off,0,VID_FFFF,ISO_A6SEF");
  if (pages == kNoOwnRoot) GTEST_SKIP() << "this machine gives a process no root of its own";
  EXPECT_EQ(pages, 0);
  EXPECT_EQ(logLines(), Lines{" Unable to Create End Point from Store App! "});
}

}  // namespace
}  // namespace tvrscn::test
