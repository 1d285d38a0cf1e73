// What the reception of a page costs, from the READ to the last notification, against a plain copy:
// the same bytes once from the same device to a file on the same disk. The device is in this
// process and answers at once. Both run in turn within the same loop, and the fastest run of each
// counts.
//
// Memory is that of a child process of its own, from before the page to its peak.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/measure.h"
#include "platform/device_file.h"
#include "tests/support/qz_test_peer.h"
#include "tests/support/test_peers.h"

namespace {

using tvrscn::bench::fastest;
using tvrscn::bench::fillWithNoise;
using tvrscn::bench::makeFolder;
using tvrscn::bench::peakOfChild;
using tvrscn::bench::seconds;
using tvrscn::bench::secondsOfFreshMemory;

constexpr double kMaxRatio = 2.0;
constexpr std::size_t kReplySize = 262'144;
constexpr std::size_t kHeaderSize = 8;
constexpr unsigned char kReadCommand = 0x28;
constexpr unsigned char kTransferring = 2;
constexpr unsigned char kImageEnd = 3;

// Gives a page in replies, each a header and its data.
class Device {
 public:
  void start(const std::vector<char>& page) {
    page_ = &page;
    position_ = 0;
    inHeader_ = true;
  }
  // The reply whose header comes next is the last of the page.
  bool atLastReply() const { return position_ + kReplySize >= page_->size(); }
  std::size_t replySize() const { return std::min(kReplySize, page_->size() - position_); }

  std::size_t read(char* buffer, std::size_t size) {
    if (std::exchange(inHeader_, !inHeader_)) return readHeader(buffer);
    const std::size_t count = std::min(size, replySize());
    std::memcpy(buffer, page_->data() + position_, count);
    position_ += count;
    return count;
  }

 private:
  std::size_t readHeader(char* buffer) const {
    const std::size_t length = replySize();
    const unsigned char header[kHeaderSize] = {0,
                                               kReadCommand,
                                               0,
                                               atLastReply() ? kImageEnd : kTransferring,
                                               static_cast<unsigned char>(length >> 24U),
                                               static_cast<unsigned char>(length >> 16U & 0xFFU),
                                               static_cast<unsigned char>(length >> 8U & 0xFFU),
                                               static_cast<unsigned char>(length & 0xFFU)};
    std::memcpy(buffer, header, sizeof header);
    return sizeof header;
  }

  const std::vector<char>* page_ = nullptr;
  std::size_t position_ = 0;
  bool inHeader_ = true;
};

Device device;

void keepName(ScanNotification* notification, void* context) {
  if (notification->type == NOTIFY_IMAGE_READY)
    *static_cast<std::string*>(context) = notification->text;
}

class Receiver {
 public:
  explicit Receiver(const std::filesystem::path& folder) {
    QZTestPeer::scanFolder(controller_) = folder.wstring();
    ControllerTestPeer::callback(controller_) = &callback_;
  }
  void run(const std::vector<char>& page) {
    device.start(page);
    if (QZTestPeer::read(controller_) != 0) std::abort();
  }
  const std::string& pageName() const { return pageName_; }

 private:
  std::string pageName_;
  TVR_FP_CALLBACK callback_ = {keepName, &pageName_};
  USB_QZ_Controller controller_;
};

// Replies from the device as the controller reads them, their data to a file.
void copyPlainly(const std::vector<char>& page, const std::filesystem::path& name) {
  device.start(page);
  std::ofstream file(name, std::ios::binary);
  std::vector<char> reply(kReplySize);
  for (bool last = false; !last;) {
    last = device.atLastReply();
    device.read(reply.data(), kHeaderSize);
    const std::size_t count = device.read(reply.data(), reply.size());
    file.write(reply.data(), static_cast<std::streamsize>(count));
  }
}

void receivePage(benchmark::State& state) {
  std::vector<char> page(static_cast<std::size_t>(state.range(0)) << 20U);
  fillWithNoise(page.data(), page.size());
  const std::filesystem::path folder = makeFolder("qz_bench");
  const std::filesystem::path plain = folder / "plain.bin";
  const double peak = peakOfChild([&] { return std::make_unique<Receiver>(folder); },
                                  [&](Receiver& child) { child.run(page); });

  Receiver receiver(folder);
  std::vector<double> ours;
  std::vector<double> theirs;
  std::vector<double> fresh;
  while (state.KeepRunning()) {
    std::filesystem::remove(plain);
    std::filesystem::remove(receiver.pageName());
    theirs.push_back(seconds([&] { copyPlainly(page, plain); }));
    ours.push_back(seconds([&] { receiver.run(page); }));
    fresh.push_back(secondsOfFreshMemory(page.size()));
    state.SetIterationTime(ours.back());
  }
  const double ratio = fastest(ours) / fastest(theirs);
  state.counters["ratio"] = ratio;
  state.counters["plain_ms"] = fastest(theirs) * 1000;
  state.counters["fresh_ms"] = fastest(fresh) * 1000;
  state.counters["peak_MB"] = peak;
  const bool same = std::filesystem::file_size(receiver.pageName()) == page.size();
  state.SetLabel(!same ? "NOT THE SAME BYTES" : ratio <= kMaxRatio ? "reached" : "missed");
  std::filesystem::remove_all(folder);
}

BENCHMARK(receivePage)
    ->ArgName("MB")
    ->Arg(1)
    ->Arg(10)
    ->Arg(40)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(3);

}  // namespace

BOOL ReadFile(HANDLE, void* buffer, DWORD size, DWORD* read, OVERLAPPED*) {
  *read = static_cast<DWORD>(device.read(static_cast<char*>(buffer), size));
  return 1;
}

BENCHMARK_MAIN();
