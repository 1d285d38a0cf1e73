#include <exception>
#include <optional>
#include <string>

#include "tvrscn/scan_client.h"

#include "commands.h"
#include "device_choice.h"
#include "device_ranges.h"
#include "families.h"
#include "json_output.h"
#include "reporter.h"

namespace tvrscn::cli {
namespace {

// The brightness of the devices is a darkness.
void printRange(Console& console, bool json, const std::string& name, const std::string& larger,
                const std::optional<IPPMinMaxNormalStepData>& range) {
  if (!range) {
    console.note("the device tells no range of " + name);
  } else if (json) {
    console.data(rangeLine(name, larger, *range));
  } else {
    console.data(name + ": " + std::to_string(range->Min) + " to " + std::to_string(range->Max) +
                 ", normally " + std::to_string(range->Normal) + "; larger is " + larger);
  }
}

Outcome withoutRanges(const Family& family) {
  if (!family.tellsRanges) {
    return {ExitCode::kNotSupported,
            "devices of the " + std::string(family.title) + " family have no ranges to tell",
            "tvrscan scan takes --brightness and --contrast from -100 to 100.",
            "",
            {}};
  }
  return {ExitCode::kNotSupported,
          "the device tells no ranges",
          "Check that it is switched on and that --family is right. tvrscan scan leaves its "
          "brightness and contrast as they are.",
          "",
          {}};
}

int rangesOf(const RangesOptions& options, Reporter& reporter) {
  ProcessFolder folder;
  DeviceChoice choice(options.device, folder);
  CScanUSBClient& client = processClient(options.device.family->controller);
  client.InitExceptionStrings(nullptr);
  client.SetUsingTevraUI(0);
  if (const auto outcome = choice.choose(client)) return reporter.end(*outcome);
  client.InitScanConfigInfo("tvrscan", choice.device().instanceId, L"tvrscan");
  const DeviceRanges ranges = askForRanges(client);
  if (!ranges.brightness && !ranges.contrast) {
    return reporter.end(withoutRanges(*options.device.family));
  }
  printRange(reporter.console(), options.json, "brightness", "darker", ranges.brightness);
  printRange(reporter.console(), options.json, "contrast", "harder", ranges.contrast);
  return static_cast<int>(ExitCode::kDone);
}

}  // namespace

int runRanges(const RangesOptions& options) {
  Console console(false);
  Reporter reporter(console, options.json);
  try {
    return rangesOf(options, reporter);
  } catch (const OutputError& error) {
    return reporter.end({ExitCode::kOutput, error.what(), "Choose another place.", "", {}});
  } catch (const std::exception& error) {
    return reporter.end({ExitCode::kFailed, error.what(), "", "", {}});
  }
}

}  // namespace tvrscn::cli
