#include "family_qz/qz_scan_job.h"

#include "tvrscn/scan_client.h"

using QZ = USB_QZ_Controller;

namespace {

constexpr int kFlatbed = 0;
constexpr int kFeeder = 1;

}  // namespace

bool QZScanJob::run() {
  if (!reserve()) return false;
  feeder_ = choosePaperSource();
  do {
    if (!scanPage()) return false;
  } while (controller_.m_documentPresent != 0 && feeder_);
  if (!close()) return false;
  ScanBaseClient::SendNotification(controller_.m_pCallback, NOTIFY_JOB_COMPLETE,
                                   TVR_NOTIF_PRIORITY_NORMAL, "");
  return true;
}

bool QZScanJob::reserve() {
  return send(&QZ::sendWakeupCommand) && send(&QZ::sendReserveUnitCommand) &&
         send(&QZ::sendTestUnitReadyCommand);
}

bool QZScanJob::choosePaperSource() {
  const auto& source = controller_.m_scanDataSource;
  if (source == nullptr) return true;
  source->SetPaperSource(controller_.m_documentPresent != 0 ? kFeeder : kFlatbed);
  return source->GetPaperSource() == kFeeder;
}

bool QZScanJob::scanPage() {
  return send(&QZ::sendIntializeCommand) && senseModePage(kQZSubDevicePage) &&
         senseModePage(kQZMeasurementUnitPage) && send(&QZ::sendModeSelectCommand) &&
         send(&QZ::sendSetWindow) && send(&QZ::sendScanCommand) &&
         send(&QZ::sendReadBlockHeaderCommand) && send(&QZ::sendReadCommand) &&
         send(&QZ::sendTestUnitReadyCommand);
}

bool QZScanJob::close() {
  return send(&QZ::sendIntializeCommand) && send(&QZ::sendReleaseCommand);
}

bool QZScanJob::send(Command command) {
  return accepted((controller_.*command)());
}

bool QZScanJob::senseModePage(unsigned char page) {
  controller_.m_pendingModePage = page;
  return accepted(controller_.sendModeSenseCommand(page));
}

bool QZScanJob::accepted(int result) const {
  return result == 0 && controller_.m_operationStatus == USBVENDOR_STATUS_GOOD;
}
