// The few IPP bytes of a status question and its answer (RFC 8010), for systems that bring no IPP
// of their own. Knows no system, so that it is tested wherever that is easiest.
//
// A message is a header of 8 bytes, then groups of attributes: a tag below 10h begins a group, 03h
// ends the message, any other tag begins a value: tag, name length, name, value length, value, both
// lengths in two bytes. Without a name it is a further value of the attribute before it.
#ifndef TVRSCN_PLATFORM_TDSPCLIENT_IPP_IPP_MESSAGE_H
#define TVRSCN_PLATFORM_TDSPCLIENT_IPP_IPP_MESSAGE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/tdspclient/printer_status.h"
#include "platform/tdspclient/status_connection.h"
#include "tvrscn/big_endian.h"

namespace tvrscn {

struct IppHeader {
  std::uint8_t majorVersion;
  std::uint8_t minorVersion;
  BigEndian16 code;  // operation of a question, status of an answer
  BigEndian32 requestId;
};
static_assert(sizeof(IppHeader) == 8 && offsetof(IppHeader, code) == 2 &&
              offsetof(IppHeader, requestId) == 4);

// The question for the status attributes of the device at that URI.
std::string encodeStatusQuestion(std::string_view uri);

// Reads an answer. kNone for anything that is not a whole answer to our question; only kStatus
// fills status.
Reply decodeStatusAnswer(std::string_view bytes, PrinterStatus& status);

}  // namespace tvrscn

#endif  // TVRSCN_PLATFORM_TDSPCLIENT_IPP_IPP_MESSAGE_H
