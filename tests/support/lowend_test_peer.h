// The door into the LowEnd classes for tests.
#ifndef TVRSCN_TESTS_SUPPORT_LOWEND_TEST_PEER_H
#define TVRSCN_TESTS_SUPPORT_LOWEND_TEST_PEER_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tvrscn/lowend_controller.h"
#include "tvrscn/lowend_scan_data_source.h"

struct LowEndTestPeer {
  using Controller = USB_LowEnd_Controller;
  using Source = CLowEndUSBScanDataSource;
  using Sizes = std::map<std::string, int>;

  static int writeRequest(Controller& c, const void* data, std::size_t length) {
    return c.WriteRequest(data, length);
  }
  static unsigned long readResponse(Controller& c, void* data, std::size_t length) {
    return c.ReadResponse(data, length);
  }
  static void readPayload(Controller& c, std::string& text, std::size_t length) {
    c.ReadPayload(text, length);
  }
  static int exchange(Controller& c, LowEndUSBOperationCode code, LowEnd_USB_Response& response,
                      std::string& payload) {
    return c.SendRequestAndReceiveResponse(code, response, payload);
  }
  static USBStatusErrors responseStatus(Controller& c, unsigned char status) {
    return c.CheckResponseStatus(status);
  }
  static int supportedFeatures(Controller& c, std::string& json) {
    return c.GetLowEndUSBSupportedFeatures(json);
  }
  static int deviceStatus(Controller& c, std::string& json) {
    return c.GetLowEndUSBDeviceStatus(json);
  }
  static void ranges(Controller& c, std::string& json, IPPMinMaxNormalStepData& first,
                     IPPMinMaxNormalStepData& second) {
    c.Get_Supported_Darkness_Brightness(json, first, second);
  }
  static int abort(Controller& c, bool& unused) { return c.AbortScanOperation(unused); }
  static USBStatusErrors scanViaUSB(Controller& c) { return c.ScanViaUSB(); }
  static USBStatusErrors startScanOperation(Controller& c, bool adfPaperLoaded) {
    return c.StartScanOperation(adfPaperLoaded);
  }
  static USBStatusErrors sendStartScanCommand(Controller& c, bool adfPaperLoaded) {
    return c.SendStartScanCommand(adfPaperLoaded);
  }
  static unsigned threadProc(void* argument) {
    return USB_LowEnd_Controller::GetImageLowEndUSBThreadProc(argument);
  }
  static USBStatusErrors retrieve(Controller& c) { return c.RetrieveScannedRecordData(); }
  static long shutDownThread(Controller& c) { return c.ShutDownImageLowEndUSBThread(); }
  static void removeBlocks(Controller& c, const std::wstring& path) {
    c.RemoveBlockToBytesWithNewline(path);
  }
  static std::vector<ScannedRecord>& records(Controller& c) { return c.m_scannedRecords; }
  static LowEndImageThreadArgs*& threadArgs(Controller& c) { return c.m_pImageThreadArgs; }
  static HANDLE& thread(Controller& c) { return c.m_hImageThread; }
  static std::uint32_t& lastIoResult(Controller& c) { return c.m_lastIoResult; }
  static std::wstring& imageExtension(Controller& c) { return c.m_defaultImageExtension; }
  static std::wstring& imageMimeType(Controller& c) { return c.m_defaultImageMimeType; }
  static std::wstring& imageFolder(Controller& c) { return c.m_imageFolderPath; }
  static std::shared_ptr<Source>& dataSource(Controller& c) { return c.m_scanDataSource; }
  static std::int32_t& fileCount(Controller& c) { return c.m_fileCount; }

  static std::string& support(Source& s) { return s.m_deviceSupportJSON; }
  static void mediaSizes(Source& s, Sizes& adf, Sizes& flatbed) {
    s.GetSupportedMediaSizesFromJSON(adf, flatbed);
  }
  static void mediaName(Source& s, int code, std::string& name) {
    s.GetMediaSizeString(code, name);
  }
  static void mediaSize(Source& s, int scanSource, unsigned short& size,
                        unsigned short& orientation) {
    s.GetMediaSize(scanSource, size, orientation);
  }
  static bool customSize(Source& s, double height, double width, int resolution, int scanSource,
                         int& heightDots, int& widthDots) {
    return s.CheckCustomSizeValidity(height, width, resolution, scanSource, heightDots, widthDots);
  }
  static int matchingValue(Source& s, int value, int minimum, int maximum, int normal,
                           int unused = 0) {
    return s.CalculateMatchingValue(value, minimum, maximum, normal, unused);
  }
};

#endif  // TVRSCN_TESTS_SUPPORT_LOWEND_TEST_PEER_H
