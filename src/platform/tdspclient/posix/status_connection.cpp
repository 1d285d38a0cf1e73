// IPP through libcups. Every question has a connection of its own, since libcups would open a used
// one again by itself, and then wait for as long as it likes.
#include "platform/tdspclient/status_connection.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <mutex>
#include <vector>

#include <cups/http.h>
#include <cups/ipp.h>
#include <pthread.h>
#include <sys/socket.h>

namespace tvrscn {
namespace {

using Bytes = std::vector<ipp_uchar_t>;

struct HttpClose {
  void operator()(http_t* http) const { httpClose(http); }
};
using HttpPointer = std::unique_ptr<http_t, HttpClose>;

struct IppDelete {
  void operator()(ipp_t* message) const { ippDelete(message); }
};
using IppPointer = std::unique_ptr<ipp_t, IppDelete>;

std::chrono::milliseconds timeLeft(Deadline deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
      deadline - std::chrono::steady_clock::now());
  return std::max(left, std::chrono::milliseconds(0));
}

// The first use of libcups ignores SIGPIPE for the whole process; what the host program has set
// comes back.
void initializeCups() {
  static std::once_flag once;
  std::call_once(once, [] {
    struct sigaction handling = {};
    sigaction(SIGPIPE, nullptr, &handling);
    httpInitialize();
    sigaction(SIGPIPE, &handling, nullptr);
  });
}

// This thread is nobody's place for signals: a connection that breaks while it is written to is a
// failed write, and the host program's handlers run on its own threads.
void blockSignals() {
  sigset_t all = {};
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

struct ByteRange {
  const ipp_uchar_t* at;
  std::size_t left;
};

ssize_t writeBytes(void* bytes, ipp_uchar_t* data, std::size_t size) {
  auto* const all = static_cast<Bytes*>(bytes);
  all->insert(all->end(), data, data + size);
  return static_cast<ssize_t>(size);
}

ssize_t readBytes(void* range, ipp_uchar_t* data, std::size_t size) {
  auto* const bytes = static_cast<ByteRange*>(range);
  const std::size_t taken = std::min(size, bytes->left);
  if (taken != 0) std::memcpy(data, bytes->at, taken);
  bytes->at += taken;
  bytes->left -= taken;
  return static_cast<ssize_t>(taken);
}

Bytes questionFor(const std::string& uri) {
  // ippNewRequest would ask in the language of the environment.
  const IppPointer question(ippNew());
  ippSetVersion(question.get(), 1, 1);
  ippSetOperation(question.get(), IPP_OP_GET_PRINTER_ATTRIBUTES);
  ippSetRequestId(question.get(), static_cast<int>(kRequestId));
  const auto add = [&question](ipp_tag_t tag, const char* name, const char* value) {
    ippAddString(question.get(), IPP_TAG_OPERATION, tag, name, nullptr, value);
  };
  add(IPP_TAG_CHARSET, "attributes-charset", "utf-8");
  add(IPP_TAG_LANGUAGE, "attributes-natural-language", "en");
  add(IPP_TAG_URI, "printer-uri", uri.c_str());
  ippAddStrings(question.get(), IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes",
                static_cast<int>(std::size(kStatusAttributes)), nullptr, kStatusAttributes);
  Bytes bytes;
  ippWriteIO(&bytes, writeBytes, 1, nullptr, question.get());
  return bytes;
}

void keepValue(PrinterStatus& status, ipp_attribute_t* attribute, int number) {
  const char* const name = ippGetName(attribute);
  switch (ippGetValueTag(attribute)) {
    case IPP_TAG_ENUM:
      if (std::strcmp(name, kStateAttribute) == 0) status.state = ippGetInteger(attribute, number);
      break;
    case IPP_TAG_KEYWORD:
    case IPP_TAG_TEXT:
    case IPP_TAG_TEXTLANG:
      if (const char* text = ippGetString(attribute, number, nullptr)) keepText(status, name, text);
      break;
    case IPP_TAG_STRING: {
      int length = 0;
      const void* const text = ippGetOctetString(attribute, number, &length);
      if (text != nullptr && length >= 0) {
        keepText(status, name, {static_cast<const char*>(text), static_cast<std::size_t>(length)});
      }
      break;
    }
    default:
      break;
  }
}

Reply readAnswer(const Bytes& bytes, PrinterStatus& status) {
  const IppPointer answer(ippNew());
  ByteRange range{bytes.data(), bytes.size()};
  if (ippReadIO(&range, readBytes, 1, nullptr, answer.get()) != IPP_STATE_DATA) return Reply::kNone;
  if (ippGetRequestId(answer.get()) != static_cast<int>(kRequestId)) return Reply::kNone;
  if (ippGetStatusCode(answer.get()) >= kFirstFailureStatus) return Reply::kRefused;
  for (ipp_attribute_t* attribute = ippFirstAttribute(answer.get()); attribute != nullptr;
       attribute = ippNextAttribute(answer.get())) {
    // Without a name it only parts two groups.
    if (ippGetGroupTag(attribute) != IPP_TAG_PRINTER || ippGetName(attribute) == nullptr) continue;
    for (int number = 0; number < ippGetCount(attribute); ++number)
      keepValue(status, attribute, number);
  }
  return Reply::kStatus;
}

// False when the body breaks off or is longer than an answer may be.
bool readBody(http_t* http, Bytes& body) {
  constexpr std::size_t kPart = 4096;
  for (;;) {
    const std::size_t had = body.size();
    body.resize(had + kPart);
    const ssize_t count = httpRead2(http, reinterpret_cast<char*>(body.data() + had), kPart);
    if (count < 0) return false;
    body.resize(had + static_cast<std::size_t>(count));
    if (count == 0) return true;
    if (body.size() > kMaxAnswerSize) return false;
  }
}

bool sendQuestion(http_t* http, const std::string& path, const Bytes& question) {
  httpClearFields(http);
  httpSetField(http, HTTP_FIELD_CONTENT_TYPE, kIppMediaType);
  httpSetLength(http, question.size());
  if (httpPost(http, path.c_str()) != 0) return false;
  const char* const bytes = reinterpret_cast<const char*>(question.data());
  return httpWrite2(http, bytes, question.size()) == static_cast<ssize_t>(question.size());
}

class CupsConnection : public StatusConnection {
 public:
  Reply ask(const DeviceAddress& address, const std::string& path, Deadline deadline,
            PrinterStatus& status) override {
    blockSignals();
    initializeCups();
    const int milliseconds = static_cast<int>(timeLeft(deadline).count());
    if (milliseconds == 0) return Reply::kNone;
    const HttpPointer http(httpConnect2(address.host.c_str(), address.port, nullptr, AF_UNSPEC,
                                        HTTP_ENCRYPTION_NEVER, 1, milliseconds, nullptr));
    if (http == nullptr) return Reply::kNone;
    const SocketInUse inUse(*this, httpGetFd(http.get()));
    constexpr double kMillisecond = 0.001;
    httpSetTimeout(http.get(), milliseconds * kMillisecond, nullptr, nullptr);
    return exchange(http.get(), path, questionFor(printerUri(address, path)), deadline, status);
  }

  void abort() override {
    const std::lock_guard<std::mutex> lock(mutex_);
    aborted_ = true;
    if (socket_ >= 0) shutdown(socket_, SHUT_RDWR);
  }

 private:
  // The socket can be shut down as long as this lives.
  class SocketInUse {
   public:
    SocketInUse(CupsConnection& connection, int socket) : connection_(connection) { set(socket); }
    SocketInUse(const SocketInUse&) = delete;
    SocketInUse& operator=(const SocketInUse&) = delete;
    ~SocketInUse() { set(-1); }

   private:
    void set(int socket) {
      const std::lock_guard<std::mutex> lock(connection_.mutex_);
      connection_.socket_ = socket;
      if (connection_.aborted_ && socket >= 0) shutdown(socket, SHUT_RDWR);
    }
    CupsConnection& connection_;
  };

  static Reply exchange(http_t* http, const std::string& path, const Bytes& question,
                        Deadline deadline, PrinterStatus& status) {
    if (!sendQuestion(http, path, question)) return Reply::kNone;
    http_status_t code = HTTP_STATUS_CONTINUE;
    while (code == HTTP_STATUS_CONTINUE && timeLeft(deadline).count() != 0)
      code = httpUpdate(http);
    if (code >= HTTP_STATUS_MULTIPLE_CHOICES) return Reply::kRefused;
    if (code != HTTP_STATUS_OK) return Reply::kNone;
    Bytes body;
    return readBody(http, body) ? readAnswer(body, status) : Reply::kNone;
  }

  std::mutex mutex_;
  int socket_ = -1;
  bool aborted_ = false;
};

}  // namespace

std::unique_ptr<StatusConnection> makeStatusConnection() {
  return std::make_unique<CupsConnection>();
}

}  // namespace tvrscn
