// The way from a hardware id to two open handles: the present devices, the driver key of the one
// that fits, the endpoint's name in the class key of its driver.
//
// What callers know of a failing search is odd and stays so: registry failures answer with a last
// error that nobody set, found or not is not told apart once a handle is open, and the device set
// is given up only where the search runs to its end.
#include <cctype>
#include <cwctype>
#include <optional>
#include <string>

#include "platform/device_file.h"
#include "platform/device_setup.h"
#include "platform/registry.h"
#include "tvrscn/usb_controller.h"
#include "usb/text.h"

namespace {

constexpr wchar_t kEnumKey[] = L"SYSTEM\\CurrentControlSet\\Enum\\";
constexpr wchar_t kClassKey[] = L"SYSTEM\\CurrentControlSet\\Control\\Class";
constexpr wchar_t kEndpointValue[] = L"CreateFileName";
wchar_t usbEnumerator[] = L"USB";

// Characters in a name buffer, the terminator included; 520 bytes where a character has two.
constexpr DWORD kNameCapacity = 260;
constexpr DWORD kDeviceInfoSize = 32;

constexpr int kFound = 0;
constexpr int kNotFound = 55;

// A name buffer that is zero to start with and has one zero more than anybody may write.
struct NameBuffer {
  wchar_t text[kNameCapacity + 1] = {};

  BYTE* bytes() { return reinterpret_cast<BYTE*>(text); }
  static constexpr DWORD byteSize() { return kNameCapacity * sizeof(wchar_t); }
};

bool openLocalMachineKey(std::wstring path, HKEY& key) {
  if (path.size() >= kNameCapacity) path.resize(kNameCapacity - 1);
  return RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS;
}

HANDLE openEndpoint(const wchar_t* name) {
  return CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                     nullptr, OPEN_EXISTING, 0, nullptr);
}

void toUpper(std::string& text) {
  for (char& c : text)
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}

// "x" and the up to four characters behind the tag; nothing with fewer than three.
std::string idBehind(const std::string& tag, std::string text) {
  constexpr std::size_t kLeast = 3;
  constexpr std::size_t kMost = 4;
  toUpper(text);
  const std::size_t at = text.find(tag);
  if (at == std::string::npos || at + tag.size() + kLeast > text.size()) return {};
  return std::string("x").append(text, at + tag.size(), kMost);
}

}  // namespace

void BaseUSBController::InitScanConfigInfo(const std::string& deviceName,
                                           const std::string& hardwareId,
                                           const std::wstring& deviceLabel) {
  m_deviceName = deviceName;
  m_hardwareId = hardwareId;
  m_deviceLabel = deviceLabel;
  toUpper(m_hardwareId);
  FindStatusEndPointFromPrinterPort(usbEnumerator, m_hardwareId, true);
}

namespace {

// The steps of one search, over the functions that a controller has resolved.
class EndpointSearch {
 public:
  struct Service {
    PfnSetupDiGetClassDevsW getClassDevs;
    PfnSetupDiEnumDeviceInfo enumDeviceInfo;
    PfnSetupDiGetDeviceInstanceIdW getInstanceId;
    PfnSetupDiDestroyDeviceInfoList destroyList;
    PfnSetupDiGetDeviceRegistryPropertyW getProperty;
  };

  explicit EndpointSearch(const Service& service) : service_(service) {}

  // Runs to its end with or without a device: nothing then, and endpoint() tells. A step that fails
  // in between gives the last error, and leaves the device set as it is.
  std::optional<int> run(const wchar_t* enumerator, const std::string& hardwareId) {
    set_ = service_.getClassDevs(nullptr, enumerator, nullptr, DIGCF_PRESENT | DIGCF_ALLCLASSES);
    if (set_ == INVALID_HANDLE_VALUE) return lastError();
    if (findDevice(hardwareId) && !readEndpoint()) return lastError();
    service_.destroyList(set_);
    return std::nullopt;
  }

  // The endpoint's name, or null when no device was found.
  const wchar_t* endpoint() const { return found_ ? endpoint_.text : nullptr; }

 private:
  static int lastError() { return static_cast<int>(GetLastError()); }

  // The first device whose id holds the text and whose own key can be opened.
  bool findDevice(const std::string& hardwareId) {
    device_.cbSize = kDeviceInfoSize;
    for (DWORD index = 0; service_.enumDeviceInfo(set_, index, &device_) != 0; ++index) {
      NameBuffer id;
      service_.getInstanceId(set_, &device_, id.text, kNameCapacity, nullptr);
      for (wchar_t& c : id.text)
        c = static_cast<wchar_t>(std::towupper(static_cast<wint_t>(c)));
      HKEY key = nullptr;
      if (tvrscn::narrow(id.text).find(hardwareId) != std::string::npos &&
          openLocalMachineKey(std::wstring(kEnumKey) + id.text, key)) {
        return true;
      }
    }
    return false;
  }

  bool readEndpoint() {
    NameBuffer driver;
    if (service_.getProperty(set_, &device_, SPDRP_DRIVER, nullptr, driver.bytes(),
                             NameBuffer::byteSize(), nullptr) == 0) {
      return false;
    }
    HKEY key = nullptr;
    if (!openLocalMachineKey(std::wstring(kClassKey) + L"\\" + driver.text, key)) return false;
    DWORD size = NameBuffer::byteSize();
    if (RegQueryValueExW(key, kEndpointValue, nullptr, nullptr, endpoint_.bytes(), &size) !=
        ERROR_SUCCESS) {
      return false;
    }
    found_ = true;
    return true;
  }

  const Service& service_;
  HDEVINFO set_ = nullptr;
  SP_DEVINFO_DATA device_ = {};
  NameBuffer endpoint_;
  bool found_ = false;
};

}  // namespace

int BaseUSBController::FindStatusEndPointFromPrinterPort(wchar_t* enumerator,
                                                         std::string hardwareId, bool openDevice) {
  if (m_hSetupApi == nullptr || m_pfnSetupDiGetClassDevsW == nullptr ||
      m_pfnSetupDiEnumDeviceInfo == nullptr || m_pfnSetupDiGetDeviceInstanceIdW == nullptr ||
      m_pfnSetupDiDestroyDeviceInfoList == nullptr || m_pfnSetupDiEnumDeviceInterfaces == nullptr ||
      m_pfnSetupDiGetDeviceInterfaceDetailW == nullptr ||
      m_pfnSetupDiGetDeviceRegistryPropertyW == nullptr) {
    return USB_ERR_NO_DEVICE_SETUP;
  }
  const EndpointSearch::Service service = {
      m_pfnSetupDiGetClassDevsW, m_pfnSetupDiEnumDeviceInfo, m_pfnSetupDiGetDeviceInstanceIdW,
      m_pfnSetupDiDestroyDeviceInfoList, m_pfnSetupDiGetDeviceRegistryPropertyW};
  EndpointSearch search(service);
  if (const std::optional<int> failure = search.run(enumerator, hardwareId)) return *failure;

  const wchar_t* endpoint = search.endpoint();
  if (!openDevice) return endpoint != nullptr ? kFound : kNotFound;
  if (endpoint != nullptr) {
    m_hDeviceWrite = openEndpoint(endpoint);
    m_hDeviceRead = openEndpoint(endpoint);
  }
  return m_hDeviceWrite == INVALID_HANDLE_VALUE ? USB_ERR_OPEN : kFound;
}

std::string BaseUSBController::getVid(const std::string& hardwareId) {
  return idBehind("VID_", hardwareId);
}

std::string BaseUSBController::getPid(const std::string& hardwareId) {
  return idBehind("PID_", hardwareId);
}
