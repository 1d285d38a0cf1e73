// Answers are written out byte by byte as the device would send them; nothing here comes from the
// library's own records.
#include "tests/support/platform_test.h"

#include <cstdio>
#include <stdexcept>
#include <string>

namespace tvrscn::test {
namespace {

std::string hexOf(unsigned value, int width) {
  std::string text;
  for (int shift = 8 * (width - 1); shift >= 0; shift -= 8) {
    char byte[4];
    std::snprintf(byte, sizeof byte, "%02X ", (value >> static_cast<unsigned>(shift)) & 0xFFU);
    text += byte;
  }
  return text;
}

std::string byteText(unsigned value) {
  return hexOf(value, 1);
}

}  // namespace

HPDialogue& HPDialogue::inquiry(unsigned status, unsigned source) {
  expect("1B A8 12 00");
  answer("EE " + byteText(status) + "EE*51 " + byteText(source) + "EE*18");
  return *this;
}

HPDialogue& HPDialogue::reserve(unsigned status, unsigned flag, unsigned message) {
  expect("1B A8 16 00");
  answer("EE " + byteText(status) + "EE " + byteText(flag) + hexOf(message, 2) + "EE EE");
  return *this;
}

HPDialogue& HPDialogue::window(unsigned status, unsigned flag, unsigned message,
                               std::string_view request) {
  expect(request);
  answer("EE " + byteText(status) + "EE " + byteText(flag) + hexOf(message, 2) +
         "EE EE 00 00 0D B3 00 00 09 B0 EE*16");  // 3507 lines of 2480 pixels
  return *this;
}

HPDialogue& HPDialogue::position(unsigned status, unsigned message) {
  expect("1B A8 31 00");
  answer("EE " + byteText(status) + "EE EE " + hexOf(message, 2));
  return *this;
}

HPDialogue& HPDialogue::announce(unsigned status, unsigned type, std::uint32_t size, unsigned lines,
                                 unsigned pixels) {
  expect("1B A8 28 00");
  answer("EE " + byteText(status) + "EE " + byteText(type) + hexOf(size, 4) + hexOf(lines, 2) +
         hexOf(pixels, 2) + "EE*8");
  return *this;
}

HPDialogue& HPDialogue::image(std::string_view data) {
  expect("1B A8 29 00");
  answer(data);
  return *this;
}

HPDialogue& HPDialogue::block(unsigned type, std::string_view data) {
  return announce(0, type, static_cast<std::uint32_t>(bytes(data).size()), 8, 16).image(data);
}

HPDialogue& HPDialogue::abort(unsigned status) {
  expect("1B A8 06 00");
  answer("EE " + byteText(status) + "EE");
  return *this;
}

HPDialogue& HPDialogue::release(unsigned status) {
  expect("1B A8 17 00");
  answer("EE " + byteText(status) + "EE");
  return *this;
}

HPDialogue& HPDialogue::page() {
  return block(0x70, "70 71 72 73 74").block(0x80, "80 81 82").block(0x81, "90");
}

HPDialogue& HPDialogue::openFlatbed() {
  return inquiry().reserve().window();
}

HPDialogue& HPDialogue::openFeeder() {
  return inquiry(0, 2).reserve().window(0, 0, 1, kFeederRequest);
}

TevraScanUIData settings() {
  TevraScanUIData data;
  data.mediaSize = "ISO_A4SEF";
  data.pageWidth = 210;
  data.pageHeight = 297;
  data.sides = "OneSided";
  data.resolution = "300x300";
  data.colorMode = "Grayscale";
  data.brightness = L"0";
  data.contrast = L"0";
  data.backgroundRemoval = L"Off";
  return data;
}

std::shared_ptr<CErrorCodeDictionary> namedDictionary() {
  auto dictionary = std::make_shared<CErrorCodeDictionary>();
  dictionary->m_strScannerBusy = L"ScannerBusy";
  dictionary->m_strDeviceError = L"DeviceError";
  dictionary->m_strGeneralError = L"GeneralError";
  dictionary->m_strJobCancelled = L"JobCancelled";
  dictionary->m_strNoDocument = L"NoDocument";
  dictionary->m_strInvalidRequest = L"InvalidRequest";
  dictionary->m_strPaperJam = L"PaperJam";
  dictionary->m_strCommFailure = L"CommFailure";
  dictionary->m_strTitle = L"Title";
  dictionary->m_strCommFailureTitle = L"CommFailureTitle";
  dictionary->m_strCoverOpen = L"CoverOpen";
  dictionary->m_strPaperJamTitle = L"PaperJamTitle";
  return dictionary;
}

HPTest::HPTest() : settings_(settings()) {
  const auto [write, read] = platform.openDevice();
  ControllerTestPeer::deviceWrite(controller) = write;
  ControllerTestPeer::deviceRead(controller) = read;
  platform.plug(&device);
  platform.forgetCalls();
}

void HPTest::TearDown() {
  EXPECT_EQ(device.problems(), Lines{});
  PlatformTest::TearDown();
}

long HPTest::scan() {
  bool errorShown = false;
  const long result =
      controller.doScan(settings_, platform.callback(), folder.path().wstring(), errorShown);
  EXPECT_FALSE(errorShown);
  return result;
}

int HPTest::pageNumber(const std::string& notification) {
  const std::size_t start = notification.rfind("/Image_");
  const std::size_t end = notification.rfind(".JPG");
  if (start == std::string::npos || end == std::string::npos) {
    throw std::runtime_error("no page name in " + notification);
  }
  return std::stoi(notification.substr(start + 7, end - start - 7));
}

}  // namespace tvrscn::test
