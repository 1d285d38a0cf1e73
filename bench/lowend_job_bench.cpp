// What the worker of a LowEnd job costs from the first packet to the last notification, against a
// plain copy: the same packets from the same device, read the same way, their payloads written to
// one file on the same disk. The device is in this process and answers at once. Both run in turn
// within the same loop, and the fastest run of each counts.
//
// Memory is that of a child process of its own, from before the job to its peak.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include "bench/measure.h"
#include "platform/device_file.h"
#include "tests/support/lowend_test_peer.h"
#include "tests/support/test_peers.h"

namespace {

using tvrscn::bench::fastest;
using tvrscn::bench::fillWithNoise;
using tvrscn::bench::makeFolder;
using tvrscn::bench::peakOfChild;
using tvrscn::bench::seconds;
using tvrscn::bench::secondsOfFreshMemory;

constexpr double kMaxRatio = 2.0;
constexpr double kMegabyte = 1024.0 * 1024.0;
constexpr std::size_t kJobSize = 200U << 20U;
constexpr std::size_t kMarkerEvery = 64U << 10U;
constexpr char kMarker[] = "BLOCK012345678TES\n";
constexpr std::size_t kMarkerSize = 18;
constexpr char kNewFile[] = "\nNEWFILE";
constexpr std::size_t kNewFileSize = 8;
constexpr char kImageStart[] = "\xFF\xD8\xFF\xE0";
constexpr std::size_t kImageStartSize = 4;
constexpr std::size_t kFirstRead = 512;
constexpr std::size_t kHeaderSize = 10;

// The packets of a job, each in one piece behind the other.
struct Job {
  std::vector<char> stream;
  std::size_t packetSize = 0;  // of every packet but the last
  std::size_t files = 0;
  std::size_t fileBytes = 0;  // of all files, cleaned
};

void writeHeader(char* at, std::size_t payload, bool last) {
  const char header[kHeaderSize] = {'\x1B',
                                    '\x4E',
                                    2,
                                    0,
                                    static_cast<char>(payload & 0xFFU),
                                    static_cast<char>(payload >> 8U & 0xFFU),
                                    static_cast<char>(payload >> 16U & 0xFFU),
                                    static_cast<char>(payload >> 24U),
                                    static_cast<char>(last ? 1 : 0),
                                    0};
  std::memcpy(at, header, sizeof header);
}

// Each file begins with a packet and has a block marker at every kMarkerEvery bytes of the stream.
Job makeJob(std::size_t files, std::size_t payload) {
  Job job;
  job.packetSize = payload + kHeaderSize;
  job.files = files;
  const std::size_t packets = kJobSize / payload / files * files;
  job.stream.resize(packets * job.packetSize);
  fillWithNoise(job.stream.data(), job.stream.size());  // no marker by chance: the sizes tell
  std::size_t dropped = 0;
  std::size_t nextMarker = kMarkerEvery;
  for (std::size_t i = 0; i < packets; ++i) {
    char* const at = job.stream.data() + i * job.packetSize;
    writeHeader(at, payload, i + 1 == packets);
    if (i % (packets / files) == 0) {
      if (i != 0) std::memcpy(at + kHeaderSize, kNewFile, kNewFileSize);
      const std::size_t start = i == 0 ? 0 : kNewFileSize;
      std::memcpy(at + kHeaderSize + start, kImageStart, kImageStartSize);
      dropped += start;
    }
    if (i * payload >= nextMarker) {
      std::memcpy(at + kHeaderSize + payload / 2, kMarker, kMarkerSize);
      dropped += kMarkerSize;
      nextMarker += kMarkerEvery;
    }
  }
  job.fileBytes = packets * payload - dropped;
  return job;
}

// Gives the packets of a job; no read spans two.
class Device {
 public:
  void start(const Job& job) {
    job_ = &job;
    position_ = 0;
  }
  std::size_t read(char* buffer, std::size_t size) {
    const std::size_t rest = job_->packetSize - position_ % job_->packetSize;
    const std::size_t count = std::min({size, rest, job_->stream.size() - position_});
    std::memcpy(buffer, job_->stream.data() + position_, count);
    position_ += count;
    return count;
  }

 private:
  const Job* job_ = nullptr;
  std::size_t position_ = 0;
};

Device device;

void ignore(ScanNotification* /*notification*/, void* /*context*/) {}

class Worker {
 public:
  explicit Worker(const std::filesystem::path& folder) {
    LowEndTestPeer::imageFolder(controller_) = folder.wstring();
    ControllerTestPeer::callback(controller_) = &callback_;
  }
  void run(const Job& job) {
    device.start(job);
    LowEndTestPeer::fileCount(controller_) = 1;
    auto*& arguments = LowEndTestPeer::threadArgs(controller_);
    arguments = new LowEndImageThreadArgs{&controller_, &callback_, nullptr};
    if (LowEndTestPeer::threadProc(arguments) != USB_SUCCESS) std::abort();
  }

 private:
  TVR_FP_CALLBACK callback_ = {ignore, nullptr};
  USB_LowEnd_Controller controller_;
};

// Packets from the device as the worker reads them, payloads to a file.
void copyPlainly(const Job& job, const std::filesystem::path& name) {
  device.start(job);
  std::ofstream file(name, std::ios::binary);
  std::vector<char> packet(job.packetSize);
  for (bool last = false; !last;) {
    const std::size_t first = device.read(packet.data(), kFirstRead);
    last = packet[8] == 1;
    const std::size_t rest = device.read(packet.data() + first, job.packetSize - first);
    file.write(packet.data() + kHeaderSize,
               static_cast<std::streamsize>(first + rest - kHeaderSize));
  }
}

std::filesystem::path imagePath(const std::filesystem::path& folder, std::size_t number) {
  return folder / ("Image_" + std::to_string(number) + ".JPG");
}

void removeImages(const std::filesystem::path& folder, std::size_t files) {
  for (std::size_t i = 1; i <= files; ++i)
    std::filesystem::remove(imagePath(folder, i));
}

std::size_t sizeOfImages(const std::filesystem::path& folder, std::size_t files) {
  std::size_t sum = 0;
  for (std::size_t i = 1; i <= files; ++i)
    sum += std::filesystem::file_size(imagePath(folder, i));
  return sum;
}

// Waits until all files of the folder's disk are on it: one wait, however many files there are.
void bringToDisk(const std::filesystem::path& folder) {
  const int file = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (file < 0 || ::syncfs(file) != 0) std::abort();
  ::close(file);
}

void runJob(benchmark::State& state) {
  const auto files = static_cast<std::size_t>(state.range(0));
  const Job job = makeJob(files, static_cast<std::size_t>(state.range(1)));
  const bool toDisk = state.range(2) != 0;
  const std::filesystem::path folder = makeFolder("lowend_bench");
  const std::filesystem::path plain = folder / "plain.bin";
  const double peak = peakOfChild([&] { return std::make_unique<Worker>(folder); },
                                  [&](Worker& child) { child.run(job); });

  Worker worker(folder);
  std::vector<double> ours;
  std::vector<double> theirs;
  std::vector<double> fresh;
  while (state.KeepRunning()) {
    removeImages(folder, files);
    std::filesystem::remove(plain);
    bringToDisk(folder);
    theirs.push_back(seconds([&] {
      copyPlainly(job, plain);
      if (toDisk) bringToDisk(folder);
    }));
    ours.push_back(seconds([&] {
      worker.run(job);
      if (toDisk) bringToDisk(folder);
    }));
    fresh.push_back(secondsOfFreshMemory(kJobSize));
    state.SetIterationTime(ours.back());
  }
  const double ratio = fastest(ours) / fastest(theirs);
  const std::size_t atOnce = kJobSize + job.packetSize + 2 * (kJobSize / files);
  const double allowed = static_cast<double>(atOnce) / kMegabyte;
  state.counters["ratio"] = ratio;
  state.counters["plain_ms"] = fastest(theirs) * 1000;
  state.counters["fresh_ms"] = fastest(fresh) * 1000;
  state.counters["peak_MB"] = peak;
  state.counters["allowed_MB"] = allowed;
  const bool same = sizeOfImages(folder, files) == job.fileBytes;
  const bool reached = ratio <= kMaxRatio && peak > 0 && peak <= allowed;
  state.SetLabel(!same ? "NOT THE SAME BYTES" : reached ? "reached" : "missed");
  std::filesystem::remove_all(folder);
}

BENCHMARK(runJob)
    ->ArgNames({"files", "packet", "to_disk"})
    ->ArgsProduct({{1, 10, 100}, {64 << 10}, {0, 1}})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(3);

}  // namespace

BOOL ReadFile(HANDLE, void* buffer, DWORD size, DWORD* read, OVERLAPPED*) {
  *read = static_cast<DWORD>(device.read(static_cast<char*>(buffer), size));
  return 1;
}

BENCHMARK_MAIN();
