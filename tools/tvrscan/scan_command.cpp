#include <exception>

#include "tvrscn/scan_client.h"
#include "tvrscn/tevrautil/named_mutex.h"

#include "commands.h"
#include "device_ranges.h"
#include "families.h"
#include "log_option.h"
#include "scan_session.h"
#include "scan_settings.h"
#include "system.h"

namespace tvrscn::cli {

namespace fs = std::filesystem;

namespace {

void tellNotes(Console& console, const ScanOptions& options, const PageStore& pages) {
  for (const std::string& note : options.device.family->settingsWithoutEffect(options.settings))
    console.note(note);
  if (pages.firstNumber() > 1) {
    console.note("the folder has such pages already; the first new one is " +
                 options.name.fileName(pages.firstNumber(), ""));
  }
}

// What the device is to do, in the words of the settings.
std::string askedFor(const ScanSettings& settings) {
  const bool named = settings.size.mediaName != "Custom";
  const std::string size = named ? settings.size.mediaName
                                 : std::to_string(settings.size.width) + "x" +
                                       std::to_string(settings.size.height) + " mm";
  return "asked for " + size + ", " + settings.colorMode + ", " + settings.sides + ", " +
         settings.resolution + " dpi";
}

// Whether a job of another program runs that the next one has to wait for. It may end, or another
// begin, as soon as this is said.
bool anotherJobRuns() {
  XMutex turn(L"MutexUSB");
  return !turn.WaitWithRetry(0, 1);
}

// A family may answer a device that makes no sense with an exception of the library below it.
int runJob(ScanSession& session, CScanUSBClient& client, TevraScanUIData& settings,
           const std::wstring& folder) {
  long result = 0;
  try {
    result = client.Scan(settings, session.callback(), folder, nullptr);
  } catch (const std::exception& error) {
    return session.finishAfterException(error.what());
  }
  return session.finish(result);
}

int scanWith(const ScanOptions& options, Reporter& reporter, PageStore& pages,
             ProcessFolder& folder, StopRequests& stop) {
  const Family& family = *options.device.family;
  if (family.narrowPaths) pages.deliverInAscii(folder.path());
  DeviceChoice choice(options.device, folder);
  ScanSession session(reporter, pages, folder, choice, stop,
                      std::chrono::seconds(options.timeoutSeconds), family);
  CScanUSBClient& client = processClient(family.controller);
  client.InitExceptionStrings(nullptr);
  client.SetUsingTevraUI(options.dialogs ? 1 : 0);
  if (const auto outcome = choice.choose(client)) return session.finish(*outcome);
  const Device& device = choice.device();
  session.useDevice(device);
  client.InitScanConfigInfo("tvrscan", device.instanceId, L"tvrscan");
  const DeviceRanges ranges = family.tellsRanges ? askForRanges(client) : DeviceRanges{};
  if (family.tellsRanges) session.tell(settingsWithoutRange(options.settings, ranges));
  if (family.pace != nullptr) session.tell({askedFor(options.settings) + "; " + family.pace});
  if (family.takesTurns && anotherJobRuns()) session.waitForTurn();
  TevraScanUIData settings = family.jobSettings(options.settings, ranges);
  return runJob(session, client, settings, pages.wideDeliveryFolder());
}

}  // namespace

int runScan(const ScanOptions& options, StopRequests& stop) {
  Console console(options.quiet);
  Reporter reporter(console, options.json);
  try {
    openLog(options.logFile);
    PageStore pages(options.folder, options.name);
    ProcessFolder folder;
    tellNotes(console, options, pages);
    return scanWith(options, reporter, pages, folder, stop);
  } catch (const OutputError& error) {
    return reporter.end({ExitCode::kOutput, error.what(), "Choose another place.", "", {}});
  } catch (const std::exception& error) {
    return reporter.end({ExitCode::kFailed, error.what(), "", "", {}});
  }
}

}  // namespace tvrscn::cli
