// The operations of the LowEnd wire: a request is one write, its answer is the next thing that
// comes. A transfer that fails says so only by what did not come: an empty document.
#include "family_lowend/lowend_commands.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <new>

#include <nlohmann/json.hpp>

#include "family_lowend/lowend_document.h"
#include "platform/device_file.h"
#include "platform/threads.h"
#include "tvrscn/lowend_controller.h"

namespace {

using Json = nlohmann::json;

constexpr DWORD kBeforeVerdictWait = 500;  // milliseconds
constexpr std::uint8_t kVerdictMask = 0x0F;
constexpr std::size_t kRequestLengthMask = 0xFFFF;

constexpr LowEnd_USB_Response kNoAnswer = {0, 0, 0, 0, {}, 0, 0};

LowEnd_USB_Response makeRequest(LowEndUSBOperationCode code, std::uint32_t payloadLength) {
  LowEnd_USB_Response request;
  request.operationCode = code;
  request.payloadLength.set(payloadLength);
  return request;
}

struct VerdictRow {
  unsigned char value;
  USBStatusErrors status;
};

// The gaps are the device's: 3 and 5 are failures without detail.
constexpr VerdictRow kVerdicts[] = {
    {0, USB_SUCCESS},         {1, USB_ERR_COMMAND},     {2, USB_ERR_COMMAND},
    {4, USB_ERR_POWER_RESET}, {6, USB_ERR_POWER_RESET},
};

// An announced length up to which memory is taken at once.
constexpr std::size_t kBelievedLength = 1024UL * 1024;

using ZeroedBytes = std::unique_ptr<char, void (*)(void*)>;

// By calloc, since memory that the system has just given is zero without being touched: a device
// that announces four gigabytes and sends ten bytes costs the ten.
ZeroedBytes allocateZeroed(std::size_t length) {
  if (length > std::string().max_size()) throw std::bad_alloc();
  ZeroedBytes bytes(static_cast<char*>(std::calloc(length, 1)), std::free);
  if (bytes == nullptr) throw std::bad_alloc();
  return bytes;
}

// Fills minimum, maximum and normal, or nothing when one of them is missing or is no number. Throws
// for a section that is no object.
void readRange(const Json& document, const char* section, IPPMinMaxNormalStepData& range) {
  if (!document.is_object() || !document.contains(section)) return;
  const auto& fields = document.at(section).get_ref<const Json::object_t&>();
  const auto isNumber = [&fields](const char* key) {
    const auto found = fields.find(key);
    return found != fields.end() && found->second.is_number();
  };
  if (!isNumber("start") || !isNumber("end") || !isNumber("userDefault")) return;
  range.Min = tvrscn::toInt32(fields.at("start"));
  range.Max = tvrscn::toInt32(fields.at("end"));
  range.Normal = tvrscn::toInt32(fields.at("userDefault"));
}

}  // namespace

std::string tvrscn::startScanRequest(const std::string& document) {
  const LowEnd_USB_Response header =
      makeRequest(LowEndOpStartScan, static_cast<std::uint32_t>(document.size()));
  std::string request(sizeof(header), '\0');
  std::memcpy(request.data(), &header, sizeof(header));
  request += document;
  request.resize(request.size() & kRequestLengthMask);
  return request;
}

int USB_LowEnd_Controller::WriteRequest(const void* buffer, std::size_t length) {
  DWORD written = 0;  // a short write shows in the answer
  FlushFileBuffers(m_hDeviceWrite);
  const BOOL result =
      WriteFile(m_hDeviceWrite, buffer, static_cast<DWORD>(length), &written, nullptr);
  return result != 0 ? result : static_cast<int>(GetLastError());
}

unsigned long USB_LowEnd_Controller::ReadResponse(void* buffer, std::size_t length) {
  DWORD received = 0;
  FlushFileBuffers(m_hDeviceRead);
  ReadFile(m_hDeviceRead, buffer, static_cast<DWORD>(length), &received, nullptr);
  // A driver that claims more than it was asked for is not believed.
  return static_cast<unsigned long>(std::min<std::size_t>(received, length));
}

// Only data ends this: a device that has fallen silent may still deliver. What is small enough to
// be believed is read where it stays.
void USB_LowEnd_Controller::ReadPayload(std::string& text, std::size_t length) {
  for (std::size_t remaining = length; remaining != 0;) {
    const std::size_t held = text.size();
    if (remaining <= kBelievedLength) {
      text.resize(held + remaining);
      text.resize(held + ReadResponse(text.data() + held, remaining));
    } else {
      const ZeroedBytes piece = allocateZeroed(remaining);
      text.append(piece.get(), ReadResponse(piece.get(), remaining));
    }
    remaining -= text.size() - held;
  }
}

int USB_LowEnd_Controller::SendRequestAndReceiveResponse(LowEndUSBOperationCode code,
                                                         LowEnd_USB_Response& response,
                                                         std::string& payload) {
  const LowEnd_USB_Response request = makeRequest(code, 0);
  int result = WriteRequest(&request, sizeof(request));
  response = kNoAnswer;
  // A write that failed with an error of its own is followed by a read all the same.
  if (result != 0) result = static_cast<int>(ReadResponse(&response, sizeof(response)));
  if (response.operationCode != code) return result;

  payload.clear();
  ReadPayload(payload, response.payloadLength.value());
  return result;
}

USBStatusErrors USB_LowEnd_Controller::CheckResponseStatus(const unsigned char& status) {
  for (const VerdictRow& row : kVerdicts) {
    if (row.value == status) return row.status;
  }
  return USB_ERR_GENERAL;
}

int USB_LowEnd_Controller::GetLowEndUSBSupportedFeatures(std::string& json) {
  LowEnd_USB_Response response;
  const int result = SendRequestAndReceiveResponse(LowEndOpSupportedFeatures, response, json);
  return json.empty() ? USB_ERR_COMMAND : result;
}

int USB_LowEnd_Controller::GetLowEndUSBDeviceStatus(std::string& json) {
  LowEnd_USB_Response response;
  const int result = SendRequestAndReceiveResponse(LowEndOpDeviceStatus, response, json);
  return json.empty() ? USB_ERR_COMMAND : result;
}

void USB_LowEnd_Controller::Get_Supported_Darkness_Brightness(std::string& json,
                                                              IPPMinMaxNormalStepData& first,
                                                              IPPMinMaxNormalStepData& second) {
  if (json.empty()) return;
  try {
    const auto document = Json::parse(json);
    readRange(document, "supportedDarknessInfo", first);
    readRange(document, "supportedContrastInfo", second);
  } catch (const std::exception&) {
    return;  // what was filled stays filled
  }
}

int USB_LowEnd_Controller::AbortScanOperation(bool& /*unused*/) {
  LowEnd_USB_Response response;
  std::string payload;
  return SendRequestAndReceiveResponse(LowEndOpAbortScan, response, payload);
}

USBStatusErrors USB_LowEnd_Controller::SendStartScanCommand(const bool& adfPaperLoaded) {
  if (!m_scanDataSource) return USB_ERR_SCANNER_STATE;

  const std::string request =
      tvrscn::startScanRequest(m_scanDataSource->GetScanRequestJSON("", adfPaperLoaded));
  LowEnd_USB_Response header = kNoAnswer;
  m_lastIoResult = static_cast<std::uint32_t>(WriteRequest(request.data(), request.size()));
  if (m_lastIoResult != 0) {
    m_lastIoResult = static_cast<std::uint32_t>(ReadResponse(&header, sizeof(header)));
  }
  // The device thinks about its verdict between header and document.
  Sleep(kBeforeVerdictWait);

  std::string reply;
  if (header.operationCode == LowEndOpStartScan) {
    ReadPayload(reply, header.payloadLength.value());
    const USBStatusErrors verdict = CheckResponseStatus(header.statusByte & kVerdictMask);
    if (verdict != USB_SUCCESS) return verdict;
  }
  std::string words;
  return m_scanDataSource->CheckScanningRequestStatus(reply, m_imageFolderPath, words);
}
