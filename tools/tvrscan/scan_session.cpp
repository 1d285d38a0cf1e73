#include "scan_session.h"

#include <algorithm>
#include <cstddef>
#include <exception>

#include "tvrscn/tevrautil/tevra_logger.h"

namespace tvrscn::cli {
namespace {

constexpr std::chrono::milliseconds kWatchInterval{100};
constexpr std::chrono::milliseconds kProgressInterval{200};
// How long Ctrl-C waits for a line that is being printed to somebody who doesn't read.
constexpr std::chrono::seconds kPatience{2};

}  // namespace

ScanSession::ScanSession(Reporter& reporter, PageStore& pages, ProcessFolder& folder,
                         DeviceChoice& choice, StopRequests& stop, std::chrono::seconds timeout,
                         const Family& family)
    : reporter_(reporter),
      pages_(pages),
      folder_(folder),
      choice_(choice),
      stop_(stop),
      family_(family),
      timeout_(timeout),
      callback_{&ScanSession::onNotification, this},
      report_(family.makeReport(pages.deliveryFolder())),
      silence_(Silence::Clock::now()),
      lastProgress_(Silence::Clock::now()) {
  CTevraLogger::GetLogInstance()->SetLineListener(&ScanSession::onLogLine, this);
  watchThread_ = std::thread([this] { watch(); });
}

ScanSession::~ScanSession() {
  CTevraLogger::GetLogInstance()->SetLineListener(nullptr, nullptr);
  over_ = true;
  if (watchThread_.joinable()) watchThread_.join();
}

void ScanSession::onLogLine(const wchar_t* line, void* context) {
  static_cast<ScanSession*>(context)->onLine(line);
}

void ScanSession::onNotification(ScanNotification* notification, void* context) {
  auto* session = static_cast<ScanSession*>(context);
  if (notification->type == NOTIFY_IMAGE_READY) {
    const char* text = static_cast<const char*>(notification->text);
    const char* end = std::find(text, text + kScanNotificationTextSize, '\0');
    session->onPage(std::string(text, end));
  }
  session->onType(notification->type);
}

void ScanSession::onType(NotificationType type) {
  const std::lock_guard lock(mutex_);
  silence_.onSign(Silence::Clock::now());
  report_->onNotification(type);
  heard_.notify_all();
}

void ScanSession::onLine(const wchar_t* line) {
  const std::lock_guard lock(mutex_);
  if (report_->onLogLine(plainText(line))) silence_.onSign(Silence::Clock::now());
}

void ScanSession::onPage(const std::string& path) {
  const std::lock_guard lock(mutex_);
  silence_.onSign(Silence::Clock::now());
  try {
    reporter_.page(pages_.store(path));
    report_->onPageStored();
  } catch (const UnusablePage& failure) {
    report_->onFileUnusable(failure.what(), failure.hadRoom);
    reporter_.console().problem(failure.what());
  } catch (const std::exception& failure) {
    report_->onPageLost(failure.what(), kRoomRemedy);
    reporter_.console().problem(failure.what());
  }
}

void ScanSession::watch() {
  while (!over_) {
    if (stop_.wait(kWatchInterval)) interrupt();
    const std::lock_guard lock(mutex_);
    if (!over_) tick();
  }
}

void ScanSession::tick() {
  const auto now = Silence::Clock::now();
  if (now - lastProgress_ >= kProgressInterval) {
    lastProgress_ = now;
    showProgress();
  }
  checkSilence();
}

void ScanSession::showProgress() {
  const std::size_t stored = pages_.pages().size();
  std::string text = pageText(stored) + ", " + byteText(pages_.bytesStored()) + " stored, " +
                     timeText(reporter_.elapsed());
  const std::string activity = report_->activity();
  if (!activity.empty()) text += "; " + activity;
  reporter_.console().progress(text);
}

void ScanSession::checkSilence() {
  const auto now = Silence::Clock::now();
  const Silence::Seconds length = silence_.length(now);
  const std::string waiting = "waiting for " + report_->waitingFor();
  if (timeout_.count() > 0 && length >= timeout_) {
    endProcessWith(
        {ExitCode::kTimeout,
         "nothing has happened for " + std::to_string(timeout_.count()) + " s on " + deviceName_ +
             ", while " + waiting,
         "Check the device, its display and its cable; a longer --timeout helps a slow one.",
         "",
         {}});
  }
  if (silence_.reminderDue(now)) {
    reporter_.console().note("nothing has happened for " + std::to_string(length.count()) +
                             " s on " + deviceName_ + ": still " + waiting +
                             "; Ctrl-C ends the scan");
  }
}

// The lock is kept to the very end: the job's thread can store and print nothing any more.
void ScanSession::endProcessWith(const Outcome& outcome) {
  const int exitCode = reporter_.end(outcome, pages_.pages());
  pages_.cleanUp();
  choice_.endScanner();
  folder_.cleanUp();
  endProcess(exitCode);
}

void ScanSession::interrupt() {
  const std::unique_lock lock(mutex_, kPatience);
  if (!lock.owns_lock()) endProcess(static_cast<int>(ExitCode::kInterrupted));
  endProcessWith({ExitCode::kInterrupted,
                  "the scan was interrupted while waiting for " + report_->waitingFor(),
                  "",
                  "",
                  {}});
}

void ScanSession::useDevice(const Device& device) {
  const std::lock_guard lock(mutex_);
  deviceName_ = device.hardwareId;
  reporter_.device(device, family_.word);
}

void ScanSession::waitForTurn() {
  const std::lock_guard lock(mutex_);
  report_->onTurnTaken();
  reporter_.console().note("another program is scanning; this scan waits for its turn");
}

void ScanSession::tell(const std::vector<std::string>& notes) {
  const std::lock_guard lock(mutex_);
  for (const std::string& note : notes)
    reporter_.console().note(note);
}

// The worker of a job that goes on tells its end by a notification, and then clears away a few
// words of its own; nothing tells when it has. Nobody has to know: the session's lock is the last
// thing of this program that the callback touches, the controller stays to the end of the process,
// and no other job is started on it.
int ScanSession::finish(long scanResult) {
  std::unique_lock lock(mutex_);
  report_->onScanReturned(scanResult);
  if (scanResult == 0) heard_.wait(lock, [this] { return report_->isOver(); });
  over_ = true;
  return reporter_.end(report_->outcome(scanResult), pages_.pages());
}

int ScanSession::finishAfterException(const std::string& what) {
  const std::lock_guard lock(mutex_);
  over_ = true;
  report_->onScanThrew(what);
  return reporter_.end(report_->outcome(1), pages_.pages());
}

int ScanSession::finish(const Outcome& outcome) {
  const std::lock_guard lock(mutex_);
  over_ = true;
  return reporter_.end(outcome, pages_.pages());
}

}  // namespace tvrscn::cli
