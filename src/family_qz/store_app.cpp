// The entry of store applications, and the reading of the settings file that they leave.
#include "tvrscn/store_app.h"

#include <array>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "client/fatal_fault.h"
#include "platform/files.h"
#include "tvrscn/qz_controller.h"
#include "usb/log_writer.h"
#include "usb/text.h"

namespace {

// What counts of the file's first line, the terminator included.
constexpr std::size_t kLineCapacity = 512;

enum Field : std::size_t {
  kColour,
  kResolution,
  kSides,
  kWidth,
  kHeight,
  kPaperSource,
  kBrightness,
  kContrast,
  kBackground,
  kPageLimit,
  kHardwareId,
  kMedia,
  kFieldCount
};

// What the store application left, or nothing. A zero byte ends the line too.
std::string settingsLine() {
  std::ifstream file(tvrscn::storeAppSettingsPath());
  std::array<char, kLineCapacity> line = {};
  if (file.good()) file.getline(line.data(), line.size());
  // The end of a Windows line, where the system does not take it for one; gcount counts the '\n'.
  const auto length = static_cast<std::size_t>(file.gcount());
  if (file.good() && length > 1 && line[length - 2] == '\r') line[length - 2] = '\0';
  return line.data();
}

class Fields {
 public:
  explicit Fields(std::vector<std::string> texts) : texts_(std::move(texts)) {}

  bool empty() const { return texts_.empty(); }
  const std::string& text(Field field) const {
    if (field >= texts_.size()) {
      tvrscn::endAtFault(
          "the line of ScanInputData.txt has fewer than its twelve fields; write all of them, "
          "none empty");
    }
    return texts_[field];
  }
  int number(Field field) const { return tvrscn::toInt(text(field)); }

 private:
  std::vector<std::string> texts_;
};

}  // namespace

void USB_QZ_Controller::setStoreAppPropertiesToScan() {
  m_scanDataSource = std::make_shared<CQZUSBScanDataSource>();
  const Fields fields(tvrscn::splitFields(settingsLine(), kFieldCount));
  if (fields.empty()) return;
  const int width = fields.number(kWidth);
  const int height = fields.number(kHeight);
  const int paperSource = fields.number(kPaperSource);
  const int brightness = fields.number(kBrightness);
  const int contrast = fields.number(kContrast);
  const int pageLimit = fields.number(kPageLimit);
  m_scanDataSource->setHardwareId(fields.text(kHardwareId));
  m_scanDataSource->SetScaningPropertiesFromApp(
      fields.text(kColour), fields.text(kResolution), fields.text(kSides), width, height,
      paperSource, brightness, contrast, fields.text(kBackground), pageLimit, fields.text(kMedia));
}

void scanFromStoreApp(int command) {
  const auto controller = std::make_shared<USB_QZ_Controller>();
  controller->setStoreAppPropertiesToScan();
  std::array<wchar_t, 4> enumerator = {L'U', L'S', L'B', L'\0'};
  const std::string hardwareId = controller->GetUSBScanDataSource()->getHardwareId();
  if (controller->FindStatusEndPointFromPrinterPort(enumerator.data(), hardwareId, true) != 0) {
    tvrscn::writeLog(L" Unable to Create End Point from Store App! \r\n");
    return;
  }
  tvrscn::writeLog(L" Discovered the USB End Point from Store App! \r\n");
  controller->sendCommandstoDevice(command);
}
