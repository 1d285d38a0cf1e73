// The flow of one LowEnd job on the caller's thread: features, status, the wait for a device that
// is not ready, and the start.
#ifndef TVRSCN_FAMILY_LOWEND_LOWEND_SCAN_JOB_H
#define TVRSCN_FAMILY_LOWEND_LOWEND_SCAN_JOB_H

#include "tvrscn/lowend_controller.h"

// Lives for one call of doScan. What the JSON library throws over a status document passes through.
class LowEndScanJob {
 public:
  explicit LowEndScanJob(USB_LowEnd_Controller& controller) : controller_(controller) {}

  // USB_SUCCESS when the worker has been asked for; any other result has been told to the caller.
  USBStatusErrors run();

 private:
  // What the device says of itself in its status document.
  struct DeviceState {
    bool busy = false;
    bool ready = false;
    bool flatbedCoverOpen = false;
    bool jamPresent = false;
    bool feederInstalled = false;
    bool feederCoverOpen = false;
    bool feederLoaded = true;  // holds for a device that does not say
  };

  // Gets the capabilities for the request. A device that tells none may scan all the same.
  void askFeatures();
  // USB_SUCCESS: go on, at once or after a wait.
  USBStatusErrors askStatus();
  USBStatusErrors judgeState();
  USBStatusErrors waitUntilReady();
  USBStatusErrors start();

  USB_LowEnd_Controller& controller_;
  DeviceState state_;
};

#endif  // TVRSCN_FAMILY_LOWEND_LOWEND_SCAN_JOB_H
