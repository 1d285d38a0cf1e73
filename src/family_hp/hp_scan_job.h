// The flow of one HP job: inquiry, reserve, set window, pages, abort and release.
#ifndef TVRSCN_FAMILY_HP_HP_SCAN_JOB_H
#define TVRSCN_FAMILY_HP_HP_SCAN_JOB_H

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "tvrscn/hp_controller.h"

// Lives for one job, on the thread of the job. A command whose transfer failed answers all zero,
// which reads as good; only inquiry and reserve look at the transfer itself.
class HPScanJob {
 public:
  explicit HPScanJob(USB_HP_Controller& controller) : controller_(controller) {}

  USBStatusErrors run();

 private:
  using Block = std::pair<std::shared_ptr<unsigned char>, unsigned long>;

  // What has been received of the page in hand.
  struct Page {
    std::vector<Block> blocks;  // in order of arrival
    std::uint32_t totalSize = 0;
    std::uint16_t totalHeight = 0;  // wraps, as the page's height does
    std::uint16_t width = 0;        // of the latest block
    bool endSeen = false;
  };

  // What the device wants after the object position command.
  enum class Position { kPage, kWait, kStop };

  // The first two steps; a value ends the job, with nothing to release.
  std::optional<USBStatusErrors> inquire();
  std::optional<USBStatusErrors> reserve();
  // True when pages may be read; otherwise result_ is that of the job.
  bool setWindow();
  void readPages();
  Position askPosition();
  Position checkCondition(HPPKUSBMessageData message);
  // False when the page had nothing usable, which is the end of the pages.
  bool readPage();
  void readBlocks(Page& page);
  // False when the block could not be had.
  bool readBlock(const HPPKUSBReadResponse& announced, Page& page);
  bool finishPage(Page& page);
  void close();

  void logStatus(const wchar_t* format, std::uint8_t statusCode);

  USB_HP_Controller& controller_;
  bool feeder_ = false;
  USBStatusErrors result_ = USB_SUCCESS;
  std::int32_t pages_ = 0;  // end blocks received in this job
};

#endif  // TVRSCN_FAMILY_HP_HP_SCAN_JOB_H
