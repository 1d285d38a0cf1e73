// Start and end of the imaging library, and the imaging jobs that several families share.
#ifndef TVRSCN_TEVRAUTIL_GDI_WRAPPER_H
#define TVRSCN_TEVRAUTIL_GDI_WRAPPER_H

#include <cstdint>
#include <string>

#include "tvrscn/export.h"
#include "tvrscn/types.h"

// Imaging calls are usable between construction and destruction of a wrapper; wrappers may nest.
class TVRSCN_UTIL_API GdiWrapper {
 public:
  GdiWrapper();
  GdiWrapper(const GdiWrapper&) = delete;
  GdiWrapper& operator=(const GdiWrapper&) = delete;
  // NOLINTNEXTLINE(performance-trivially-destructible): exported; has work to do on Windows
  ~GdiWrapper();

  // Fills clsid with the class id of the encoder for a MIME type ("image/jpeg", "image/tiff",
  // "image/png", "image/bmp"). Returns the encoder's index, or -1 with clsid all zero.
  int GetEncoderClsid(const wchar_t* mimeType, CLSID* clsid);

  // Makes the JPEG file at path a legible black-and-white one, in place: every pixel becomes black
  // or white by what surrounds it, resolution and size are kept, and the quality is not below the
  // file's own. Brightness (-255..255, beyond that as the end of the range) moves the threshold:
  // positive is whiter. Contrast has no effect. A picture that cannot be read stays as it is.
  // Throws std::runtime_error that names the file when the result cannot be written; the file is
  // then as it was.
  void BlackandWhiteImageProcessing(std::wstring& path, int brightness, int contrast);

  // Applies brightness (-255..255, positive is brighter) and contrast (-100..100) to the JPEG file
  // at path, in place; values beyond count as the end of their range. Resolution and size are kept,
  // the colour sampling where the system's encoder lets it be chosen; the quality is not below the
  // file's own. Errors as above.
  void BrightnessContrastApplyEffect(std::wstring path, int brightness, int contrast);

  // Writes page k (from 0) of the TIFF file `source` as a single-page TIFF to prefix + decimal
  // (firstNumber + k) + ".tif", over a file of that name; never over `source` itself. The coded
  // data are carried over as they are, so that size, depth, colours, resolution, compression and
  // byte order stay. Returns the number of pages written, 0 when source is no TIFF. A page of which
  // a part is missing is left out and takes no number; the first page that cannot be written is the
  // end.
  std::uint32_t ConvertMultiPageTIFF2SinglePageTIFF(std::wstring source, std::wstring prefix,
                                                    std::uint32_t firstNumber);

 private:
  ULONG_PTR m_token;  // the imaging library's start-up token; 0 where the system needs none
};

#endif  // TVRSCN_TEVRAUTIL_GDI_WRAPPER_H
