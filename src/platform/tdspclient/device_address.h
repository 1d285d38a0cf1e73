// Where a device is asked for its status, taken from the text that a caller gives.
#ifndef TVRSCN_PLATFORM_TDSPCLIENT_DEVICE_ADDRESS_H
#define TVRSCN_PLATFORM_TDSPCLIENT_DEVICE_ADDRESS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tvrscn {

constexpr std::uint16_t kIppPort = 631;

struct DeviceAddress {
  std::string host;  // a name, or an IPv4 or IPv6 address without brackets
  bool ipv6 = false;
  std::uint16_t port = kIppPort;
};

// Takes "name", "192.0.2.7", "[2001:db8::7]", "2001:db8::7", the first three also with ":port";
// what stands behind the first "/" is left out. Nothing for a text that is none of these, so that
// no time is lost on it.
std::optional<DeviceAddress> deviceAddress(std::wstring_view text);

// The host as it stands in a URI: an IPv6 address in brackets.
std::string hostInUri(const DeviceAddress& address);

// The URI by which a device is asked about itself; path begins with "/".
std::string printerUri(const DeviceAddress& address, std::string_view path);

}  // namespace tvrscn

#endif  // TVRSCN_PLATFORM_TDSPCLIENT_DEVICE_ADDRESS_H
