// The HP scanner's behaviour: one command in, one answer out, over any link.
//
// A job is reserve, window, then per page object position and pairs of read and read image, and at
// its end abort and release. Reserving puts the sheets back into the feeder.
#ifndef TVRSCN_VIRTUAL_HP_HP_SCANNER_H
#define TVRSCN_VIRTUAL_HP_HP_SCANNER_H

#include <cstdint>
#include <memory>
#include <optional>

#include "virtual/common/bytes.h"
#include "virtual/common/device_server.h"
#include "virtual/common/link.h"
#include "virtual/common/page_source.h"
#include "virtual/hp/hp_faults.h"
#include "virtual/hp/hp_protocol.h"
#include "virtual/hp/hp_window.h"
#include "virtual/virtual_scanner.h"

namespace tvrscn::virtual_device {

class HpScanner final : public Device {
 public:
  // Throws std::runtime_error when an option is out of range or a page file cannot be read.
  explicit HpScanner(const HpScannerOptions& options);

  void serve(Link& link) override;

 private:
  struct Block {
    HpBlock type = kHpHeaderBlock;
    int lines = 0;
    Bytes jpeg;
  };

  // Each of these answers one command and says whether the link still stands.
  bool handle(Link& link, const Bytes& command);
  bool dispatch(Link& link, HpCode code, const Bytes& command);
  bool answerMalformed(Link& link, const Bytes& command);
  bool inquiry(Link& link);
  bool reserve(Link& link);
  bool window(Link& link, const Bytes& request);
  bool position(Link& link);
  bool read(Link& link);
  bool readImage(Link& link);
  bool endJob(Link& link, HpStep step);

  // Sends an answer through the faults of its step.
  bool answer(Link& link, HpStep step, Bytes bytes);
  // Like answer, with the status that a fault asks for, if any.
  bool answerOrRefuse(Link& link, HpStep step, Bytes bytes);

  bool isFeederJob() const;
  int pagesInJob() const;
  void loadPage();
  void dropPage();
  void makeBlock();

  HpScannerOptions options_;
  std::unique_ptr<PageSource> pages_;
  HpFaults faults_;

  bool reserved_ = false;
  std::optional<HpWindow> window_;
  int pagesTaken_ = 0;          // of this job, the current one included
  std::unique_ptr<Page> page_;  // under the lamp
  int nextLine_ = 0;            // of it, the first that no block has brought yet
  std::optional<Block> block_;  // announced, or about to be, and not fetched yet
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_HP_HP_SCANNER_H
