// The messages and the settings record.
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "tvrscn/tevrautil/error_code_dictionary.h"
#include "tvrscn/tevrautil/scan_ui_data.h"

namespace tvrscn::test {
namespace {

struct FieldRow {
  const char* name;
  std::wstring CErrorCodeDictionary::*field;
  bool title;
  const wchar_t* word;  // stands in the text
};

// In the order of the record.
const FieldRow kFields[] = {
    {"scanner busy", &CErrorCodeDictionary::m_strScannerBusy, false, L"busy"},
    {"device error", &CErrorCodeDictionary::m_strDeviceError, false, L"error"},
    {"general error", &CErrorCodeDictionary::m_strGeneralError, false, L"could not"},
    {"job cancelled", &CErrorCodeDictionary::m_strJobCancelled, false, L"cancelled"},
    {"no document", &CErrorCodeDictionary::m_strNoDocument, false, L"no document"},
    {"invalid request", &CErrorCodeDictionary::m_strInvalidRequest, false, L"request"},
    {"paper jam", &CErrorCodeDictionary::m_strPaperJam, false, L"jammed"},
    {"communication", &CErrorCodeDictionary::m_strCommFailure, false, L"connection"},
    {"title", &CErrorCodeDictionary::m_strTitle, true, L"Scan"},
    {"communication title", &CErrorCodeDictionary::m_strCommFailureTitle, true,
     L"cannot be reached"},
    {"cover open", &CErrorCodeDictionary::m_strCoverOpen, false, L"cover"},
    {"paper jam title", &CErrorCodeDictionary::m_strPaperJamTitle, true, L"Paper jam"},
};

TEST(ErrorCodeDictionary, IsEmptyAtFirst) {
  const CErrorCodeDictionary dictionary;
  for (const FieldRow& row : kFields)
    EXPECT_TRUE((dictionary.*row.field).empty()) << row.name;
}

TEST(ErrorCodeDictionary, LoadsTwelveDistinctTexts) {
  CErrorCodeDictionary dictionary;
  dictionary.InitExceptionStrings(nullptr);
  std::set<std::wstring> texts;
  for (const FieldRow& row : kFields) {
    const std::wstring& text = dictionary.*row.field;
    EXPECT_FALSE(text.empty()) << row.name;
    EXPECT_NE(std::wstring::npos, text.find(row.word)) << row.name;
    texts.insert(text);
  }
  EXPECT_EQ(12U, texts.size());
}

TEST(ErrorCodeDictionary, MessagesAreSentencesAndTitlesAreShort) {
  CErrorCodeDictionary dictionary;
  dictionary.InitExceptionStrings(nullptr);
  for (const FieldRow& row : kFields) {
    const std::wstring& text = dictionary.*row.field;
    EXPECT_EQ(!row.title, text.back() == L'.') << row.name;
    if (row.title) {
      EXPECT_LE(text.size(), 40U) << row.name;
    }
  }
}

TEST(ErrorCodeDictionary, FieldsLieInOrder) {
  const CErrorCodeDictionary dictionary;
  const std::wstring* previous = nullptr;
  for (const FieldRow& row : kFields) {
    const std::wstring* const field = &(dictionary.*row.field);
    if (previous != nullptr) {
      EXPECT_EQ(previous + 1, field) << row.name;
    }
    previous = field;
  }
}

TEST(ErrorCodeDictionary, CopiesTakeTheTextsAlong) {
  CErrorCodeDictionary dictionary;
  dictionary.InitExceptionStrings(nullptr);
  dictionary.m_strTitle = L"Other";
  const CErrorCodeDictionary copy(dictionary);
  CErrorCodeDictionary assigned;
  assigned = dictionary;
  for (const FieldRow& row : kFields) {
    EXPECT_EQ(dictionary.*row.field, copy.*row.field) << row.name;
    EXPECT_EQ(dictionary.*row.field, assigned.*row.field) << row.name;
  }
}

TevraScanUIData filledSettings() {
  TevraScanUIData data;
  data.mediaSize = "ISO_A4SEF";
  data.pageWidth = 210;
  data.pageHeight = 297;
  data.sides = "TwoSided";
  data.resolution = "300x300";
  data.colorMode = "FullColor";
  data.brightness = L"-5";
  data.contrast = L"7";
  data.backgroundRemoval = L"Off";
  data.modelName = "Model";
  return data;
}

void expectFilled(const TevraScanUIData& data) {
  EXPECT_EQ("ISO_A4SEF", data.mediaSize);
  EXPECT_EQ(210, data.pageWidth);
  EXPECT_EQ(297, data.pageHeight);
  EXPECT_EQ("TwoSided", data.sides);
  EXPECT_EQ("300x300", data.resolution);
  EXPECT_EQ("FullColor", data.colorMode);
  EXPECT_EQ(L"-5", data.brightness);
  EXPECT_EQ(L"7", data.contrast);
  EXPECT_EQ(L"Off", data.backgroundRemoval);
  EXPECT_EQ("Model", data.modelName);
}

TEST(ScanUIData, StartsEmpty) {
  const TevraScanUIData data;
  EXPECT_TRUE(data.mediaSize.empty() && data.sides.empty() && data.resolution.empty() &&
              data.colorMode.empty() && data.brightness.empty() && data.contrast.empty() &&
              data.backgroundRemoval.empty() && data.modelName.empty());
  EXPECT_EQ(0, data.pageWidth);
  EXPECT_EQ(0, data.pageHeight);
}

TEST(ScanUIData, CopiesTakeEveryFieldAlong) {
  const TevraScanUIData original = filledSettings();
  const TevraScanUIData copy(original);
  TevraScanUIData assigned;
  assigned = original;
  expectFilled(original);
  expectFilled(copy);
  expectFilled(assigned);
}

}  // namespace
}  // namespace tvrscn::test
