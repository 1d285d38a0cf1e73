// The sequence of one QZ scan: wake-up, reservation, a pass for each page, release.
#ifndef TVRSCN_FAMILY_QZ_QZ_SCAN_JOB_H
#define TVRSCN_FAMILY_QZ_QZ_SCAN_JOB_H

#include "tvrscn/qz_controller.h"

// Each step says whether the device accepted it; the first that it did not ends the sequence.
class QZScanJob {
 public:
  explicit QZScanJob(USB_QZ_Controller& controller) : controller_(controller) {}

  bool run();

 private:
  using Command = int (USB_QZ_Controller::*)();

  bool reserve();
  bool scanPage();
  bool close();
  // Which way the paper goes is settled once, by the device's document sensor.
  bool choosePaperSource();

  bool send(Command command);
  bool senseModePage(unsigned char page);
  bool accepted(int result) const;

  USB_QZ_Controller& controller_;
  bool feeder_ = true;
};

#endif  // TVRSCN_FAMILY_QZ_QZ_SCAN_JOB_H
