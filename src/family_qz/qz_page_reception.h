// The pages of a QZ device: READ replies gathered into one buffer, and the buffer made a file.
#ifndef TVRSCN_FAMILY_QZ_QZ_PAGE_RECEPTION_H
#define TVRSCN_FAMILY_QZ_QZ_PAGE_RECEPTION_H

#include <string>

#include "tvrscn/qz_controller.h"

// A door to the controller's page in reception; keeps nothing itself.
class QZPageReception {
 public:
  explicit QZPageReception(USB_QZ_Controller& controller) : controller_(controller) {}

  // Acts on a READ reply whose data lie in buffer: goes on reading, ends the chain, or ends the
  // page. 0, USB_ERR_READ (15002), or 1 and 1018 for a page that could not be processed.
  int onReply(const USBVendorPacketHeader& header, char* buffer);

 private:
  int finishPage();
  void writeFile(const std::wstring& path);
  int process(std::wstring path);
  void announce(const std::string& name);
  std::string fileName();

  USB_QZ_Controller& controller_;
};

#endif  // TVRSCN_FAMILY_QZ_QZ_PAGE_RECEPTION_H
