// The bytes of the question, and what is taken from an answer. Another reader of the same bytes is
// the system's IPP library.
#include "platform/tdspclient/ipp/ipp_message.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <cups/ipp.h>
#include <gtest/gtest.h>

namespace tvrscn {
namespace {

using namespace std::string_literals;
using Lines = std::vector<std::string>;

// clang-format off
const std::string kQuestion =
    "\x01\x01\x00\x0B\x00\x00\x00\x01\x01"s
    "\x47\x00\x12"s "attributes-charset" "\x00\x05"s "utf-8"
    "\x48\x00\x1B"s "attributes-natural-language" "\x00\x02"s "en"
    "\x45\x00\x0B"s "printer-uri" "\x00\x15"s "ipp://h:631/ipp/print"
    "\x44\x00\x14"s "requested-attributes" "\x00\x0D"s "printer-state"
    "\x44\x00\x00\x00\x15"s "printer-state-reasons"
    "\x44\x00\x00\x00\x0D"s "printer-alert"
    "\x44\x00\x00\x00\x19"s "printer-alert-description"
    "\x03"s;

// An answer with each kind of value that is looked at, and some that are not.
const std::string kAnswer =
    "\x02\x00\x00\x00\x00\x00\x00\x01\x01"s
    "\x47\x00\x12"s "attributes-charset" "\x00\x05"s "utf-8"
    "\x48\x00\x1B"s "attributes-natural-language" "\x00\x02"s "en"
    "\x04"
    "\x23\x00\x0D"s "printer-state" "\x00\x04\x00\x00\x00\x05"s
    "\x44\x00\x15"s "printer-state-reasons" "\x00\x0F"s "media-jam-error"
    "\x44\x00\x00\x00\x12"s "cover-open-warning"
    "\x30\x00\x0D"s "printer-alert" "\x00\x08"s "code=jam"
    "\x41\x00\x19"s "printer-alert-description" "\x00\x05"s "stuck"
    "\x35\x00\x00\x00\x0C\x00\x02"s "en" "\x00\x06"s "opened"
    "\x13\x00\x0C"s "printer-info" "\x00\x00"s
    "\x03"s;
// clang-format on

// An answer of one group with the given values.
std::string answerWith(const std::string& values, const std::string& group = "\x04") {
  return "\x01\x01\x00\x00\x00\x00\x00\x01"s + group + values + "\x03";
}

const std::string kJam = "\x44\x00\x15"s + "printer-state-reasons" + "\x00\x09"s + "media-jam";

struct Decoded {
  Reply reply;
  PrinterStatus status;
};

Decoded decode(std::string_view bytes) {
  Decoded decoded{Reply::kNone, {}};
  decoded.status.state = -1;
  decoded.reply = decodeStatusAnswer(bytes, decoded.status);
  return decoded;
}

TEST(IppQuestion, IsThese221Bytes) {
  EXPECT_EQ(encodeStatusQuestion("ipp://h:631/ipp/print"), kQuestion);
  EXPECT_EQ(kQuestion.size(), 221U);
}

ssize_t readFrom(void* context, ipp_uchar_t* data, std::size_t size) {
  auto* const left = static_cast<std::string_view*>(context);
  const std::size_t taken = std::min(size, left->size());
  if (taken != 0) std::memcpy(data, left->data(), taken);
  left->remove_prefix(taken);
  return static_cast<ssize_t>(taken);
}

TEST(IppQuestion, SystemsIppLibraryReadsIt) {
  const std::unique_ptr<ipp_t, void (*)(ipp_t*)> message(ippNew(), ippDelete);
  const std::string question = encodeStatusQuestion("ipp://[::1]:80/");
  std::string_view left = question;
  ASSERT_EQ(ippReadIO(&left, readFrom, 1, nullptr, message.get()), IPP_STATE_DATA);
  EXPECT_TRUE(left.empty());
  EXPECT_EQ(ippGetOperation(message.get()), IPP_OP_GET_PRINTER_ATTRIBUTES);
  EXPECT_EQ(ippGetRequestId(message.get()), 1);
  ipp_attribute_t* const uri = ippFindAttribute(message.get(), "printer-uri", IPP_TAG_URI);
  ASSERT_NE(uri, nullptr);
  EXPECT_STREQ(ippGetString(uri, 0, nullptr), "ipp://[::1]:80/");
  ipp_attribute_t* const names =
      ippFindAttribute(message.get(), "requested-attributes", IPP_TAG_KEYWORD);
  ASSERT_EQ(ippGetCount(names), 4);
  EXPECT_STREQ(ippGetString(names, 3, nullptr), "printer-alert-description");
}

TEST(IppAnswer, StatusIsTaken) {
  const Decoded decoded = decode(kAnswer);
  EXPECT_EQ(decoded.reply, Reply::kStatus);
  EXPECT_EQ(decoded.status.state, 5);
  EXPECT_EQ(decoded.status.reasons, (Lines{"media-jam-error", "cover-open-warning"}));
  EXPECT_EQ(decoded.status.alerts, Lines{"code=jam"});
  EXPECT_EQ(decoded.status.descriptions, (Lines{"stuck", "opened"}));
}

TEST(IppAnswer, WithoutAttributesIsAnAnswer) {
  const Decoded decoded = decode("\x01\x01\x00\x01\x00\x00\x00\x01\x03"s);
  EXPECT_EQ(decoded.reply, Reply::kStatus);
  EXPECT_EQ(decoded.status.state, 0);
  EXPECT_EQ(decoded.status.reasons, Lines{});
}

TEST(IppAnswer, WhatFollowsItsEndDoesNotMatter) {
  EXPECT_EQ(decode(kAnswer + "\x44\xFF\xFF"s).reply, Reply::kStatus);
}

TEST(IppAnswer, CutAnywhereItIsNone) {
  for (std::size_t length = 0; length < kAnswer.size(); ++length) {
    const Decoded decoded = decode(kAnswer.substr(0, length));
    ASSERT_EQ(decoded.reply, Reply::kNone) << length;
    ASSERT_EQ(decoded.status.state, -1) << length;
    ASSERT_TRUE(decoded.status.reasons.empty()) << length;
  }
}

TEST(IppAnswer, FailureIsARefusal) {
  for (const std::string& code : {"\x01\x00"s, "\x04\x06"s, "\x05\x00"s, "\xFF\xFF"s}) {
    const Decoded decoded = decode("\x01\x01"s + code + "\x00\x00\x00\x01\x04"s + kJam + "\x03");
    EXPECT_EQ(decoded.reply, Reply::kRefused);
    EXPECT_EQ(decoded.status.state, -1);
    EXPECT_EQ(decoded.status.reasons, Lines{});
  }
}

TEST(IppAnswer, ToAnotherQuestionIsNone) {
  EXPECT_EQ(decode("\x01\x01\x00\x00\x00\x00\x00\x02\x03"s).reply, Reply::kNone);
  EXPECT_EQ(decode("\x01\x01\x00\x00\x01\x00\x00\x01\x03"s).reply, Reply::kNone);
}

TEST(IppAnswer, LengthsBeyondTheEndAreNone) {
  EXPECT_EQ(decode(answerWith("\x44\xFF\xFF"s + "a")).reply, Reply::kNone);
  EXPECT_EQ(decode(answerWith("\x44\x00\x01"s + "a" + "\xFF\xFF"s)).reply, Reply::kNone);
  EXPECT_EQ(decode(answerWith("\x44\x00\x01"s + "a" + "\x00\x02"s + "b")).reply, Reply::kNone);
  EXPECT_EQ(decode(answerWith("\x44\x00\x01"s + "a" + "\x00\x01"s + "b")).reply, Reply::kStatus);
}

TEST(IppAnswer, FurtherValueNeedsAnAttribute) {
  EXPECT_EQ(decode(answerWith("\x44\x00\x00\x00\x01"s + "b")).reply, Reply::kNone);
  // Nor does it belong to one of the group before.
  EXPECT_EQ(decode(answerWith(kJam + "\x04\x44\x00\x00\x00\x01"s + "b")).reply, Reply::kNone);
}

TEST(IppAnswer, OnlyThePrintersGroupCounts) {
  EXPECT_EQ(decode(answerWith(kJam, "\x01")).status.reasons, Lines{});
  EXPECT_EQ(decode(answerWith(kJam, "\x02")).status.reasons, Lines{});
  EXPECT_EQ(decode(answerWith("\x04"s + kJam + "\x05"s + kJam, "\x01")).status.reasons,
            Lines{"media-jam"});
}

TEST(IppAnswer, ValuesInCollectionsAreNotTheAttributes) {
  const std::string begin = "\x34\x00\x15"s + "printer-state-reasons" + "\x00\x00"s;
  const std::string nested = "\x34\x00\x00\x00\x00"s;
  const std::string value = "\x44\x00\x00\x00\x01"s + "x";
  const std::string end = "\x37\x00\x00\x00\x00"s;
  const Decoded decoded =
      decode(answerWith(begin + value + nested + value + end + value + end + value));
  EXPECT_EQ(decoded.reply, Reply::kStatus);
  EXPECT_EQ(decoded.status.reasons, Lines{"x"});
  // An end without a beginning changes nothing.
  EXPECT_EQ(decode(answerWith(kJam + end + value)).status.reasons, (Lines{"media-jam", "x"}));
}

TEST(IppAnswer, ValuesOfOtherKindsAreLeftOut) {
  const std::string name = "printer-state-reasons";
  // No value, an integer, a URI, and a text whose language is longer than itself.
  EXPECT_EQ(decode(answerWith("\x13\x00\x15"s + name + "\x00\x00"s)).status.reasons, Lines{});
  EXPECT_EQ(decode(answerWith("\x21\x00\x15"s + name + "\x00\x04"s + "abcd")).status.reasons,
            Lines{});
  EXPECT_EQ(decode(answerWith("\x45\x00\x15"s + name + "\x00\x01"s + "a")).status.reasons, Lines{});
  EXPECT_EQ(decode(answerWith("\x35\x00\x15"s + name + "\x00\x04\x00\x03"s + "en")).status.reasons,
            Lines{});
}

TEST(IppAnswer, StateIsANumberOfFourBytes) {
  const std::string name = "\x23\x00\x0D"s + "printer-state";
  EXPECT_EQ(decode(answerWith(name + "\x00\x04\x00\x00\x00\x03"s)).status.state, 3);
  EXPECT_EQ(decode(answerWith(name + "\x00\x04\xFF\xFF\xFF\xFE"s)).status.state, -2);
  EXPECT_EQ(decode(answerWith(name + "\x00\x03\x00\x00\x03"s)).status.state, 0);
  EXPECT_EQ(decode(answerWith(name + "\x00\x00"s)).status.state, 0);
}

TEST(IppAnswer, ManyValuesAreBounded) {
  std::string values = kJam;
  for (int number = 0; number < 20000; ++number)
    values += "\x44\x00\x00\x00\x01"s + "x";
  EXPECT_EQ(decode(answerWith(values)).status.reasons.size(), 64U);
}

}  // namespace
}  // namespace tvrscn
