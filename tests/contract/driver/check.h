// Checks of a program that has nothing but the installed package: no test framework. A check that
// fails is printed and counted; the program goes on.
#ifndef TVRSCN_TESTS_CONTRACT_DRIVER_CHECK_H
#define TVRSCN_TESTS_CONTRACT_DRIVER_CHECK_H

#include <exception>
#include <string>
#include <vector>

#include <tvrscn/tvrscn_USBClient.h>

void check(bool holds, const char* condition, const char* file, int line);

#define CHECK(condition) check((condition), #condition, __FILE__, __LINE__)

// Paths of this program are ASCII, as it is called.
std::wstring wide(const std::string& path);
std::string contentOf(const std::string& file);

// True when the action throws anything derived from std::exception: what libraries behind the
// exported ones throw has no type here.
template <typename Action>
bool throwsSomething(Action action) {
  try {
    action();
  } catch (const std::exception&) {
    return true;
  }
  return false;
}

// True when the action throws this very exception with this text.
template <typename Exception, typename Action>
bool throwsWith(const char* text, Action action) {
  try {
    action();
  } catch (const Exception& error) {
    return std::string(error.what()) == text;
  }
  return false;
}

// A callback record that keeps what it hears.
struct Listener {
  std::vector<NotificationType> types;
  std::string lastText;
  TVR_FP_CALLBACK record{&Listener::hear, this};

  Listener() = default;
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  static void hear(ScanNotification* notification, void* context) {
    auto* self = static_cast<Listener*>(context);
    self->types.push_back(notification->type);
    self->lastText = static_cast<const char*>(notification->text);
  }
};

using Heard = std::vector<NotificationType>;

// A device that no system has, and settings for a job.
extern const char* const kAbsentDevice;
TevraScanUIData smallJob();

// One function a group of classes; each calls every public operation once at least.
void checkLayout();
void checkClients(const std::string& folder);
void checkControllers();
void checkExceptions();
void checkSettingsSources(const std::string& folder);
void checkSiblings(const std::string& folder);
// Comes last: a job that an exception ends keeps the mutex for the life of the process.
void checkQZClient(const std::string& folder);

#endif  // TVRSCN_TESTS_CONTRACT_DRIVER_CHECK_H
