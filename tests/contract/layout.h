// What drivers were compiled against, as assertions and tables: sizes, offsets, the order of
// virtual functions and of members. For the contract test here, and for the driver that is compiled
// apart (driver/), on each system. C++17, and nothing but the public headers.
#ifndef TVRSCN_TESTS_CONTRACT_LAYOUT_H
#define TVRSCN_TESTS_CONTRACT_LAYOUT_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <string>
#include <type_traits>
#include <vector>

#include "tvrscn/tvrscn_USBClient.h"

namespace tvrscn::contract {

// The notification record.

static_assert(sizeof(ScanNotification) == 1032);
static_assert(offsetof(ScanNotification, type) == 0 && sizeof(ScanNotification::type) == 4);
static_assert(offsetof(ScanNotification, priority) == 4 && sizeof(ScanNotification::priority) == 4);
static_assert(offsetof(ScanNotification, text) == 8 && sizeof(ScanNotification::text) == 1024);
static_assert(std::is_trivially_copyable_v<ScanNotification>);

static_assert(sizeof(TVR_FP_CALLBACK) == 2 * sizeof(void*));
static_assert(offsetof(TVR_FP_CALLBACK, pfnNotify) == 0);
static_assert(offsetof(TVR_FP_CALLBACK, pContext) == sizeof(void*));
static_assert(
    std::is_same_v<decltype(TVR_FP_CALLBACK::pfnNotify), void (*)(ScanNotification*, void*)>);

static_assert(sizeof(IPPMinMaxNormalStepData) == 16);
static_assert(offsetof(IPPMinMaxNormalStepData, Min) == 0);
static_assert(offsetof(IPPMinMaxNormalStepData, Max) == 4);
static_assert(offsetof(IPPMinMaxNormalStepData, Normal) == 8);
static_assert(offsetof(IPPMinMaxNormalStepData, Step) == 12);

static_assert(sizeof(SP_DEVINFO_DATA) == 32);
static_assert(offsetof(SP_DEVINFO_DATA, cbSize) == 0);
static_assert(offsetof(SP_DEVINFO_DATA, ClassGuid) == 4);
static_assert(offsetof(SP_DEVINFO_DATA, DevInst) == 20);
static_assert(offsetof(SP_DEVINFO_DATA, Reserved) == 24);

// Records of the wire.

struct Field {
  const char* record;
  const char* name;
  std::size_t offset;
  std::size_t size;
  std::size_t expectedOffset;
  std::size_t expectedSize;
};

#define FIELD(record, field, expectedOffset, expectedSize) \
  { #record, #field, offsetof(record, field), sizeof(record::field), expectedOffset, expectedSize }

inline const Field kFields[] = {
    FIELD(HPPKUSBSetWindowParameterRequest, leadIn, 0, 2),
    FIELD(HPPKUSBSetWindowParameterRequest, command, 2, 1),
    FIELD(HPPKUSBSetWindowParameterRequest, fixed3, 3, 1),
    FIELD(HPPKUSBSetWindowParameterRequest, fixed4, 4, 1),
    FIELD(HPPKUSBSetWindowParameterRequest, windowWidth, 5, 4),
    FIELD(HPPKUSBSetWindowParameterRequest, windowHeight, 9, 4),
    FIELD(HPPKUSBSetWindowParameterRequest, resolutionCodeX, 13, 1),
    FIELD(HPPKUSBSetWindowParameterRequest, resolutionCodeY, 14, 1),
    FIELD(HPPKUSBSetWindowParameterRequest, reserved15, 15, 4),
    FIELD(HPPKUSBSetWindowParameterRequest, colorCode, 19, 1),
    FIELD(HPPKUSBSetWindowParameterRequest, fixed20, 20, 1),
    FIELD(HPPKUSBSetWindowParameterRequest, backgroundCode, 21, 1),
    FIELD(HPPKUSBSetWindowParameterRequest, fixed22, 22, 1),
    FIELD(HPPKUSBSetWindowParameterRequest, sourceCode, 23, 2),
    FIELD(HPPKUSBResponse, statusCode, 1, 1),
    FIELD(HPPKUSBInquiryResponse, statusCode, 1, 1),
    FIELD(HPPKUSBInquiryResponse, documentSource, 53, 1),
    FIELD(HPPKUSBReserveUnitResponse, statusCode, 1, 1),
    FIELD(HPPKUSBReserveUnitResponse, messageFlag, 3, 1),
    FIELD(HPPKUSBReserveUnitResponse, messageData, 4, 2),
    FIELD(HPPKUSBSetWindowParameterResponse, statusCode, 1, 1),
    FIELD(HPPKUSBSetWindowParameterResponse, messageFlag, 3, 1),
    FIELD(HPPKUSBSetWindowParameterResponse, messageData, 4, 2),
    FIELD(HPPKUSBSetWindowParameterResponse, imageHeight, 8, 4),
    FIELD(HPPKUSBSetWindowParameterResponse, imageWidth, 12, 4),
    FIELD(HPPKUSBObjectPosition, statusCode, 1, 1),
    FIELD(HPPKUSBObjectPosition, messageData, 4, 2),
    FIELD(HPPKUSBReadResponse, statusCode, 1, 1),
    FIELD(HPPKUSBReadResponse, blockType, 3, 1),
    FIELD(HPPKUSBReadResponse, blockSize, 4, 4),
    FIELD(HPPKUSBReadResponse, verticalSize, 8, 2),
    FIELD(HPPKUSBReadResponse, horizontalSize, 10, 2),
    FIELD(LowEnd_USB_Response, escapeByte, 0, 1),
    FIELD(LowEnd_USB_Response, leadByte, 1, 1),
    FIELD(LowEnd_USB_Response, operationCode, 2, 1),
    FIELD(LowEnd_USB_Response, reservedByte, 3, 1),
    FIELD(LowEnd_USB_Response, payloadLength, 4, 4),
    FIELD(LowEnd_USB_Response, statusByte, 8, 1),
    FIELD(LowEnd_USB_Response, reservedByte2, 9, 1),
    FIELD(USBVendorPacketHeader, bClientID, 0, 1),
    FIELD(USBVendorPacketHeader, bCommandId, 1, 1),
    FIELD(USBVendorPacketHeader, bOperationStatus, 2, 1),
    FIELD(USBVendorPacketHeader, bScannerStatus, 3, 1),
    FIELD(USBVendorPacketHeader, dwDataLength, 4, 4),
    FIELD(USBVendorReservation, csCharacterSet, 4, 34),
    FIELD(USBVendorReservation, csComputerName, 38, 34),
    FIELD(USBVendorReservation, csUserName, 72, 34),
    FIELD(USBVendorSetWindowData, wXResolution, 2, 2),
    FIELD(USBVendorSetWindowData, wYResolution, 4, 2),
    FIELD(USBVendorSetWindowData, dwWindowWidth, 16, 4),
    FIELD(USBVendorSetWindowData, dwWindowLength, 20, 4),
    FIELD(USBVendorSetWindowData, bColorMode, 26, 1),
    FIELD(USBVendorSetWindowData, bBitDepth, 27, 1),
    FIELD(USBVendorSetWindowData, bBackgroundFlags, 28, 1),
    FIELD(USBVendorSetWindowData, bColorControl, 29, 1),
    FIELD(USBVendorSetWindowData, dwScanWidth, 40, 4),
    FIELD(USBVendorSetWindowData, dwScanLength, 44, 4),
    FIELD(USBVendorSubDevicePage, bFeederOptions, 2, 1),
    FIELD(USBVendorSubDevicePage, wPageCount, 3, 2),
    FIELD(USBVendorSubDevicePage, bDuplexOptions, 5, 1),
    FIELD(USBVendorSubDevicePage, dwFlatbedMaxWidth, 8, 4),
    FIELD(USBVendorSubDevicePage, dwFlatbedMaxLength, 12, 4),
    FIELD(USBVendorSubDevicePage, dwFeederMaxWidth, 16, 4),
    FIELD(USBVendorSubDevicePage, dwFeederMaxLength, 20, 4),
    FIELD(USBVendorSubDevicePage, wMaxXResolution, 28, 2),
    FIELD(USBVendorSubDevicePage, wMaxYResolution, 30, 2),
    FIELD(USBVendorSubDevicePage, wMinXResolution, 32, 2),
    FIELD(USBVendorSubDevicePage, wMinYResolution, 34, 2),
};

#undef FIELD

static_assert(sizeof(HPPKUSBSetWindowParameterRequest) == 25);
static_assert(sizeof(HPPKUSBResponse) == 3);
static_assert(sizeof(HPPKUSBInquiryResponse) == 72);
static_assert(sizeof(HPPKUSBReserveUnitResponse) == 8);
static_assert(sizeof(HPPKUSBSetWindowParameterResponse) == 32);
static_assert(sizeof(HPPKUSBObjectPosition) == 6);
static_assert(sizeof(HPPKUSBReadResponse) == 20);
static_assert(sizeof(HPPKUSBExtendedInquiryResponse) == 260);
static_assert(sizeof(HPPKUSBExtendedSetWindowParameterResponse) == 260);
static_assert(alignof(HPPKUSBReadResponse) == 1);
static_assert(std::is_trivially_copyable_v<HPPKUSBReadResponse>);
static_assert(sizeof(LowEnd_USB_Response) == 10);
static_assert(alignof(LowEnd_USB_Response) == 1);
static_assert(std::is_trivially_copyable_v<LowEnd_USB_Response>);
static_assert(sizeof(USBVendorPacketHeader) == 8);
static_assert(sizeof(USBVendorReservation) == 272);
static_assert(sizeof(USBVendorSetWindowData) == 48);
static_assert(sizeof(USBVendorSubDevicePage) == 56);
static_assert(sizeof(USBVendorMeasurementUnit) == 8);
static_assert(alignof(USBVendorSubDevicePage) == 1);
static_assert(std::is_trivially_copyable_v<USBVendorSubDevicePage>);

// What the LowEnd controller keeps of a job.

static_assert(sizeof(LowEndImageThreadArgs) == 3 * sizeof(void*));
static_assert(offsetof(LowEndImageThreadArgs, controller) == 0);
static_assert(offsetof(LowEndImageThreadArgs, callback) == sizeof(void*));
static_assert(offsetof(LowEndImageThreadArgs, unused) == 2 * sizeof(void*));
static_assert(sizeof(ScannedRecord) == sizeof(std::string) + sizeof(std::size_t));

// Virtual functions.

// The slot of a virtual function in the table of its class. The destructor takes the slots 0 and 1.
struct Slot {
  const char* function;
  std::ptrdiff_t slot;
  std::ptrdiff_t expected;
};
constexpr std::ptrdiff_t kNotVirtual = -1;

// What a pointer to a virtual function names. Compilers of this ABI keep one more than the offset
// in the table there.
template <typename Function>
std::ptrdiff_t slotOf(Function function) {
  static_assert(sizeof(function) == 2 * sizeof(std::ptrdiff_t), "another ABI");
  constexpr auto kWord = static_cast<std::ptrdiff_t>(sizeof(void*));
  std::ptrdiff_t word = 0;
  std::memcpy(&word, &function, sizeof word);
  return word % kWord == 1 ? (word - 1) / kWord : kNotVirtual;
}

// True when each member stands behind the one before it, within the object.
template <typename Object, typename... Members>
bool inOrder(const Object& object, const Members&... members) {
  const auto addressOf = [](const auto& thing) { return reinterpret_cast<std::uintptr_t>(&thing); };
  std::uintptr_t end = addressOf(object);
  for (const std::uintptr_t member : {addressOf(members)...}) {
    if (member < end) return false;
    end = member + 1;
  }
  return end <= addressOf(object) + sizeof object;
}

}  // namespace tvrscn::contract

#define SLOT(function, expected) \
  { #function, tvrscn::contract::slotOf(&function), expected }

// The QZ controller's functions and members are private, and part of the contract all the same.
struct QZTestPeer {
  static std::vector<tvrscn::contract::Slot> virtualSlots() {
    using QZ = USB_QZ_Controller;
    return {
        SLOT(QZ::doScan, 2),
        SLOT(QZ::GetUSBBrightnessContrastValue, 3),
        SLOT(QZ::sendCancelScanSequence, 4),
        SLOT(QZ::sendInquiryCommand, 5),
        SLOT(QZ::sendWakeupCommand, 6),
        SLOT(QZ::sendReleaseCommand, 7),
        SLOT(QZ::sendTestUnitReadyCommand, 8),
        SLOT(QZ::sendReserveUnitCommand, 9),
        SLOT(QZ::sendIntializeCommand, 10),
        SLOT(QZ::sendSetWindow, 11),
        SLOT(QZ::sendScanCommand, 12),
        SLOT(QZ::sendModeSenseCommand, 13),
        SLOT(QZ::sendModeSelectCommand, 14),
        SLOT(QZ::sendReadBlockHeaderCommand, 15),
        SLOT(QZ::sendReadCommand, 16),
        SLOT(QZ::sendScanSequence, 17),
        SLOT(QZ::readImageData, 18),
        SLOT(QZ::setOperationStatusCode, 19),
        SLOT(QZ::mapSenseInformation, 20),
        SLOT(QZ::setSenseInformation, 21),
        SLOT(QZ::ReadVendorHeader, 22),
        SLOT(QZ::HandleUsbDeviceCommunication, 23),
        SLOT(QZ::ReadVendorResponseData, 24),
        SLOT(QZ::GetEncodedString, tvrscn::contract::kNotVirtual),
        SLOT(QZ::GetUSBScanDataSource, tvrscn::contract::kNotVirtual),
        SLOT(QZ::sendCommandstoDevice, tvrscn::contract::kNotVirtual),
        SLOT(QZ::setStoreAppPropertiesToScan, tvrscn::contract::kNotVirtual),
    };
  }

  static bool membersAreInOrder(const USB_QZ_Controller& c) {
    return tvrscn::contract::inOrder(
        c, c.m_senseMessages, c.m_scanDataSource, c.m_operationStatusText, c.m_scannerStatusText,
        c.m_senseText, c.m_imageData, c.m_imageDataSize, c.m_blockSize, c.m_scanFolder,
        c.m_retryScan, c.m_pendingModePage, c.m_operationStatus, c.m_documentPresent,
        c.m_scannerFlag7, c.m_scannerFlag5, c.m_scannerFlag4);
  }
  static bool membersAreInOrder(const CQZUSBScanDataSource& s) {
    return tvrscn::contract::inOrder(s, s.m_subDevicePage, s.m_measurementUnit);
  }
};

namespace tvrscn::contract {

inline std::vector<Slot> virtualSlots() {
  return {
      SLOT(ScanBaseClient::Scan, 2),
      SLOT(ScanBaseClient::InitScanConfigInfo, 3),
      SLOT(ScanBaseClient::GetBrightnessContrastValue, 4),
      SLOT(ScanBaseClient::InitExceptionStrings, 5),
      SLOT(ScanBaseClient::GetScanInterfaceVersion, 6),
      SLOT(ScanBaseClient::Dump, 7),
      SLOT(ScanBaseClient::SetUsingTevraUI, 8),
      SLOT(ScanBaseClient::GetProductData, kNotVirtual),
      SLOT(CScanUSBClient::Scan, 2),
      SLOT(CScanUSBClient::InitScanConfigInfo, 3),
      SLOT(CScanUSBClient::GetBrightnessContrastValue, 4),
      SLOT(CScanUSBClient::InitExceptionStrings, 5),
      SLOT(CScanUSBClient::Dump, 7),
      SLOT(CScanUSBClient::SetUsingTevraUI, 8),
      SLOT(BaseUSBController::doScan, 2),
      SLOT(BaseUSBController::GetUSBBrightnessContrastValue, 3),
      SLOT(USB_HP_Controller::doScan, 2),
      SLOT(USB_HP_Controller::GetUSBBrightnessContrastValue, 3),
      SLOT(USB_LowEnd_Controller::doScan, 2),
      SLOT(USB_LowEnd_Controller::GetUSBBrightnessContrastValue, 3),
      SLOT(USBException::what, 2),
  };
}

#undef SLOT

static_assert(std::has_virtual_destructor_v<ScanBaseClient>);
static_assert(std::has_virtual_destructor_v<BaseUSBController>);
static_assert(std::has_virtual_destructor_v<USBException>);
static_assert(std::has_virtual_destructor_v<CUSBScanDataSource>);
static_assert(std::has_virtual_destructor_v<CHPUSBScanDataSource>);
static_assert(std::has_virtual_destructor_v<CLowEndUSBScanDataSource>);
static_assert(std::has_virtual_destructor_v<CQZUSBScanDataSource>);
static_assert(std::has_virtual_destructor_v<XMutex>);
static_assert(!std::is_polymorphic_v<TevraScanUIData>);
static_assert(!std::is_polymorphic_v<CErrorCodeDictionary>);
static_assert(!std::is_polymorphic_v<ProductData>);
static_assert(std::is_same_v<decltype(&ScanBaseClient::GetProductData),
                             void (ScanBaseClient::*)(std::string, ProductData&)>);

static_assert(std::is_base_of_v<ScanBaseClient, CScanUSBClient>);
static_assert(std::is_base_of_v<BaseUSBController, USB_HP_Controller>);
static_assert(std::is_base_of_v<BaseUSBController, USB_LowEnd_Controller>);
static_assert(std::is_base_of_v<BaseUSBController, USB_QZ_Controller>);
static_assert(std::is_base_of_v<CUSBScanDataSource, CHPUSBScanDataSource>);
static_assert(std::is_base_of_v<CUSBScanDataSource, CLowEndUSBScanDataSource>);
static_assert(std::is_base_of_v<CUSBScanDataSource, CQZUSBScanDataSource>);
static_assert(sizeof(CHPUSBScanDataSource) == sizeof(CUSBScanDataSource), "adds no data");
static_assert(sizeof(CLowEndUSBScanDataSource) == sizeof(CUSBScanDataSource) + sizeof(std::string),
              "adds one text");
static_assert(sizeof(CQZUSBScanDataSource) == sizeof(CUSBScanDataSource) + 56 + 8,
              "adds the two mode pages");
static_assert(std::is_same_v<decltype(&scanFromStoreApp), void (*)(int)>);
static_assert(sizeof(CScanUSBClient) == sizeof(ScanBaseClient) + sizeof(void*), "adds one pointer");
static_assert(std::is_same_v<decltype(ScanBaseClient::m_scanUIData), TevraScanUIData>);
static_assert(sizeof(USBException) == sizeof(std::exception), "adds no field");

inline bool dictionaryIsInOrder(const CErrorCodeDictionary& d) {
  return inOrder(d, d.m_strScannerBusy, d.m_strDeviceError, d.m_strGeneralError,
                 d.m_strJobCancelled, d.m_strNoDocument, d.m_strInvalidRequest, d.m_strPaperJam,
                 d.m_strCommFailure, d.m_strTitle, d.m_strCommFailureTitle, d.m_strCoverOpen,
                 d.m_strPaperJamTitle);
}

inline bool productIsInOrder(const ProductData& p) {
  return inOrder(p, p.ModelName, p.SysObjectIds, p.USBProductId, p.USBVendorId,
                 p.ConditionalModelDesignation, p.Mimic, p.PrinterMimic, p.TwainSettingURL,
                 p.MopriaSettingURL, p.DefaultColorMode, p.DefaultResolution, p.DefaultScanSide,
                 p.DefaultPaperSupport, p.RatedSpeed, p.DefaultNetworkScan, p.USBScanSupport,
                 p.IPPScanSupport, p.NSPScanSupport, p.SslSysObjectId, p.ControllerFamily,
                 p.USBEndPointHWID, p.ColorModes, p.Resolution, p.ScanSides, p.PaperSupport);
}

inline bool settingsAreInOrder(const TevraScanUIData& s) {
  return inOrder(s, s.mediaSize, s.pageWidth, s.pageHeight, s.sides, s.resolution, s.colorMode,
                 s.brightness, s.contrast, s.backgroundRemoval, s.modelName) &&
         reinterpret_cast<std::uintptr_t>(&s.pageHeight) ==
             reinterpret_cast<std::uintptr_t>(&s.pageWidth) + 4;
}

}  // namespace tvrscn::contract

#endif  // TVRSCN_TESTS_CONTRACT_LAYOUT_H
