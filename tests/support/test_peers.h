// Doors into the exported classes for tests: their members belong to the contract, and their single
// operations are the smallest things that can be tested.
#ifndef TVRSCN_TESTS_SUPPORT_TEST_PEERS_H
#define TVRSCN_TESTS_SUPPORT_TEST_PEERS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tvrscn/hp_controller.h"
#include "tvrscn/scan_client.h"
#include "tvrscn/scan_data_source.h"
#include "tvrscn/usb_controller.h"

struct ControllerTestPeer {
  using Blocks = std::vector<std::pair<std::shared_ptr<unsigned char>, unsigned long>>;
  using Base = BaseUSBController;
  using HP = USB_HP_Controller;

  static XMutex*& mutex(Base& c) { return c.m_pMutex; }
  static std::uint8_t& reservedClientID(Base& c) { return c.m_reservedClientID; }
  static std::uint8_t& ecpCommandId(Base& c) { return c.m_ecpCommandId; }
  static bool& imageNotified(Base& c) { return c.m_bImageNotified; }
  static HANDLE& deviceWrite(Base& c) { return c.m_hDeviceWrite; }
  static HANDLE& deviceRead(Base& c) { return c.m_hDeviceRead; }
  static TVR_FP_CALLBACK*& callback(Base& c) { return c.m_pCallback; }
  static bool& usingTevraUI(Base& c) { return c.m_bUsingTevraUI; }
  static std::shared_ptr<CErrorCodeDictionary>& dictionary(Base& c) { return c.m_pErrorDictionary; }
  static bool& errorShown(Base& c) { return c.m_bErrorShown; }
  static std::wstring& deviceLabel(Base& c) { return c.m_deviceLabel; }
  static std::string& hardwareId(Base& c) { return c.m_hardwareId; }
  static std::string& deviceName(Base& c) { return c.m_deviceName; }
  static HMODULE& setupApi(Base& c) { return c.m_hSetupApi; }
  static bool allFunctionsResolved(Base& c) {
    return c.m_pfnSetupDiGetClassDevsW != nullptr && c.m_pfnSetupDiEnumDeviceInfo != nullptr &&
           c.m_pfnSetupDiGetDeviceInstanceIdW != nullptr &&
           c.m_pfnSetupDiDestroyDeviceInfoList != nullptr &&
           c.m_pfnSetupDiEnumDeviceInterfaces != nullptr &&
           c.m_pfnSetupDiGetDeviceInterfaceDetailW != nullptr &&
           c.m_pfnSetupDiGetDeviceRegistryPropertyW != nullptr;
  }
  static bool getRetryCommand(Base& c) { return c.getRetryCommand(); }
  static unsigned char getECPCommandId(Base& c) { return c.getECPCommandId(); }
  static unsigned char getReservedClientID(Base& c) { return c.getReservedClientID(); }
  static std::string getVid(Base& c, const std::string& id) { return c.getVid(id); }
  static std::string getPid(Base& c, const std::string& id) { return c.getPid(id); }

  static int inquiry(HP& c, HPPKUSBInquiryResponse& r) { return c.SendInquiryCommand(r); }
  static int extendedInquiry(HP& c, HPPKUSBExtendedInquiryResponse& r) {
    return c.SendExtendedInquiryCommand(r);
  }
  static int reserveUnit(HP& c, HPPKUSBReserveUnitResponse& r) {
    return c.SendReserveUnitCommand(r);
  }
  static int releaseUnit(HP& c, HPPKUSBResponse& r) { return c.SendReleaseUnitCommand(r); }
  static int abort(HP& c, HPPKUSBResponse& r) { return c.SendAbortCommand(r); }
  static int setWindow(HP& c, HPPKUSBSetWindowParameterResponse& r) {
    return c.SendSetWndParamCommand(r);
  }
  static int extendedSetWindow(HP& c, HPPKUSBExtendedSetWindowParameterResponse& r) {
    return c.SendExtendedSetWndParamCommand(r);
  }
  static int objectPosition(HP& c, HPPKUSBObjectPosition& r) {
    return c.SendObjectPositionCommand(r);
  }
  static int read(HP& c, HPPKUSBReadResponse& r) { return c.SendReadCommand(r); }
  static int timeout(HP& c) { return c.SendTimeoutCommand(); }
  static int readImage(HP& c, unsigned char* buffer, unsigned long size) {
    return c.SendReadImageCommand(buffer, size);
  }
  static int writeRequest(HP& c, const void* data, std::size_t length) {
    return c.WriteRequest(data, length);
  }
  static int readResponse(HP& c, void* data, std::size_t length) {
    return c.ReadResponse(data, length);
  }
  static USBStatusErrors scanViaUSB(HP& c) { return c.ScanViaUSB(); }
  static void prepareFinalImage(HP& c, Blocks& blocks, unsigned short width, unsigned short height,
                                short fileNumber) {
    c.prepareFinalImage(blocks, width, height, fileNumber);
  }
  static std::string statusText(HP& c, HPPKUSBStatusCode code) {
    return c.GetStatusCodeAsString(code);
  }
  static USBStatusErrors messageStatus(HP& c, HPPKUSBMessageData message) {
    return c.GetMessageScannerStatus(message);
  }
  static int errorHandler(HP& c, USBStatusErrors error, int showDialog) {
    return c.ErrorHandler(error, showDialog);
  }
  static std::int32_t& lastIoResult(HP& c) { return c.m_lastIoResult; }
  static std::string& imageExtension(HP& c) { return c.m_defaultImageExtension; }
  static std::wstring& imageMimeType(HP& c) { return c.m_defaultImageMimeType; }
  static std::wstring& imageFolder(HP& c) { return c.m_imageFolderPath; }
  static std::shared_ptr<CHPUSBScanDataSource>& dataSource(HP& c) { return c.m_scanDataSource; }
};

struct ClientTestPeer {
  static std::int32_t& state(ScanBaseClient& c) { return c.m_nClientState; }
  static std::shared_ptr<CErrorCodeDictionary>& dictionary(ScanBaseClient& c) {
    return c.m_pErrorDictionary;
  }
  static BaseUSBController*& controller(CScanUSBClient& c) { return c.m_pController; }
};

struct DataSourceTestPeer {
  static std::int32_t& width(CUSBScanDataSource& s) { return s.m_nWidth; }
  static std::int32_t& height(CUSBScanDataSource& s) { return s.m_nHeight; }
  static std::int32_t& pageLimit(CUSBScanDataSource& s) { return s.m_nPageLimit; }
  static std::int32_t& feedEdge(CUSBScanDataSource& s) { return s.m_nFeedEdge; }
  static std::string& backgroundRemoval(CUSBScanDataSource& s) { return s.m_backgroundRemoval; }
  static std::string& resolution(CUSBScanDataSource& s) { return s.m_resolution; }
  static std::string& sides(CUSBScanDataSource& s) { return s.m_sides; }
  static std::int32_t& contrast(CUSBScanDataSource& s) { return s.m_nContrast; }
  static std::int32_t& brightness(CUSBScanDataSource& s) { return s.m_nBrightness; }
  static std::string& colorMode(CUSBScanDataSource& s) { return s.m_colorMode; }
  static std::string& hardwareId(CUSBScanDataSource& s) { return s.m_hardwareId; }
  static bool& needImageProcessing(CUSBScanDataSource& s) { return s.m_bNeedImageProcessing; }
  static std::int32_t& paperSource(CUSBScanDataSource& s) { return s.m_nPaperSource; }
  static std::string& mediaSize(CUSBScanDataSource& s) { return s.m_mediaSize; }
};

#endif  // TVRSCN_TESTS_SUPPORT_TEST_PEERS_H
