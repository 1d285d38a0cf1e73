#include "tests/virtual/support/lowend_host.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace tvrscn::virtual_device::testing {
namespace {

constexpr std::size_t kHeaderSize = 10;

std::string withoutBlockMarkers(const std::string& file) {
  std::string clean;
  for (std::size_t i = 0; i < file.size();) {
    if (file.compare(i, 5, "BLOCK") == 0) {
      EXPECT_EQ(file.substr(i, 18).substr(14), "TES\n") << "a whole marker, at " << i;
      i += 18;
    } else {
      clean += file[i++];
    }
  }
  return clean;
}

std::size_t findStart(const std::string& record, std::size_t from) {
  const std::size_t jpeg = record.find("\xFF\xD8\xFF\xE0", from);
  return jpeg != std::string::npos ? jpeg : record.find("II", from);
}

}  // namespace

Fields colorFields() {
  return {{"compression", "1"},      {"contrast", "0"},   {"customHeight", "150"},
          {"customWidth", "75"},     {"darkness", "0"},   {"fileFormat", "1"},
          {"imageComposition", "3"}, {"mediaSize", "20"}, {"name", "\"\""},
          {"offsetX", "0"},          {"offsetY", "0"},    {"orientation", "0"},
          {"resolution", "75"},      {"scanDuplex", "0"}, {"scanSource", "7"}};
}

Fields bilevelFields() {
  return with(with(without(colorFields(), "compression"), "fileFormat", "0"), "imageComposition",
              "1");
}

Fields with(Fields fields, const std::string& key, const std::string& value) {
  fields[key] = value;
  return fields;
}

Fields without(Fields fields, const std::string& key) {
  fields.erase(key);
  return fields;
}

std::string jsonOf(const Fields& fields) {
  std::string text;
  for (const auto& [key, value] : fields)
    text.append(text.empty() ? "{\"" : ",\"").append(key).append("\":").append(value);
  return text + "}";
}

TransferBytes startRequest(const std::string& document) {
  std::string request("\x1B\x4E\x01\0", 4);
  request += static_cast<char>(document.size() % 256);
  request += static_cast<char>(document.size() / 256);
  request += std::string("\0\0\x80\0", 4) + document;
  return {request.begin(), request.end()};
}

TransferBytes startRequest(const Fields& fields) {
  return startRequest(jsonOf(fields));
}

std::string documentOf(const TransferBytes& answer) {
  if (answer.size() < kHeaderSize) return "no answer";
  return {answer.begin() + kHeaderSize, answer.end()};
}

StreamModel::StreamModel(const std::vector<TransferBytes>& transfers) {
  for (const TransferBytes& transfer : transfers) {
    EXPECT_FALSE(hasEnded_) << "nothing comes behind the last packet";
    take(transfer);
  }
}

void StreamModel::take(const TransferBytes& transfer) {
  if (transfer.size() < kHeaderSize || transfer[0] != 0x1B || transfer[1] != 0x4E) return;
  if (transfer[2] != 2) return;
  if (transfer[8] == 1) hasEnded_ = true;
  const std::size_t length = transfer[4] + transfer[5] * 256U + transfer[6] * 65536U;
  EXPECT_EQ(transfer.size(), kHeaderSize + length);
  if (length == 2) return;
  std::string record(transfer.begin() + kHeaderSize, transfer.end());
  if (records_.empty() && record.substr(0, 502).find("JOBCANCEL") != std::string::npos) {
    isCancelled_ = true;
  }
  record = record.substr(0, record.rfind("JOBDONE"));
  if (!record.empty()) records_.push_back(record);
}

std::vector<TransferBytes> StreamModel::files() const {
  std::vector<std::string> files(1);
  bool awaitingStart = true;
  for (const std::string& record : records_) {
    if (awaitingStart) {
      const std::size_t start = findStart(record, 0);
      if (start == std::string::npos) continue;
      awaitingStart = false;
      files.back() += record.substr(start);
      continue;
    }
    const std::size_t border = record.find("NEWFILE");
    if (border == std::string::npos) {
      files.back() += record;
      continue;
    }
    if (border > 1) files.back() += record.substr(0, border - 1);
    files.emplace_back();
    const std::size_t start = findStart(record, border);
    awaitingStart = start == std::string::npos;
    if (!awaitingStart) files.back() += record.substr(start);
  }
  std::vector<TransferBytes> clean;
  for (const std::string& file : files) {
    const std::string bytes = withoutBlockMarkers(file);
    clean.emplace_back(bytes.begin(), bytes.end());
  }
  return clean;
}

}  // namespace tvrscn::virtual_device::testing
