// A page under the LowEnd scanner's lamp: its lines as the request wants them.
#ifndef TVRSCN_VIRTUAL_LOWEND_LOWEND_PAGE_H
#define TVRSCN_VIRTUAL_LOWEND_LOWEND_PAGE_H

#include <array>
#include <cstdint>

#include "virtual/common/codec.h"
#include "virtual/common/page_source.h"
#include "virtual/lowend/lowend_request.h"

namespace tvrscn::virtual_device {

using LevelTable = std::array<std::uint8_t, 256>;

// What becomes of each level of a channel. Darkness takes up to half of the way to black, below its
// default to white; contrast doubles the distance from mid grey at most, or takes all of it.
LevelTable levelTable(const LowEndRequest& request, const LowEndRange& darkness,
                      const LowEndRange& contrast);

// The page with that number in the job, from 1.
PageRequest pageRequestFor(const LowEndRequest& request, int page);
PictureShape pictureShapeFor(const LowEndRequest& request);

// The lines of a page, in as many channels as the band has. Both live as long as the source.
LineSource linesOf(const Page& page, const LevelTable& levels);

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_LOWEND_LOWEND_PAGE_H
