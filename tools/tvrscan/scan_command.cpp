#include <exception>
#include <fstream>

#include "tvrscn/scan_client.h"

#include "commands.h"
#include "scan_session.h"
#include "scan_settings.h"
#include "system.h"

namespace tvrscn::cli {

namespace fs = std::filesystem;

namespace {

void openLog(const fs::path& file) {
  if (file.empty()) return;
  if (!std::ofstream(file, std::ios::app)) {
    throw OutputError("the log file " + textOf(file) + " cannot be written");
  }
  setEnvironment("TVRSCN_LOG", textOf(fs::absolute(file)));
}

void tellNotes(Console& console, const ScanOptions& options, const PageStore& pages) {
  for (const std::string& note : settingsWithoutEffect(options.settings))
    console.note(note);
  if (pages.firstNumber() > 1) {
    console.note("the folder has such pages already; the first new one is " +
                 options.name.fileName(pages.firstNumber()));
  }
}

int scanWith(const ScanOptions& options, Reporter& reporter, PageStore& pages,
             ProcessFolder& folder, StopRequests& stop) {
  DeviceChoice choice(options.device, folder);
  ScanSession session(reporter, pages, folder, choice, stop,
                      std::chrono::seconds(options.timeoutSeconds));
  CScanUSBClient& client = processClient();
  client.InitExceptionStrings(nullptr);
  client.SetUsingTevraUI(options.dialogs ? 1 : 0);
  if (const auto outcome = choice.choose(client)) return session.finish(*outcome);
  const Device& device = choice.device();
  session.useDevice(device, options.device.family);
  client.InitScanConfigInfo("tvrscan", device.instanceId, L"tvrscan");
  TevraScanUIData settings = jobSettings(options.settings);
  return session.finish(
      client.Scan(settings, session.callback(), pages.wideDeliveryFolder(), nullptr));
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
