// A QZ host in memory: its requests, what came back for a list of them, and a whole job.
#ifndef TVRSCN_TESTS_VIRTUAL_SUPPORT_QZ_HOST_H
#define TVRSCN_TESTS_VIRTUAL_SUPPORT_QZ_HOST_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "virtual/common/bytes.h"
#include "virtual/common/device_server.h"
#include "virtual/common/link.h"

namespace tvrscn::virtual_device::testing::qz {

// A header and the payload behind it.
Bytes request(std::uint8_t client, std::uint8_t command, const Bytes& payload = {});

inline const Bytes kWakeUp = {0x00, 0xC3, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
Bytes reservation(const std::string& computer = "desk", const std::string& user = "kim");
Bytes reserve(const Bytes& payload = reservation());

// With the first client id.
inline const Bytes kReady = {0x01, 0xC1, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
inline const Bytes kInitialize = {0x01, 0x07, 0x00, 0x00, 0x00, 0x00, 0x00, 0x04, 0, 0, 0, 0};
inline const Bytes kInitializeAfterCancel = {0x01, 0x07, 0x00, 0x00, 0x00, 0x00,
                                             0x00, 0x04, 0x80, 0,    0,    0};
inline const Bytes kInquiry = {0x01, 0x12, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
inline const Bytes kSenseSubDevice = {0x01, 0x5A, 0x00, 0x00, 0x00, 0x00,
                                      0x00, 0x04, 0x20, 0,    0,    0};
inline const Bytes kSenseUnits = {0x01, 0x5A, 0x00, 0x00, 0x00, 0x00, 0x00, 0x04, 0x03, 0, 0, 0};
inline const Bytes kScan = {0x01, 0x1B, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
inline const Bytes kBlockHeader = {0x01, 0xC2, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
inline const Bytes kRead = {0x01, 0x28, 0x00, 0x00, 0x00, 0x00, 0x00, 0x04, 0, 0x04, 0, 0};
inline const Bytes kRelease = {0x01, 0x17, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
Bytes select(const Bytes& payload);
Bytes window(const Bytes& payload);

// Payloads of mode select: its bytes 2 to 5, the others zero.
Bytes selection(std::uint8_t feeder, std::uint16_t count, std::uint8_t duplex);
inline Bytes flatbed() {
  return selection(0x00, 1, 0x00);
}
inline Bytes feeder() {
  return selection(0x40, 0, 0x00);
}
// A window of 1 by 2 inches at 75 dpi, colour, background as it is: 75 by 150 pixels.
Bytes smallWindow();

// The requests that lead up to the reads of a page.
std::deque<Bytes> upToScan(const Bytes& selection);
std::deque<Bytes> upToBlockHeader(const Bytes& selection);
std::deque<Bytes> operator+(std::deque<Bytes> first, const std::deque<Bytes>& then);

struct Reply {
  Bytes header;
  Bytes data;
};
// What the device did for these requests, which has to be transfers alone.
std::vector<Reply> replies(Device& device, const std::deque<Bytes>& requests);
Reply lastReply(Device& device, const std::deque<Bytes>& requests);
// The sense bytes of a check condition in eight bytes of data, as "042000"; else what came.
std::string senseOf(const Reply& reply);

// A host that goes through whole jobs as drivers do, a number of times on one connection.
class JobHost final : public Link {
 public:
  // REQUIRES: both payloads of mode select; which one goes out is told by the document sensor.
  explicit JobHost(int jobs = 1, Bytes fromFeeder = feeder(), Bytes fromFlatbed = flatbed(),
                   Bytes window = smallWindow());

  std::optional<Bytes> receive() override;
  bool send(const Bytes& transfer) override;
  bool sendFailure() override { return false; }
  void dropWithin(const Bytes& transfer, std::size_t count) override;
  bool pause(std::chrono::milliseconds) override { return true; }
  void stall() override {}

  // Each ended by an image end.
  std::vector<Bytes> pages;
  // Bytes of the page in reception.
  Bytes page;
  // Of all replies to read.
  std::vector<std::size_t> readSizes;
  std::vector<int> readStates;
  // The commands as they went out.
  std::vector<int> commands;
  // The sense or status that ended a job, "" for a good one.
  std::vector<std::string> outcomes;

 private:
  void startJob();
  void startPass();
  void endJob();
  void take(const Reply& reply);
  void takeRead(const Reply& reply);
  void fail(const Reply& reply);
  void ask(std::uint8_t command, const Bytes& payload = {});

  int jobsLeft_;
  Bytes fromFeeder_;
  Bytes fromFlatbed_;
  Bytes window_;
  std::deque<Bytes> requests_;
  Reply reply_;
  std::uint8_t client_ = 0;
  bool isFirstReady_ = true;
  bool usesFeeder_ = false;
};

}  // namespace tvrscn::virtual_device::testing::qz

#endif  // TVRSCN_TESTS_VIRTUAL_SUPPORT_QZ_HOST_H
