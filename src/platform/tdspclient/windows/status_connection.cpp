// IPP over WinHTTP; the bytes are our own.
#include "platform/tdspclient/status_connection.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <utility>

#include <windows.h>

#include <winhttp.h>

#include "platform/tdspclient/ipp/ipp_message.h"

namespace tvrscn {
namespace {

class Internet {
 public:
  explicit Internet(HINTERNET handle = nullptr) : handle_(handle) {}
  Internet(Internet&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Internet& operator=(Internet&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~Internet() {
    if (handle_ != nullptr) WinHttpCloseHandle(handle_);
  }

  HINTERNET get() const { return handle_; }
  bool valid() const { return handle_ != nullptr; }

 private:
  HINTERNET handle_;
};

// Addresses and paths are plain ASCII.
std::wstring wide(const std::string& text) {
  return {text.begin(), text.end()};
}

int millisecondsLeft(Deadline deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
      deadline - std::chrono::steady_clock::now());
  return static_cast<int>(std::max<long long>(left.count(), 0));
}

// A thread that was left behind must find its code: the library stays for good once it has asked.
void stayLoaded() {
  static constexpr wchar_t kAnchor = L'\0';
  HMODULE self = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                     &kAnchor, &self);
}

// A device that sends its callers elsewhere or wants a name and a password has refused.
bool keepToTheQuestion(HINTERNET request) {
  DWORD features =
      WINHTTP_DISABLE_REDIRECTS | WINHTTP_DISABLE_COOKIES | WINHTTP_DISABLE_AUTHENTICATION;
  return WinHttpSetOption(request, WINHTTP_OPTION_DISABLE_FEATURE, &features, sizeof features) !=
         FALSE;
}

Internet openSession(int milliseconds) {
  Internet session(WinHttpOpen(L"tvrscn_TDSPClient", WINHTTP_ACCESS_TYPE_NO_PROXY,
                               WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0));
  if (!session.valid()) return session;
  WinHttpSetTimeouts(session.get(), milliseconds, milliseconds, milliseconds, milliseconds);
  return session;
}

bool sendQuestion(HINTERNET request, std::string& question) {
  const std::wstring header = L"Content-Type: " + wide(kIppMediaType);
  const auto size = static_cast<DWORD>(question.size());
  return WinHttpSendRequest(request, header.c_str(), static_cast<DWORD>(header.size()),
                            question.data(), size, size, 0) != FALSE &&
         WinHttpReceiveResponse(request, nullptr) != FALSE;
}

DWORD httpStatus(HINTERNET request) {
  DWORD status = 0;
  DWORD size = sizeof status;
  if (WinHttpQueryHeaders(request, WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                          WINHTTP_HEADER_NAME_BY_INDEX, &status, &size,
                          WINHTTP_NO_HEADER_INDEX) == FALSE) {
    return 0;
  }
  return status;
}

// False when the body breaks off, is longer than an answer may be, or takes too long.
bool readBody(HINTERNET request, Deadline deadline, std::string& body) {
  constexpr DWORD kPart = 4096;
  while (millisecondsLeft(deadline) != 0) {
    const std::size_t had = body.size();
    body.resize(had + kPart);
    DWORD count = 0;
    if (WinHttpReadData(request, body.data() + had, kPart, &count) == FALSE) return false;
    body.resize(had + count);
    if (count == 0) return true;
    if (body.size() > kMaxAnswerSize) return false;
  }
  return false;
}

class WinHttpConnection : public StatusConnection {
 public:
  Reply ask(const DeviceAddress& address, const std::string& path, Deadline deadline,
            PrinterStatus& status) override {
    stayLoaded();
    const int milliseconds = millisecondsLeft(deadline);
    // 0 would mean to wait for ever.
    if (milliseconds == 0) return Reply::kNone;
    const Internet session = openSession(milliseconds);
    if (!session.valid()) return Reply::kNone;
    const std::wstring host = wide(hostInUri(address));
    const Internet connection(WinHttpConnect(session.get(), host.c_str(), address.port, 0));
    if (!connection.valid()) return Reply::kNone;
    const RequestInUse request(
        *this, WinHttpOpenRequest(connection.get(), L"POST", wide(path).c_str(), nullptr,
                                  WINHTTP_NO_REFERER, WINHTTP_DEFAULT_ACCEPT_TYPES, 0));
    if (request.get() == nullptr || !keepToTheQuestion(request.get())) return Reply::kNone;
    return exchange(request.get(), encodeStatusQuestion(printerUri(address, path)), deadline,
                    status);
  }

  // Calls on a request that is closed under them fail. Where they do not before they end, the
  // time-outs of the single steps do it.
  void abort() override {
    const std::lock_guard<std::mutex> lock(mutex_);
    aborted_ = true;
    request_ = Internet();
  }

 private:
  // The request can be closed by abort as long as this lives, and is closed at the end.
  class RequestInUse {
   public:
    RequestInUse(WinHttpConnection& owner, HINTERNET request) : owner_(owner) {
      const std::lock_guard<std::mutex> lock(owner_.mutex_);
      Internet opened(request);
      if (owner_.aborted_) return;
      owner_.request_ = std::move(opened);
      handle_ = request;
    }
    RequestInUse(const RequestInUse&) = delete;
    RequestInUse& operator=(const RequestInUse&) = delete;
    ~RequestInUse() {
      const std::lock_guard<std::mutex> lock(owner_.mutex_);
      owner_.request_ = Internet();
    }

    HINTERNET get() const { return handle_; }

   private:
    WinHttpConnection& owner_;
    HINTERNET handle_ = nullptr;
  };

  static Reply exchange(HINTERNET request, std::string question, Deadline deadline,
                        PrinterStatus& status) {
    if (!sendQuestion(request, question)) return Reply::kNone;
    const DWORD code = httpStatus(request);
    if (code >= HTTP_STATUS_AMBIGUOUS) return Reply::kRefused;
    if (code != HTTP_STATUS_OK) return Reply::kNone;
    std::string body;
    if (!readBody(request, deadline, body)) return Reply::kNone;
    return decodeStatusAnswer(body, status);
  }

  std::mutex mutex_;
  Internet request_;
  bool aborted_ = false;
};

}  // namespace

std::unique_ptr<StatusConnection> makeStatusConnection() {
  return std::make_unique<WinHttpConnection>();
}

}  // namespace tvrscn
