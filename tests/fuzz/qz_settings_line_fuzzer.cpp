// The settings file of a store application: any bytes, read by the controller and taken apart here
// by other means. Both have to come to the same settings, or to the same complaint.
//
// Files of one to eleven fields end the process by design and are left out.
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/files.h"
#include "tests/support/qz_test_peer.h"
#include "tests/support/test_peers.h"

namespace {

using Source = DataSourceTestPeer;

constexpr std::size_t kMostCharacters = 511;
constexpr std::size_t kFieldCount = 12;
constexpr std::size_t kNumberFields[] = {3, 4, 5, 6, 7, 9};

void require(bool holds) {
  if (!holds) std::abort();
}

// A folder of this process, which the library is told of.
std::filesystem::path settingsFile() {
  static const std::filesystem::path file = [] {
    std::string folder = (std::filesystem::temp_directory_path() / "qz_settings.XXXXXX").string();
    require(mkdtemp(folder.data()) != nullptr);
    require(setenv("TVRSCN_PROGRAM_DATA", folder.c_str(), 1) == 0);
    return tvrscn::storeAppSettingsPath();
  }();
  return file;
}

std::string firstLine(std::span<const std::uint8_t> content) {
  std::string line;
  bool ended = false;
  for (const std::uint8_t byte : content) {
    ended = byte == '\n';
    if (ended || line.size() == kMostCharacters) break;
    line += static_cast<char>(byte);
  }
  if (ended && !line.empty() && line.back() == '\r') line.pop_back();
  return line.substr(0, line.find('\0'));
}

std::vector<std::string> fieldsOf(const std::string& line) {
  std::vector<std::string> fields;
  std::string field;
  for (const char c : line + ",") {
    if (c != ',') {
      field += c;
    } else if (!field.empty()) {
      fields.push_back(field);
      field.clear();
    }
  }
  if (fields.size() > kFieldCount) fields.resize(kFieldCount);
  return fields;
}

enum class Verdict { kNumber, kNoNumber, kTooLarge };

// By the C library, whose words on white space are the same in its own locale.
Verdict read(const std::string& text, int& value) {
  char* end = nullptr;
  errno = 0;
  const long number = std::strtol(text.c_str(), &end, 10);
  if (end == text.c_str()) return Verdict::kNoNumber;
  if (errno == ERANGE || number < INT_MIN || number > INT_MAX) return Verdict::kTooLarge;
  value = static_cast<int>(number);
  return Verdict::kNumber;
}

Verdict readSettings(USB_QZ_Controller& controller) {
  try {
    controller.setStoreAppPropertiesToScan();
  } catch (const std::invalid_argument&) {
    return Verdict::kNoNumber;
  } catch (const std::out_of_range&) {
    return Verdict::kTooLarge;
  }
  return Verdict::kNumber;
}

void compare(CQZUSBScanDataSource& source, const std::vector<std::string>& fields,
             const int (&numbers)[kFieldCount]) {
  require(Source::colorMode(source) == fields[0]);
  require(Source::resolution(source) == fields[1]);
  require(Source::sides(source) == fields[2]);
  require(Source::width(source) == numbers[3]);
  require(Source::height(source) == numbers[4]);
  require(Source::paperSource(source) == numbers[5]);
  require(Source::brightness(source) == numbers[6]);
  require(Source::contrast(source) == numbers[7]);
  require(Source::backgroundRemoval(source) == fields[8]);
  require(Source::pageLimit(source) == numbers[9]);
  require(source.getHardwareId() == fields[10]);
  require(Source::mediaSize(source) == fields[11]);
  require(Source::feedEdge(source) == (fields[11].find("LEF") == std::string::npos ? 1 : 0));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span<const std::uint8_t> content(data, size);
  const std::vector<std::string> fields = fieldsOf(firstLine(content));
  if (!fields.empty() && fields.size() < kFieldCount) return 0;
  std::ofstream(settingsFile(), std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));

  USB_QZ_Controller controller;
  const Verdict verdict = readSettings(controller);
  CQZUSBScanDataSource& source = *controller.GetUSBScanDataSource();
  if (fields.empty()) {
    require(verdict == Verdict::kNumber && source.getHardwareId().empty());
    return 0;
  }
  int numbers[kFieldCount] = {};
  for (const std::size_t field : kNumberFields) {
    const Verdict expected = read(fields[field], numbers[field]);
    if (expected == Verdict::kNumber) continue;
    require(verdict == expected);
    return 0;
  }
  require(verdict == Verdict::kNumber);
  compare(source, fields, numbers);
  // What has been read is what a job sends: whatever it says, the records are whole.
  USBVendorSetWindowData window;
  source.FillSetWindowData(&window);
  require(window.bBitDepth == 8 && window.bColorControl == 1);
  return 0;
}
