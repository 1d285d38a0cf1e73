// What drivers were compiled against: sizes, offsets, values and the order of virtual functions.
// layout.h has what holds at compile time.
#include <cstring>

#include <gtest/gtest.h>

#include "layout.h"

namespace tvrscn::contract {
namespace {

TEST(WireLayout, EveryFieldStandsWhereTheDeviceHasIt) {
  for (const Field& field : kFields) {
    EXPECT_EQ(field.offset, field.expectedOffset) << field.record << "." << field.name;
    EXPECT_EQ(field.size, field.expectedSize) << field.record << "." << field.name;
  }
}

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

TEST(WireLayout, LittleEndianFieldsReadAndWriteLowByteFirst) {
  LittleEndian32 four{};
  four.set(0x01020304U);
  EXPECT_EQ(std::memcmp(four.bytes, "\x04\x03\x02\x01", 4), 0);
  EXPECT_EQ((LittleEndian32{{0x01, 0x00, 0xFE, 0xFF}}.value()), 0xFFFE0001U);
}

TEST(WireLayout, LowEndRequestWithoutPayload) {
  LowEnd_USB_Response request;
  request.operationCode = LowEndOpDeviceStatus;
  EXPECT_EQ(std::memcmp(&request, "\x1B\x4E\x04\0\0\0\0\0\x80\0", sizeof request), 0);
  request.operationCode = LowEndOpStartScan;
  request.payloadLength.set(300);
  EXPECT_EQ(std::memcmp(&request, "\x1B\x4E\x01\0\x2C\x01\0\0\x80\0", sizeof request), 0);
}

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

TEST(Values, LowEndOperationCodes) {
  EXPECT_EQ(LowEndOpStartScan, 1);
  EXPECT_EQ(LowEndOpImageData, 2);
  EXPECT_EQ(LowEndOpSupportedFeatures, 3);
  EXPECT_EQ(LowEndOpDeviceStatus, 4);
  EXPECT_EQ(LowEndOpAbortScan, 15);
  EXPECT_EQ(sizeof(LowEndUSBOperationCode), 1U);
}

TEST(Values, QZDeviceCodes) {
  const struct {
    int code;
    int value;
  } kCases[] = {
      {USBVENDOR_INITIALIZE, 0x07},
      {USBVENDOR_INQUIRY, 0x12},
      {USBVENDOR_RESERVE_UNIT, 0x16},
      {USBVENDOR_RELEASE_UNIT, 0x17},
      {USBVENDOR_SCAN, 0x1B},
      {USBVENDOR_SET_WINDOW, 0x24},
      {USBVENDOR_READ, 0x28},
      {USBVENDOR_MODE_SELECT, 0x55},
      {USBVENDOR_MODE_SENSE, 0x5A},
      {USBVENDOR_TEST_UNIT_READY, 0xC1},
      {USBVENDOR_READ_BLOCK_HEADER, 0xC2},
      {USBVENDOR_WAKEUP, 0xC3},
  };
  for (const auto& row : kCases)
    EXPECT_EQ(row.code, row.value);
}

TEST(VirtualFunctions, StandInTheSlotsThatDriversCall) {
  for (const Slot& slot : virtualSlots())
    EXPECT_EQ(slot.slot, slot.expected) << slot.function;
  for (const Slot& slot : QZTestPeer::virtualSlots())
    EXPECT_EQ(slot.slot, slot.expected) << slot.function;
}

TEST(Members, OfTheDictionaryInOrder) {
  EXPECT_TRUE(dictionaryIsInOrder(CErrorCodeDictionary()));
}

TEST(Members, OfAModelInOrder) {
  EXPECT_TRUE(productIsInOrder(ProductData()));
}

TEST(Members, OfTheSettingsInOrder) {
  EXPECT_TRUE(settingsAreInOrder(TevraScanUIData()));
}

TEST(Members, OfTheQZFamilyInOrder) {
  EXPECT_TRUE(QZTestPeer::membersAreInOrder(USB_QZ_Controller()));
  EXPECT_TRUE(QZTestPeer::membersAreInOrder(CQZUSBScanDataSource()));
}

TEST(Members, DisorderIsSeen) {
  const struct {
    int first;
    int second;
  } record = {1, 2};
  EXPECT_TRUE(inOrder(record, record.first, record.second));
  EXPECT_FALSE(inOrder(record, record.second, record.first));
}

TEST(VirtualFunctions, OthersHaveNoSlot) {
  EXPECT_EQ(slotOf(&BaseUSBController::GetMutexPtr), kNotVirtual);
}

}  // namespace
}  // namespace tvrscn::contract
