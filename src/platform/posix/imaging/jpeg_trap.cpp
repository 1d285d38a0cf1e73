// The only place with a long jump; it never crosses a frame of C++ that has anything to destroy.
#include "platform/posix/imaging/jpeg_trap.h"

#include <jerror.h>

namespace tvrscn::imaging {
namespace {

constexpr int kWarning = -1;
constexpr int kFirstRestartMarker = 0xD0;
constexpr int kLastRestartMarker = 0xD7;

JpegTrap* trapOf(j_common_ptr codec) {
  return static_cast<JpegTrap*>(codec->client_data);
}

}  // namespace

void JpegTrap::install(jpeg_compress_struct& encoder) {
  encoder.err = silentManager();
  encoder.client_data = this;
}

void JpegTrap::install(jpeg_decompress_struct& decoder) {
  decoder.err = silentManager();
  decoder.client_data = this;
  decoder_ = &decoder;
}

jpeg_error_mgr* JpegTrap::silentManager() {
  jpeg_std_error(&manager_);
  manager_.error_exit = onError;
  manager_.emit_message = onMessage;
  return &manager_;
}

bool JpegTrap::runGuarded(void (*step)(void*), void* argument) {
  // NOLINTNEXTLINE(cert-err52-cpp): the library of C offers no other way out of its error call
  if (setjmp(landing_) != 0) return false;
  step(argument);
  return true;
}

void JpegTrap::onError(j_common_ptr codec) {
  // NOLINTNEXTLINE(cert-err52-cpp): as above
  std::longjmp(trapOf(codec)->landing_, 1);
}

void JpegTrap::onMessage(j_common_ptr codec, int level) {
  if (level != kWarning || codec->err->msg_code != JWRN_HIT_MARKER) return;
  JpegTrap& trap = *trapOf(codec);
  trap.dataMissing_ = true;
  if (trap.stoppedForGood()) trap.dataEnded_ = true;
}

bool JpegTrap::stoppedForGood() const {
  if (decoder_ == nullptr || decoder_->unread_marker == 0) return false;
  const int marker = decoder_->unread_marker;
  const bool restart = marker >= kFirstRestartMarker && marker <= kLastRestartMarker;
  return !(restart && decoder_->restart_interval > 0);
}

Gdiplus::GpStatus JpegTrap::status() const {
  switch (manager_.msg_code) {
    case JERR_OUT_OF_MEMORY:
    case JERR_NO_BACKING_STORE:
      return Gdiplus::OutOfMemory;
    case JERR_FILE_WRITE:
      return Gdiplus::Win32Error;
    case JERR_IMAGE_TOO_BIG:
      return Gdiplus::InvalidParameter;
    default:
      return Gdiplus::UnknownImageFormat;
  }
}

}  // namespace tvrscn::imaging
