// The LowEnd scanner's behaviour, over any link: one request in, one answer out, and behind the
// answer to a scan request that it takes the whole image stream of the job.
#ifndef TVRSCN_VIRTUAL_LOWEND_LOWEND_SCANNER_H
#define TVRSCN_VIRTUAL_LOWEND_LOWEND_SCANNER_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "virtual/common/bytes.h"
#include "virtual/common/device_server.h"
#include "virtual/common/link.h"
#include "virtual/common/page_source.h"
#include "virtual/common/tiff_writer.h"
#include "virtual/lowend/lowend_faults.h"
#include "virtual/lowend/lowend_protocol.h"
#include "virtual/lowend/lowend_request.h"
#include "virtual/lowend/lowend_stream.h"
#include "virtual/virtual_lowend_scanner.h"

namespace tvrscn::virtual_device {

class LowEndScanner final : public Device {
 public:
  // Throws std::runtime_error when an option is out of range or a page file cannot be read.
  explicit LowEndScanner(const LowEndScannerOptions& options);

  void serve(Link& link) override;

 private:
  struct Answer {
    LowEndStep step;
    LowEndCode code;
    std::uint8_t status = kLowEndGood;
    std::string document;
  };
  enum class Sent { kWhole, kDamaged, kHostGone };

  // Each of these answers one request and says whether the link still stands.
  bool handle(Link& link, const Bytes& request);
  bool start(Link& link, const Bytes& request);
  Answer verdictOn(const LowEndRequestReading& reading);
  std::string status();

  // Sends an answer through the faults of its step.
  Sent answer(Link& link, Answer answer);
  bool sendInPieces(Link& link, const Bytes& transfer) const;
  // Waits as long as the device is slow, and for ever where it stalls.
  bool waitAt(Link& link, LowEndStep step);

  // The image stream of a job.
  bool scan(Link& link, const LowEndRequest& request);
  bool sendPages(LowEndStream& stream, const LowEndRequest& request);
  bool sendPage(LowEndStream& stream, int page, Bytes data);
  bool sendPacket(Link& link, Bytes transfer);
  Bytes encodePage(const LowEndRequest& request, int page, TiffWriter& document) const;
  int pagesInJob(const LowEndRequest& request) const;

  LowEndScannerOptions options_;
  std::unique_ptr<PageSource> pages_;
  LowEndFaults faults_;
  int statusAnswers_ = 0;         // in its life
  bool dropsNextPacket_ = false;  // of the running job
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_LOWEND_LOWEND_SCANNER_H
