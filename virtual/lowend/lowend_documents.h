// The JSON documents that the LowEnd scanner sends.
#ifndef TVRSCN_VIRTUAL_LOWEND_LOWEND_DOCUMENTS_H
#define TVRSCN_VIRTUAL_LOWEND_LOWEND_DOCUMENTS_H

#include <string>

#include "virtual/virtual_lowend_scanner.h"

namespace tvrscn::virtual_device {

// What the scanner is up to.
struct LowEndState {
  bool busy = false;
  bool ready = true;
  bool flatbedCoverOpen = false;
  bool feederInstalled = true;
  bool feederCoverOpen = false;
  bool paperJam = false;
  bool paperLoaded = false;
};

std::string capabilityDocument(const LowEndScannerOptions& options);
std::string statusDocument(const LowEndState& state, bool withFeederSection);

// The answer to a scan request that is taken, and to one that is not, with the reason.
std::string acceptance();
std::string refusal(const std::string& message);

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_LOWEND_LOWEND_DOCUMENTS_H
