#include "tests/virtual/support/qz_host.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include <gtest/gtest.h>

#include "tests/virtual/support/fake_host.h"

namespace tvrscn::virtual_device::testing::qz {
namespace {

constexpr std::size_t kHeaderSize = 8;

std::size_t announced(const Bytes& header) {
  return header[4] * 16777216UL + header[5] * 65536UL + header[6] * 256UL + header[7];
}

void put(Bytes& bytes, std::size_t at, const std::string& text) {
  std::copy(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

}  // namespace

Bytes request(std::uint8_t client, std::uint8_t command, const Bytes& payload) {
  const std::size_t size = payload.size();
  Bytes bytes = {client,
                 command,
                 0,
                 0,
                 0,
                 0,
                 static_cast<std::uint8_t>(size / 256),
                 static_cast<std::uint8_t>(size % 256)};
  bytes.insert(bytes.end(), payload.begin(), payload.end());
  return bytes;
}

Bytes reservation(const std::string& computer, const std::string& user) {
  Bytes payload(272, 0);
  put(payload, 4, "UTF-8");
  put(payload, 38, computer);
  put(payload, 72, user);
  return payload;
}

Bytes reserve(const Bytes& payload) {
  return request(0, 0x16, payload);
}

Bytes select(const Bytes& payload) {
  return request(1, 0x55, payload);
}

Bytes window(const Bytes& payload) {
  return request(1, 0x24, payload);
}

Bytes selection(std::uint8_t feeder, std::uint16_t count, std::uint8_t duplex) {
  Bytes payload(56, 0);
  payload[2] = feeder;
  payload[3] = static_cast<std::uint8_t>(count / 256);
  payload[4] = static_cast<std::uint8_t>(count % 256);
  payload[5] = duplex;
  return payload;
}

Bytes smallWindow() {
  return {0, 0, 0,    0x4B, 0,    0x4B, 0, 0,    0, 0, 0, 0, 0, 0, 0, 0,  // resolution
          0, 0, 0,    0xFE, 0,    0,    1, 0xFC,                          // 254 by 508 tenths
          0, 0, 0x10, 8,    0x10, 1,    0, 0,    0, 0, 0, 0, 0, 0, 0, 0,  //
          0, 0, 0,    0xFE, 0,    0,    1, 0xFC};
}

std::deque<Bytes> upToScan(const Bytes& selection) {
  return {kWakeUp,
          reserve(),
          kReady,
          kInitialize,
          kSenseSubDevice,
          kSenseUnits,
          select(selection),
          window(smallWindow()),
          kScan};
}

std::deque<Bytes> upToBlockHeader(const Bytes& selection) {
  return upToScan(selection) + std::deque<Bytes>{kBlockHeader};
}

std::deque<Bytes> operator+(std::deque<Bytes> first, const std::deque<Bytes>& then) {
  first.insert(first.end(), then.begin(), then.end());
  return first;
}

std::vector<Reply> replies(Device& device, const std::deque<Bytes>& requests) {
  std::vector<Reply> replies;
  bool awaitsData = false;
  for (const Event& event : exchangeWith(device, requests)) {
    EXPECT_EQ(event.kind, Event::Kind::kTransfer);
    if (awaitsData) {
      replies.back().data = event.bytes;
      EXPECT_EQ(event.bytes.size(), announced(replies.back().header));
      awaitsData = false;
    } else {
      EXPECT_EQ(event.bytes.size(), kHeaderSize);
      if (event.bytes.size() != kHeaderSize) break;
      replies.push_back({event.bytes, {}});
      awaitsData = announced(event.bytes) > 0;
    }
  }
  EXPECT_FALSE(awaitsData);
  EXPECT_EQ(replies.size(), requests.size());
  return replies;
}

Reply lastReply(Device& device, const std::deque<Bytes>& requests) {
  const std::vector<Reply> all = replies(device, requests);
  return all.empty() ? Reply{Bytes(kHeaderSize, 0xEE), {}} : all.back();
}

std::string senseOf(const Reply& reply) {
  const Bytes& data = reply.data;
  std::array<char, 32> text{};
  if (reply.header[2] != 2 || data.size() != 8) {
    std::snprintf(text.data(), text.size(), "status %d", reply.header[2]);
  } else {
    EXPECT_EQ((Bytes{data[0], data[1], data[2], data[3], data[7]}), Bytes(5, 0));
    std::snprintf(text.data(), text.size(), "%02X%02X%02X", data[4], data[5], data[6]);
  }
  return text.data();
}

JobHost::JobHost(int jobs, Bytes fromFeeder, Bytes fromFlatbed, Bytes window)
    : jobsLeft_(jobs),
      fromFeeder_(std::move(fromFeeder)),
      fromFlatbed_(std::move(fromFlatbed)),
      window_(std::move(window)) {}

std::optional<Bytes> JobHost::receive() {
  if (requests_.empty()) {
    if (jobsLeft_ == 0) return std::nullopt;
    --jobsLeft_;
    startJob();
  }
  Bytes next = std::move(requests_.front());
  requests_.pop_front();
  commands.push_back(next[1]);
  return next;
}

bool JobHost::send(const Bytes& transfer) {
  if (reply_.header.empty()) {
    EXPECT_EQ(transfer.size(), kHeaderSize);
    if (transfer.size() != kHeaderSize) return false;
    reply_.header = transfer;
    if (announced(transfer) > 0) return true;
  } else {
    EXPECT_EQ(transfer.size(), announced(reply_.header));
    reply_.data = transfer;
  }
  take(std::exchange(reply_, {}));
  return true;
}

void JobHost::dropWithin(const Bytes& transfer, std::size_t count) {
  page.insert(page.end(), transfer.begin(), transfer.begin() + static_cast<std::ptrdiff_t>(count));
}

void JobHost::startJob() {
  outcomes.emplace_back();
  client_ = 0;
  isFirstReady_ = true;
  ask(0xC3);
  ask(0x16, reservation());
}

void JobHost::startPass() {
  ask(0x07, {0, 0, 0, 0});
  ask(0x5A, {0x20, 0, 0, 0});
  ask(0x5A, {0x03, 0, 0, 0});
  ask(0x55, usesFeeder_ ? fromFeeder_ : fromFlatbed_);
  ask(0x24, window_);
  ask(0x1B);
  ask(0xC2);
  ask(0x28, {0, 4, 0, 0});
}

void JobHost::endJob() {
  ask(0x07, {0, 0, 0, 0});
  ask(0x17);
}

void JobHost::take(const Reply& reply) {
  const int command = reply.header[1];
  const bool hasDocument = (reply.header[3] & 0x40) != 0;
  if (command == 0x16) client_ = reply.header[0];
  if (reply.header[2] != 0) {
    fail(reply);
  } else if (command == 0x28) {
    takeRead(reply);
  } else if (command == 0x16) {
    ask(0xC1);
  } else if (command == 0xC1) {
    if (isFirstReady_) usesFeeder_ = hasDocument;
    const bool hasPage = isFirstReady_ || (hasDocument && usesFeeder_);
    isFirstReady_ = false;
    hasPage ? startPass() : endJob();
  }
}

void JobHost::takeRead(const Reply& reply) {
  const int state = reply.header[3] & 0x0F;
  readSizes.push_back(reply.data.size());
  readStates.push_back(state);
  page.insert(page.end(), reply.data.begin(), reply.data.end());
  if (state == 3) pages.push_back(std::exchange(page, {}));
  if (state == 5) ask(0xC2);
  if (state == 2) {
    ask(0x28, {0, 4, 0, 0});
  } else {
    ask(0xC1);
  }
}

void JobHost::fail(const Reply& reply) {
  // What fails while the job is being ended does not count.
  if (!outcomes.back().empty()) return;
  outcomes.back() = senseOf(reply);
  requests_.clear();
  const bool mustRelease =
      reply.header[2] == 2 && reply.header[1] != 0x16 && reply.header[1] != 0xC3;
  if (!mustRelease) return;
  if (outcomes.back() == "060000") ask(0x07, {0x80, 0, 0, 0});
  ask(0x17);
}

void JobHost::ask(std::uint8_t command, const Bytes& payload) {
  requests_.push_back(request(client_, command, payload));
}

}  // namespace tvrscn::virtual_device::testing::qz
