// The records in requests, byte by byte: what is taken out of them, and that nothing else may stand
// in them.
#include "virtual/qz/qz_request.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "tests/virtual/support/qz_host.h"

namespace tvrscn::virtual_device {
namespace {

namespace qz = testing::qz;

Bytes changed(Bytes payload, std::size_t at, std::uint8_t value) {
  payload.at(at) = value;
  return payload;
}

TEST(QzReservation, TellsWhoReserves) {
  const std::optional<QzOwner> owner = readQzReservation(qz::reservation("desk-7", "J\xC3\xB8rn"));
  ASSERT_TRUE(owner);
  EXPECT_EQ(owner->computer, "desk-7");
  EXPECT_EQ(owner->user, "J\xC3\xB8rn");
  EXPECT_TRUE(readQzReservation(qz::reservation("", ""))) << "a name may be missing";
  EXPECT_TRUE(readQzReservation(qz::reservation(std::string(33, 'x'), std::string(33, 'y'))));
}

TEST(QzReservation, TextsEndInZerosAndAreUtf8) {
  const std::string bad[] = {
      std::string(34, 'x'),   // no zero
      "\xC3",                 // ends in a character
      "\xC3x",                // breaks off
      "\x80",                 // begins in one
      "\xC0\x80",             // not the shortest
      "\xE2\x82",             //
      "\xF5\x80\x80\x80",     // beyond the last character
      std::string("a\0b", 3)  // something behind the zero
  };
  for (const std::string& text : bad) {
    EXPECT_FALSE(readQzReservation(qz::reservation(text, "kim"))) << text;
    EXPECT_FALSE(readQzReservation(qz::reservation("desk", text))) << text;
  }
  for (const char* good : {"\xE2\x82\xAC", "\xF0\x9F\x96\xA8"})
    EXPECT_TRUE(readQzReservation(qz::reservation(good, good)));
}

TEST(QzReservation, NothingElseStandsInIt) {
  const Bytes payload = qz::reservation("", "");
  for (std::size_t at = 0; at < payload.size(); ++at) {
    // The first byte of each name is a name.
    if (at == 38 || at == 72) continue;
    EXPECT_FALSE(readQzReservation(changed(payload, at, payload[at] ^ 0x01))) << at;
  }
}

struct SelectionRow {
  std::uint8_t feeder;
  std::uint16_t count;
  std::uint8_t duplex;
  const char* outcome;  // "" when refused, else the selection in letters
};

std::string lettersOf(const std::optional<QzSelection>& selection) {
  if (!selection) return "";
  std::string letters = selection->fromFeeder ? "F" : "G";
  if (selection->onePage) letters += '1';
  if (selection->twoSides) letters += '2';
  if (selection->backsTurned) letters += 't';
  return letters;
}

void checkSelections(const QzScannerOptions& options, std::initializer_list<SelectionRow> rows) {
  for (const SelectionRow& row : rows) {
    EXPECT_EQ(lettersOf(readQzSelection(qz::selection(row.feeder, row.count, row.duplex), options)),
              row.outcome)
        << int{row.feeder} << ' ' << row.count << ' ' << int{row.duplex};
  }
}

TEST(QzSelection, TellsWhatTheJobWantsOfTheFeeder) {
  checkSelections({}, {
                          {0x00, 1, 0x00, "G"},  {0x40, 0, 0x00, "F"},   {0x50, 1, 0x00, "F1"},
                          {0x40, 0, 0x80, "F2"}, {0x40, 0, 0x84, "F2t"}, {0x50, 1, 0x84, "F12t"},
                          {0x00, 0, 0x00, ""},    // the feeder can be chosen, so it has to be
                          {0x00, 2, 0x00, ""},    //
                          {0x40, 1, 0x00, ""},    // a count without the limit
                          {0x50, 0, 0x00, ""},    // the limit without its count
                          {0x50, 256, 0x00, ""},  //
                          {0x10, 1, 0x00, ""},    // a limit on the flatbed
                          {0x00, 1, 0x80, ""},    // two sides there
                          {0x40, 0, 0x04, ""},    // a turned back of one side
                          {0x40, 0, 0x88, ""},    // no such rotation
                          {0x40, 0, 0x8C, ""},    //
                          {0xC0, 0, 0x00, ""},    // bits that nobody knows
                          {0x41, 0, 0x00, ""},    //
                          {0x40, 0, 0x81, ""},    //
                      });
}

TEST(QzSelection, AsksForNothingThatTheDeviceCannotDo) {
  QzScannerOptions options;
  options.duplexOptions = 0xCF;
  checkSelections(options, {{0x40, 0, 0x80, ""}, {0x40, 0, 0x00, "F"}});
  options.duplexOptions = 0x20;
  checkSelections(options, {{0x40, 0, 0x80, "F2"}});
  constexpr std::uint8_t kNoChoice[] = {0x00, 0x20, 0x03, 0xDF};
  for (const std::uint8_t feeder : kNoChoice) {
    options.feederOptions = feeder;
    checkSelections(options, {{0x40, 0, 0x00, ""},
                              {0x50, 1, 0x00, ""},
                              {0x00, 0, 0x00, "F"},
                              {0x00, 0, 0x80, "F2"},
                              {0x00, 1, 0x00, "G"}});
  }
  constexpr std::uint8_t kChoice[] = {0x21, 0x22, 0x23, 0xFF};
  for (const std::uint8_t feeder : kChoice) {
    options.feederOptions = feeder;
    checkSelections(options, {{0x40, 0, 0x00, "F"}, {0x00, 0, 0x00, ""}});
  }
}

TEST(QzSelection, NothingElseStandsInIt) {
  for (std::size_t at = 0; at < 56; ++at) {
    if (at >= 2 && at <= 5) continue;
    EXPECT_FALSE(readQzSelection(changed(qz::flatbed(), at, 1), {})) << at;
  }
}

std::optional<QzWindow> flatbedWindow(const Bytes& payload) {
  return readQzWindow(payload, {}, false);
}

TEST(QzWindowRecord, TellsSizeResolutionAndColour) {
  const std::optional<QzWindow> color = flatbedWindow(qz::smallWindow());
  ASSERT_TRUE(color);
  EXPECT_EQ(color->dotsPerInch, 75);
  EXPECT_EQ(color->width, 75);
  EXPECT_EQ(color->height, 150);
  EXPECT_FALSE(color->gray);
  EXPECT_FALSE(color->cleanBackground);
  const std::optional<QzWindow> gray =
      flatbedWindow(changed(changed(qz::smallWindow(), 26, 0x20), 28, 0x40));
  ASSERT_TRUE(gray);
  EXPECT_TRUE(gray->gray);
  EXPECT_TRUE(gray->cleanBackground);
}

TEST(QzWindowRecord, NothingElseStandsInIt) {
  const Bytes payload = qz::smallWindow();
  for (std::size_t at = 0; at < payload.size(); ++at)
    EXPECT_FALSE(flatbedWindow(changed(payload, at, payload[at] ^ 0x01))) << at;
}

// Both resolutions, and both widths and lengths.
Bytes windowOf(int resolution, std::uint32_t width, std::uint32_t length) {
  Bytes payload = qz::smallWindow();
  for (const std::size_t at : {2U, 4U}) {
    payload[at] = static_cast<std::uint8_t>(resolution / 256);
    payload[at + 1] = static_cast<std::uint8_t>(resolution % 256);
  }
  for (const std::size_t at : {16U, 40U}) {
    for (unsigned i = 0; i < 4; ++i) {
      payload[at + i] = static_cast<std::uint8_t>(width >> (24 - 8 * i));
      payload[at + 4 + i] = static_cast<std::uint8_t>(length >> (24 - 8 * i));
    }
  }
  return payload;
}

TEST(QzWindowRecord, SizesLieWithinTheSourcesLimits) {
  QzScannerOptions options;
  options.flatbedLimits = {300, 400};
  options.feederLimits = {200, 600};
  const auto isTaken = [&](std::uint32_t width, std::uint32_t length, bool fromFeeder) {
    return readQzWindow(windowOf(100, width, length), options, fromFeeder).has_value();
  };
  EXPECT_TRUE(isTaken(300, 400, false));
  EXPECT_FALSE(isTaken(301, 400, false));
  EXPECT_FALSE(isTaken(300, 401, false));
  EXPECT_TRUE(isTaken(200, 600, true));
  EXPECT_FALSE(isTaken(201, 600, true));
  EXPECT_FALSE(isTaken(200, 601, true));
  EXPECT_FALSE(isTaken(0, 400, false));
  EXPECT_FALSE(isTaken(300, 0, false));
  EXPECT_FALSE(isTaken(0xFFFFFFFF, 400, false));
  EXPECT_FALSE(isTaken(0x80000000, 400, false));
}

TEST(QzWindowRecord, ResolutionsLieWithinBothLimits) {
  QzScannerOptions options;
  options.resolutions = {100, 150, 600, 400};
  const auto isTaken = [&](int resolution) {
    return readQzWindow(windowOf(resolution, 300, 300), options, false).has_value();
  };
  EXPECT_FALSE(isTaken(99));
  EXPECT_FALSE(isTaken(149));
  EXPECT_TRUE(isTaken(150));
  EXPECT_TRUE(isTaken(400));
  EXPECT_FALSE(isTaken(401));
  EXPECT_FALSE(isTaken(601));
  options.resolutions = {150, 100, 400, 600};
  EXPECT_FALSE(isTaken(149));
  EXPECT_FALSE(isTaken(401));
}

TEST(QzWindowRecord, SizesAreRoundedToPixels) {
  const struct {
    int resolution;
    std::uint32_t width;
    int pixels;
  } rows[] = {
      {200, 2100, 1654},  // 1653.54
      {300, 2160, 2551},  // 2551.18
      {75, 2, 1},         // 0.59
      {254, 100, 100},    //
  };
  for (const auto& row : rows) {
    const std::optional<QzWindow> window = flatbedWindow(windowOf(row.resolution, row.width, 300));
    ASSERT_TRUE(window);
    EXPECT_EQ(window->width, row.pixels);
  }
  EXPECT_FALSE(flatbedWindow(windowOf(75, 1, 300))) << "0.29 pixels are none";
}

TEST(QzWindowRecord, APageIsNoLargerThanAJpegCanBe) {
  QzScannerOptions options;
  options.flatbedLimits = {100000, 100000};
  options.resolutions = {1, 1, 65535, 65535};
  EXPECT_TRUE(readQzWindow(windowOf(254, 65500, 1), options, false));
  EXPECT_FALSE(readQzWindow(windowOf(254, 65501, 1), options, false));
  EXPECT_FALSE(readQzWindow(windowOf(254, 1, 65501), options, false));
  EXPECT_FALSE(readQzWindow(windowOf(65535, 100000, 100000), options, false));
}

}  // namespace
}  // namespace tvrscn::virtual_device
