// Where the JPEG library's errors land. It reports a fatal one by a call that must not return, and
// would end the process if nobody took that call.
#ifndef TVRSCN_PLATFORM_POSIX_IMAGING_JPEG_TRAP_H
#define TVRSCN_PLATFORM_POSIX_IMAGING_JPEG_TRAP_H

#include <csetjmp>
#include <cstdio>

#include <jpeglib.h>

#include "platform/imaging.h"

namespace tvrscn::imaging {

class JpegTrap {
 public:
  // Has to be called before the codec object is created; the trap has to stay in its place as long
  // as the object lives.
  void install(jpeg_compress_struct& encoder);
  void install(jpeg_decompress_struct& decoder);

  // Runs step, and gives up on it at the codec's first fatal error. Step and what it calls must
  // have no local object with a destructor: it would not run.
  template <typename Step>
  [[nodiscard]] bool run(Step step) {
    return runGuarded([](void* argument) { (*static_cast<Step*>(argument))(); }, &step);
  }

  // What the fatal error that ended the last step means to a caller of the imaging calls.
  [[nodiscard]] Gdiplus::GpStatus status() const;

  // The coded data have run out before the picture was complete; all that the decoder hands out
  // from now on is made up.
  [[nodiscard]] bool dataEnded() const { return dataEnded_; }
  // As above at some place, from which the decoder may have recovered since.
  [[nodiscard]] bool dataMissing() const { return dataMissing_; }
  // True when the marker that stopped the decoder is one from which it will not go on.
  [[nodiscard]] bool stoppedForGood() const;
  void forgetDataEnd() { dataEnded_ = dataMissing_ = false; }

 private:
  [[nodiscard]] bool runGuarded(void (*step)(void*), void* argument);
  jpeg_error_mgr* silentManager();
  [[noreturn]] static void onError(j_common_ptr codec);
  static void onMessage(j_common_ptr codec, int level);

  jpeg_error_mgr manager_{};
  std::jmp_buf landing_{};
  const jpeg_decompress_struct* decoder_ = nullptr;
  bool dataEnded_ = false;
  bool dataMissing_ = false;
};

}  // namespace tvrscn::imaging

#endif  // TVRSCN_PLATFORM_POSIX_IMAGING_JPEG_TRAP_H
