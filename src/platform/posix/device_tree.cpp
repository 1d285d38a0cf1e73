// A device folder is written by other programs, and the system's folder changes while it is read: a
// file that cannot be read or makes no sense is a device that is not there.
#include "platform/posix/device_tree.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/posix/runtime_folder.h"
#include "platform/posix/utf8.h"

namespace tvrscn {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLargestDescription = 64U * 1024U;  // bytes; the rest of a file is not read
// The class of USB devices, in front of the driver keys of the system's devices.
constexpr std::string_view kUsbClass = "{36fc9e60-c465-11cf-8056-444553540000}\\";

std::string readStart(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::string text(kLargestDescription, '\0');
  in.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(std::max<std::streamsize>(in.gcount(), 0)));
  return text;
}

// Names in a folder, in byte order; none when it cannot be listed.
std::vector<std::string> namesIn(const fs::path& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator i(folder, error), end; !error && i != end; i.increment(error)) {
    names.push_back(i->path().filename().native());
  }
  std::sort(names.begin(), names.end());
  return names;
}

void takeLine(std::string_view line, PresentDevice& device) {
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) return;
  const std::string_view key = line.substr(0, equals);
  const std::string_view value = line.substr(equals + 1);
  if (key == "InstanceId") device.instanceId = wideFromUtf8(value);
  if (key == "Driver") device.driver = wideFromUtf8(value);
  if (key == "CreateFileName") device.createFileName = wideFromUtf8(value);
  if (key == "EnumKey") device.hasEnumKey = value != "absent";
}

PresentDevice parseDescription(std::string_view text) {
  PresentDevice device;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    takeLine(text.substr(0, end), device);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return device;
}

bool isDescriptionName(std::string_view name) {
  constexpr std::string_view kEnding = ".device";
  return name.size() >= kEnding.size() && name.front() != '.' &&
         name.substr(name.size() - kEnding.size()) == kEnding;
}

// Where an interface hangs: "3-1.4:1.0" is port 4 of the hub at port 1 of bus 3, configuration 1,
// interface 0. `order` holds the bus, the ports and the interface.
struct InterfaceName {
  std::string name;
  std::string device;  // "3-1.4"
  std::string number;  // "0"
  std::vector<unsigned> order;
};

// Reads a whole number off the front of text and the character behind it.
bool takeNumber(std::string_view& text, unsigned& number, char& behind) {
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return false;
  text.remove_prefix(static_cast<std::size_t>(rest - text.data()));
  behind = text.empty() ? '\0' : text.front();
  if (!text.empty()) text.remove_prefix(1);
  return true;
}

// False for what is not the name of an interface, a device's or a hub's own among them.
bool parseInterfaceName(const std::string& name, InterfaceName& result) {
  const std::size_t colon = name.find(':');
  if (colon == std::string::npos) return false;
  std::string_view rest = name;
  unsigned number = 0;
  char behind = '\0';
  if (!takeNumber(rest, number, behind) || behind != '-') return false;
  result.order = {number};
  do {
    if (!takeNumber(rest, number, behind)) return false;
    result.order.push_back(number);
  } while (behind == '.');
  if (behind != ':' || !takeNumber(rest, number, behind) || behind != '.') return false;
  // A shorter port path comes first: 0 is no port.
  result.order.push_back(0);
  if (!takeNumber(rest, number, behind) || behind != '\0') return false;
  result.order.push_back(number);
  result.name = name;
  result.device = name.substr(0, colon);
  result.number = std::to_string(number);
  return true;
}

std::string firstLine(const fs::path& file) {
  std::string text = readStart(file);
  text.resize(std::min(text.find('\n'), text.size()));
  return text;
}

std::string asHex(const std::string& text) {
  std::string upper = text;
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

// The last component of the instance id: the serial number, or the port path where a device has
// none. The number comes from the device; what would not be allowed in an id becomes '_'.
std::string uniquePart(const std::string& serial, const std::string& portPath) {
  if (serial.empty()) return portPath;
  std::string part = serial;
  for (char& c : part) {
    if (c <= ' ' || c > '~' || c == '\\' || c == ',') c = '_';
  }
  return part;
}

bool readInterface(const fs::path& root, const InterfaceName& interface, PresentDevice& result) {
  const fs::path device = root / interface.device;
  const std::string vendor = asHex(firstLine(device / "idVendor"));
  const std::string product = asHex(firstLine(device / "idProduct"));
  const std::string bus = firstLine(device / "busnum");
  const std::string address = firstLine(device / "devnum");
  const std::string number = asHex(firstLine(root / interface.name / "bInterfaceNumber"));
  if (vendor.empty() || product.empty() || bus.empty() || address.empty() || number.empty()) {
    return false;
  }
  const std::string unique = uniquePart(firstLine(device / "serial"), interface.device);
  result.instanceId =
      wideFromUtf8("USB\\VID_" + vendor + "&PID_" + product + "&MI_" + number + "\\" + unique);
  result.driver = wideFromUtf8(std::string(kUsbClass) + interface.device + ":" + interface.number);
  result.createFileName = wideFromUtf8("usb:" + bus + ":" + address + ":" + interface.number);
  return true;
}

}  // namespace

fs::path deviceFolder() {
  const char* named = std::getenv("TVRSCN_DEVICE_PATH");
  if (named != nullptr) return named;
  return fs::path(userRuntimeFolder()) / "tvrscn" / "devices";
}

std::vector<PresentDevice> devicesOfFolder(const fs::path& folder) {
  std::vector<PresentDevice> devices;
  for (const std::string& name : namesIn(folder)) {
    std::error_code error;
    // Only a regular file: opening a pipe would wait for its other end.
    if (!isDescriptionName(name) || !fs::is_regular_file(folder / name, error)) continue;
    PresentDevice device = parseDescription(readStart(folder / name));
    if (!device.instanceId.empty()) devices.push_back(std::move(device));
  }
  return devices;
}

std::vector<PresentDevice> devicesOfSystem(const fs::path& usbDevices) {
  std::vector<InterfaceName> interfaces;
  for (const std::string& name : namesIn(usbDevices)) {
    InterfaceName interface;
    if (parseInterfaceName(name, interface)) interfaces.push_back(std::move(interface));
  }
  std::sort(interfaces.begin(), interfaces.end(),
            [](const InterfaceName& a, const InterfaceName& b) { return a.order < b.order; });
  std::vector<PresentDevice> devices;
  for (const InterfaceName& interface : interfaces) {
    PresentDevice device;
    if (readInterface(usbDevices, interface, device)) devices.push_back(std::move(device));
  }
  return devices;
}

std::vector<PresentDevice> presentDevices() {
  std::vector<PresentDevice> devices = devicesOfFolder(deviceFolder());
  std::vector<PresentDevice> system = devicesOfSystem("/sys/bus/usb/devices");
  std::move(system.begin(), system.end(), std::back_inserter(devices));
  return devices;
}

}  // namespace tvrscn
