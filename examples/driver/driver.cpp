// A small scan driver, whole: what a TWAIN or WIA driver does with the library, with a console in
// the place of the application. docs/writing-a-driver.md explains each step.
//
//   driver HARDWARE_ID FOLDER
//
// Two threads. The job's thread is inside Scan for the length of the job, and the library calls
// back on it. The driver's own thread stays free for the application, and takes what it is told out
// of a queue.
#include <algorithm>
#include <cctype>
#include <condition_variable>
#include <cstdio>
#include <deque>
#include <exception>
#include <filesystem>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include <tvrscn/tvrscn_USBClient.h>

namespace {

namespace fs = std::filesystem;

// The driver's own states; a TWAIN driver has its numbered ones here.
enum class State { kWaiting, kTransferring, kDone, kBusy, kNeedsUser, kFailed, kLinkFailed };

const char* nameOf(State state) {
  switch (state) {
    case State::kWaiting:
      return "waiting for the device";
    case State::kTransferring:
      return "transferring";
    case State::kDone:
      return "done";
    case State::kBusy:
      return "the scanner is taken by another job";
    case State::kNeedsUser:
      return "the device needs its user";
    case State::kFailed:
      return "the job failed";
    case State::kLinkFailed:
      return "the device or the link to it failed";
  }
  return "";
}

bool isEnd(State state) {
  return state != State::kWaiting && state != State::kTransferring;
}

// What a notification makes of the state. Numbers that a later version may add change nothing.
State stateAfter(NotificationType type, State before) {
  switch (type) {
    case NOTIFY_TRANSFER_STARTED:
      return State::kTransferring;
    case NOTIFY_JOB_COMPLETE:
      return State::kDone;
    case NOTIFY_SCANNER_BUSY:
      return State::kBusy;
    case NOTIFY_JOB_ABORTED:
      return State::kNeedsUser;
    case NOTIFY_SCAN_FAILED:
      return State::kFailed;
    case NOTIFY_CONN_FAILURE:
      return State::kLinkFailed;
    case NOTIFY_IMAGE_READY:
    case NOTIFY_ERROR_DISPLAYED:
      break;
  }
  return before;
}

struct Event {
  State state;
  fs::path page;  // of a new page, else empty
};

TevraScanUIData jobSettings() {
  TevraScanUIData job;
  job.mediaSize = "ISO_A6SEF";
  job.pageWidth = 105;  // millimetres
  job.pageHeight = 148;
  job.sides = "OneSided";
  job.resolution = "100x100";
  job.colorMode = "FullColor";
  job.brightness = L"0";
  job.contrast = L"0";
  job.backgroundRemoval = L"Off";
  return job;
}

class Driver {
 public:
  // Pages arrive in folder, which is this job's own: the library numbers its files from 1 in each
  // process and replaces what it finds.
  explicit Driver(fs::path folder) : folder_(std::move(folder)) {
    client_.InitExceptionStrings(nullptr);
    client_.SetUsingTevraUI(0);  // failures are told by notification, not by message boxes
  }
  Driver(const Driver&) = delete;
  Driver& operator=(const Driver&) = delete;
  // Scan cannot be interrupted: the driver goes when the job is over.
  ~Driver() {
    if (job_.joinable()) job_.join();
  }

  // Asks before the device is opened, since opening it reports nothing.
  bool open(const std::string& hardwareId) {
    wchar_t enumerator[] = L"USB";
    std::string upper = hardwareId;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    if (client_.FindStatusEndPointFromPrinterPort(enumerator, upper, false) != 0) return false;
    client_.InitScanConfigInfo("example", hardwareId, L"example");
    return true;
  }

  void start() {
    job_ = std::thread([this] { run(); });
  }

  // Waits for the next thing to happen. After the event whose state is an end there are no more.
  Event next() {
    std::unique_lock<std::mutex> lock(mutex_);
    happened_.wait(lock, [this] { return !events_.empty(); });
    Event event = std::move(events_.front());
    events_.pop_front();
    return event;
  }

 private:
  // The job's thread.
  void run() {
    State end = State::kFailed;
    try {
      TevraScanUIData job = jobSettings();
      TVR_FP_CALLBACK callback = {&Driver::onNotification, this};
      const long result = client_.Scan(job, &callback, folder_.wstring(), nullptr);
      // A job that was refused fails without a notification.
      end = result == 0 ? State::kDone : isEnd(state_) ? state_ : State::kFailed;
    } catch (const std::exception& error) {
      std::fprintf(stderr, "settings that are no settings: %s\n", error.what());
    }
    put({end, {}});
  }

  // On the job's thread, from within Scan. The record is gone when this returns. No exception may
  // leave, the client must not be called from here, and what takes long holds up the device.
  static void onNotification(ScanNotification* notification, void* context) {
    auto& self = *static_cast<Driver*>(context);
    try {
      self.notice(*notification);
    } catch (const std::exception&) {
      self.state_ = State::kFailed;
    }
  }

  void notice(const ScanNotification& notification) {
    if (notification.type == NOTIFY_IMAGE_READY) {
      // Of the path, letters beyond ASCII did not survive; the name of the file has none.
      const std::string text = static_cast<const char*>(notification.text);
      put({state_, folder_ / text.substr(text.find_last_of("/\\") + 1)});
      return;
    }
    state_ = stateAfter(notification.type, state_);
    // The end is told when Scan has returned: only then may a new job start.
    if (!isEnd(state_)) put({state_, {}});
  }

  void put(Event event) {
    const std::lock_guard<std::mutex> lock(mutex_);
    events_.push_back(std::move(event));
    happened_.notify_one();
  }

  fs::path folder_;
  CScanUSBClient client_{CONTROLLER_HP};
  State state_ = State::kWaiting;  // of the job's thread alone, once it runs
  std::mutex mutex_;               // guards events_
  std::condition_variable happened_;
  std::deque<Event> events_;
  std::thread job_;
};

// A page that could not be saved, on a full disk for instance, is announced all the same.
bool isThere(const fs::path& page) {
  std::error_code error;
  return fs::file_size(page, error) > 0 && !error;
}

// A job can end well without a page, so pages are counted. Returns the exit code.
int follow(Driver& driver) {
  int pages = 0;
  std::printf("state: %s\n", nameOf(State::kWaiting));
  for (;;) {
    const Event event = driver.next();
    if (!event.page.empty()) {
      const bool stored = isThere(event.page);
      pages += stored ? 1 : 0;
      std::printf("%s: %s\n", stored ? "page" : "lost", event.page.filename().string().c_str());
    } else {
      std::printf("state: %s\n", nameOf(event.state));
      if (isEnd(event.state)) return event.state == State::kDone && pages > 0 ? 0 : 1;
    }
    std::fflush(stdout);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: driver HARDWARE_ID FOLDER\n");
    return 2;
  }
  try {
    const fs::path folder = fs::absolute(argv[2]);
    fs::create_directories(folder);
    Driver driver(folder);
    if (!driver.open(argv[1])) {
      std::fprintf(stderr, "there is no device %s; 'tvrscan devices' lists what there is\n",
                   argv[1]);
      return 3;
    }
    driver.start();
    return follow(driver);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "driver: %s\n", error.what());
    return 1;
  }
}
