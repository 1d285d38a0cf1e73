#include "families.h"

#include <algorithm>
#include <iterator>

#include "hp_job_report.h"
#include "lowend_job_report.h"
#include "qz_job_report.h"
#include "scan_settings.h"
#include "virtual/virtual_lowend_scanner.h"
#include "virtual/virtual_qz_scanner.h"
#include "words.h"

namespace tvrscn::cli {
namespace {

namespace fs = std::filesystem;
using virtual_device::Placement;
using virtual_device::RunningScanner;

// What the software scanners of all families have in common.
template <class Options, auto addFault, auto startOne>
struct Scanner {
  static std::string faultProblem(const std::string& fault) {
    Options scratch;
    return addFault(scratch, fault);
  }
  static std::unique_ptr<RunningScanner> start(const VirtualOptions& options,
                                               const Placement& placement) {
    auto scanner = loadedScanner<Options>(options);
    for (const std::string& fault : options.faults)
      addFault(scanner, fault);
    return startOne(scanner, placement);
  }
};
using HpScanner = Scanner<virtual_device::HpScannerOptions, virtual_device::addHpFault,
                          virtual_device::startHpScanner>;
using LowEndScanner = Scanner<virtual_device::LowEndScannerOptions, virtual_device::addLowEndFault,
                              virtual_device::startLowEndScanner>;
using QzScanner = Scanner<virtual_device::QzScannerOptions, virtual_device::addQzFault,
                          virtual_device::startQzScanner>;

Placement hpPlacement() {
  return {};
}

std::unique_ptr<JobReport> makeHpReport(const fs::path& /*deliveryFolder*/) {
  return std::make_unique<HpJobReport>();
}

std::unique_ptr<JobReport> makeLowEndReport(const fs::path& deliveryFolder) {
  return std::make_unique<LowEndJobReport>(deliveryFolder);
}

std::unique_ptr<JobReport> makeQzReport(const fs::path& /*deliveryFolder*/) {
  return std::make_unique<QzJobReport>();
}

constexpr Family kFamilies[] = {
    {"hp", "HP", CONTROLLER_HP, false, false, false, nullptr, hpJobSettings,
     hpSettingsWithoutEffect, makeHpReport, hpPlacement, HpScanner::faultProblem,
     virtual_device::hpFaultHelp, HpScanner::start},
    {"lowend", "LowEnd", CONTROLLER_LOWEND, true, true, false,
     "the pages come all together, at the end of the job", lowEndJobSettings,
     lowEndSettingsWithoutEffect, makeLowEndReport, virtual_device::lowEndPlacement,
     LowEndScanner::faultProblem, virtual_device::lowEndFaultHelp, LowEndScanner::start},
    {"qz", "QZ", CONTROLLER_QZ, false, true, true, nullptr, qzJobSettings, qzSettingsWithoutEffect,
     makeQzReport, virtual_device::qzPlacement, QzScanner::faultProblem,
     virtual_device::qzFaultHelp, QzScanner::start},
};

}  // namespace

std::span<const Family> families() {
  return kFamilies;
}

const Family* findFamily(std::string_view word) {
  const std::string wanted = lowerCase(word);
  const auto* found = std::find_if(std::begin(kFamilies), std::end(kFamilies),
                                   [&](const Family& family) { return wanted == family.word; });
  return found == std::end(kFamilies) ? nullptr : found;
}

std::string familyList() {
  std::string text;
  for (const Family& family : kFamilies) {
    if (!text.empty()) text += &family == &std::end(kFamilies)[-1] ? " and " : ", ";
    text += family.word;
  }
  return text;
}

}  // namespace tvrscn::cli
