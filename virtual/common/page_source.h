// Where the sheets under the scanner's lamp come from. A source hands out one page after another;
// a page is rendered band by band, so that a large page never stands in memory as a whole.
#ifndef TVRSCN_VIRTUAL_COMMON_PAGE_SOURCE_H
#define TVRSCN_VIRTUAL_COMMON_PAGE_SOURCE_H

#include <filesystem>
#include <memory>
#include <vector>

#include "virtual/common/raster.h"

namespace tvrscn::virtual_device {

// The page a job asks for.
struct PageRequest {
  int page = 1;   // in this job, from 1
  int sheet = 1;  // in this job, from 1
  bool backSide = false;
  bool upsideDown = false;
  bool fromFeeder = false;
  int width = 0;   // pixels
  int height = 0;  // pixels
  int dotsPerInch = 300;
  bool gray = false;             // for the page's own legend; pages are always rendered in colour
  bool cleanBackground = false;  // the paper's tint goes to white
};

class Page {
 public:
  Page() = default;
  Page(const Page&) = delete;
  Page& operator=(const Page&) = delete;
  virtual ~Page() = default;

  // Fills band, which has the page's width and three channels, with the lines from firstLine on.
  // REQUIRES: the band lies inside the page.
  virtual void render(int firstLine, Raster& band) const = 0;
};

class PageSource {
 public:
  PageSource() = default;
  PageSource(const PageSource&) = delete;
  PageSource& operator=(const PageSource&) = delete;
  virtual ~PageSource() = default;

  // The page lives no longer than its source.
  virtual std::unique_ptr<Page> page(const PageRequest& request) const = 0;
};

// The images in files, in turn and over again, or test sheets when there are none. Loads the files
// at once; throws std::runtime_error when one cannot be read.
std::unique_ptr<PageSource> makePageSource(const std::vector<std::filesystem::path>& files);

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_COMMON_PAGE_SOURCE_H
