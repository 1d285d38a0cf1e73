// Fakes of the utility library's services; its plain records are the real ones.
#include <algorithm>
#include <cwchar>
#include <string>

#include "tests/support/fake_platform.h"
#include "tests/support/temporary_folder.h"
#include "tvrscn/tevrautil/gdi_wrapper.h"
#include "tvrscn/tevrautil/named_mutex.h"
#include "tvrscn/tevrautil/tevra_logger.h"

using tvrscn::test::FakePlatform;
using tvrscn::test::Kind;
using tvrscn::test::utf8;

CTevraLogger::CTevraLogger() = default;
CTevraLogger::~CTevraLogger() = default;

CTevraLogger* CTevraLogger::GetLogInstance() {
  static CTevraLogger instance;
  if (FakePlatform* platform = FakePlatform::currentOrNull()) platform->call("GetLogInstance");
  return &instance;
}

// A line out of a time without a platform has nobody to hear it.
void CTevraLogger::WriteToLog(const wchar_t* line) {
  FakePlatform* platform = FakePlatform::currentOrNull();
  if (platform == nullptr) return;
  platform->record(Kind::kLog, "Log " + utf8(line));
  platform->call("WriteToLog");
}

void CTevraLogger::SetLineListener(LineListener, void*) {}

XMutex::XMutex(const wchar_t* name) : m_hMutex(nullptr), m_bHeld(false) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kMutex, "XMutex " + utf8(name));
  platform.call("XMutex");
}

XMutex::~XMutex() {
  if (FakePlatform* platform = FakePlatform::currentOrNull()) {
    platform->record(Kind::kMutex, m_bHeld ? "~XMutex held" : "~XMutex");
  }
}

bool XMutex::WaitWithRetry(unsigned long millisecondsPerTry, unsigned long tries) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kMutex, "WaitWithRetry " + std::to_string(millisecondsPerTry) + " " +
                                    std::to_string(tries));
  m_bHeld = !platform.call("WaitWithRetry").fail && platform.mutexFree;
  return m_bHeld;
}

GdiWrapper::GdiWrapper() : m_token(1) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kImaging, "GdiWrapper");
  platform.call("GdiWrapper");
}

GdiWrapper::~GdiWrapper() {
  m_token = 0;
  FakePlatform::current().record(Kind::kImaging, "~GdiWrapper");
}

int GdiWrapper::GetEncoderClsid(const wchar_t* mimeType, CLSID* clsid) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kImaging, "GetEncoderClsid " + utf8(mimeType));
  if (platform.call("GetEncoderClsid").fail || std::wcscmp(mimeType, L"image/jpeg") != 0) {
    *clsid = {};
    return -1;
  }
  *clsid = tvrscn::test::kFakeJpegEncoder;
  return 1;
}

void GdiWrapper::BlackandWhiteImageProcessing(std::wstring& path, int brightness, int contrast) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kImaging, "BlackandWhiteImageProcessing " + utf8(path) + " " +
                                      std::to_string(brightness) + " " + std::to_string(contrast));
  platform.call("BlackandWhiteImageProcessing");
}

void GdiWrapper::BrightnessContrastApplyEffect(std::wstring path, int brightness, int contrast) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kImaging, "BrightnessContrastApplyEffect " + utf8(path) + " " +
                                      std::to_string(brightness) + " " + std::to_string(contrast));
  platform.call("BrightnessContrastApplyEffect");
}

std::uint32_t GdiWrapper::ConvertMultiPageTIFF2SinglePageTIFF(std::wstring source,
                                                              std::wstring prefix,
                                                              std::uint32_t firstNumber) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kImaging, "ConvertMultiPageTIFF2SinglePageTIFF " + utf8(source) + " " +
                                      utf8(prefix) + " " + std::to_string(firstNumber));
  if (platform.call("ConvertMultiPageTIFF2SinglePageTIFF").fail) return 0;
  std::uint32_t pages = 0;
  for (const std::string& page : platform.tiffPages) {
    const std::wstring name = prefix + std::to_wstring(firstNumber + pages) + L".tif";
    tvrscn::test::writeFile(tvrscn::test::toPath(name), page);
    ++pages;
  }
  return pages;
}
