// The door into the QZ classes for tests.
#ifndef TVRSCN_TESTS_SUPPORT_QZ_TEST_PEER_H
#define TVRSCN_TESTS_SUPPORT_QZ_TEST_PEER_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "tvrscn/qz_controller.h"
#include "tvrscn/qz_scan_data_source.h"

struct QZTestPeer {
  using Controller = USB_QZ_Controller;
  using Source = CQZUSBScanDataSource;

  static int cancelSequence(Controller& c) { return c.sendCancelScanSequence(); }
  static int inquiry(Controller& c) { return c.sendInquiryCommand(); }
  static int wakeup(Controller& c) { return c.sendWakeupCommand(); }
  static int release(Controller& c) { return c.sendReleaseCommand(); }
  static int testUnitReady(Controller& c) { return c.sendTestUnitReadyCommand(); }
  static int reserveUnit(Controller& c) { return c.sendReserveUnitCommand(); }
  static int initialize(Controller& c) { return c.sendIntializeCommand(); }
  static int setWindow(Controller& c) { return c.sendSetWindow(); }
  static int scan(Controller& c) { return c.sendScanCommand(); }
  static int modeSense(Controller& c, unsigned char page) { return c.sendModeSenseCommand(page); }
  static int modeSelect(Controller& c) { return c.sendModeSelectCommand(); }
  static int readBlockHeader(Controller& c) { return c.sendReadBlockHeaderCommand(); }
  static int read(Controller& c) { return c.sendReadCommand(); }
  static int scanSequence(Controller& c) { return c.sendScanSequence(); }
  static void imageData(Controller& c, char* data, unsigned long size) {
    c.readImageData(data, size);
  }
  static void operationStatus(Controller& c, USBVendorPacketHeader& header) {
    c.setOperationStatusCode(&header);
  }
  static void senseInformation(Controller& c, unsigned char command, char* sense) {
    c.setSenseInformation(command, sense);
  }
  static int readHeader(Controller& c, void* handle, USBVendorPacketHeader& header) {
    return c.ReadVendorHeader(handle, &header);
  }
  static int communicate(Controller& c, void* handle, char* header, char* payload, int length) {
    return c.HandleUsbDeviceCommunication(handle, header, payload, length);
  }
  static int responseData(Controller& c, void* handle, char* buffer,
                          USBVendorPacketHeader& header) {
    return c.ReadVendorResponseData(handle, buffer, &header);
  }
  static std::string encoded(Controller& c, const std::wstring& text, unsigned codePage) {
    return c.GetEncodedString(text, codePage);
  }

  static std::map<std::string, std::string>& senseMessages(Controller& c) {
    return c.m_senseMessages;
  }
  static std::shared_ptr<Source>& dataSource(Controller& c) { return c.m_scanDataSource; }
  static const char*& operationStatusText(Controller& c) { return c.m_operationStatusText; }
  static const char*& scannerStatusText(Controller& c) { return c.m_scannerStatusText; }
  static const char*& senseText(Controller& c) { return c.m_senseText; }
  static char*& imageBytes(Controller& c) { return c.m_imageData; }
  static std::uint32_t& imageSize(Controller& c) { return c.m_imageDataSize; }
  static std::uint32_t& blockSize(Controller& c) { return c.m_blockSize; }
  static std::wstring& scanFolder(Controller& c) { return c.m_scanFolder; }
  static bool& retryScan(Controller& c) { return c.m_retryScan; }
  static std::uint8_t& pendingModePage(Controller& c) { return c.m_pendingModePage; }
  static std::uint8_t& operationStatus(Controller& c) { return c.m_operationStatus; }
  static std::uint32_t& documentPresent(Controller& c) { return c.m_documentPresent; }
  static std::uint32_t& scannerFlag7(Controller& c) { return c.m_scannerFlag7; }
  static std::uint32_t& scannerFlag5(Controller& c) { return c.m_scannerFlag5; }
  static std::uint32_t& scannerFlag4(Controller& c) { return c.m_scannerFlag4; }
};

#endif  // TVRSCN_TESTS_SUPPORT_QZ_TEST_PEER_H
