// The two records that a QZ device gets of a job's settings, field by field.
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "tests/support/bytes.h"
#include "tests/support/qz_test.h"
#include "tests/support/test_peers.h"
#include "tvrscn/qz_scan_data_source.h"

namespace {

using Peer = DataSourceTestPeer;
using tvrscn::test::Bytes;
using tvrscn::test::bytes;
using tvrscn::test::hex;
using tvrscn::test::QZDialogue;

template <typename Record>
Record recordOf(std::string_view hexBytes) {
  const Bytes content = bytes(hexBytes);
  EXPECT_EQ(content.size(), sizeof(Record));
  Record record;
  std::memcpy(&record, content.data(), sizeof record);
  return record;
}

template <typename Record>
std::string bytesOf(const Record& record) {
  Bytes content(sizeof record);
  std::memcpy(content.data(), &record, sizeof record);
  return hex(content);
}

std::string spelled(std::string_view hexBytes) {
  return hex(bytes(hexBytes));
}

std::string byteAt(const std::string& record, std::size_t offset, std::size_t count = 1) {
  return record.substr(3 * offset, 3 * count - 1);
}

void setLimits(CQZUSBScanDataSource& source, std::string_view page) {
  auto record = recordOf<USBVendorSubDevicePage>(page);
  source.SetSubDevicesPageData(&record);
}

class QZWindow : public testing::Test {
 protected:
  QZWindow() {
    source_.SetScaningPropertiesFromApp("Grayscale", "300x300", "OneSided", 210, 297, 0, 0, 0,
                                        "Off", 0, "ISO_A4SEF");
    setLimits(source_, QZDialogue::kLimits);
  }

  // The window of the source as it is, over old bytes.
  std::string window() {
    USBVendorSetWindowData record;
    std::memset(&record, 0xCC, sizeof record);
    source_.FillSetWindowData(&record);
    return bytesOf(record);
  }

  // MODE SELECT of the source as it is, into a page of zeros unless told otherwise.
  std::string select(std::string_view before = "00*56") {
    auto page = recordOf<USBVendorSubDevicePage>(before);
    source_.FillModeSelectData(&page);
    return bytesOf(page);
  }

  CQZUSBScanDataSource source_;
};

// --- The stored pages
// -----------------------------------------------------------------------------

TEST_F(QZWindow, PagesAreZeroBeforeTheyAreStored) {
  CQZUSBScanDataSource source;
  EXPECT_EQ(bytesOf(*source.GetSubDevicesPageData()), spelled("00*56"));
  EXPECT_EQ(bytesOf(*source.GetMeasurementUnitData()), spelled("00*8"));
}

TEST_F(QZWindow, PagesAreKeptByteByByte) {
  auto unit = recordOf<USBVendorMeasurementUnit>(QZDialogue::kUnits);
  source_.SetMeasurementUnitData(&unit);
  EXPECT_EQ(bytesOf(*source_.GetSubDevicesPageData()), spelled(QZDialogue::kLimits));
  EXPECT_EQ(bytesOf(*source_.GetMeasurementUnitData()), "A0 A1 A2 A3 A4 A5 A6 A7");
}

TEST_F(QZWindow, CopiesCarryBothPagesAndTheSettings) {
  auto unit = recordOf<USBVendorMeasurementUnit>(QZDialogue::kUnits);
  source_.SetMeasurementUnitData(&unit);
  CQZUSBScanDataSource constructed(source_);
  CQZUSBScanDataSource assigned;
  assigned = source_;
  for (CQZUSBScanDataSource* copy : {&constructed, &assigned}) {
    EXPECT_EQ(bytesOf(*copy->GetSubDevicesPageData()), spelled(QZDialogue::kLimits));
    EXPECT_EQ(bytesOf(*copy->GetMeasurementUnitData()), "A0 A1 A2 A3 A4 A5 A6 A7");
    EXPECT_EQ(Peer::width(*copy), 210);
    EXPECT_EQ(Peer::colorMode(*copy), "Grayscale");
  }
}

// --- SET WINDOW
// -----------------------------------------------------------------------------------

TEST_F(QZWindow, A4GreyOnTheFlatbed) {
  EXPECT_EQ(window(), spelled("00*2 01 2C 01 2C 00*10 00 00 08 34 00 00 0B 9A 00*2 20 08 10 01 "
                              "00*10 00 00 08 34 00 00 0B 9A"));
}

TEST_F(QZWindow, WithoutModePagesTheWindowIsEmpty) {
  setLimits(source_, "00*56");
  EXPECT_EQ(window(), spelled("00*26 20 08 10 01 00*18"));
}

TEST_F(QZWindow, NullRecordDoesNothing) {
  Peer::brightness(source_) = 100;
  source_.FillSetWindowData(nullptr);
  source_.FillModeSelectData(nullptr);
  EXPECT_EQ(Peer::brightness(source_), 100);
  EXPECT_FALSE(source_.isNeedImageProcessing());
}

// Both directions have the same number of dots; out of range is the smallest one.
TEST_F(QZWindow, ResolutionOutsideTheLimitsFallsToTheSmallest) {
  const struct {
    const char* name;
    const char* resolution;
    const char* limits;  // max x, max y, min x, min y
    const char* sent;
  } kCases[] = {
      {"within", "200x200", "02 58 02 58 00 64 00 64", "00 C8"},
      {"at the maximum", "600x600", "02 58 02 58 00 64 00 64", "02 58"},
      {"at the minimum", "100x100", "02 58 02 58 00 64 00 64", "00 64"},
      {"above: 600 on 100 to 400", "600x600", "01 90 01 90 00 64 00 64", "00 64"},
      {"below: 75 on 100 to 400", "75x75", "01 90 01 90 00 64 00 64", "00 64"},
      {"one above the maximum", "300x300", "01 2B 01 2B 00 64 00 64", "00 64"},
      {"one below the minimum", "300x300", "02 58 02 58 01 2D 01 2D", "01 2D"},
      {"above in y alone", "300x300", "02 58 00 C8 00 64 00 96", "00 96"},
      {"below in y alone", "300x300", "02 58 02 58 00 64 01 90", "01 90"},
      {"above in both: x decides", "600x600", "01 90 01 90 00 64 00 96", "00 64"},
      {"below x minimum and above y maximum", "300x300", "02 58 00 C8 01 90 00 96", "01 90"},
      {"no limits stored", "300x300", "00 00 00 00 00 00 00 00", "00 00"},
      {"no resolution of the table is 200", "72x72", "02 58 02 58 00 64 00 64", "00 C8"},
      {"maximum beyond 32767 is negative", "300x300", "FF FF 02 58 00 64 00 64", "00 64"},
      {"minimum beyond 32767 is negative", "300x300", "02 58 02 58 80 00 FF FF", "01 2C"},
      {"y maximum beyond 32767 is negative", "300x300", "02 58 80 00 00 64 00 96", "00 96"},
      {"a negative minimum goes out as it came", "600x600", "01 90 01 90 FF FE 00 64", "FF FE"},
  };
  for (const auto& row : kCases) {
    setLimits(source_, "00*28 " + std::string(row.limits) + " 00*20");
    Peer::resolution(source_) = row.resolution;
    const std::string record = window();
    EXPECT_EQ(byteAt(record, 2, 2), row.sent) << row.name;
    EXPECT_EQ(byteAt(record, 4, 2), row.sent) << row.name;
  }
}

TEST_F(QZWindow, SizeIsTenthsOfAMillimetreWithinTheLimits) {
  const struct {
    const char* name;
    int width;
    int height;
    const char* limits;  // of the flatbed
    const char* sent;
  } kCases[] = {
      {"both within", 210, 297, "00 00 08 70 00 00 0B 9A", "00 00 08 34 00 00 0B 9A"},
      {"20 mm of 30", 20, 20, "00 00 01 2C 00 00 01 2C", "00 00 00 C8 00 00 00 C8"},
      {"40 mm of 30", 40, 40, "00 00 01 2C 00 00 01 2C", "00 00 01 2C 00 00 01 2C"},
      {"30 mm of 30", 30, 30, "00 00 01 2C 00 00 01 2C", "00 00 01 2C 00 00 01 2C"},
      {"width alone too large", 40, 20, "00 00 01 2C 00 00 01 2C", "00 00 01 2C 00 00 00 C8"},
      {"length alone too large", 20, 40, "00 00 01 2C 00 00 01 2C", "00 00 00 C8 00 00 01 2C"},
      {"no size", 0, 0, "00 00 01 2C 00 00 01 2C", "00 00 00 00 00 00 00 00"},
      // -10 is less than any limit.
      {"negative size", -1, -1, "00 00 01 2C 00 00 01 2C", "FF FF FF F6 FF FF FF F6"},
      {"negative limit", 20, 20, "FF FF FF FF 80 00 00 00", "FF FF FF FF 80 00 00 00"},
      // 214748365 x 10 is 2147483650, which wraps to -2147483646.
      {"beyond 32 bits", 214748365, 1, "7F FF FF FF 7F FF FF FF", "80 00 00 02 00 00 00 0A"},
  };
  for (const auto& row : kCases) {
    Peer::width(source_) = row.width;
    Peer::height(source_) = row.height;
    setLimits(source_, "00*8 " + std::string(row.limits) + " 00*40");
    const std::string record = window();
    EXPECT_EQ(byteAt(record, 16, 8), row.sent) << row.name;
    EXPECT_EQ(byteAt(record, 40, 8), row.sent) << row.name;
  }
}

TEST_F(QZWindow, PaperSourceChoosesTheLimits) {
  setLimits(source_, "00*8 00 00 00 0A 00 00 00 14 00 00 00 1E 00 00 00 28 00*32");
  const struct {
    int source;
    const char* sent;
  } kCases[] = {
      {0, "00 00 00 0A 00 00 00 14"},
      {1, "00 00 00 1E 00 00 00 28"},
      {2, "00 00 00 1E 00 00 00 28"},
      {-1, "00 00 00 1E 00 00 00 28"},
  };
  for (const auto& row : kCases) {
    source_.SetPaperSource(row.source);
    EXPECT_EQ(byteAt(window(), 16, 8), row.sent) << row.source;
  }
}

TEST_F(QZWindow, BackgroundIsKeptForOffAlone) {
  const struct {
    const char* text;
    const char* flags;
  } kCases[] = {
      {"Off", "10"}, {"On", "40"}, {"", "40"}, {"off", "40"}, {"OFF", "40"}, {"Off ", "40"},
  };
  for (const auto& row : kCases) {
    Peer::backgroundRemoval(source_) = row.text;
    EXPECT_EQ(byteAt(window(), 28), row.flags) << row.text;
  }
}

TEST_F(QZWindow, ColourModeHasItsBytesAndProcessing) {
  const struct {
    const char* mode;
    const char* bytes;  // mode, depth
    bool processed;
  } kCases[] = {
      {"Grayscale", "20 08", false},     {"BlackAndWhite", "10 08", true},
      {"FullColor", "10 08", false},     {"", "10 08", false},
      {"grayscale", "10 08", false},     {"Grayscale ", "10 08", false},
      {"blackandwhite", "10 08", false},
  };
  for (const auto& row : kCases) {
    Peer::colorMode(source_) = row.mode;
    Peer::needImageProcessing(source_) = false;
    const std::string record = window();
    EXPECT_EQ(byteAt(record, 26, 2), row.bytes) << row.mode;
    EXPECT_EQ(byteAt(record, 29), "01") << row.mode;
    EXPECT_EQ(source_.isNeedImageProcessing(), row.processed) << row.mode;
  }
}

TEST_F(QZWindow, ProcessingOnceWantedStays) {
  Peer::needImageProcessing(source_) = true;
  for (const char* mode : {"FullColor", "Grayscale"}) {
    Peer::colorMode(source_) = mode;
    window();
    EXPECT_TRUE(source_.isNeedImageProcessing()) << mode;
  }
}

TEST_F(QZWindow, EachWindowDividesBrightnessAndContrastOnceMore) {
  Peer::brightness(source_) = 100;
  Peer::contrast(source_) = 100;
  const struct {
    int brightness;
    int contrast;
  } kPages[] = {{-25, 25}, {6, 6}, {-1, 1}, {0, 0}, {0, 0}};
  const std::string untouched = spelled(QZDialogue::kWindow);
  for (const auto& page : kPages) {
    EXPECT_EQ(window(), untouched) << "no field of the window holds them";
    EXPECT_EQ(source_.getBrightness(), page.brightness);
    EXPECT_EQ(source_.getContrast(), page.contrast);
    EXPECT_TRUE(source_.isNeedImageProcessing());
  }
}

TEST_F(QZWindow, BrightnessOrContrastAloneWantsProcessing) {
  const struct {
    int brightness;
    int contrast;
    bool processed;
  } kCases[] = {{0, 0, false}, {1, 0, true}, {0, -1, true}, {-100, 0, true}};
  for (const auto& row : kCases) {
    Peer::needImageProcessing(source_) = false;
    Peer::brightness(source_) = row.brightness;
    Peer::contrast(source_) = row.contrast;
    window();
    EXPECT_EQ(source_.isNeedImageProcessing(), row.processed)
        << row.brightness << " " << row.contrast;
  }
}

// --- MODE SELECT
// ----------------------------------------------------------------------------------

// Bytes 2 to 5 of the page that goes out: feeder options, page count, duplex options.
struct SelectCase {
  const char* name;
  int paperSource;
  int pageLimit;
  const char* sides;
  int feedEdge;
  const char* feeder;  // bFeederOptions as received
  const char* duplex;  // bDuplexOptions as received
  const char* sent;
};

const SelectCase kSelectCases[] = {
    {"flatbed", 0, 0, "OneSided", 1, "23", "30", "00 00 01 00"},
    {"flatbed with a page limit", 0, 1, "OneSided", 1, "23", "30", "00 00 01 00"},
    {"flatbed without any options", 0, 0, "OneSided", 1, "00", "00", "00 00 01 00"},
    {"two-sided on the flatbed", 0, 0, "TwoSided", 1, "23", "30", "00 00 01 00"},
    {"rotation on the flatbed", 0, 0, "SecondSideRotation", 1, "23", "30", "00 00 01 00"},
    {"feeder", 1, 0, "OneSided", 1, "23", "30", "40 00 00 00"},
    {"feeder by bits 5 and 0", 1, 0, "OneSided", 1, "21", "00", "40 00 00 00"},
    {"feeder by bits 5 and 1", 1, 0, "OneSided", 1, "22", "00", "40 00 00 00"},
    {"bit 5 alone", 1, 0, "OneSided", 1, "20", "00", "00 00 00 00"},
    {"bits 0 and 1 alone", 1, 0, "OneSided", 1, "03", "00", "00 00 00 00"},
    {"all bits but 5", 1, 0, "OneSided", 1, "DF", "00", "00 00 00 00"},
    {"all bits but 0 and 1", 1, 0, "OneSided", 1, "FC", "00", "00 00 00 00"},
    {"one page from the feeder", 1, 1, "OneSided", 1, "23", "00", "50 00 01 00"},
    {"limit of two is none", 1, 2, "OneSided", 1, "23", "00", "40 00 00 00"},
    {"limit without feeder options", 1, 1, "OneSided", 1, "00", "00", "00 00 00 00"},
    {"source 2 is no feeder for bit 6", 2, 1, "OneSided", 1, "23", "00", "00 00 00 00"},
    {"source 2 may be two-sided", 2, 0, "TwoSided", 1, "23", "30", "00 00 00 80"},
    {"two-sided by bit 4", 1, 0, "TwoSided", 1, "23", "10", "40 00 00 80"},
    {"two-sided by bit 5", 1, 0, "TwoSided", 1, "23", "20", "40 00 00 80"},
    {"two-sided by neither", 1, 0, "TwoSided", 1, "23", "CF", "40 00 00 00"},
    {"two-sided without feeder options", 1, 0, "TwoSided", 1, "00", "30", "00 00 00 80"},
    {"rotation", 1, 0, "SecondSideRotation", 1, "23", "30", "40 00 00 84"},
    {"rotation, long edge first", 1, 0, "SecondSideRotation", 0, "23", "30", "40 00 00 80"},
    {"rotation, not possible", 1, 0, "SecondSideRotation", 1, "23", "00", "40 00 00 00"},
    {"any other text is two-sided", 1, 0, "", 1, "23", "30", "40 00 00 80"},
    {"sides are compared exactly", 1, 0, "onesided", 1, "23", "30", "40 00 00 80"},
    {"all at once", 1, 1, "SecondSideRotation", 1, "FF", "FF", "50 00 01 84"},
};

TEST_F(QZWindow, ModeSelectSaysWhatTheJobWants) {
  for (const SelectCase& row : kSelectCases) {
    setLimits(source_, "FF*2 " + std::string(row.feeder) + " FF FF " + row.duplex + " FF*50");
    source_.SetPaperSource(row.paperSource);
    Peer::pageLimit(source_) = row.pageLimit;
    Peer::sides(source_) = row.sides;
    Peer::feedEdge(source_) = row.feedEdge;
    EXPECT_EQ(select(), spelled("00*2 " + std::string(row.sent) + " 00*50")) << row.name;
  }
}

TEST_F(QZWindow, LongEdgeMediaTurnsTheSecondSideTheOtherWay) {
  source_.SetScaningPropertiesFromApp("FullColor", "300x300", "SecondSideRotation", 297, 210, 1, 0,
                                      0, "Off", 0, "ISO_A4LEF");
  EXPECT_EQ(byteAt(select(), 5), "80");
}

TEST_F(QZWindow, ModeSelectWithoutModePagesIsOnePageOrNothing) {
  setLimits(source_, "00*56");
  Peer::sides(source_) = "TwoSided";
  EXPECT_EQ(select(), spelled("00*3 00 01 00*51"));
  source_.SetPaperSource(1);
  EXPECT_EQ(select(), spelled("00*56"));
}

TEST_F(QZWindow, ModeSelectClearsAndReplacesItsOwnBitsAlone) {
  // The flatbed: bits 7 and 6 of the feeder, bit 7 of the duplex unit.
  EXPECT_EQ(select("FF*56"), spelled("FF*2 3F 00 01 7F FF*50"));
  // Rotation, long edge first: bits 2 and 3 cleared, bit 7 stays; no page count of its own.
  source_.SetPaperSource(1);
  Peer::sides(source_) = "SecondSideRotation";
  Peer::feedEdge(source_) = 0;
  EXPECT_EQ(select("FF*56"), spelled("FF*2 7F FF FF F3 FF*50"));
}

}  // namespace
