// The records in requests as the QZ scanner reads them, each checked to its last byte. Nothing is
// what a record gives that this device would refuse.
#ifndef TVRSCN_VIRTUAL_QZ_QZ_REQUEST_H
#define TVRSCN_VIRTUAL_QZ_QZ_REQUEST_H

#include <optional>
#include <string>

#include "virtual/common/bytes.h"
#include "virtual/virtual_qz_scanner.h"

namespace tvrscn::virtual_device {

// Who reserves the unit.
struct QzOwner {
  std::string computer;
  std::string user;

  bool operator==(const QzOwner&) const = default;
};

// What a job wants of the feeder.
struct QzSelection {
  bool fromFeeder = false;
  bool onePage = false;
  bool twoSides = false;
  bool backsTurned = false;
};

struct QzWindow {
  int dotsPerInch = 0;
  int width = 0;   // pixels
  int height = 0;  // pixels
  bool gray = false;
  bool cleanBackground = false;
};

// Each takes the bytes behind the header. REQUIRES: as many as the command has.
std::optional<QzOwner> readQzReservation(const Bytes& payload);
std::optional<QzSelection> readQzSelection(const Bytes& payload, const QzScannerOptions& options);
std::optional<QzWindow> readQzWindow(const Bytes& payload, const QzScannerOptions& options,
                                     bool fromFeeder);

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_QZ_QZ_REQUEST_H
