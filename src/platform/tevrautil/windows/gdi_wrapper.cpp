// Start and end of the system's imaging library, and the two jobs on a stored page. They write
// their result into a file beside the page, which then takes its place: what goes wrong before that
// leaves the page as it was.
#include "tvrscn/tevrautil/gdi_wrapper.h"

#include <cwchar>

#include "platform/imaging.h"
#include "platform/tevrautil/windows/page_pixels.h"
#include "platform/tevrautil/windows/tiff_pages.h"

GdiWrapper::GdiWrapper() : m_token(0) {
  const Gdiplus::GdiplusStartupInput input;
  if (Gdiplus::GdiplusStartup(&m_token, &input, nullptr) != Gdiplus::Ok) m_token = 0;
}

GdiWrapper::~GdiWrapper() {
  if (m_token != 0) Gdiplus::GdiplusShutdown(m_token);
}

int GdiWrapper::GetEncoderClsid(const wchar_t* mimeType, CLSID* clsid) {
  if (clsid == nullptr) return -1;
  *clsid = CLSID{};
  if (mimeType == nullptr) return -1;
  return tvrscn::imaging::findEncoder(mimeType, *clsid);
}

void GdiWrapper::BlackandWhiteImageProcessing(std::wstring& path, int brightness,
                                              int /*contrast*/) {
  tvrscn::imaging::makeBlackAndWhite(path, brightness);
}

void GdiWrapper::BrightnessContrastApplyEffect(std::wstring path, int brightness, int contrast) {
  tvrscn::imaging::applyBrightnessContrast(path, brightness, contrast);
}

std::uint32_t GdiWrapper::ConvertMultiPageTIFF2SinglePageTIFF(std::wstring source,
                                                              std::wstring prefix,
                                                              std::uint32_t firstNumber) {
  return tvrscn::imaging::splitTiffPages(source, prefix, firstNumber);
}
