// The QZ software scanner, as programs start it.
#ifndef TVRSCN_VIRTUAL_VIRTUAL_QZ_SCANNER_H
#define TVRSCN_VIRTUAL_VIRTUAL_QZ_SCANNER_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "virtual/running_scanner.h"

namespace tvrscn::virtual_device {

// The commands of a QZ scanner. Each has a reply.
enum class QzStep {
  kWakeUp,
  kReserve,
  kReady,
  kInitialize,
  kInquiry,
  kModeSense,
  kModeSelect,
  kWindow,
  kScan,
  kBlockHeader,
  kRead,
  kRelease,
};

// One way in which the device misbehaves. What the fields mean depends on the kind; the README of
// this folder lists every one with its spelling for people.
struct QzFault {
  enum class Kind {
    kRefuse,        // the request at `step` is not carried out: operation status `value`
    kSense,         // nor here: check condition with the sense code `value`
    kStatus,        // the reply at `step` has operation status `value`, whatever else is in it
    kState,         // the reply at `step` has scanner state `value`
    kFlags,         // the reply at `step` has the upper four bits of `value` beside its state
    kCancelled,     // sense 060000 in the middle of page `page`
    kPaperJam,      // sense 025300 in the middle of page `page`
    kNoPaper,       // the feeder is found empty before page `page`
    kBlockEnd,      // page `page` comes in two blocks
    kFewer,         // the reply at `step` announces and brings `value` bytes of data at most
    kShortAnswer,   // the reply at `step` ends after `value` bytes
    kHugeLength,    // the reply at `step` announces more data than there can be
    kWrongCommand,  // the reply at `step` is one to command `value`
    kStall,         // no reply at `step` until the device is stopped
    kFailedRead,    // the transfer of the reply at `step` fails
    kDrop,          // the connection is dropped in the middle of page `page`
    kSlow,          // every reply comes `value` milliseconds late
  };
  Kind kind;
  QzStep step = QzStep::kRead;
  int page = 1;   // from 1
  int count = 1;  // so many replies at `step`; 0 or less is every one
  std::uint32_t value = 0;
  int after = 0;  // so many replies at `step` come first

  bool operator==(const QzFault&) const = default;
};

// Tenths of a millimetre.
struct QzSizeLimits {
  int maxWidth = 0;
  int maxLength = 0;
};

// Dots per inch, across and down.
struct QzResolutionLimits {
  int minX = 75;
  int minY = 75;
  int maxX = 600;
  int maxY = 600;
};

// What the QZ scanner is, has loaded and does wrong.
struct QzScannerOptions {
  bool feeder = false;  // documents lie in the feeder, else on the flatbed alone
  int sheets = 3;       // in the feeder, at the start of each job
  // Page images in order (JPEG, PNG or TIFF), scaled to the window and started over when they run
  // out; without any, each page is the built-in test sheet with its number.
  std::vector<std::filesystem::path> pageFiles;
  int jpegQuality = 90;

  // What the device can do, and says of itself in its mode page.
  std::uint8_t feederOptions = 0x21;  // bit 5 and one of 0 and 1: pages can be asked of the feeder
  std::uint8_t duplexOptions = 0x10;  // bit 4 or 5: two sides
  QzSizeLimits flatbedLimits = {2160, 2970};
  QzSizeLimits feederLimits = {2160, 3560};
  QzResolutionLimits resolutions;

  // How a page is cut into replies. Every job draws from the seed anew.
  std::uint64_t seed = 1;
  int leastReply = 262144;  // bytes
  int mostReply = 262144;
  int pageReplies = 0;    // replies a page, all of about one size; 0: by the sizes above
  int emptyReplies = 0;   // one reply without data to so many others; 0 for none
  bool emptyEnd = false;  // the reply that ends a page has no data

  std::vector<QzFault> faults;
};

// Adds the fault that text spells, such as "busy@scan=2", "sense@read=025300*1" or "block-end=2".
// Returns an empty text, or what is wrong with it and what could stand there.
std::string addQzFault(QzScannerOptions& options, std::string_view text);

// All spellings with a line of explanation each, for a help page.
std::string qzFaultHelp();

// Where a QZ scanner is found unless told otherwise.
Placement qzPlacement();

// Throws as startHpScanner does.
std::unique_ptr<RunningScanner> startQzScanner(const QzScannerOptions& options,
                                               const Placement& placement);

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_VIRTUAL_QZ_SCANNER_H
