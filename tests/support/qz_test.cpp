// Headers are written out byte by byte; nothing here comes from the library's own records.
#include "tests/support/qz_test.h"

#include <memory>
#include <utility>

namespace tvrscn::test {
namespace {

// READ asks for 262,144 bytes.
constexpr std::string_view kTransferLength = "00 04 00 00";

bool withoutClient(unsigned command) {
  return command == kWakeup || command == kReserve;
}

std::uint32_t lengthOf(const Bytes& data) {
  return static_cast<std::uint32_t>(data.size());
}

}  // namespace

Bytes qzHeader(unsigned clientId, unsigned command, unsigned status, unsigned scannerStatus,
               std::uint32_t length) {
  Bytes header;
  for (const unsigned byte : {clientId, command, status, scannerStatus, length >> 24U,
                              length >> 16U, length >> 8U, length}) {
    header.push_back(static_cast<std::uint8_t>(byte & 0xFFU));
  }
  return header;
}

QZDialogue& QZDialogue::request(unsigned command, std::string_view payload) {
  const Bytes data = bytes(payload);
  Bytes packet = qzHeader(withoutClient(command) ? 0 : kQZClient, command, 0, 0, lengthOf(data));
  packet.insert(packet.end(), data.begin(), data.end());
  expect(std::move(packet));
  return *this;
}

QZDialogue& QZDialogue::reply(unsigned command, unsigned status, unsigned scannerStatus,
                              std::string_view data) {
  const Bytes content = bytes(data);
  replyHeader(command, lengthOf(content), {status, scannerStatus});
  if (!content.empty()) answer(content);
  return *this;
}

QZDialogue& QZDialogue::replyHeader(unsigned command, std::uint32_t length, QZAnswer answered) {
  const unsigned clientId = command == kReserve ? kQZClient : 0xEE;
  answer(qzHeader(clientId, command, answered.status, answered.scannerStatus, length));
  return *this;
}

QZDialogue& QZDialogue::checkCondition(unsigned command, std::string_view sense) {
  return reply(command, 2, 0, "EE*4 " + std::string(sense));
}

QZDialogue& QZDialogue::wakeup(QZAnswer answer) {
  return request(kWakeup).reply(kWakeup, answer.status, answer.scannerStatus);
}

QZDialogue& QZDialogue::reserve(QZAnswer answer) {
  return request(kReserve, kReservation).reply(kReserve, answer.status, answer.scannerStatus);
}

QZDialogue& QZDialogue::testUnitReady(QZAnswer answer) {
  return request(kTestUnitReady).reply(kTestUnitReady, answer.status, answer.scannerStatus);
}

QZDialogue& QZDialogue::initialize(QZAnswer answer) {
  return request(kInitialize, "00*4").reply(kInitialize, answer.status, answer.scannerStatus);
}

QZDialogue& QZDialogue::initializeCancelled(QZAnswer answer) {
  return request(kInitialize, "80 00*3").reply(kInitialize, answer.status, answer.scannerStatus);
}

QZDialogue& QZDialogue::modeSenseLimits(std::string_view page, QZAnswer answer) {
  return request(kModeSense, "20 00*3")
      .reply(kModeSense, answer.status, answer.scannerStatus, page);
}

QZDialogue& QZDialogue::modeSenseUnits(std::string_view unit, QZAnswer answer) {
  return request(kModeSense, "03 00*3")
      .reply(kModeSense, answer.status, answer.scannerStatus, unit);
}

QZDialogue& QZDialogue::modeSelect(std::string_view payload, QZAnswer answer) {
  return request(kModeSelect, payload).reply(kModeSelect, answer.status, answer.scannerStatus);
}

QZDialogue& QZDialogue::setWindow(std::string_view payload, QZAnswer answer) {
  return request(kSetWindow, payload).reply(kSetWindow, answer.status, answer.scannerStatus);
}

QZDialogue& QZDialogue::startScan(QZAnswer answer) {
  return request(kScan).reply(kScan, answer.status, answer.scannerStatus);
}

QZDialogue& QZDialogue::readBlockHeader(QZAnswer answer) {
  return request(kReadBlockHeader)
      .reply(kReadBlockHeader, answer.status, answer.scannerStatus, "EE*4 00 04 00 00");
}

QZDialogue& QZDialogue::readRequest() {
  return request(kRead, kTransferLength);
}

QZDialogue& QZDialogue::readImage(unsigned state, std::string_view data, unsigned status) {
  return readRequest().reply(kRead, status, state, data);
}

QZDialogue& QZDialogue::release(QZAnswer answer) {
  return request(kRelease).reply(kRelease, answer.status, answer.scannerStatus);
}

QZDialogue& QZDialogue::setUp(std::string_view select, std::string_view window) {
  return initialize()
      .modeSenseLimits()
      .modeSenseUnits()
      .modeSelect(select)
      .setWindow(window)
      .startScan()
      .readBlockHeader();
}

QZDialogue& QZDialogue::flatbedPage() {
  return setUp().readImage(3, "70 71 72").testUnitReady();
}

QZDialogue& QZDialogue::feederPage(QZAnswer end) {
  return setUp(kFeederSelect).readImage(3, "70 71 72").testUnitReady(end);
}

QZTest::QZTest() : settings_(settings()) {
  const auto [write, read] = platform.openDevice();
  BasePeer::deviceWrite(controller) = write;
  BasePeer::deviceRead(controller) = read;
  platform.plug(&device);
  platform.forgetCalls();
}

void QZTest::TearDown() {
  EXPECT_EQ(device.problems(), Lines{});
  PlatformTest::TearDown();
}

void QZTest::giveDictionary() {
  auto dictionary = namedDictionary();
  controller.InitExceptionStrings(dictionary);
}

CQZUSBScanDataSource& QZTest::prepareJob() {
  BasePeer::callback(controller) = platform.callback();
  BasePeer::reservedClientID(controller) = kQZClient;
  Peer::scanFolder(controller) = folder.path().wstring();
  Peer::dataSource(controller) = std::make_shared<CQZUSBScanDataSource>();
  Peer::dataSource(controller)->setAppDataToScanCommand(settings_);
  return *Peer::dataSource(controller);
}

long QZTest::scan() {
  bool errorShown = false;
  const long result =
      controller.doScan(settings_, platform.callback(), folder.path().wstring(), errorShown);
  EXPECT_FALSE(errorShown);
  return result;
}

}  // namespace tvrscn::test
