// Jobs of a QZ device step by step: what tests of whole jobs, of their failures and of single
// commands share.
#ifndef TVRSCN_TESTS_UNIT_QZ_JOB_SUPPORT_H
#define TVRSCN_TESTS_UNIT_QZ_JOB_SUPPORT_H

#include <cstddef>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "tests/support/qz_test.h"

namespace tvrscn::test {

inline constexpr int kRetryAnswer = 4;
inline constexpr int kCancelAnswer = 2;

inline const std::string kJamDialog = "Dialog [PaperJamTitle] PaperJam 0x40005";
inline const std::string kDeviceErrorDialog = "Dialog [Title] DeviceError 0x40000";
inline const std::string kBusyDialog = "Dialog [Title] ScannerBusy 0x40000";
inline const std::string kCancelledDialog = "Dialog [Title] JobCancelled 0x40000";
inline const std::string kCommDialog = "Dialog [CommFailureTitle] CommFailure 0x40000";

inline std::string zeros(int count) {
  std::string text;
  for (int i = 0; i < count; ++i)
    text += " 00";
  return text;
}

inline const std::string kReserveBytes = "00 16 00 00 00 00 01 10" + zeros(4) + " 55 54 46 2D 38" +
                                         zeros(29) + " 63 6F 6D 70 75 74 65 72" + zeros(26) +
                                         " 75 73 65 72" + zeros(30 + 166);
inline const std::string kInitializeBytes = "05 07 00 00 00 00 00 04 00 00 00 00";
inline const std::string kWindowBytes = "05 24 00 00 00 00 00 30 00 00 01 2C 01 2C" + zeros(10) +
                                        " 00 00 08 34 00 00 0B 9A 00 00 20 08 10 01" + zeros(10) +
                                        " 00 00 08 34 00 00 0B 9A";
inline const std::string kReadBytes = "05 28 00 00 00 00 00 04 00 04 00 00";

// One step of a job and its good reply.
struct Step {
  const char* name;
  unsigned command;
  std::string_view payload;
  std::string_view data = "";
  unsigned state = 0;
};

inline constexpr Step kFlatbedSteps[] = {
    {"wake-up", kWakeup, ""},
    {"RESERVE UNIT", kReserve, QZDialogue::kReservation},
    {"TEST UNIT READY", kTestUnitReady, ""},
    {"INITIALIZE", kInitialize, "00*4"},
    {"MODE SENSE of the limits", kModeSense, "20 00*3", QZDialogue::kLimits},
    {"MODE SENSE of the units", kModeSense, "03 00*3", QZDialogue::kUnits},
    {"MODE SELECT", kModeSelect, QZDialogue::kFlatbedSelect},
    {"SET WINDOW", kSetWindow, QZDialogue::kWindow},
    {"SCAN", kScan, ""},
    {"READ BLOCK HEADER", kReadBlockHeader, "", "00*4 00 04 00 00"},
    {"READ", kRead, "00 04 00 00", "70 71 72", 3},
    {"TEST UNIT READY behind the page", kTestUnitReady, ""},
    {"INITIALIZE at the end", kInitialize, "00*4"},
    {"RELEASE UNIT", kRelease, ""},
};
inline constexpr std::size_t kStepCount = std::size(kFlatbedSteps);

inline bool isCleanUp(unsigned command) {
  return command == kInitialize || command == kRelease;
}
inline bool isBeforeReservation(unsigned command) {
  return command == kWakeup || command == kReserve;
}

class QZJob : public QZTest {
 protected:
  // The first steps of a flatbed job go well.
  void play(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      const Step& step = kFlatbedSteps[i];
      device.request(step.command, step.payload).reply(step.command, 0, step.state, step.data);
    }
  }
  void request(const Step& step) { device.request(step.command, step.payload); }

  // What callers and users are told, without the pages.
  Lines told() const {
    Lines lines;
    for (const std::string& line : platform.calls({Kind::kDialog, Kind::kNotification})) {
      if (!line.starts_with("Notify 1004") && !line.starts_with("Notify 1005"))
        lines.push_back(line);
    }
    return lines;
  }
  Lines writes() const {
    Lines lines;
    for (const std::string& line : platform.calls({Kind::kDevice})) {
      if (line.starts_with("Write ")) lines.push_back(line);
    }
    return lines;
  }
  Lines types() const {
    Lines lines;
    for (const std::string& notification : platform.notifications())
      lines.push_back(notification.substr(0, 4));
    return lines;
  }
  std::string contentOfLastPage() const {
    for (Lines all = platform.notifications(); !all.empty(); all.pop_back()) {
      if (all.back().starts_with("1005 ")) return hex(readFile(all.back().substr(5)));
    }
    return "no page";
  }

  // A job that fails and is followed by nothing that the script does not have.
  void expectFailure(const Lines& expected) {
    EXPECT_EQ(scan(), 1);
    EXPECT_EQ(told(), expected);
    EXPECT_EQ(device.problems(), Lines{});
    EXPECT_EQ(platform.calls({Kind::kMutex}),
              (Lines{"XMutex MutexUSB", "WaitWithRetry 100 100", "~XMutex held"}));
    EXPECT_EQ(BasePeer::mutex(controller), nullptr);
    forget();
  }
  // As if the controller had never seen a device.
  void forget() {
    device.forget();
    platform.forgetCalls();
    BasePeer::reservedClientID(controller) = 0;
  }

  // Every step in turn goes wrong as `arrange` says; `check` looks at the job.
  void atEachStep(const std::function<void(const Step&)>& arrange,
                  const std::function<void(const Step&)>& check) {
    for (std::size_t i = 0; i < kStepCount; ++i) {
      SCOPED_TRACE(kFlatbedSteps[i].name);
      play(i);
      arrange(kFlatbedSteps[i]);
      check(kFlatbedSteps[i]);
      if (HasFailure()) return;
    }
  }

  // The clean-up's own request; a job that has reserved nothing has no client id to show.
  void expectRelease(const Step& failed) {
    if (failed.command == kWakeup) {
      device.expect("00 17 00*6");
      device.reply(kRelease);
    } else {
      device.release();
    }
  }
  void expectCancelSequence() { device.initializeCancelled().release(); }
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_UNIT_QZ_JOB_SUPPORT_H
