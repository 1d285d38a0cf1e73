#include <exception>
#include <limits>

#include "tvrscn/scan_client.h"

#include "commands.h"
#include "device_choice.h"
#include "json_output.h"
#include "reporter.h"

namespace tvrscn::cli {
namespace {

// A record that no device fills like this.
constexpr std::int32_t kUntouched = std::numeric_limits<std::int32_t>::min();

bool isFilled(const IPPMinMaxNormalStepData& range) {
  return range.Min != kUntouched && range.Max != kUntouched;
}

void printRange(Console& console, bool json, const std::string& name,
                const IPPMinMaxNormalStepData& range) {
  if (json) {
    console.data(rangeLine(name, range));
    return;
  }
  console.data(name + ": " + std::to_string(range.Min) + " to " + std::to_string(range.Max) +
               ", normally " + std::to_string(range.Normal));
}

int rangesOf(const RangesOptions& options, Reporter& reporter) {
  ProcessFolder folder;
  DeviceChoice choice(options.device, folder);
  CScanUSBClient& client = processClient();
  client.InitExceptionStrings(nullptr);
  client.SetUsingTevraUI(0);
  if (const auto outcome = choice.choose(client)) return reporter.end(*outcome);
  client.InitScanConfigInfo("tvrscan", choice.device().instanceId, L"tvrscan");
  IPPMinMaxNormalStepData brightness{kUntouched, kUntouched, 0, 0};
  IPPMinMaxNormalStepData contrast{kUntouched, kUntouched, 0, 0};
  client.GetBrightnessContrastValue(brightness, contrast);
  if (!isFilled(brightness) || !isFilled(contrast)) {
    return reporter.end({ExitCode::kNotSupported,
                         "devices of the HP family have no ranges to tell",
                         "tvrscan scan takes --brightness and --contrast from -100 to 100.",
                         "",
                         {}});
  }
  printRange(reporter.console(), options.json, "brightness", brightness);
  printRange(reporter.console(), options.json, "contrast", contrast);
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
