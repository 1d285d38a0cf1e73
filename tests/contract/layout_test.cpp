// What drivers were compiled against: sizes, offsets, values and the order of virtual functions.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <type_traits>

#include <gtest/gtest.h>

#include "tvrscn/tvrscn_USBClient.h"

namespace {

// --- The notification record
// -------------------------------------------------------------------------

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

// --- Records of the HP wire
// ------------------------------------------------------------------------------

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

const Field kFields[] = {
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
};

#undef FIELD

TEST(WireLayout, EveryFieldStandsWhereTheDeviceHasIt) {
  for (const Field& field : kFields) {
    EXPECT_EQ(field.offset, field.expectedOffset) << field.record << "." << field.name;
    EXPECT_EQ(field.size, field.expectedSize) << field.record << "." << field.name;
  }
}

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

TEST(WireLayout, BigEndianFieldsReadAndWriteHighByteFirst) {
  BigEndian32 four{};
  four.set(0x01020304U);
  EXPECT_EQ(std::memcmp(four.bytes, "\x01\x02\x03\x04", 4), 0);
  EXPECT_EQ((BigEndian32{{0xFF, 0xFE, 0x00, 0x01}}.value()), 0xFFFE0001U);
  BigEndian16 two{};
  two.set(0xA1B2U);
  EXPECT_EQ(std::memcmp(two.bytes, "\xA1\xB2", 2), 0);
  EXPECT_EQ((BigEndian16{{0x80, 0x01}}.value()), 0x8001U);
}

// --- Values
// -------------------------------------------------------------------------------------------------

TEST(Values, StatusCodes) {
  const struct {
    USBStatusErrors status;
    int value;
  } kCases[] = {
      {USB_ERR_CONNECTION, 15000},
      {USB_ERR_RESOURCE, 15001},
      {USB_ERR_READ, 15002},
      {USB_ERR_WRITE, 15005},
      {USB_ERR_OPEN, 15007},
      {USB_ERR_NO_DEVICE_SETUP, 15008},
      {USB_SUCCESS, 15009},
      {USB_ERR_GENERAL, 15010},
      {USB_ERR_POWER_RESET, 15011},
      {USB_ERR_PAPER_JAM, 15012},
      {USB_ERR_COVER_OPEN, 15013},
      {USB_ERR_SCANNER_STATE, 15015},
      {USB_ERR_COMMAND, 15016},
      {USB_ERR_SCANNER_BUSY, 15017},
      {USB_ERR_SCANNER_IN_USE, 15018},
      {USB_ERR_JOB_CANCELLED, 15019},
  };
  for (const auto& row : kCases)
    EXPECT_EQ(static_cast<int>(row.status), row.value);
  EXPECT_EQ(sizeof(USBStatusErrors), 4U);
}

TEST(Values, NotificationTypes) {
  const struct {
    NotificationType type;
    int value;
  } kCases[] = {
      {NOTIFY_SCANNER_BUSY, 1001},    {NOTIFY_SCAN_FAILED, 1002},  {NOTIFY_TRANSFER_STARTED, 1004},
      {NOTIFY_IMAGE_READY, 1005},     {NOTIFY_JOB_COMPLETE, 1006}, {NOTIFY_CONN_FAILURE, 1011},
      {NOTIFY_ERROR_DISPLAYED, 1020}, {NOTIFY_JOB_ABORTED, 1021},
  };
  for (const auto& row : kCases)
    EXPECT_EQ(static_cast<int>(row.type), row.value);
  EXPECT_EQ(static_cast<int>(TVR_NOTIF_PRIORITY_NORMAL), 2);
}

TEST(Values, ControllerTypes) {
  EXPECT_EQ(static_cast<int>(CONTROLLER_QZ), 1);
  EXPECT_EQ(static_cast<int>(CONTROLLER_HP), 2);
  EXPECT_EQ(static_cast<int>(CONTROLLER_HP_ALT), 5);
  EXPECT_EQ(static_cast<int>(CONTROLLER_LOWEND), 6);
}

TEST(Values, HPDeviceCodes) {
  EXPECT_EQ(HPPKUSB_STATUS_GOOD, 0);
  EXPECT_EQ(HPPKUSB_STATUS_CHECK_CONDITION, 2);
  EXPECT_EQ(HPPKUSB_STATUS_CANCELLED, 4);
  EXPECT_EQ(HPPKUSB_STATUS_BUSY, 8);
  EXPECT_EQ(HPPKUSB_STATUS_IN_USE, 9);
  EXPECT_EQ(HPPKUSB_BLOCK_JPEG_HEADER, 0x70);
  EXPECT_EQ(HPPKUSB_BLOCK_DATA, 0x80);
  EXPECT_EQ(HPPKUSB_BLOCK_END, 0x81);
  EXPECT_EQ(sizeof(HPPKUSBStatusCode), 1U);
  EXPECT_EQ(sizeof(HPPKUSBMessageData), 2U);
}

// --- Virtual functions
// -----------------------------------------------------------------------------------------

// The slot that a pointer to a virtual function names. Compilers of this ABI keep one more than its
// offset in the table there. The destructor takes the slots 0 and 1.
template <typename Function>
std::ptrdiff_t slotOf(Function function) {
  static_assert(sizeof(function) == 2 * sizeof(std::ptrdiff_t));
  std::ptrdiff_t word = 0;
  std::memcpy(&word, &function, sizeof word);
  EXPECT_EQ(word % static_cast<std::ptrdiff_t>(sizeof(void*)), 1) << "not a virtual function";
  return (word - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

TEST(VirtualFunctions, OfTheClients) {
  EXPECT_EQ(slotOf(&ScanBaseClient::Scan), 2);
  EXPECT_EQ(slotOf(&ScanBaseClient::InitScanConfigInfo), 3);
  EXPECT_EQ(slotOf(&ScanBaseClient::GetBrightnessContrastValue), 4);
  EXPECT_EQ(slotOf(&ScanBaseClient::InitExceptionStrings), 5);
  EXPECT_EQ(slotOf(&ScanBaseClient::GetScanInterfaceVersion), 6);
  EXPECT_EQ(slotOf(&ScanBaseClient::Dump), 7);
  EXPECT_EQ(slotOf(&ScanBaseClient::SetUsingTevraUI), 8);
  EXPECT_EQ(slotOf(&CScanUSBClient::Scan), 2);
  EXPECT_EQ(slotOf(&CScanUSBClient::InitScanConfigInfo), 3);
  EXPECT_EQ(slotOf(&CScanUSBClient::GetBrightnessContrastValue), 4);
  EXPECT_EQ(slotOf(&CScanUSBClient::InitExceptionStrings), 5);
  EXPECT_EQ(slotOf(&CScanUSBClient::Dump), 7);
  EXPECT_EQ(slotOf(&CScanUSBClient::SetUsingTevraUI), 8);
}

TEST(VirtualFunctions, OfTheControllers) {
  EXPECT_EQ(slotOf(&BaseUSBController::doScan), 2);
  EXPECT_EQ(slotOf(&BaseUSBController::GetUSBBrightnessContrastValue), 3);
  EXPECT_EQ(slotOf(&USB_HP_Controller::doScan), 2);
  EXPECT_EQ(slotOf(&USB_HP_Controller::GetUSBBrightnessContrastValue), 3);
}

TEST(VirtualFunctions, OfTheException) {
  EXPECT_EQ(slotOf(&USBException::what), 2);
}

TEST(VirtualFunctions, DestructorsOfThePolymorphicClasses) {
  static_assert(std::has_virtual_destructor_v<ScanBaseClient>);
  static_assert(std::has_virtual_destructor_v<BaseUSBController>);
  static_assert(std::has_virtual_destructor_v<USBException>);
  static_assert(std::has_virtual_destructor_v<CUSBScanDataSource>);
  static_assert(std::has_virtual_destructor_v<CHPUSBScanDataSource>);
  static_assert(std::has_virtual_destructor_v<XMutex>);
  static_assert(!std::is_polymorphic_v<TevraScanUIData>);
  static_assert(!std::is_polymorphic_v<CErrorCodeDictionary>);
}

static_assert(std::is_base_of_v<ScanBaseClient, CScanUSBClient>);
static_assert(std::is_base_of_v<BaseUSBController, USB_HP_Controller>);
static_assert(std::is_base_of_v<CUSBScanDataSource, CHPUSBScanDataSource>);
static_assert(sizeof(CHPUSBScanDataSource) == sizeof(CUSBScanDataSource), "adds no data");
static_assert(sizeof(CScanUSBClient) == sizeof(ScanBaseClient) + sizeof(void*), "adds one pointer");
static_assert(std::is_same_v<decltype(ScanBaseClient::m_scanUIData), TevraScanUIData>);
static_assert(sizeof(USBException) == sizeof(std::exception), "adds no field");

// Each member stands behind the one before it, within the object.
template <typename Object, typename... Members>
void expectInOrder(const Object& object, const Members&... members) {
  const auto addressOf = [](const auto& thing) { return reinterpret_cast<std::uintptr_t>(&thing); };
  std::uintptr_t end = addressOf(object);
  int position = 0;
  for (const std::uintptr_t member : {addressOf(members)...}) {
    EXPECT_GE(member, end) << "member " << position++;
    end = member + 1;
  }
  EXPECT_LE(end, addressOf(object) + sizeof object);
}

TEST(Members, OfTheDictionaryInOrder) {
  const CErrorCodeDictionary d;
  expectInOrder(d, d.m_strScannerBusy, d.m_strDeviceError, d.m_strGeneralError, d.m_strJobCancelled,
                d.m_strNoDocument, d.m_strInvalidRequest, d.m_strPaperJam, d.m_strCommFailure,
                d.m_strTitle, d.m_strCommFailureTitle, d.m_strCoverOpen, d.m_strPaperJamTitle);
}

TEST(Members, OfTheSettingsInOrder) {
  const TevraScanUIData s;
  expectInOrder(s, s.mediaSize, s.pageWidth, s.pageHeight, s.sides, s.resolution, s.colorMode,
                s.brightness, s.contrast, s.backgroundRemoval, s.modelName);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(&s.pageHeight),
            reinterpret_cast<std::uintptr_t>(&s.pageWidth) + 4);
}

}  // namespace
