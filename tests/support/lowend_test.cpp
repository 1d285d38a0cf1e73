// Headers are written out byte by byte; nothing here comes from the library's own records.
#include "tests/support/lowend_test.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace tvrscn::test {
namespace {

Bytes littleEndian(std::uint32_t value) {
  Bytes text(4);
  for (std::size_t i = 0; i < text.size(); ++i)
    text[i] = static_cast<std::uint8_t>((value >> (8 * i)) & 0xFFU);
  return text;
}

void append(Bytes& data, std::string_view text) {
  data.insert(data.end(), text.begin(), text.end());
}

// A header with all that differs between one and another of them.
Bytes header(unsigned operation, unsigned reserved, std::uint32_t length, unsigned status) {
  Bytes data = bytes("1B 4E");
  const Bytes announced = littleEndian(length);
  data.push_back(static_cast<std::uint8_t>(operation));
  data.push_back(static_cast<std::uint8_t>(reserved));
  data.insert(data.end(), announced.begin(), announced.end());
  data.push_back(static_cast<std::uint8_t>(status));
  data.push_back(static_cast<std::uint8_t>(reserved));
  return data;
}

}  // namespace

Bytes lowEndHeader(unsigned operation, std::uint32_t length, unsigned status) {
  return header(operation, 0xEE, length, status);
}

Bytes lowEndPacket(std::string_view payload, unsigned status, unsigned operation) {
  Bytes data = lowEndHeader(operation, static_cast<std::uint32_t>(payload.size()), status);
  append(data, payload);
  return data;
}

LowEndDialogue& LowEndDialogue::request(unsigned operation) {
  expect(header(operation, 0, 0, 0x80));
  return *this;
}

LowEndDialogue& LowEndDialogue::reply(unsigned operation, std::string_view document,
                                      unsigned status) {
  answer(lowEndHeader(operation, static_cast<std::uint32_t>(document.size()), status));
  if (!document.empty()) answer(Bytes(document.begin(), document.end()));
  return *this;
}

LowEndDialogue& LowEndDialogue::features(std::string_view document) {
  return request(3).reply(3, document);
}

LowEndDialogue& LowEndDialogue::status(std::string_view document) {
  return request(4).reply(4, document);
}

LowEndDialogue& LowEndDialogue::startScan(std::string_view answer, unsigned status) {
  return startRequest().reply(1, answer, status);
}

LowEndDialogue& LowEndDialogue::startRequest(std::string_view document) {
  Bytes data = header(1, 0, static_cast<std::uint32_t>(document.size()), 0x80);
  append(data, document);
  expect(std::move(data));
  return *this;
}

LowEndDialogue& LowEndDialogue::packet(std::string_view payload, unsigned status) {
  answer(lowEndPacket(payload, status));
  return *this;
}

LowEndTest::LowEndTest() : settings_(settings()) {
  const auto [write, read] = platform.openDevice();
  BasePeer::deviceWrite(controller) = write;
  BasePeer::deviceRead(controller) = read;
  platform.plug(&device);
  platform.forgetCalls();
}

void LowEndTest::TearDown() {
  EXPECT_EQ(device.problems(), Lines{});
  PlatformTest::TearDown();
}

void LowEndTest::showDialogs() {
  auto dictionary = namedDictionary();
  controller.InitExceptionStrings(dictionary);
}

long LowEndTest::scan() {
  return controller.doScan(settings_, platform.callback(), folder.path().wstring(), errorShown_);
}

unsigned LowEndTest::runWorker() {
  if (platform.threads.empty()) throw std::runtime_error("no worker was asked for");
  const auto worker = platform.threads.back();
  platform.threads.pop_back();
  return worker();
}

unsigned LowEndTest::work() {
  BasePeer::callback(controller) = platform.callback();
  Peer::imageFolder(controller) = folder.path().wstring();
  Peer::dataSource(controller) = std::make_shared<CLowEndUSBScanDataSource>();
  Peer::dataSource(controller)->setAppDataToScanCommand(settings_);
  Peer::threadArgs(controller) =
      new LowEndImageThreadArgs{&controller, platform.callback(), nullptr};
  Peer::thread(controller) = &platform.make("handle", "thread");
  return Peer::threadProc(Peer::threadArgs(controller));
}

}  // namespace tvrscn::test
