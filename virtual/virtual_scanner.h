// The HP software scanner, as programs start it: the device's side of the wire, served on an
// endpoint of this system and registered where the device search looks.
#ifndef TVRSCN_VIRTUAL_VIRTUAL_SCANNER_H
#define TVRSCN_VIRTUAL_VIRTUAL_SCANNER_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "virtual/running_scanner.h"

namespace tvrscn::virtual_device {

// A point of an HP job at which the device answers.
enum class HpStep { kInquiry, kReserve, kWindow, kPosition, kRead, kReadImage, kAbort, kRelease };

// One way in which the device misbehaves. What the fields mean depends on the kind; the README of
// this folder lists every one with its spelling for people.
struct HpFault {
  enum class Kind {
    kBusy,        // status 8 to the first `count` answers at `step`
    kStatus,      // status `value` to the first `count` answers at `step`
    kMessage,     // check condition with message word `value` at `step` (reserve, window, position)
    kBeforePage,  // object position of page `page` answers with message word `value`
    kCancelled,   // object position of page `page` answers status 4
    kShortAnswer,   // the answer at `step` is cut to `value` bytes, `count` times
    kStall,         // no answer at `step` until the device is stopped
    kFailedRead,    // the transfer at `step` fails, `count` times
    kEndBlockLost,  // page `page` never gets its end block: the read answers status 4 instead
    kDrop,          // the connection is dropped in the middle of a block of page `page`
    kSlow,          // every answer comes `value` milliseconds late
  };
  Kind kind;
  HpStep step = HpStep::kInquiry;
  int page = 1;   // from 1
  int count = 1;  // how often, where the kind says so
  std::uint32_t value = 0;
};

// What the HP scanner is, has loaded and does wrong.
struct HpScannerOptions {
  bool feeder = false;  // documents lie in the feeder, else on the flatbed
  int sheets = 3;       // in the feeder, at the start of each job
  // Page images in order (JPEG, PNG or TIFF), scaled to the window and started over when they run
  // out; without any, each page is the built-in test sheet with its number.
  std::vector<std::filesystem::path> pageFiles;
  int stripLines = 128;  // lines in a block
  int jpegQuality = 90;
  std::vector<HpFault> faults;
};

// Adds the fault that text spells, such as "busy@position=2", "paper-jam=3" or
// "message@reserve=0x40". Returns an empty text, or what is wrong with it and what could stand
// there.
std::string addHpFault(HpScannerOptions& options, std::string_view text);

// All spellings with a line of explanation each, for a help page.
std::string hpFaultHelp();

// Throws std::runtime_error, with a text that names the thing and the remedy, when a page file
// cannot be read or the endpoint cannot be made.
std::unique_ptr<RunningScanner> startHpScanner(const HpScannerOptions& options,
                                               const Placement& placement);

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_VIRTUAL_SCANNER_H
