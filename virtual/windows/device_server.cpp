// A software device on a named pipe. One thread serves one host after another; all its waits watch
// the event that stop() sets.
#include "virtual/common/device_server.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <utility>

#include "virtual/windows/pipe_endpoint.h"
#include "virtual/windows/pipe_link.h"
#include "virtual/windows/registration.h"

namespace tvrscn::virtual_device {
namespace {

constexpr wchar_t kPipeFolder[] = LR"(\\.\pipe\)";

// A path that is no pipe's is as good a name as any; its separators would not be.
std::wstring pipeName(const std::filesystem::path& path) {
  std::wstring name = path.wstring();
  if (name.empty()) {
    std::random_device random;
    name = L"tvrscn-" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(random());
  }
  if (name.starts_with(kPipeFolder)) name.erase(0, std::size(kPipeFolder) - 1);
  const auto isSeparator = [](wchar_t c) { return c == L'\\' || c == L'/' || c == L':'; };
  std::replace_if(name.begin(), name.end(), isSeparator, L'-');
  return kPipeFolder + name;
}

class PipeScanner final : public RunningScanner {
 public:
  PipeScanner(std::unique_ptr<Device> device, const Placement& placement)
      : device_(std::move(device)),
        placement_(placement),
        pipe_(pipeName(placement.socket)),
        endpoint_(pipe_),
        registration_(std::make_unique<Registration>(placement.instanceId, pipe_)) {
    placement_.socket = pipe_;
    thread_ = std::thread([this] { run(); });
  }
  PipeScanner(const PipeScanner&) = delete;
  PipeScanner& operator=(const PipeScanner&) = delete;
  ~PipeScanner() override {
    endpoint_.stop();
    thread_.join();
  }

  const Placement& placement() const override { return placement_; }

  void wait() override {
    std::unique_lock<std::mutex> lock(mutex_);
    ended_.wait(lock, [this] { return hasEnded_; });
  }

  void stop() noexcept override { endpoint_.stop(); }

 private:
  void run() {
    try {
      while (endpoint_.waitForHost())
        serveHost();
    } catch (const std::exception& error) {
      std::cerr << placement_.name << ": the device has ended: " << error.what() << '\n';
    }
    // Nobody is to find a device that no longer answers.
    registration_.reset();
    endpoint_.close();
    const std::lock_guard<std::mutex> lock(mutex_);
    hasEnded_ = true;
    ended_.notify_all();
  }

  void serveHost() {
    PipeLink link(endpoint_);
    try {
      device_->serve(link);
    } catch (const std::exception& error) {
      std::cerr << placement_.name << ": a host was disconnected: " << error.what() << '\n';
    }
    endpoint_.dropHost();
  }

  std::unique_ptr<Device> device_;
  Placement placement_;
  std::wstring pipe_;
  PipeEndpoint endpoint_;
  std::unique_ptr<Registration> registration_;
  std::mutex mutex_;
  std::condition_variable ended_;
  bool hasEnded_ = false;
  std::thread thread_;
};

}  // namespace

std::unique_ptr<RunningScanner> startDevice(std::unique_ptr<Device> device,
                                            const Placement& placement) {
  return std::make_unique<PipeScanner>(std::move(device), placement);
}

}  // namespace tvrscn::virtual_device
