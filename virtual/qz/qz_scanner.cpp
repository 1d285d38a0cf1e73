// A request is first judged by its header, then refused where a fault says so, then carried out;
// whoever carries it out judges the rest. A refused request changes nothing. Replies pass through
// the faults that spoil them, whatever they say.
#include "virtual/qz/qz_scanner.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

#include "virtual/common/codec.h"
#include "virtual/common/raster.h"
#include "virtual/qz/qz_records.h"

namespace tvrscn::virtual_device {
namespace {

using Kind = QzFault::Kind;

constexpr std::uint32_t kHugeLength = 0xFFFFFFFF;
constexpr std::uint8_t kMostClients = 255;
constexpr std::size_t kBlockHeaderSize = 8;
constexpr std::size_t kBlockSizeAt = 4;

constexpr int kMostReply = kQzReadArgument;
constexpr int kMostUnits = 100000;
constexpr int kMostResolution = 0xFFFF;
constexpr int kMostPieces = 10000000;
constexpr int kMostSheets = 9999;

struct Range {
  const char* what;
  int value;
  int least;
  int most;
};

QzScannerOptions checked(const QzScannerOptions& options) {
  const QzResolutionLimits& resolutions = options.resolutions;
  const Range ranges[] = {
      {"sheets", options.sheets, 0, kMostSheets},
      {"JPEG quality", options.jpegQuality, 1, 100},
      {"flatbed width", options.flatbedLimits.maxWidth, 0, kMostUnits},
      {"flatbed length", options.flatbedLimits.maxLength, 0, kMostUnits},
      {"feeder width", options.feederLimits.maxWidth, 0, kMostUnits},
      {"feeder length", options.feederLimits.maxLength, 0, kMostUnits},
      {"least resolution across", resolutions.minX, 0, kMostResolution},
      {"least resolution down", resolutions.minY, 0, kMostResolution},
      {"largest resolution across", resolutions.maxX, 0, kMostResolution},
      {"largest resolution down", resolutions.maxY, 0, kMostResolution},
      {"least bytes of a reply", options.leastReply, 1, kMostReply},
      {"most bytes of a reply", options.mostReply, options.leastReply, kMostReply},
      {"replies of a page", options.pageReplies, 0, kMostPieces},
      {"replies between empty ones", options.emptyReplies, 0, kMostPieces},
  };
  for (const Range& range : ranges) {
    if (range.value >= range.least && range.value <= range.most) continue;
    throw std::runtime_error("virtual scanner: " + std::to_string(range.value) + " for '" +
                             range.what + "' is out of range; give " + std::to_string(range.least) +
                             " to " + std::to_string(range.most));
  }
  return options;
}

const QzCommandForm* findForm(const Bytes& request) {
  if (request.size() < kQzHeaderSize) return nullptr;
  const auto* const end = std::end(kQzCommandForms);
  const auto* const found =
      std::find_if(std::begin(kQzCommandForms), end,
                   [&](const QzCommandForm& form) { return form.code == request[kQzCommandAt]; });
  return found == end ? nullptr : found;
}

bool tellsOfCancel(const QzReply& reply) {
  QzReply cancel;
  refuseQz(cancel, kQzCancelled);
  return reply.status == cancel.status && reply.data == cancel.data;
}

}  // namespace

QzScanner::QzScanner(const QzScannerOptions& options)
    : options_(checked(options)),
      pages_(makePageSource(options.pageFiles)),
      faults_(options.faults),
      sheets_(options.feeder ? options.sheets : 0) {}

void QzScanner::serve(Link& link) {
  hasJammed_ = false;
  endReservation();
  while (const std::optional<Bytes> request = link.receive()) {
    if (!handle(link, *request)) break;
  }
}

bool QzScanner::handle(Link& link, const Bytes& request) {
  dropsNow_ = false;
  if (const QzCommandForm* form = findForm(request)) {
    faults_.count(form->step);
    return send(link, form->step, replyTo(*form, request));
  }
  QzReply reply;
  if (request.size() > kQzCommandAt) reply.command = request[kQzCommandAt];
  if (!request.empty()) reply.client = request[kQzClientAt];
  toldOfCancel_ = false;
  refuseQz(reply, kQzWrongCommand);
  reply.scannerStatus = scannerStatus(true);
  const auto length = static_cast<std::uint32_t>(reply.data.size());
  return link.send(makeQzHeader(reply, length)) && link.send(reply.data);
}

QzReply QzScanner::replyTo(const QzCommandForm& form, const Bytes& request) {
  QzReply reply;
  reply.client = request[kQzClientAt];
  reply.command = form.code;
  reply.scannerStatus = kQzIdle;
  const Refusal refusal = carryOutOrFault(form, request, reply);
  if (refusal) refuseQz(reply, *refusal);
  // A read tells the state at its own end.
  const std::uint8_t ownState = reply.scannerStatus;
  reply.scannerStatus = scannerStatus(reply.status != kQzGood);
  if (ownState != kQzIdle) {
    reply.scannerStatus = static_cast<std::uint8_t>((reply.scannerStatus & kQzFlagBits) | ownState);
  }
  return reply;
}

QzScanner::Refusal QzScanner::carryOutOrFault(const QzCommandForm& form, const Bytes& request,
                                              QzReply& reply) {
  if (const Refusal wrong = checkHeader(form, request)) return wrong;
  if (const QzFault* fault = faults_.take(Kind::kRefuse, form.step)) {
    reply.status = static_cast<std::uint8_t>(fault->value);
    return std::nullopt;
  }
  if (const QzFault* fault = faults_.take(Kind::kSense, form.step)) return fault->value;
  const Bytes payload(request.begin() + kQzHeaderSize, request.end());
  return carryOut(form.step, payload, reply);
}

QzScanner::Refusal QzScanner::checkHeader(const QzCommandForm& form, const Bytes& request) const {
  if (request[kQzStatusAt] != 0 || request[kQzStateAt] != 0) return kQzWrongField;
  const std::size_t payload = request.size() - kQzHeaderSize;
  if (payload != form.payload || getBig32(request, kQzLengthAt) != payload) return kQzWrongLength;
  if (!form.needsClient) return request[kQzClientAt] == 0 ? Refusal() : kQzWrongCommand;
  return owner_ && request[kQzClientAt] == client_ ? Refusal() : kQzWrongCommand;
}

QzScanner::Refusal QzScanner::carryOut(QzStep step, const Bytes& payload, QzReply& reply) {
  switch (step) {
    case QzStep::kWakeUp:
      isAwake_ = true;
      return std::nullopt;
    case QzStep::kReserve:
      return reserve(payload, reply);
    case QzStep::kReady:
      return std::nullopt;
    case QzStep::kInitialize:
      return initialize(payload);
    case QzStep::kInquiry:
      reply.data = qzInquiryData();
      return std::nullopt;
    case QzStep::kModeSense:
      return modeSense(payload, reply);
    case QzStep::kModeSelect:
      return modeSelect(payload);
    case QzStep::kWindow:
      return window(payload);
    case QzStep::kScan:
      return scan();
    case QzStep::kBlockHeader:
      return blockHeader(reply);
    case QzStep::kRead:
      return read(payload, reply);
    case QzStep::kRelease:
      return release();
  }
  return kQzWrongCommand;
}

// A client whose last job broke off reserves again without a release.
QzScanner::Refusal QzScanner::reserve(const Bytes& payload, QzReply& reply) {
  if (!isAwake_) return kQzWrongCommand;
  const std::optional<QzOwner> owner = readQzReservation(payload);
  if (!owner) return kQzWrongParameter;
  if (owner_ && *owner_ != *owner) {
    reply.status = kQzReservationConflict;
    return std::nullopt;
  }
  if (owner_) endReservation();
  isAwake_ = true;
  owner_ = owner;
  random_.seed(options_.seed);
  client_ = client_ == kMostClients ? 1 : static_cast<std::uint8_t>(client_ + 1);
  reply.client = client_;
  return std::nullopt;
}

// Only a client that has just been told of it knows that its job was cancelled.
QzScanner::Refusal QzScanner::initialize(const Bytes& payload) {
  if (getBig32(payload, 0) != (toldOfCancel_ ? kQzCancelArgument : 0)) return kQzWrongField;
  stream_.reset();
  setup_ = Setup::kInitialized;
  return std::nullopt;
}

QzScanner::Refusal QzScanner::modeSense(const Bytes& payload, QzReply& reply) const {
  switch (getBig32(payload, 0)) {
    case kQzSubDeviceArgument:
      reply.data = qzSubDevicePage(options_);
      return std::nullopt;
    case kQzMeasurementArgument:
      reply.data = qzMeasurementUnit();
      return std::nullopt;
    default:
      return kQzWrongField;
  }
}

QzScanner::Refusal QzScanner::modeSelect(const Bytes& payload) {
  if (isTransferring()) return kQzScanning;
  if (setup_ < Setup::kInitialized) return kQzWrongCommand;
  const std::optional<QzSelection> selection = readQzSelection(payload, options_);
  if (!selection) return kQzWrongParameter;
  if (selection->fromFeeder) {
    if (faults_.takeOnPage(Kind::kNoPaper, sheets_.nextPage()) != nullptr) sheets_.close();
    if (!sheets_.isWaiting()) return kQzNoDocument;
  }
  selection_ = *selection;
  setup_ = Setup::kSelected;
  return std::nullopt;
}

QzScanner::Refusal QzScanner::window(const Bytes& payload) {
  if (isTransferring()) return kQzScanning;
  if (setup_ < Setup::kSelected) return kQzWrongCommand;
  const std::optional<QzWindow> window = readQzWindow(payload, options_, selection_.fromFeeder);
  if (!window) return kQzWrongParameter;
  window_ = *window;
  setup_ = Setup::kWindowSet;
  return std::nullopt;
}

QzScanner::Refusal QzScanner::scan() {
  if (isTransferring()) return kQzScanning;
  if (setup_ < Setup::kWindowSet) return kQzWrongCommand;
  const QzSheets::Side side =
      selection_.fromFeeder ? sheets_.takeFromFeeder(selection_.twoSides) : sheets_.takeFromGlass();
  if (selection_.onePage) sheets_.close();
  page_ = side.page;
  const bool twoBlocks = faults_.takeOnPage(Kind::kBlockEnd, page_) != nullptr;
  stream_.emplace(encodePage(side), options_, twoBlocks, random_);
  isAnnounced_ = false;
  setup_ = Setup::kNone;
  return std::nullopt;
}

QzScanner::Refusal QzScanner::blockHeader(QzReply& reply) {
  if (!isTransferring()) return kQzNotReady;
  isAnnounced_ = true;
  reply.data.assign(kBlockHeaderSize, 0);
  putBig32(reply.data, kBlockSizeAt, static_cast<std::uint32_t>(stream_->leftInBlock()));
  return std::nullopt;
}

QzScanner::Refusal QzScanner::read(const Bytes& payload, QzReply& reply) {
  if (getBig32(payload, 0) != kQzReadArgument) return kQzWrongField;
  if (!stream_) return kQzNotReady;
  if (stream_->hasEnded()) return kQzNoMoreData;
  if (!isAnnounced_) return kQzWrongCommand;
  if (stream_->isInTheMiddle()) {
    if (const Refusal sense = interruption()) return sense;
    dropsNow_ = faults_.takeOnPage(Kind::kDrop, page_) != nullptr;
  }
  QzPageStream::Piece piece = stream_->next();
  if (piece.state == kQzBlockEnd) isAnnounced_ = false;
  reply.data = std::move(piece.data);
  reply.scannerStatus = piece.state;
  return std::nullopt;
}

QzScanner::Refusal QzScanner::interruption() {
  if (faults_.takeOnPage(Kind::kCancelled, page_) != nullptr) {
    stream_.reset();
    return kQzCancelled;
  }
  if (faults_.takeOnPage(Kind::kPaperJam, page_) != nullptr) {
    stream_.reset();
    sheets_.putBack();
    hasJammed_ = true;
    return kQzPaperJam;
  }
  return std::nullopt;
}

QzScanner::Refusal QzScanner::release() {
  endReservation();
  return std::nullopt;
}

void QzScanner::endReservation() {
  if (!hasJammed_) sheets_.refill();
  hasJammed_ = false;
  isAwake_ = false;
  owner_.reset();
  toldOfCancel_ = false;
  setup_ = Setup::kNone;
  stream_.reset();
}

std::uint8_t QzScanner::scannerStatus(bool isRefused) const {
  QzState state = kQzIdle;
  if (owner_) state = isTransferring() ? kQzTransferring : kQzReady;
  if (owner_ && isRefused) state = kQzErrorReserved;
  const std::uint8_t document = sheets_.isWaiting() ? kQzDocumentPresent : 0;
  return static_cast<std::uint8_t>(state | document);
}

Bytes QzScanner::encodePage(const QzSheets::Side& side) const {
  PageRequest wanted;
  wanted.page = side.page;
  wanted.sheet = side.sheet;
  wanted.backSide = side.isBack;
  wanted.upsideDown = side.isBack && selection_.backsTurned;
  wanted.fromFeeder = selection_.fromFeeder;
  wanted.width = window_.width;
  wanted.height = window_.height;
  wanted.dotsPerInch = window_.dotsPerInch;
  wanted.gray = window_.gray;
  wanted.cleanBackground = window_.cleanBackground;
  const std::unique_ptr<Page> page = pages_->page(wanted);
  const LineSource lines = [&page](int firstLine, Raster& band) {
    Raster color(band.width, band.height, 3);
    page->render(firstLine, color);
    band = band.channels == 1 ? toGray(color) : std::move(color);
  };
  const PictureShape shape = {window_.width, window_.height, window_.gray ? 1 : 3,
                              window_.dotsPerInch};
  return encodeJpeg(shape, lines, options_.jpegQuality);
}

bool QzScanner::send(Link& link, QzStep step, QzReply reply) {
  if (faults_.take(Kind::kStall, step) != nullptr) {
    link.stall();
    return false;
  }
  const std::chrono::milliseconds delay = faults_.delay();
  if (delay.count() > 0 && !link.pause(delay)) return false;
  spoil(step, reply);
  toldOfCancel_ = tellsOfCancel(reply);
  if (faults_.take(Kind::kFailedRead, step) != nullptr) {
    toldOfCancel_ = false;
    return link.sendFailure();
  }
  const bool isHuge = faults_.take(Kind::kHugeLength, step) != nullptr;
  const auto length = static_cast<std::uint32_t>(reply.data.size());
  return sendTransfers(link, step, makeQzHeader(reply, isHuge ? kHugeLength : length), reply.data);
}

// What the host is told, whether or not it is so.
void QzScanner::spoil(QzStep step, QzReply& reply) {
  const auto take = [&](Kind kind) { return faults_.take(kind, step); };
  if (const QzFault* fault = take(Kind::kStatus)) {
    reply.status = static_cast<std::uint8_t>(fault->value);
  }
  if (const QzFault* fault = take(Kind::kState)) {
    reply.scannerStatus = static_cast<std::uint8_t>((reply.scannerStatus & kQzFlagBits) |
                                                    (fault->value & kQzStateBits));
  }
  if (const QzFault* fault = take(Kind::kFlags)) {
    reply.scannerStatus = static_cast<std::uint8_t>((reply.scannerStatus & kQzStateBits) |
                                                    (fault->value & kQzFlagBits));
  }
  if (const QzFault* fault = take(Kind::kWrongCommand)) {
    reply.command = static_cast<std::uint8_t>(fault->value);
  }
  if (const QzFault* fault = take(Kind::kFewer)) {
    reply.data.resize(std::min<std::size_t>(reply.data.size(), fault->value));
  }
}

// A host that is told of data reads once for them, so there is always a transfer for that read.
bool QzScanner::sendTransfers(Link& link, QzStep step, Bytes header, const Bytes& data) {
  std::size_t left = std::numeric_limits<std::size_t>::max();
  if (const QzFault* fault = faults_.take(Kind::kShortAnswer, step)) left = fault->value;
  const bool hasData = getBig32(header, kQzLengthAt) != 0;
  const bool isCut = left < kQzHeaderSize;
  if (isCut) {
    toldOfCancel_ = false;
    header.resize(left);
  }
  if (!link.send(header)) return false;
  if (isCut || !hasData) return true;
  left = std::min(data.size(), left - kQzHeaderSize);
  const Bytes transfer(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(left));
  if (!dropsNow_) return link.send(transfer);
  link.dropWithin(transfer, transfer.size() / 2);
  return false;
}

}  // namespace tvrscn::virtual_device
