// The device families that this program serves, one row each. A new family is a row and the
// functions that it names; nothing else here asks which family it is.
#ifndef TVRSCN_TOOLS_TVRSCAN_FAMILIES_H
#define TVRSCN_TOOLS_TVRSCAN_FAMILIES_H

#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tvrscn/scan_client.h"

#include "device_ranges.h"
#include "job_report.h"
#include "options.h"
#include "virtual/virtual_scanner.h"

namespace tvrscn::cli {

struct Family {
  const char* word;   // on the command line, in lower case
  const char* title;  // in sentences
  ControllerType controller;
  bool tellsRanges;  // the devices can be asked for their ranges of brightness and contrast
  bool narrowPaths;  // the library finds its files only where their paths are ASCII
  bool takesTurns;   // one job at a time, over all programs
  const char* pace;  // how the pages of a job come where it is not one by one, else null

  // The job settings as the family's devices want them.
  TevraScanUIData (*jobSettings)(const ScanSettings& settings, const DeviceRanges& ranges);
  // What a device will not do although it was asked to, a sentence each.
  std::vector<std::string> (*settingsWithoutEffect)(const ScanSettings& settings);
  // Reads how a job goes whose files are delivered into the folder.
  std::unique_ptr<JobReport> (*makeReport)(const std::filesystem::path& deliveryFolder);

  // The software scanner: where it is found unless told otherwise, what is wrong with a fault
  // (empty: nothing), all faults, and its start, which throws std::runtime_error.
  virtual_device::Placement (*placement)();
  std::string (*faultProblem)(const std::string& fault);
  std::string (*faultHelp)();
  std::unique_ptr<virtual_device::RunningScanner> (*startScanner)(
      const VirtualOptions& options, const virtual_device::Placement& placement);
};

// The first one is taken where none is named.
std::span<const Family> families();

// By its word in any case; null for one that is not served.
const Family* findFamily(std::string_view word);

// "hp, lowend and qz"
std::string familyList();

// Puts the documents of the command line into a scanner of any family.
template <class ScannerOptions>
ScannerOptions loadedScanner(const VirtualOptions& options) {
  ScannerOptions scanner;
  scanner.pageFiles = options.pageFiles;
  // Several pictures do not lie on the glass at once.
  scanner.feeder = options.feederSheets > 0 || (!options.flatbed && options.pageFiles.size() > 1);
  if (options.feederSheets > 0) {
    scanner.sheets = options.feederSheets;
  } else if (options.pageFiles.size() > 1) {
    scanner.sheets = static_cast<int>(options.pageFiles.size());
  }
  return scanner;
}

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_FAMILIES_H
