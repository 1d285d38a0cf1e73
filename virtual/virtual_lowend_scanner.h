// The LowEnd software scanner, as programs start it.
#ifndef TVRSCN_VIRTUAL_VIRTUAL_LOWEND_SCANNER_H
#define TVRSCN_VIRTUAL_VIRTUAL_LOWEND_SCANNER_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "virtual/running_scanner.h"

namespace tvrscn::virtual_device {

// A point of a LowEnd job at which the device sends: its answers, and the image stream.
enum class LowEndStep { kCapabilities, kStatus, kStart, kImage, kAbort };

// One way in which the device misbehaves. What the fields mean depends on the kind; the README of
// this folder lists every one with its spelling for people.
struct LowEndFault {
  enum class Kind {
    kBusy,           // the first `count` status documents say busy, not ready
    kNotReady,       // the first `value` status documents say neither busy nor ready
    kCoverOpen,      // status: `value` 0 the feeder's cover, 1 the flatbed's
    kPaperJam,       // status
    kNoSection,      // the status document lacks "adfStatus"
    kRefuse,         // start: the request is refused with `words`
    kNibble,         // start: the verdict's status byte is `value`
    kEmpty,          // no document at `step`, no image data; `count` times
    kNotJson,        // the document at `step` is none, `count` times
    kWrongCode,      // another operation code at `step`, `count` times
    kShortAnswer,    // the transfer at `step` is cut to `value` bytes, `count` times
    kStall,          // nothing at `step` until the device is stopped
    kFailedRead,     // the transfer at `step` fails, `count` times
    kDrop,           // the connection is dropped in the middle of page `page`
    kSlow,           // every transfer comes `value` milliseconds late
    kCancelled,      // the job's first record says that it was cancelled
    kTruncatedPage,  // the image data end in the middle of page `page`
    kJunk,           // transfers that are no image packets stand among them
    kSilentEnd,      // the last packet of a job never comes
  };
  Kind kind;
  LowEndStep step = LowEndStep::kStatus;
  int page = 1;   // from 1
  int count = 1;  // how often, where the kind says so; 0 or less is every time
  std::uint32_t value = 0;
  std::string words = {};
};

// Sizes in 1/`basicres` inch.
struct LowEndSizeLimits {
  int minWidth = 0;
  int minHeight = 0;
  int maxWidth = 0;
  int maxHeight = 0;
};

struct LowEndRange {
  int start = -100;
  int end = 100;
  int userDefault = 0;
};

enum class LowEndDocumentShape {
  kOneFile,      // black-and-white: all pages in one TIFF file
  kFilePerPage,  // a TIFF file each
};

// What the LowEnd scanner is, has loaded and does wrong.
struct LowEndScannerOptions {
  bool feeder = false;  // documents lie in the feeder, else on the flatbed
  int sheets = 3;       // in the feeder, at the start of each job
  // Page images in order (JPEG, PNG or TIFF), scaled to the requested size and started over when
  // they run out; without any, each page is the built-in test sheet with its number.
  std::vector<std::filesystem::path> pageFiles;
  int jpegQuality = 90;

  // What the device can do, and says of itself.
  bool feederInstalled = true;
  std::vector<int> feederMedia = {0, 2, 4, 5, 7, 10, 14, 15};
  std::vector<int> flatbedMedia = {0, 4, 5, 7, 10, 26};
  int basicres = 300;  // units an inch of the limits
  LowEndSizeLimits feederLimits = {1200, 1500, 2550, 4200};
  LowEndSizeLimits flatbedLimits = {300, 300, 2550, 3510};
  LowEndRange darkness;
  LowEndRange contrast;
  std::vector<int> resolutions = {75, 100, 150, 200, 300, 400, 600};
  int pollsUntilReady = 0;  // status documents that say neither busy nor ready, once in its life
  // Sent instead of the document, whatever it says; the device goes by the members above.
  std::string capabilityText;
  std::string statusText;

  // How the image stream is cut. Every job draws from the seed anew.
  std::uint64_t seed = 1;
  int leastPacket = 1;  // bytes behind the header
  int mostPacket = 8192;
  int blockDistance = 4096;   // mean number of image bytes between block markers; 0 for none
  int controlPackets = 16;    // one to so many packets; 0 for none
  bool jobDone = true;        // "JOBDONE" behind the image data
  bool splitAnswers = false;  // answers come in several transfers
  LowEndDocumentShape documentShape = LowEndDocumentShape::kOneFile;
  bool group4 = true;  // black-and-white pages are compressed

  std::vector<LowEndFault> faults;
};

// Adds the fault that text spells, such as "not-ready=3", "refuse=no paper" or "short@status=4".
// Returns an empty text, or what is wrong with it and what could stand there.
std::string addLowEndFault(LowEndScannerOptions& options, std::string_view text);

// All spellings with a line of explanation each, for a help page.
std::string lowEndFaultHelp();

// Where a LowEnd scanner is found unless told otherwise.
Placement lowEndPlacement();

// Throws as startHpScanner does.
std::unique_ptr<RunningScanner> startLowEndScanner(const LowEndScannerOptions& options,
                                                   const Placement& placement);

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_VIRTUAL_LOWEND_SCANNER_H
