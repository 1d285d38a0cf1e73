#include "platform/tdspclient/device_address.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace tvrscn {
namespace {

constexpr std::size_t kMaxHostLength = 255;

constexpr std::string_view kLettersAndDigits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
constexpr std::string_view kHexDigits = "0123456789ABCDEFabcdef";

bool consistsOf(std::string_view text, std::string_view characters, std::string_view more) {
  return std::all_of(text.begin(), text.end(), [&](char character) {
    return characters.find(character) != std::string_view::npos ||
           more.find(character) != std::string_view::npos;
  });
}

bool isName(std::string_view text) {
  return !text.empty() && consistsOf(text, kLettersAndDigits, ".-_");
}

// Good enough to tell it from other texts; the system decides. A zone ("%eth0") may follow.
bool isIpv6(std::string_view text) {
  const std::size_t percent = text.find('%');
  const std::string_view digits = text.substr(0, percent);
  if (std::count(digits.begin(), digits.end(), ':') < 2) return false;
  if (!consistsOf(digits, kHexDigits, ":.")) return false;
  return percent == std::string_view::npos || isName(text.substr(percent + 1));
}

std::optional<std::uint16_t> portNumber(std::string_view text) {
  std::uint16_t port = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, port);
  if (error != std::errc() || stop != end || port == 0) return std::nullopt;
  return port;
}

// An address in brackets, or a name; a port may follow.
std::optional<DeviceAddress> withOptionalPort(std::string_view text) {
  DeviceAddress address;
  std::string_view rest;
  if (text.front() == '[') {
    const std::size_t end = text.find(']');
    if (end == std::string_view::npos) return std::nullopt;
    address.host = text.substr(1, end - 1);
    address.ipv6 = true;
    rest = text.substr(end + 1);
  } else {
    const std::size_t colon = std::min(text.find(':'), text.size());
    address.host = text.substr(0, colon);
    rest = text.substr(colon);
  }
  if (!(address.ipv6 ? isIpv6(address.host) : isName(address.host))) return std::nullopt;
  if (rest.empty()) return address;
  if (rest.front() != ':') return std::nullopt;
  const std::optional<std::uint16_t> port = portNumber(rest.substr(1));
  if (!port) return std::nullopt;
  address.port = *port;
  return address;
}

}  // namespace

std::optional<DeviceAddress> deviceAddress(std::wstring_view text) {
  text = text.substr(0, text.find(L'/'));
  if (text.empty() || text.size() > kMaxHostLength) return std::nullopt;
  std::string plain;
  for (const wchar_t character : text) {
    constexpr wchar_t kLastAscii = 0x7E;
    if (character <= L' ' || character > kLastAscii) return std::nullopt;
    plain += static_cast<char>(character);
  }
  if (isIpv6(plain)) return DeviceAddress{plain, true, kIppPort};
  return withOptionalPort(plain);
}

std::string hostInUri(const DeviceAddress& address) {
  if (!address.ipv6) return address.host;
  std::string host = address.host;
  host.insert(host.begin(), '[');
  host += ']';
  return host;
}

std::string printerUri(const DeviceAddress& address, std::string_view path) {
  std::string uri = "ipp://";
  uri += hostInUri(address);
  uri += ':';
  uri += std::to_string(address.port);
  uri += path;
  return uri;
}

}  // namespace tvrscn
