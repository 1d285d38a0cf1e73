// The QZ scanner's behaviour, over any link: one request in, one reply out, the reply's data behind
// its header as a transfer of their own.
//
// A job is wake-up and reserve, then per page initialize, mode select, window, scan, block header
// and reads, and at its end release. Releasing puts the sheets back into the feeder, unless the job
// ended in a paper jam: then they lie as they are.
#ifndef TVRSCN_VIRTUAL_QZ_QZ_SCANNER_H
#define TVRSCN_VIRTUAL_QZ_QZ_SCANNER_H

#include <cstdint>
#include <memory>
#include <optional>
#include <random>

#include "virtual/common/bytes.h"
#include "virtual/common/device_server.h"
#include "virtual/common/link.h"
#include "virtual/common/page_source.h"
#include "virtual/qz/qz_faults.h"
#include "virtual/qz/qz_page_stream.h"
#include "virtual/qz/qz_protocol.h"
#include "virtual/qz/qz_request.h"
#include "virtual/qz/qz_sheets.h"
#include "virtual/virtual_qz_scanner.h"

namespace tvrscn::virtual_device {

class QzScanner final : public Device {
 public:
  // Throws std::runtime_error when an option is out of range or a page file cannot be read.
  explicit QzScanner(const QzScannerOptions& options);

  void serve(Link& link) override;

 private:
  // The sense code of a request that was not carried out.
  using Refusal = std::optional<std::uint32_t>;
  // What has been told about the page that is to come.
  enum class Setup { kNone, kInitialized, kSelected, kWindowSet };

  bool handle(Link& link, const Bytes& request);
  QzReply replyTo(const QzCommandForm& form, const Bytes& request);
  Refusal checkHeader(const QzCommandForm& form, const Bytes& request) const;

  // Each of these carries out one request and fills in its reply, or says what is wrong.
  Refusal carryOutOrFault(const QzCommandForm& form, const Bytes& request, QzReply& reply);
  Refusal carryOut(QzStep step, const Bytes& payload, QzReply& reply);
  Refusal reserve(const Bytes& payload, QzReply& reply);
  Refusal initialize(const Bytes& payload);
  Refusal modeSense(const Bytes& payload, QzReply& reply) const;
  Refusal modeSelect(const Bytes& payload);
  Refusal window(const Bytes& payload);
  Refusal scan();
  Refusal blockHeader(QzReply& reply);
  Refusal read(const Bytes& payload, QzReply& reply);
  // What ends a page in its middle.
  Refusal interruption();
  Refusal release();

  void endReservation();
  bool isTransferring() const { return stream_ && !stream_->hasEnded(); }
  std::uint8_t scannerStatus(bool isRefused) const;
  Bytes encodePage(const QzSheets::Side& side) const;

  // Sends a reply through the faults of its step.
  bool send(Link& link, QzStep step, QzReply reply);
  bool sendTransfers(Link& link, QzStep step, Bytes header, const Bytes& data);
  void spoil(QzStep step, QzReply& reply);

  QzScannerOptions options_;
  std::unique_ptr<PageSource> pages_;
  QzFaults faults_;
  QzSheets sheets_;
  std::mt19937_64 random_;

  bool isAwake_ = false;
  std::optional<QzOwner> owner_;
  std::uint8_t client_ = 0;    // the last one assigned
  bool hasJammed_ = false;     // in this job
  bool toldOfCancel_ = false;  // by the last reply

  Setup setup_ = Setup::kNone;
  QzSelection selection_;
  QzWindow window_;
  int page_ = 0;                        // under the lamp
  std::optional<QzPageStream> stream_;  // of it, up to the next initialize
  bool isAnnounced_ = false;            // its running block
  bool dropsNow_ = false;               // within the data of the running reply
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_QZ_QZ_SCANNER_H
