// A host without the library: two handles on a device's pipe, and what each transfer brought.
#ifndef TVRSCN_TESTS_WINDOWS_RAW_HOST_H
#define TVRSCN_TESTS_WINDOWS_RAW_HOST_H

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

#include <windows.h>

#include "virtual/windows/unique_handle.h"

namespace tvrscn::test {

using Bytes = std::vector<std::uint8_t>;

inline constexpr std::string_view kInquiry{"\x1B\xA8\x12\x00", 4};
inline constexpr std::string_view kReserve{"\x1B\xA8\x16\x00", 4};
inline constexpr std::string_view kRelease{"\x1B\xA8\x17\x00", 4};

class RawHost {
 public:
  explicit RawHost(const std::filesystem::path& pipe)
      : requests_(open(pipe)), replies_(open(pipe)) {}

  bool isConnected() const { return requests_.isValid() && replies_.isValid(); }

  bool write(std::string_view bytes) const {
    DWORD count = 0;
    return WriteFile(requests_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count,
                     nullptr) != 0 &&
           count == bytes.size();
  }

  // What one read brings; nothing when it fails.
  std::optional<Bytes> read(DWORD most) const {
    Bytes bytes(most);
    DWORD count = 0;
    if (ReadFile(replies_.get(), bytes.data(), most, &count, nullptr) == 0) return std::nullopt;
    bytes.resize(count);
    return bytes;
  }

  // The size of the answer to a command; nothing when either transfer failed.
  std::optional<std::size_t> ask(std::string_view command) const {
    constexpr DWORD kPlenty = 4096;
    if (!write(command)) return std::nullopt;
    const std::optional<Bytes> answer = read(kPlenty);
    return answer ? std::optional(answer->size()) : std::nullopt;
  }

  void closeReplies() { replies_ = virtual_device::UniqueHandle(); }

 private:
  static virtual_device::UniqueHandle open(const std::filesystem::path& pipe) {
    return virtual_device::UniqueHandle(CreateFileW(pipe.c_str(), GENERIC_READ | GENERIC_WRITE,
                                                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                                    OPEN_EXISTING, 0, nullptr));
  }

  virtual_device::UniqueHandle requests_;
  virtual_device::UniqueHandle replies_;
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_WINDOWS_RAW_HOST_H
