// The QZ wire: how a request goes out in packets, how a reply comes in, and how READs follow one
// another.
#include "family_qz/qz_transaction.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "platform/device_file.h"

namespace {

constexpr int kLargestChunk = 4096;
constexpr std::size_t kHeaderSize = sizeof(USBVendorPacketHeader);
constexpr std::size_t kSpareByte = 1;
// Sense bytes are taken from the buffer even where the reply was too short to hold them.
constexpr std::size_t kSpareReplyBytes = 8;

thread_local QZTransaction* t_current = nullptr;

// These words go to the console of the process, not to the log.
void print(const char* line) {
  std::fputs(line, stdout);
}

struct Free {
  void operator()(char* memory) const { std::free(memory); }
};
using Memory = std::unique_ptr<char, Free>;

// Null for what cannot be had. Zeroed, so that what the device leaves out reads as zero.
Memory allocate(std::size_t size) {
  return Memory(static_cast<char*>(std::calloc(size, 1)));
}

// How the payload is cut. Beyond one packet the count of what remains starts one packet too low, so
// that the last 4096 bytes of a payload above 4096 never go out; 16 bits hold it. Devices know it
// so. No command of the family comes here with more than 272 bytes.
class Chunks {
 public:
  explicit Chunks(int length)
      : chunk_(static_cast<std::int16_t>(std::min(length, kLargestChunk))),
        remaining_(
            static_cast<std::int16_t>(length > kLargestChunk ? length - kLargestChunk : length)) {}

  bool any() const { return chunk_ > 0; }
  std::size_t size() const { return static_cast<std::size_t>(chunk_); }
  void next() {
    remaining_ = static_cast<std::int16_t>(remaining_ - chunk_);
    chunk_ = static_cast<std::int16_t>(std::min<int>(remaining_, kLargestChunk));
  }

 private:
  std::int16_t chunk_;
  std::int16_t remaining_;
};

bool writePacket(HANDLE handle, const char* packet, std::size_t size) {
  DWORD written = 0;  // a short write is not looked at
  return WriteFile(handle, packet, static_cast<DWORD>(size), &written, nullptr) != 0;
}

}  // namespace

QZTransaction::QZTransaction(USB_QZ_Controller& controller)
    : controller_(controller), outer_(t_current) {
  t_current = this;
}

QZTransaction::~QZTransaction() {
  t_current = outer_;
}

QZTransaction* QZTransaction::of(const USB_QZ_Controller& controller) {
  return t_current != nullptr && &t_current->controller_ == &controller ? t_current : nullptr;
}

void QZTransaction::expectFollowUp(const USB_QZ_Controller& controller,
                                   const USBVendorPacketHeader& reply) {
  QZTransaction* const current = of(controller);
  if (current == nullptr) return;
  const unsigned state = reply.bScannerStatus & kQZStateMask;
  current->expected_ = reply.bOperationStatus != USBVENDOR_STATUS_GOOD ? FollowUp::kNone
                       : state == USBVENDOR_STATE_TRANSFERRING         ? FollowUp::kRead
                       : state == USBVENDOR_STATE_BLOCK_END            ? FollowUp::kBlockHeader
                                                                       : FollowUp::kNone;
}

bool QZTransaction::putDown(const USB_QZ_Controller& controller, Request& request) {
  QZTransaction* const current = of(controller);
  if (current == nullptr) return false;
  const FollowUp followUp = std::exchange(current->expected_, FollowUp::kNone);
  if (followUp == FollowUp::kNone) return false;
  current->suspended_.push_back(followUp);
  current->next_ = std::move(request);
  return true;
}

int QZTransaction::readOn(USB_QZ_Controller& controller) {
  const int result = controller.sendReadCommand();
  return result != 0 || controller.m_operationStatus != 0 ? USB_ERR_READ : 0;
}

int QZTransaction::run(const Request& first) {
  int result = exchange(first);
  while (next_.has_value()) {
    const Request next = *std::exchange(next_, std::nullopt);
    result = exchange(next);
  }
  for (; !suspended_.empty(); suspended_.pop_back())
    result = resume(suspended_.back(), result);
  return result;
}

// The rest of a transaction whose follow-up has ended with `result`.
int QZTransaction::resume(FollowUp followUp, int result) {
  const bool failed = result != 0 || controller_.m_operationStatus != 0;
  if (followUp == FollowUp::kRead && failed) return USB_ERR_READ;
  flushBoth();
  return 0;
}

int QZTransaction::exchange(const Request& request) {
  FlushFileBuffers(request.handle);
  FlushFileBuffers(controller_.m_hDeviceRead);
  int result = send(request);
  if (result == 0) result = receive();
  if (result == 0 && !next_.has_value()) flushBoth();
  return result;
}

void QZTransaction::flushBoth() {
  FlushFileBuffers(controller_.m_hDeviceRead);
  FlushFileBuffers(controller_.m_hDeviceWrite);
}

int QZTransaction::send(const Request& request) {
  if (request.length > kLargestChunk) print("writeRequest: we need to packetize the data.\n");
  const int chunkSize = std::min(request.length, kLargestChunk);
  const Memory packet =
      chunkSize < 0 ? Memory()
                    : allocate(static_cast<std::size_t>(chunkSize) + kHeaderSize + kSpareByte);
  if (packet == nullptr) {
    print("writeRequest: Failed to malloc packet.\n");
    return USB_ERR_RESOURCE;
  }
  std::memcpy(packet.get(), request.header.data(), kHeaderSize);
  bool written = true;
  std::size_t sent = 0;
  for (Chunks chunks(request.length); chunks.any() && written; chunks.next()) {
    if (!request.payload.empty())
      std::memcpy(packet.get() + kHeaderSize, request.payload.data() + sent, chunks.size());
    written = writePacket(request.handle, packet.get(), kHeaderSize + chunks.size());
    sent += chunks.size();
  }
  if (request.length == 0) written = writePacket(request.handle, packet.get(), kHeaderSize);
  if (written) return 0;
  print("writeRequest: Failed to write data to the printer\n");
  return USB_ERR_WRITE;
}

int QZTransaction::receive() {
  USBVendorPacketHeader header = {};
  const HANDLE replies = controller_.m_hDeviceRead;
  const int result = controller_.ReadVendorHeader(replies, &header);
  if (result != 0) return result;
  const Memory reply = allocate(std::size_t{header.dwDataLength.value()} + kSpareReplyBytes);
  return controller_.ReadVendorResponseData(replies, reply.get(), &header);
}

int USB_QZ_Controller::HandleUsbDeviceCommunication(void* handle, char* header, char* payload,
                                                    int length) {
  QZTransaction::Request request;
  request.handle = handle;
  request.header.assign(header, kHeaderSize);
  if (payload != nullptr && length > 0)
    request.payload.assign(payload, static_cast<std::size_t>(length));
  request.length = length;
  if (QZTransaction::putDown(*this, request)) return 0;
  return QZTransaction(*this).run(request);
}
