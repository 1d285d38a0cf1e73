// The sheet that lies on the scanner when nobody brought a page: everything on it is there to be
// measured or judged by eye.
#ifndef TVRSCN_VIRTUAL_COMMON_TEST_SHEET_H
#define TVRSCN_VIRTUAL_COMMON_TEST_SHEET_H

#include <memory>

#include "virtual/common/page_source.h"

namespace tvrscn::virtual_device {

// Drawn for the whole of the requested window, upright; request.upsideDown is the source's affair.
std::unique_ptr<Page> makeTestSheet(const PageRequest& request);

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_COMMON_TEST_SHEET_H
