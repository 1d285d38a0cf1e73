// The exported function for store applications tells nothing of its outcome: what became of a
// command has to be put together from log lines, and from the files that a scan leaves.
#include <atomic>
#include <cstdint>
#include <exception>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "tvrscn/store_app.h"
#include "tvrscn/tevrautil/tevra_logger.h"

#include "commands.h"
#include "families.h"
#include "file_content.h"
#include "image_check.h"
#include "log_option.h"
#include "page_store.h"
#include "platform/files.h"
#include "qz_job_report.h"
#include "reporter.h"
#include "silence.h"
#include "store_settings.h"
#include "store_words.h"
#include "system.h"

namespace tvrscn::cli {

namespace fs = std::filesystem;

namespace {

constexpr int kScan = 0;

// The pages of a scan: the library numbers them from 1 in a new process, at the root of the current
// drive, and replaces what is there.
class StorePages {
 public:
  StorePages() {
    for (int number = 1; fs::exists(file(number)); ++number)
      before_[number] = stampOf(file(number));
  }

  static fs::path root() { return fs::current_path().root_path(); }
  static fs::path file(int number) { return root() / ("Image_" + std::to_string(number) + ".jpg"); }
  bool replaces() const { return !before_.empty(); }

  // Those that have come since.
  std::vector<StoredPage> written() const {
    std::vector<StoredPage> pages;
    for (int number = 1; fs::exists(file(number)); ++number) {
      const auto old = before_.find(number);
      const Stamp stamp = stampOf(file(number));
      if (old != before_.end() && old->second == stamp) break;
      pages.push_back({number, file(number), stamp.second});
    }
    return pages;
  }

 private:
  using Stamp = std::pair<fs::file_time_type, std::uintmax_t>;
  static Stamp stampOf(const fs::path& file) {
    std::error_code ignored;
    return {fs::last_write_time(file, ignored), fs::file_size(file, ignored)};
  }

  std::map<int, Stamp> before_;
};

// Listens to the library for as long as it lives, and looks after Ctrl-C and silence.
class StoreWatch {
 public:
  StoreWatch(Console& console, StopRequests& stop)
      : console_(console), stop_(stop), silence_(Silence::Clock::now()) {
    CTevraLogger::GetLogInstance()->SetLineListener(&StoreWatch::onLogLine, this);
    thread_ = std::thread([this] { watch(); });
  }
  StoreWatch(const StoreWatch&) = delete;
  StoreWatch& operator=(const StoreWatch&) = delete;
  ~StoreWatch() {
    CTevraLogger::GetLogInstance()->SetLineListener(nullptr, nullptr);
    over_ = true;
    thread_.join();
  }

  bool deviceIsMissing() const { return deviceIsMissing_; }
  const std::optional<Outcome>& cause() const { return cause_; }

 private:
  static void onLogLine(const wchar_t* line, void* context) {
    static_cast<StoreWatch*>(context)->onLine(plainText(line));
  }

  void onLine(const std::string& line) {
    const std::lock_guard lock(mutex_);
    silence_.onSign(Silence::Clock::now());
    if (trimmed(line) == "Unable to Create End Point from Store App!") deviceIsMissing_ = true;
    if (auto cause = qzCauseOf(line)) cause_ = std::move(cause);
  }

  void watch() {
    constexpr std::chrono::milliseconds kInterval{100};
    while (!over_) {
      if (stop_.wait(kInterval)) interrupt();
      const std::lock_guard lock(mutex_);
      const auto now = Silence::Clock::now();
      if (!over_ && silence_.reminderDue(now)) {
        console_.note("nothing has happened for " + std::to_string(silence_.length(now).count()) +
                      " s: still waiting for the device; Ctrl-C ends the command");
      }
    }
  }

  [[noreturn]] void interrupt() {
    console_.problem("interrupted: the device may go on, and its files may not be whole.");
    endProcess(static_cast<int>(ExitCode::kInterrupted));
  }

  Console& console_;
  StopRequests& stop_;
  std::mutex mutex_;  // guards what is below
  Silence silence_;
  bool deviceIsMissing_ = false;
  std::optional<Outcome> cause_;
  std::atomic<bool> over_{false};
  std::thread thread_;
};

std::string hardwareIdTemplate() {
  return hardwareIdOf(findFamily("qz")->placement().instanceId);
}

// What has to be put right in the settings file; nothing when it can be used.
std::optional<Outcome> settingsOutcome(const fs::path& file, const std::string& content) {
  std::error_code error;
  if (!fs::is_regular_file(file, error)) {
    return Outcome{ExitCode::kUsage,
                   "there is no settings file " + textOf(file),
                   "tvrscan store --print-template shows a line that it may hold.",
                   "",
                   {}};
  }
  std::vector<std::string> problems = settingsProblems(content);
  if (problems.empty()) return std::nullopt;
  const std::string first = problems.front();
  problems.erase(problems.begin());
  return Outcome{ExitCode::kUsage, textOf(file) + ": " + first,
                 "tvrscan store --print-template shows a good line.", "", problems};
}

void tellWhereTo(Console& console, const StorePages& pages) {
  console.note("pages go to " + textOf(StorePages::file(1)) + " and so on");
  if (pages.replaces()) console.note("the pages that are there already are replaced");
  if (!canCreateFilesIn(StorePages::root())) {
    console.note("this user cannot write to " + textOf(StorePages::root()) +
                 ": the pages will be lost");
  }
}

Outcome withoutPages() {
  const std::string root = textOf(StorePages::root());
  const std::string none = textOf(StorePages::file(1)) + " was not written: ";
  if (!canCreateFilesIn(StorePages::root())) {
    return {ExitCode::kOutput,
            none + "this user cannot write to " + root,
            "Get the right to write to " + root +
                ", or use tvrscan scan --family qz, which takes any folder.",
            "",
            {}};
  }
  return {ExitCode::kDeviceFailed,
          none + "the device delivered no page",
          "Look at the device's display, and check that its cable sits firmly; tvrscan scan "
          "--family qz tells more.",
          "",
          {}};
}

Outcome outcomeOf(const StoreOptions& options, const StoreWatch& watch,
                  const std::vector<StoredPage>& pages, const std::string& hardwareId) {
  if (watch.deviceIsMissing()) {
    return {ExitCode::kNoDevice,
            "the device " + hardwareId + " is not connected, or cannot be opened",
            "Connect it and switch it on; tvrscan devices lists the hardware ids for field 11 of "
            "the settings.",
            "",
            {}};
  }
  if (watch.cause()) return *watch.cause();
  if (*options.command == kScan && pages.empty()) return withoutPages();
  for (const StoredPage& page : pages) {
    if (isWholeJpeg(page.file)) continue;
    return {ExitCode::kDeviceFailed,
            textOf(page.file) + " is no whole picture",
            "Scan that page again.",
            "",
            {}};
  }
  return {};
}

int runCommand(const StoreOptions& options, Reporter& reporter, StopRequests& stop,
               const std::string& hardwareId) {
  Console& console = reporter.console();
  const bool scans = *options.command == kScan;
  const StorePages pages;
  if (scans) tellWhereTo(console, pages);
  console.note("a failure may show a message box without words; any answer will do");
  std::optional<Outcome> outcome;
  std::vector<StoredPage> written;
  {
    const StoreWatch watch(console, stop);
    scanFromStoreApp(*options.command);
    if (scans) written = pages.written();
    outcome = outcomeOf(options, watch, written, hardwareId);
  }
  for (const StoredPage& page : written)
    reporter.page(page);
  if (outcome->code != ExitCode::kDone) return reporter.end(*outcome, written);
  console.note(scans ? pageText(written.size()) +
                           " stored; whether the scan went to its end, the device alone can tell"
                     : "the command was sent; what the device made of it is not told");
  return static_cast<int>(ExitCode::kDone);
}

int storeWith(const StoreOptions& options, Reporter& reporter, StopRequests& stop) {
  Console& console = reporter.console();
  if (options.printTemplate) {
    console.data(settingsTemplate(hardwareIdTemplate()));
    return static_cast<int>(ExitCode::kDone);
  }
  const fs::path file = storeAppSettingsPath();
  const std::string content = fileContent(file);
  if (const auto outcome = settingsOutcome(file, content)) return reporter.end(*outcome);
  if (options.check) {
    console.note(textOf(file) + " is good");
    return static_cast<int>(ExitCode::kDone);
  }
  openLog(options.logFile);
  return runCommand(options, reporter, stop, settingsHardwareId(content));
}

}  // namespace

int runStore(const StoreOptions& options, StopRequests& stop) {
  Console console(options.quiet);
  Reporter reporter(console, false);
  try {
    return storeWith(options, reporter, stop);
  } catch (const OutputError& error) {
    return reporter.end({ExitCode::kOutput, error.what(), "Choose another place.", "", {}});
  } catch (const std::exception& error) {
    return reporter.end({ExitCode::kFailed, error.what(), "", "", {}});
  }
}

}  // namespace tvrscn::cli
