// Which texts are addresses of devices, and what they mean.
#include "platform/tdspclient/device_address.h"

#include <string>

#include <gtest/gtest.h>

namespace tvrscn {
namespace {

TEST(DeviceAddress, IsAHostAndAPort) {
  const struct {
    const wchar_t* text;
    const char* host;
    bool ipv6;
    unsigned port;
  } kCases[] = {
      {L"198.51.100.7", "198.51.100.7", false, 631},
      {L"printer", "printer", false, 631},
      {L"printer-2.office_1.example.", "printer-2.office_1.example.", false, 631},
      {L"printer:8631", "printer", false, 8631},
      {L"127.0.0.1:1", "127.0.0.1", false, 1},
      {L"127.0.0.1:65535", "127.0.0.1", false, 65535},
      {L"printer/ipp/print", "printer", false, 631},
      {L"printer:80/", "printer", false, 80},
      {L"[::1]", "::1", true, 631},
      {L"[2001:db8::7]:8631", "2001:db8::7", true, 8631},
      {L"[fe80::1%eth0]:80/x", "fe80::1%eth0", true, 80},
      {L"2001:DB8::7", "2001:DB8::7", true, 631},
      {L"::ffff:192.0.2.1", "::ffff:192.0.2.1", true, 631},
  };
  for (const auto& row : kCases) {
    const std::optional<DeviceAddress> address = deviceAddress(row.text);
    ASSERT_TRUE(address.has_value()) << row.host;
    EXPECT_EQ(address->host, row.host);
    EXPECT_EQ(address->ipv6, row.ipv6) << row.host;
    EXPECT_EQ(address->port, row.port) << row.host;
  }
}

TEST(DeviceAddress, OtherTextsAreNone) {
  const wchar_t* const kTexts[] = {
      L"",           L"/",         L"/host",        L":631",    L"host:",       L"host:0",
      L"host:65536", L"host:-1",   L"host:+1",      L"host:8x", L"host:631 ",   L" host",
      L"a b",        L"host\t",    L"user@host",    L"host?x",  L"host:1:2",    L"[::1",
      L"[]",         L"[host]",    L"[::1]631",     L"[::1]:",  L"::1]",        L"[::1%]",
      L"[::1%a/b]",  L"h\u00F6st", L"host\uFF0Fx",  L"[[::1]]", L"host:999999", L"host\x7F",
      L"host:0x10",  L"%41",       L"[1:2:3:4:g::]"};
  for (const wchar_t* text : kTexts)
    EXPECT_FALSE(deviceAddress(text).has_value()) << ::testing::PrintToString(text);
}

TEST(DeviceAddress, LengthIsBounded) {
  EXPECT_TRUE(deviceAddress(std::wstring(255, L'a')).has_value());
  EXPECT_FALSE(deviceAddress(std::wstring(256, L'a')).has_value());
  EXPECT_TRUE(deviceAddress(L"host/" + std::wstring(100000, L'a')).has_value());
}

TEST(DeviceAddress, UriOfAPrinter) {
  EXPECT_EQ(printerUri({"host", false, 631}, "/ipp/print"), "ipp://host:631/ipp/print");
  EXPECT_EQ(printerUri({"2001:db8::7", true, 8631}, "/"), "ipp://[2001:db8::7]:8631/");
}

}  // namespace
}  // namespace tvrscn
