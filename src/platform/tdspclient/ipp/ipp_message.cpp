#include "platform/tdspclient/ipp/ipp_message.h"

#include <cstring>
#include <optional>
#include <utility>

namespace tvrscn {
namespace {

enum Tag : std::uint8_t {
  kOperationGroup = 0x01,
  kEndOfMessage = 0x03,
  kPrinterGroup = 0x04,
  kFirstValueTag = 0x10,
  kEnum = 0x23,
  kOctetString = 0x30,
  kBeginCollection = 0x34,
  kTextWithLanguage = 0x35,
  kEndCollection = 0x37,
  kText = 0x41,
  kKeyword = 0x44,
  kUri = 0x45,
  kCharset = 0x47,
  kLanguage = 0x48,
};

// 1.1 is understood by every device that speaks IPP.
constexpr std::uint8_t kMajorVersion = 1;
constexpr std::uint8_t kMinorVersion = 1;

class Writer {
 public:
  void byte(std::uint8_t value) { bytes_ += static_cast<char>(value); }
  void header(std::uint16_t code) {
    IppHeader header{kMajorVersion, kMinorVersion, {}, {}};
    header.code.set(code);
    header.requestId.set(kRequestId);
    record(header);
  }
  void value(Tag tag, std::string_view name, std::string_view value) {
    byte(tag);
    text(name);
    text(value);
  }
  std::string take() { return std::move(bytes_); }

 private:
  template <typename Record>
  void record(const Record& record) {
    char bytes[sizeof record];
    std::memcpy(bytes, &record, sizeof record);
    bytes_.append(bytes, sizeof record);
  }
  void text(std::string_view text) {
    BigEndian16 length{};
    length.set(static_cast<std::uint16_t>(text.size()));
    record(length);
    bytes_ += text;
  }

  std::string bytes_;
};

// Takes bytes from the front. What is not there reads as nothing and spoils the reader for good.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : left_(bytes) {}

  bool good() const { return good_; }

  // One of the wire records.
  template <typename Record>
  Record record() {
    Record value{};
    const std::string_view bytes = take(sizeof value);
    if (good_) std::memcpy(&value, bytes.data(), sizeof value);
    return value;
  }
  // A text behind its length.
  std::string_view text() { return take(record<BigEndian16>().value()); }

 private:
  std::string_view take(std::size_t size) {
    good_ = good_ && size <= left_.size();
    if (!good_) return {};
    const std::string_view bytes = left_.substr(0, size);
    left_.remove_prefix(size);
    return bytes;
  }

  std::string_view left_;
  bool good_ = true;
};

// The text of a value, for the kinds of values that are texts.
std::optional<std::string_view> textOf(std::uint8_t tag, std::string_view value) {
  switch (tag) {
    case kOctetString:
    case kText:
    case kKeyword:
      return value;
    case kTextWithLanguage: {
      Reader reader(value);
      reader.text();  // the language
      const std::string_view text = reader.text();
      if (!reader.good()) return std::nullopt;
      return text;
    }
    default:
      return std::nullopt;
  }
}

// Reads the values behind the header into a status.
class AnswerBody {
 public:
  AnswerBody(Reader& reader, PrinterStatus& status) : reader_(reader), status_(status) {}

  // True when the body is whole.
  bool read() {
    while (reader_.good()) {
      const auto tag = reader_.record<std::uint8_t>();
      if (!reader_.good()) return false;
      if (tag == kEndOfMessage) return true;
      if (tag < kFirstValueTag) {
        group_ = tag;
        attribute_ = {};
        depth_ = 0;
      } else if (!readValue(tag)) {
        return false;
      }
    }
    return false;
  }

 private:
  bool readValue(std::uint8_t tag) {
    const std::string_view name = reader_.text();
    const std::string_view value = reader_.text();
    if (!reader_.good()) return false;
    if (!name.empty()) attribute_ = name;
    // A further value needs an attribute to belong to.
    if (attribute_.empty()) return false;
    if (tag == kBeginCollection) ++depth_;
    // What stands in a collection is no value of the attribute itself.
    if (depth_ == 0 && group_ == kPrinterGroup) keep(tag, value);
    if (tag == kEndCollection && depth_ > 0) --depth_;
    return true;
  }

  void keep(std::uint8_t tag, std::string_view value) {
    if (tag == kEnum && attribute_ == kStateAttribute && value.size() == sizeof(BigEndian32)) {
      status_.state = static_cast<std::int32_t>(Reader(value).record<BigEndian32>().value());
    } else if (const std::optional<std::string_view> text = textOf(tag, value)) {
      keepText(status_, attribute_, *text);
    }
  }

  Reader& reader_;
  PrinterStatus& status_;
  std::uint8_t group_ = 0;
  std::string_view attribute_;
  std::size_t depth_ = 0;
};

}  // namespace

std::string encodeStatusQuestion(std::string_view uri) {
  Writer writer;
  writer.header(kGetPrinterAttributes);
  writer.byte(kOperationGroup);
  writer.value(kCharset, "attributes-charset", "utf-8");
  writer.value(kLanguage, "attributes-natural-language", "en");
  writer.value(kUri, "printer-uri", uri);
  std::string_view name = "requested-attributes";
  for (const char* attribute : kStatusAttributes) {
    writer.value(kKeyword, name, attribute);
    name = {};
  }
  writer.byte(kEndOfMessage);
  return writer.take();
}

Reply decodeStatusAnswer(std::string_view bytes, PrinterStatus& status) {
  Reader reader(bytes);
  const auto header = reader.record<IppHeader>();
  PrinterStatus told;
  AnswerBody body(reader, told);
  if (!body.read() || header.requestId.value() != kRequestId) return Reply::kNone;
  if (header.code.value() >= kFirstFailureStatus) return Reply::kRefused;
  status = std::move(told);
  return Reply::kStatus;
}

}  // namespace tvrscn
