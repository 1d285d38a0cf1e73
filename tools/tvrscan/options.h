// What the command line says, as plain values.
#ifndef TVRSCN_TOOLS_TVRSCAN_OPTIONS_H
#define TVRSCN_TOOLS_TVRSCAN_OPTIONS_H

#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "media_sizes.h"
#include "name_pattern.h"

namespace tvrscn::cli {

struct Family;

// A software scanner: in this process for scan and ranges, as a process for virtual.
struct VirtualOptions {
  std::vector<std::filesystem::path> pageFiles;
  int feederSheets = 0;  // 0: no --feeder
  bool flatbed = false;
  std::vector<std::string> faults;
};

struct DeviceOptions {
  std::string hardwareId;          // of --device, in upper case
  bool useVirtual = false;         // --virtual
  const Family* family = nullptr;  // null when neither --family nor --virtual names it
  bool familyFromDevice = false;   // it was not named, and is that of the device
  VirtualOptions virtualOptions;
};

// Texts are those of the job settings.
struct ScanSettings {
  std::string resolution = "300x300";
  std::string colorMode = "FullColor";
  std::string sides = "OneSided";
  std::string background = "Off";
  PageSize size{"ISO_A4SEF", 210, 297};
  int brightness = 0;  // percent, -100 black to 100 white
  int contrast = 0;    // percent
};

struct ScanOptions {
  DeviceOptions device;
  ScanSettings settings;
  std::filesystem::path folder = ".";
  NamePattern name;
  int timeoutSeconds = 0;  // 0: none
  bool dialogs = false;
  bool json = false;
  bool quiet = false;
  std::filesystem::path logFile;
};

struct DevicesOptions {
  bool json = false;
};

struct ModelsOptions {
  std::optional<std::string> name;  // the one model to show; the others choose among all
  std::string text;                 // stands in the name, the short name or the USB product id
  // Empty: any. Else as the catalogue has them.
  std::string family;
  std::string connection;
  std::string colorMode;
  std::string resolution;
  std::string sides;
  std::string mediaName;
  bool json = false;
};

struct AlertsOptions {
  std::string address;
  std::string family;  // the catalogue's word for the wording; empty: for no family
  std::optional<std::string> model;
  bool json = false;
  bool quiet = false;
};

struct RangesOptions {
  DeviceOptions device;
  bool json = false;
};

struct StoreOptions {
  std::optional<int> command;  // its code; only check and printTemplate do without
  bool check = false;
  bool printTemplate = false;
  bool quiet = false;
  std::filesystem::path logFile;
};

struct VirtualCommandOptions {
  const Family* family = nullptr;  // never null once the command line is understood
  VirtualOptions scanner;
  std::string listen;                  // empty: chosen
  std::string instanceId;              // in upper case; empty: the family's own
  std::filesystem::path deviceFolder;  // empty: the user's
};

// A text to print and nothing else.
struct HelpOptions {
  std::string text;
};

using Command = std::variant<HelpOptions, ScanOptions, DevicesOptions, ModelsOptions, AlertsOptions,
                             RangesOptions, StoreOptions, VirtualCommandOptions>;

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_OPTIONS_H
