// Every step first finds out what the device would do, then lets the faults have their say, so that
// the same faults work at every step. Page and block do not move on while the answer is a refusal.
#include "virtual/hp/hp_scanner.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>

#include "virtual/common/codec.h"
#include "virtual/common/raster.h"

namespace tvrscn::virtual_device {
namespace {

constexpr std::size_t kCodeAt = 2;
constexpr std::size_t kFirstArgumentAt = 3;
constexpr std::uint8_t kExtendedArgument = 0xFB;
constexpr int kMostStripLines = 65500;  // the tallest JPEG
constexpr int kMostSheets = 9999;

// What a command looks like in full: its fourth byte, and only zeros behind it. The window request
// is the exception; its bytes are judged one by one.
struct CommandForm {
  HpCode code;
  std::size_t size;
  std::uint8_t argument;
  std::size_t answerSize;  // 0: no record in answer
};

constexpr CommandForm kCommandForms[] = {
    {HpCode::kAbort, 4, 0x00, kHpShortAnswerSize},
    {HpCode::kInquiry, 4, 0x00, kHpInquirySize},
    {HpCode::kExtendedInquiry, 255, kExtendedArgument, kHpExtendedSize},
    {HpCode::kReserve, 4, 0x00, kHpReserveSize},
    {HpCode::kRelease, 4, 0x00, kHpShortAnswerSize},
    {HpCode::kTimeout, 255, kExtendedArgument, 0},
    {HpCode::kWindow, kHpWindowRequestSize, 0x13, kHpWindowSize},
    {HpCode::kExtendedWindow, 249, kExtendedArgument, kHpExtendedSize},
    {HpCode::kRead, 4, 0x00, kHpReadSize},
    {HpCode::kReadImage, 4, 0x00, kHpShortAnswerSize},
    {HpCode::kPosition, 4, 0x00, kHpPositionSize},
};

const CommandForm* findForm(const Bytes& command) {
  if (command.size() <= kCodeAt || command[0] != kHpLeadIn0 || command[1] != kHpLeadIn1) {
    return nullptr;
  }
  for (const CommandForm& form : kCommandForms) {
    if (static_cast<std::uint8_t>(form.code) == command[kCodeAt]) return &form;
  }
  return nullptr;
}

bool isWellFormed(const CommandForm& form, const Bytes& command) {
  if (command.size() != form.size) return false;
  if (form.code == HpCode::kWindow) return true;
  if (command[kFirstArgumentAt] != form.argument) return false;
  return std::all_of(command.begin() + kFirstArgumentAt + 1, command.end(),
                     [](std::uint8_t byte) { return byte == 0; });
}

Bytes makeAnswer(std::size_t size, std::uint8_t status = kHpGood) {
  Bytes bytes(size, 0);
  bytes.at(kHpStatusAt) = status;
  return bytes;
}

// The short answers have no room for a whole word and carry its low byte where they can; the read
// answer has its block type where others have the flag, and carries no message at all.
void putMessage(Bytes& bytes, std::uint16_t message) {
  switch (bytes.size()) {
    case kHpReserveSize:
    case kHpWindowSize:
      bytes[kHpMessageFlagAt] = kHpMessageFlag;
      putBig16(bytes, kHpMessageAt, message);
      break;
    case kHpPositionSize:
      putBig16(bytes, kHpMessageAt, message);
      break;
    case kHpShortAnswerSize:
      bytes[2] = static_cast<std::uint8_t>(message & 0xFF);
      break;
    default:
      break;
  }
}

Bytes makeRefusal(std::size_t size, std::uint16_t message) {
  Bytes bytes = makeAnswer(size, kHpCheckCondition);
  putMessage(bytes, message);
  return bytes;
}

HpScannerOptions checked(const HpScannerOptions& options) {
  if (options.stripLines < 1 || options.stripLines > kMostStripLines) {
    throw std::runtime_error("the virtual scanner cannot make blocks of " +
                             std::to_string(options.stripLines) + " lines; give 1 to " +
                             std::to_string(kMostStripLines));
  }
  if (options.jpegQuality < 1 || options.jpegQuality > 100) {
    throw std::runtime_error("there is no JPEG quality " + std::to_string(options.jpegQuality) +
                             "; give 1 to 100");
  }
  if (options.sheets < 0 || options.sheets > kMostSheets) {
    throw std::runtime_error("the virtual feeder cannot hold " + std::to_string(options.sheets) +
                             " sheets; give 0 to " + std::to_string(kMostSheets));
  }
  return options;
}

}  // namespace

HpScanner::HpScanner(const HpScannerOptions& options)
    : options_(checked(options)),
      pages_(makePageSource(options.pageFiles)),
      faults_(options.faults) {}

void HpScanner::serve(Link& link) {
  reserved_ = false;
  window_.reset();
  dropPage();
  while (const std::optional<Bytes> command = link.receive()) {
    if (!handle(link, *command)) break;
  }
  dropPage();
}

bool HpScanner::handle(Link& link, const Bytes& command) {
  const CommandForm* form = findForm(command);
  if (form == nullptr || !isWellFormed(*form, command)) return answerMalformed(link, command);
  return dispatch(link, form->code, command);
}

bool HpScanner::dispatch(Link& link, HpCode code, const Bytes& command) {
  switch (code) {
    case HpCode::kInquiry:
      return inquiry(link);
    case HpCode::kReserve:
      return reserve(link);
    case HpCode::kWindow:
      return window(link, command);
    case HpCode::kPosition:
      return position(link);
    case HpCode::kRead:
      return read(link);
    case HpCode::kReadImage:
      return readImage(link);
    case HpCode::kAbort:
      return endJob(link, HpStep::kAbort);
    case HpCode::kRelease:
      return endJob(link, HpStep::kRelease);
    case HpCode::kExtendedInquiry:
    case HpCode::kExtendedWindow:
      return link.send(makeAnswer(kHpExtendedSize));
    case HpCode::kTimeout:
      return true;
  }
  return true;
}

// A host that sent a known command waits for that command's answer, whatever was wrong with it.
bool HpScanner::answerMalformed(Link& link, const Bytes& command) {
  const CommandForm* form = findForm(command);
  const std::size_t size = form == nullptr ? kHpShortAnswerSize : form->answerSize;
  if (size == 0) return true;
  return link.send(makeRefusal(size, kHpCommandError));
}

bool HpScanner::inquiry(Link& link) {
  Bytes bytes = makeAnswer(kHpInquirySize);
  if (options_.feeder && options_.sheets > 0) bytes[kHpInquirySourceAt] = kHpSourceFeeder;
  return answerOrRefuse(link, HpStep::kInquiry, std::move(bytes));
}

// A host whose last job broke off reserves again without a release; that is a new job too.
bool HpScanner::reserve(Link& link) {
  reserved_ = true;
  window_.reset();
  pagesTaken_ = 0;
  dropPage();
  return answerOrRefuse(link, HpStep::kReserve, makeAnswer(kHpReserveSize));
}

bool HpScanner::window(Link& link, const Bytes& request) {
  HpWindow window;
  std::uint16_t wrong = kHpCommandError;
  if (reserved_) wrong = readHpWindow(request, window);
  window_.reset();
  if (wrong != 0) return answerOrRefuse(link, HpStep::kWindow, makeRefusal(kHpWindowSize, wrong));
  window_ = window;
  Bytes bytes = makeAnswer(kHpWindowSize);
  putBig32(bytes, kHpWindowHeightAt, static_cast<std::uint32_t>(window.height));
  putBig32(bytes, kHpWindowWidthAt, static_cast<std::uint32_t>(window.width));
  return answerOrRefuse(link, HpStep::kWindow, std::move(bytes));
}

bool HpScanner::position(Link& link) {
  const HpStep step = HpStep::kPosition;
  if (!window_) return answerOrRefuse(link, step, makeRefusal(kHpPositionSize, kHpCommandError));
  // Asking for the next page gives up what is left of this one.
  dropPage();
  if (const std::optional<HpRefusal> refusal = faults_.takeRefusal(step, pagesTaken_ + 1)) {
    Bytes bytes = makeAnswer(kHpPositionSize, refusal->status);
    if (refusal->message) putMessage(bytes, *refusal->message);
    return answer(link, step, std::move(bytes));
  }
  if (pagesTaken_ >= pagesInJob()) {
    return answer(link, step, makeRefusal(kHpPositionSize, kHpNoDocument));
  }
  loadPage();
  return answer(link, step, makeAnswer(kHpPositionSize));
}

bool HpScanner::read(Link& link) {
  const HpStep step = HpStep::kRead;
  if (!page_) return answerOrRefuse(link, step, makeAnswer(kHpReadSize, kHpCheckCondition));
  if (const std::optional<HpRefusal> refusal = faults_.takeRefusal(step)) {
    return answer(link, step, makeAnswer(kHpReadSize, refusal->status));
  }
  if (!block_) makeBlock();
  if (block_->type == kHpEndBlock && faults_.losesEndBlock(pagesTaken_)) {
    dropPage();
    return answer(link, step, makeAnswer(kHpReadSize, kHpCancelled));
  }
  Bytes bytes = makeAnswer(kHpReadSize);
  bytes[kHpReadBlockTypeAt] = block_->type;
  putBig32(bytes, kHpReadBlockSizeAt, static_cast<std::uint32_t>(block_->jpeg.size()));
  putBig16(bytes, kHpReadLinesAt, static_cast<std::uint16_t>(block_->lines));
  putBig16(bytes, kHpReadWidthAt, static_cast<std::uint16_t>(window_->width));
  return answer(link, step, std::move(bytes));
}

bool HpScanner::readImage(Link& link) {
  const HpStep step = HpStep::kReadImage;
  if (!block_) return answer(link, step, makeRefusal(kHpShortAnswerSize, kHpCommandError));
  Block block = std::move(*block_);
  block_.reset();
  // Within the second block, so that the host holds a whole one and a part.
  if (block.type != kHpHeaderBlock && faults_.dropsWithin(pagesTaken_)) {
    link.dropWithin(block.jpeg, block.jpeg.size() / 2);
    return false;
  }
  if (block.type == kHpEndBlock) dropPage();
  return answer(link, step, std::move(block.jpeg));
}

bool HpScanner::endJob(Link& link, HpStep step) {
  if (step == HpStep::kRelease) reserved_ = false;
  window_.reset();
  pagesTaken_ = 0;
  dropPage();
  return answerOrRefuse(link, step, makeAnswer(kHpShortAnswerSize));
}

bool HpScanner::answerOrRefuse(Link& link, HpStep step, Bytes bytes) {
  if (const std::optional<HpRefusal> refusal = faults_.takeRefusal(step)) {
    bytes[kHpStatusAt] = refusal->status;
    if (refusal->message) putMessage(bytes, *refusal->message);
  }
  return answer(link, step, std::move(bytes));
}

bool HpScanner::answer(Link& link, HpStep step, Bytes bytes) {
  if (faults_.stalls(step)) {
    link.stall();
    return false;
  }
  const std::chrono::milliseconds delay = faults_.delay();
  if (delay.count() > 0 && !link.pause(delay)) return false;
  if (const std::optional<std::size_t> cut = faults_.takeCut(step)) {
    bytes.resize(std::min(bytes.size(), *cut));
  }
  // A failed transfer loses a record for good, but image data stays on its way: the host asks for
  // it with one command and reads until it has it.
  if (step == HpStep::kReadImage) {
    while (faults_.takeFailedTransfer(step)) {
      if (!link.sendFailure()) return false;
    }
    return link.send(bytes);
  }
  return faults_.takeFailedTransfer(step) ? link.sendFailure() : link.send(bytes);
}

bool HpScanner::isFeederJob() const {
  return window_->source != HpSource::kFlatbed;
}

int HpScanner::pagesInJob() const {
  if (!isFeederJob()) return 1;
  if (!options_.feeder) return 0;
  return window_->source == HpSource::kFeederOneSide ? options_.sheets : options_.sheets * 2;
}

void HpScanner::loadPage() {
  const bool twoSides = isFeederJob() && window_->source != HpSource::kFeederOneSide;
  PageRequest request;
  request.page = ++pagesTaken_;
  request.sheet = twoSides ? (request.page + 1) / 2 : request.page;
  request.backSide = twoSides && request.page % 2 == 0;
  request.upsideDown = request.backSide && window_->source == HpSource::kFeederTwoSidesTurned;
  request.fromFeeder = isFeederJob();
  request.width = window_->width;
  request.height = window_->height;
  request.dotsPerInch = window_->dotsPerInch;
  request.gray = window_->gray;
  request.cleanBackground = window_->cleanBackground;
  page_ = pages_->page(request);
  nextLine_ = 0;
}

void HpScanner::dropPage() {
  page_.reset();
  block_.reset();
  nextLine_ = 0;
}

void HpScanner::makeBlock() {
  const int height = window_->height;
  // A page that fits into one block is cut in two, since it needs a header block and an end block.
  const int whole = height > options_.stripLines ? options_.stripLines : (height + 1) / 2;
  Block block;
  block.lines = std::min(whole, height - nextLine_);
  Raster band(window_->width, block.lines, 3);
  page_->render(nextLine_, band);
  if (window_->gray) band = toGray(band);
  block.jpeg = encodeJpeg(band, options_.jpegQuality, window_->dotsPerInch);
  if (nextLine_ > 0) block.type = kHpDataBlock;
  nextLine_ += block.lines;
  if (nextLine_ == height) block.type = kHpEndBlock;
  block_ = std::move(block);
}

}  // namespace tvrscn::virtual_device
