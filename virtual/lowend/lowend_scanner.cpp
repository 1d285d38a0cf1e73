#include "virtual/lowend/lowend_scanner.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "virtual/common/codec.h"
#include "virtual/lowend/lowend_documents.h"
#include "virtual/lowend/lowend_page.h"

namespace tvrscn::virtual_device {
namespace {

using Kind = LowEndFault::Kind;

constexpr std::string_view kNoDocument = "this is no document";
// An operation that there is none of.
constexpr std::uint8_t kOtherCode = 0x20;
constexpr std::uint8_t kVerdictBits = 0x0F;

constexpr int kMostSheets = 9999;
constexpr int kMostUnits = 100000;
constexpr int kMostPacket = 1 << 20;
constexpr int kMostCount = 1 << 30;

void requireWithin(const char* what, int value, int least, int most) {
  if (value >= least && value <= most) return;
  throw std::runtime_error("the virtual scanner cannot have " + std::to_string(value) + " as " +
                           what + "; give " + std::to_string(least) + " to " +
                           std::to_string(most));
}

void checkLimits(const char* what, const LowEndSizeLimits& limits) {
  for (const int side : {limits.minWidth, limits.minHeight, limits.maxWidth, limits.maxHeight})
    requireWithin(what, side, 0, kMostUnits);
}

LowEndScannerOptions checked(const LowEndScannerOptions& options) {
  requireWithin("number of sheets", options.sheets, 0, kMostSheets);
  requireWithin("JPEG quality", options.jpegQuality, 1, 100);
  requireWithin("units an inch", options.basicres, 1, kMostUnits);
  checkLimits("size limit of the feeder", options.feederLimits);
  checkLimits("size limit of the flatbed", options.flatbedLimits);
  for (const int resolution : options.resolutions)
    requireWithin("resolution", resolution, 1, 1200);
  requireWithin("number of polls until it is ready", options.pollsUntilReady, 0, kMostCount);
  requireWithin("least packet", options.leastPacket, 1, kMostPacket);
  requireWithin("largest packet", options.mostPacket, options.leastPacket, kMostPacket);
  requireWithin("distance of block markers", options.blockDistance, 0, kMostCount);
  requireWithin("distance of control packets", options.controlPackets, 0, kMostCount);
  if (options.feeder && !options.feederInstalled) {
    throw std::runtime_error(
        "no documents can lie in a feeder that is not installed; give one of the two");
  }
  return options;
}

bool isWellFormed(const Bytes& request) {
  if (request.size() < kLowEndHeaderSize || request.size() > kLowEndMostRequest) return false;
  const std::size_t payload = request.size() - kLowEndHeaderSize;
  const Bytes expected = makeLowEndTransfer(request[kLowEndCodeAt], kLowEndRequestMark,
                                            std::span(request).subspan(kLowEndHeaderSize, payload));
  const bool takesPayload = request[kLowEndCodeAt] == kLowEndStart;
  return request == expected && (takesPayload || payload == 0);
}

Bytes malformed(const Bytes& request) {
  const std::uint8_t code = request.size() > kLowEndCodeAt ? request[kLowEndCodeAt] : 0;
  return makeLowEndTransfer(code, kLowEndBadRequest, {});
}

std::span<const std::uint8_t> bytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

bool isImageData(const Bytes& transfer) {
  return transfer.size() > kLowEndHeaderSize &&
         transfer.size() != kLowEndHeaderSize + kLowEndControlSize &&
         transfer[0] == kLowEndLeadIn0 && transfer[kLowEndCodeAt] == kLowEndImage;
}

// A host knows an image file by how it begins.
Bytes withStart(Bytes jpeg) {
  static const Bytes kStart = {0xFF, 0xD8, 0xFF, 0xE0};
  if (jpeg.size() < kStart.size() || !std::equal(kStart.begin(), kStart.end(), jpeg.begin())) {
    throw std::runtime_error("this system's JPEG encoder makes files without a JFIF header");
  }
  return jpeg;
}

}  // namespace

LowEndScanner::LowEndScanner(const LowEndScannerOptions& options)
    : options_(checked(options)),
      pages_(makePageSource(options.pageFiles)),
      faults_(options.faults) {}

void LowEndScanner::serve(Link& link) {
  while (const std::optional<Bytes> request = link.receive()) {
    if (!handle(link, *request)) break;
  }
}

bool LowEndScanner::handle(Link& link, const Bytes& request) {
  if (!isWellFormed(request)) return link.send(malformed(request));
  Answer reply;
  switch (request[kLowEndCodeAt]) {
    case kLowEndStart:
      return start(link, request);
    case kLowEndCapabilities:
      reply = {
          LowEndStep::kCapabilities, kLowEndCapabilities, kLowEndGood,
          options_.capabilityText.empty() ? capabilityDocument(options_) : options_.capabilityText};
      break;
    case kLowEndStatus:
      reply = {LowEndStep::kStatus, kLowEndStatus, kLowEndGood, status()};
      break;
    case kLowEndAbort:
      reply = {LowEndStep::kAbort, kLowEndAbort, kLowEndGood, ""};
      break;
    default:
      return link.send(malformed(request));
  }
  return answer(link, std::move(reply)) != Sent::kHostGone;
}

std::string LowEndScanner::status() {
  LowEndState state;
  const bool isWarm =
      statusAnswers_ >= options_.pollsUntilReady && faults_.findIf([&](const LowEndFault& fault) {
        return fault.kind == Kind::kNotReady &&
               static_cast<std::uint32_t>(statusAnswers_) < fault.value;
      }) == nullptr;
  ++statusAnswers_;
  state.busy =
      faults_.takeIf([](const LowEndFault& fault) { return fault.kind == Kind::kBusy; }) != nullptr;
  state.ready = isWarm && !state.busy;
  const auto isOpen = [&](std::uint32_t cover) {
    return faults_.findIf([&](const LowEndFault& fault) {
      return fault.kind == Kind::kCoverOpen && fault.value == cover;
    }) != nullptr;
  };
  state.flatbedCoverOpen = isOpen(kFlatbedCover);
  state.feederCoverOpen = isOpen(kFeederCover);
  state.feederInstalled = options_.feederInstalled;
  state.paperLoaded = options_.feeder && options_.sheets > 0;
  state.paperJam = faults_.has(Kind::kPaperJam);
  if (!options_.statusText.empty()) return options_.statusText;
  return statusDocument(state, !faults_.has(Kind::kNoSection));
}

LowEndScanner::Answer LowEndScanner::verdictOn(const LowEndRequestReading& reading) {
  Answer verdict{LowEndStep::kStart, kLowEndStart, kLowEndGood, ""};
  const auto* nibble =
      faults_.findIf([](const LowEndFault& fault) { return fault.kind == Kind::kNibble; });
  if (nibble != nullptr) verdict.status = static_cast<std::uint8_t>(nibble->value & 0xFF);
  if (!reading.isJson) verdict.status = kLowEndBadRequest;
  if ((verdict.status & kVerdictBits) != kLowEndGood) return verdict;
  const auto* refusing =
      faults_.findIf([](const LowEndFault& fault) { return fault.kind == Kind::kRefuse; });
  if (refusing != nullptr) {
    verdict.document = refusal(refusing->words);
  } else {
    verdict.document = reading.wrong.empty() ? acceptance() : refusal(reading.wrong);
  }
  return verdict;
}

bool LowEndScanner::start(Link& link, const Bytes& request) {
  const std::string text(request.begin() + kLowEndHeaderSize, request.end());
  const LowEndRequestReading reading = readLowEndRequest(text, options_);
  const Answer verdict = verdictOn(reading);
  const bool isTaken = verdict.document == acceptance();
  const Sent sent = answer(link, verdict);
  if (sent == Sent::kHostGone) return false;
  // A host that did not get the verdict does not wait for pages.
  if (!isTaken || sent == Sent::kDamaged) return true;
  return scan(link, reading.request);
}

bool LowEndScanner::waitAt(Link& link, LowEndStep step) {
  if (faults_.hasAt(Kind::kStall, step)) {
    link.stall();
    return false;
  }
  const std::chrono::milliseconds delay = faults_.sumOf(Kind::kSlow);
  return delay.count() == 0 || link.pause(delay);
}

LowEndScanner::Sent LowEndScanner::answer(Link& link, Answer answer) {
  if (!waitAt(link, answer.step)) return Sent::kHostGone;
  Sent sent = Sent::kWhole;
  if (faults_.take(Kind::kEmpty, answer.step) != nullptr) {
    answer.document.clear();
    sent = Sent::kDamaged;
  }
  if (faults_.take(Kind::kNotJson, answer.step) != nullptr) {
    answer.document = kNoDocument;
    sent = Sent::kDamaged;
  }
  Bytes transfer = makeLowEndTransfer(answer.code, answer.status, bytesOf(answer.document));
  if (faults_.take(Kind::kWrongCode, answer.step) != nullptr) {
    transfer[kLowEndCodeAt] = kOtherCode;
    sent = Sent::kDamaged;
  }
  if (const LowEndFault* cut = faults_.take(Kind::kShortAnswer, answer.step)) {
    transfer.resize(std::min<std::size_t>(transfer.size(), cut->value));
    sent = Sent::kDamaged;
  }
  bool isHere = true;
  if (faults_.take(Kind::kFailedRead, answer.step) != nullptr) {
    sent = Sent::kDamaged;
    isHere = link.sendFailure();
  } else {
    isHere = options_.splitAnswers ? sendInPieces(link, transfer) : link.send(transfer);
  }
  return isHere ? sent : Sent::kHostGone;
}

// The header on its own, what is behind it in pieces of any size.
bool LowEndScanner::sendInPieces(Link& link, const Bytes& transfer) const {
  RandomNumbers random(options_.seed);
  auto at = transfer.begin();
  std::size_t length = std::min(transfer.size(), kLowEndHeaderSize);
  do {
    const auto end = at + static_cast<std::ptrdiff_t>(length);
    if (!link.send(Bytes(at, end))) return false;
    at = end;
    const auto left = static_cast<std::size_t>(transfer.end() - at);
    length = left == 0 ? 0 : random.between(1, left);
  } while (length > 0);
  return true;
}

bool LowEndScanner::scan(Link& link, const LowEndRequest& request) {
  LowEndStreamShape shape;
  shape.seed = options_.seed;
  shape.leastPacket = options_.leastPacket;
  shape.mostPacket = options_.mostPacket;
  shape.blockDistance = options_.blockDistance;
  shape.controlPackets = options_.controlPackets;
  shape.junk = faults_.has(Kind::kJunk);
  dropsNextPacket_ = false;
  LowEndStream stream(shape, [&](Bytes transfer) { return sendPacket(link, std::move(transfer)); });

  bool withJobDone = options_.jobDone;
  if (faults_.has(Kind::kCancelled)) {
    withJobDone = false;
    if (!stream.addCancellation()) return false;
  } else if (faults_.take(Kind::kEmpty, LowEndStep::kImage) != nullptr) {
    withJobDone = false;
  } else if (!sendPages(stream, request)) {
    return false;
  }
  if (!faults_.has(Kind::kSilentEnd)) return stream.end(withJobDone);
  if (stream.endSilently(withJobDone)) link.stall();
  return false;
}

bool LowEndScanner::sendPages(LowEndStream& stream, const LowEndRequest& request) {
  const int pages = pagesInJob(request);
  const bool inOneFile = request.mode == LowEndMode::kBlackWhite &&
                         options_.documentShape == LowEndDocumentShape::kOneFile;
  const TiffCompression compression =
      options_.group4 ? TiffCompression::kGroup4 : TiffCompression::kNone;
  std::optional<TiffWriter> document;
  for (int page = 1; page <= pages; ++page) {
    if (page == 1 || !inOneFile) {
      document.emplace(inOneFile ? pages : 1, compression);
      if (!stream.beginFile()) return false;
    }
    Bytes data = encodePage(request, page, *document);
    const bool isTruncated = faults_.hasOnPage(Kind::kTruncatedPage, page);
    if (isTruncated) data.resize(data.size() / 2);
    if (!sendPage(stream, page, std::move(data))) return false;
    if (isTruncated) break;
  }
  return true;
}

bool LowEndScanner::sendPage(LowEndStream& stream, int page, Bytes data) {
  if (!faults_.hasOnPage(Kind::kDrop, page)) return stream.addData(data);
  // The packet that is torn is one of the second half.
  const auto middle = data.begin() + static_cast<std::ptrdiff_t>(data.size() / 2);
  if (!stream.addData(Bytes(data.begin(), middle)) || !stream.flush()) return false;
  dropsNextPacket_ = true;
  return stream.addData(Bytes(middle, data.end())) && stream.flush();
}

bool LowEndScanner::sendPacket(Link& link, Bytes transfer) {
  constexpr LowEndStep kStep = LowEndStep::kImage;
  if (!waitAt(link, kStep)) return false;
  if (isImageData(transfer)) {
    if (dropsNextPacket_) {
      link.dropWithin(transfer, transfer.size() / 2);
      return false;
    }
    if (faults_.take(Kind::kWrongCode, kStep) != nullptr) transfer[kLowEndCodeAt] = kOtherCode;
    if (const LowEndFault* cut = faults_.take(Kind::kShortAnswer, kStep)) {
      transfer.resize(std::min<std::size_t>(transfer.size(), cut->value));
    }
  }
  // The packet stays on its way: the host's next read brings it.
  while (faults_.take(Kind::kFailedRead, kStep) != nullptr) {
    if (!link.sendFailure()) return false;
  }
  return link.send(transfer);
}

Bytes LowEndScanner::encodePage(const LowEndRequest& request, int page,
                                TiffWriter& document) const {
  const std::unique_ptr<Page> sheet = pages_->page(pageRequestFor(request, page));
  const LevelTable levels = levelTable(request, options_.darkness, options_.contrast);
  const PictureShape shape = pictureShapeFor(request);
  const LineSource lines = linesOf(*sheet, levels);
  if (request.mode == LowEndMode::kBlackWhite) return document.nextPage(shape, lines);
  return withStart(encodeJpeg(shape, lines, options_.jpegQuality));
}

// The glass has one side, whatever is asked for.
int LowEndScanner::pagesInJob(const LowEndRequest& request) const {
  if (!request.fromFeeder) return 1;
  return request.sides == LowEndSides::kOne ? options_.sheets : options_.sheets * 2;
}

}  // namespace tvrscn::virtual_device
