// The scan request field by field, and what becomes of the device's answer to it.
#include <filesystem>
#include <limits>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/support/temporary_folder.h"
#include "tests/support/test_peers.h"
#include "tests/unit/lowend_document_support.h"
#include "tvrscn/lowend_scan_data_source.h"

namespace {

using namespace tvrscn::test;
using nlohmann::json;
using Peer = DataSourceTestPeer;
using Source = CLowEndUSBScanDataSource;

// The settings of the example: A4 in colour at 300 dpi, one side, on a device that offers A4.
Source exampleSource() {
  Source source;
  source.SetScaningPropertiesFromApp("FullColor", "300x300", "OneSided", 210, 297, 1, 0, 0, "Off",
                                     0, "ISO_A4SEF");
  source.SetDeviceSupportJSONResponse(R"({"supportedMediaSizes":{"adf":[0,4],"flatbed":[4]}})");
  return source;
}

// The same on a device that tells nothing of itself: a custom size.
Source customSource(int width = 210, int height = 297) {
  Source source = exampleSource();
  source.SetDeviceSupportJSONResponse("");
  Peer::width(source) = width;
  Peer::height(source) = height;
  return source;
}

json requestOf(Source source, bool adfPaperLoaded = false) {
  return json::parse(source.GetScanRequestJSON("", adfPaperLoaded));
}

TEST(LowEndRequest, ExampleToTheLetter) {
  EXPECT_EQ(exampleSource().GetScanRequestJSON("", false),
            R"({"compression":1,"contrast":0,"darkness":0,"fileFormat":1,"imageComposition":3,)"
            R"("mediaSize":4,"name":"","orientation":0,"resolution":300,"scanDuplex":0,)"
            R"("scanSource":0})");
}

TEST(LowEndRequest, CustomSizeToTheLetter) {
  Source source = customSource();
  source.SetScaningPropertiesFromApp("BlackAndWhite", "600x600", "TwoSided", 210, 297, 0, 7, -3,
                                     "On", 5, "ISO_A4SEF");
  EXPECT_EQ(source.GetScanRequestJSON("a name", false),
            R"({"contrast":-3,"customHeight":6600,"customWidth":4800,"darkness":7,"fileFormat":0,)"
            R"("imageComposition":1,"mediaSize":20,"name":"a name","offsetX":0,"offsetY":0,)"
            R"("orientation":0,"resolution":600,"scanDuplex":2,"scanSource":7})");
}

const struct {
  const char* mode;
  int fileFormat;
  int imageComposition;
  bool compressed;
  const wchar_t* extension;
} kColors[] = {
    {"FullColor", 1, 3, true, L".JPG"},
    {"Grayscale", 1, 2, true, L".JPG"},
    {"BlackAndWhite", 0, 1, false, L".TIF"},
    {"Auto", 0, 1, false, L".TIF"},
    {"", 0, 1, false, L".TIF"},
    {"fullcolor", 0, 1, false, L".TIF"},
    {"FullColor ", 0, 1, false, L".TIF"},
    {"GrayScale", 0, 1, false, L".TIF"},
};

TEST(LowEndRequest, ColourModeGivesFormatCompositionAndCompression) {
  for (const auto& row : kColors) {
    Source source = exampleSource();
    Peer::colorMode(source) = row.mode;
    const json request = requestOf(source);
    EXPECT_EQ(request["fileFormat"], row.fileFormat) << row.mode;
    EXPECT_EQ(request["imageComposition"], row.imageComposition) << row.mode;
    EXPECT_EQ(request.contains("compression"), row.compressed) << row.mode;
    EXPECT_EQ(request.value("compression", 0), row.compressed ? 1 : 0) << row.mode;
  }
}

TEST(LowEndRequest, ColourModeGivesTheExtension) {
  for (const auto& row : kColors) {
    Source source;
    Peer::colorMode(source) = row.mode;
    EXPECT_EQ(source.GetImageFileFormat(), row.extension) << row.mode;
  }
}

TEST(LowEndRequest, ResolutionIsInDotsPerInch) {
  const struct {
    const char* text;
    int dpi;
  } kCases[] = {
      {"75x75", 75},    {"100x100", 100}, {"150x150", 150},   {"200x200", 200}, {"300x300", 300},
      {"400x400", 400}, {"600x600", 600}, {"1200x1200", 200}, {"", 200},
  };
  for (const auto& row : kCases) {
    Source source = exampleSource();
    Peer::resolution(source) = row.text;
    EXPECT_EQ(requestOf(source)["resolution"], row.dpi) << row.text;
  }
}

TEST(LowEndRequest, SidesGiveTheDuplexCode) {
  const struct {
    const char* sides;
    int code;
  } kCases[] = {
      {"OneSided", 0}, {"TwoSided", 2}, {"SecondSideRotation", 1},
      {"", 1},         {"onesided", 1}, {"TwoSided ", 1},
  };
  for (const auto& row : kCases) {
    Source source = exampleSource();
    Peer::sides(source) = row.sides;
    EXPECT_EQ(requestOf(source)["scanDuplex"], row.code) << row.sides;
  }
}

TEST(LowEndRequest, PaperInTheFeederGoesBeforeThePaperSource) {
  const struct {
    int paperSource;
    bool adfPaperLoaded;
    int code;
  } kCases[] = {
      {0, true, 0}, {0, false, 7}, {1, true, 0},   {1, false, 0},
      {2, true, 0}, {2, false, 7}, {-1, false, 7},
  };
  for (const auto& row : kCases) {
    Source source = exampleSource();
    source.SetPaperSource(row.paperSource);
    EXPECT_EQ(requestOf(source, row.adfPaperLoaded)["scanSource"], row.code)
        << row.paperSource << row.adfPaperLoaded;
  }
}

// Letter is offered in the feeder alone.
TEST(LowEndRequest, MediaCodeIsThatOfTheSource) {
  Source source = exampleSource();
  Peer::mediaSize(source) = "NA_8.5x11SEF";
  EXPECT_EQ(requestOf(source)["mediaSize"], 0);
  source.SetPaperSource(0);
  EXPECT_EQ(requestOf(source)["mediaSize"], 20);
  EXPECT_EQ(requestOf(source, true)["mediaSize"], 0);
}

TEST(LowEndRequest, OnlyACustomSizeHasOffsetsAndDots) {
  const char* const kCustomKeys[] = {"offsetX", "offsetY", "customWidth", "customHeight"};
  const json named = requestOf(exampleSource());
  for (const char* key : kCustomKeys)
    EXPECT_FALSE(named.contains(key)) << key;
  EXPECT_EQ(named.size(), 11U);
  const json custom = requestOf(customSource());
  for (const char* key : kCustomKeys)
    EXPECT_TRUE(custom.contains(key)) << key;
  EXPECT_EQ(custom["offsetX"], 0);
  EXPECT_EQ(custom["offsetY"], 0);
  EXPECT_EQ(custom["orientation"], 0);
  EXPECT_EQ(custom.size(), 15U);
}

// Without limits: whole inches.
TEST(LowEndRequest, CustomSizeOfAnUnknownDeviceIsInWholeInches) {
  const struct {
    int millimetres;
    std::int64_t dots;  // at 300 dpi
  } kCases[] = {
      {0, 0},
      {25, 300},    // 0.98 inch, 1.0 to one decimal
      {24, 0},      // 0.94 inch, 0.9
      {210, 2400},  // 8.3
      {297, 3300},  // 11.7
      {127, 1500},  // 5.0
      {-25, -300},
      {-210, -2400},
      {std::numeric_limits<int>::max(), std::numeric_limits<int>::max()},
      {std::numeric_limits<int>::min(), std::numeric_limits<int>::min()},
  };
  for (const auto& row : kCases) {
    const json request = requestOf(customSource(row.millimetres, 254));
    EXPECT_EQ(request["customWidth"], row.dots) << row.millimetres;
    EXPECT_EQ(request["customHeight"], 3000) << row.millimetres;
    const json turned = requestOf(customSource(254, row.millimetres));
    EXPECT_EQ(turned["customWidth"], 3000) << row.millimetres;
    EXPECT_EQ(turned["customHeight"], row.dots) << row.millimetres;
  }
}

TEST(LowEndRequest, MillimetresBecomeTenthsOfAnInch) {
  const struct {
    int millimetres;
    int dots;  // at 300 dpi, 30 for each tenth
  } kCases[] = {
      {1, 0},       // 0.39 tenths
      {2, 30},      // 0.79
      {3, 30},      // 1.18
      {105, 1230},  // 41.34
      {148, 1740},  // 58.27
      {210, 2490},  // 82.68
      {216, 2550},  // 85.04
      {279, 3300},  // 109.84
      {297, 3510},  // 116.93
      {356, 4200},  // 140.16
  };
  for (const auto& row : kCases) {
    Source source = customSource(row.millimetres, row.millimetres);
    source.SetDeviceSupportJSONResponse(
        R"({"basicres":300,"maxAdfHeight":6000,"maxAdfWidth":6000,"minAdfHeight":0,)"
        R"("minAdfWidth":0})");
    const json request = requestOf(source);
    EXPECT_EQ(request["customWidth"], row.dots) << row.millimetres;
    EXPECT_EQ(request["customHeight"], row.dots) << row.millimetres;
  }
}

TEST(LowEndRequest, CustomSizeIsFittedIntoTheLimitsOfTheSource) {
  Source source = customSource();
  source.SetDeviceSupportJSONResponse(
      R"({"basicres":300,"maxAdfHeight":3000,"maxAdfWidth":1500,"minAdfHeight":0,"minAdfWidth":0,)"
      R"("maxFbHeight":2700,"maxFbWidth":1200,"minFbHeight":0,"minFbWidth":0})");
  const json feeder = requestOf(source);
  EXPECT_EQ(feeder["customHeight"], 3000);
  EXPECT_EQ(feeder["customWidth"], 1500);
  source.SetPaperSource(0);
  const json flatbed = requestOf(source);
  EXPECT_EQ(flatbed["customHeight"], 2700);
  EXPECT_EQ(flatbed["customWidth"], 1200);
}

TEST(LowEndRequest, DarknessAndContrastGoOutAsTheyStand) {
  Source source = exampleSource();
  Peer::brightness(source) = -120;
  Peer::contrast(source) = 64;
  for (int round = 0; round < 2; ++round) {
    const json request = requestOf(source);
    EXPECT_EQ(request["darkness"], -120);
    EXPECT_EQ(request["contrast"], 64);
  }
  EXPECT_EQ(source.getBrightness(), -120);
  EXPECT_FALSE(source.isNeedImageProcessing());
}

TEST(LowEndRequest, NameIsWrittenAsJsonText) {
  const struct {
    const char* name;
    const char* text;
  } kCases[] = {
      {"", R"("name":"")"},
      {"scan 1", R"("name":"scan 1")"},
      {"a\"b\\c/d\n", R"("name":"a\"b\\c/d\n")"},
      {"B\xC3\xBCro", "\"name\":\"B\xC3\xBCro\""},
  };
  for (const auto& row : kCases) {
    EXPECT_NE(exampleSource().GetScanRequestJSON(row.name, false).find(row.text), std::string::npos)
        << row.name;
  }
  EXPECT_TRUE(
      throwsNumber(kTextIsNoUtf8, [] { exampleSource().GetScanRequestJSON("B\xFCro", false); }));
}

TEST(LowEndRequest, CapabilitiesThatAreNoDocumentGiveACustomSize) {
  for (const std::string& text : kNoDocuments) {
    Source source = exampleSource();
    source.SetDeviceSupportJSONResponse(text);
    const json request = requestOf(source);
    EXPECT_EQ(request["mediaSize"], 20) << text.substr(0, 40);
    EXPECT_EQ(request["customWidth"], 2400) << text.substr(0, 40);
    EXPECT_EQ(request["customHeight"], 3300) << text.substr(0, 40);
  }
}

TEST(LowEndRequest, CopiesMakeTheSameRequest) {
  Source source = exampleSource();
  Source copy(source);
  Source assigned;
  assigned = source;
  EXPECT_EQ(copy.GetScanRequestJSON("", false), source.GetScanRequestJSON("", false));
  EXPECT_EQ(assigned.GetScanRequestJSON("", false), source.GetScanRequestJSON("", false));
}

// The answer.

constexpr const char* kNoFile = "no file";
const std::string kMessageBefore = "as it was";

class LowEndAnswer : public ::testing::Test {
 protected:
  USBStatusErrors check(const std::string& response) {
    std::filesystem::remove(file());
    message = kMessageBefore;
    return source.CheckScanningRequestStatus(response, folder.path().wstring(), message);
  }

  std::filesystem::path file() const { return folder.path() / "ScanRequestError.txt"; }

  // What stands in the error file.
  std::string fileContent() const {
    if (!std::filesystem::exists(file())) return kNoFile;
    const auto content = readFile(file());
    return {content.begin(), content.end()};
  }

  void expectRefusal(const std::string& response, const std::string& words,
                     const std::string& content) {
    EXPECT_EQ(check(response), USB_ERR_GENERAL) << response;
    EXPECT_EQ(message, words) << response;
    EXPECT_EQ(fileContent(), content) << response;
  }

  Source source;
  TemporaryFolder folder;
  std::string message;
};

TEST_F(LowEndAnswer, AcceptanceContainsTheWords) {
  const char* const kAnswers[] = {
      R"({"status":204,"result":"Starting scan"})",
      R"({"status":204,"result":"Starting scan now"})",
      R"({"status":204,"result":"OK. Starting scan."})",
      R"({"status":204.99,"result":"Starting scan"})",
      R"({"status":2.04e2,"result":"Starting scan"})",
      R"({"status":4294967500,"result":"Starting scan"})",   // 2^32 + 204
      R"({"status":-4294967092,"result":"Starting scan"})",  // 204 - 2^32
      R"({"status":204,"result":"Starting scan","error":{"message":"none"}})",
      R"({"status":204,"result":"Starting scan","error":7,"more":[null]})",
      R"({"status":400,"status":204,"result":"Starting scan"})",  // the last of two keys counts
  };
  for (const char* answer : kAnswers) {
    EXPECT_EQ(check(answer), USB_SUCCESS) << answer;
    EXPECT_EQ(message, kMessageBefore) << answer;
    EXPECT_EQ(fileContent(), kNoFile) << answer;
  }
}

TEST_F(LowEndAnswer, OtherVerdictsAreRefusals) {
  const struct {
    const char* answer;
    const char* content;
  } kCases[] = {
      {R"({"status":204,"result":"Started"})", R"({"result":"Started","status":204})"},
      {R"({"status":204,"result":"starting scan"})", R"({"result":"starting scan","status":204})"},
      {R"({"status":204,"result":""})", R"({"result":"","status":204})"},
      {R"({"status":200,"result":"Starting scan"})", R"({"result":"Starting scan","status":200})"},
      {R"({"status":203.99,"result":"Starting scan"})",
       R"({"result":"Starting scan","status":203.99})"},
      {R"({"status":-204,"result":"Starting scan"})",
       R"({"result":"Starting scan","status":-204})"},
      {R"({"status":18446744073709551615,"result":"Starting scan"})",
       R"({"result":"Starting scan","status":18446744073709551615})"},
      {R"({"status":1e300,"result":"Starting scan"})",
       R"({"result":"Starting scan","status":1e+300})"},
      {R"({"status":400,"result":"x"})", R"({"result":"x","status":400})"},
      {R"({"status":400,"result":"Starting scan"})", R"({"result":"Starting scan","status":400})"},
      {R"( { "status" : 500 , "result" : "x" } )", R"({"result":"x","status":500})"},
      // The device's words count with status 400 alone.
      {R"({"status":204,"result":"x","error":{"message":"m"}})",
       R"({"error":{"message":"m"},"result":"x","status":204})"},
      {R"({"status":500,"result":"x","error":{"message":"m"}})",
       R"({"error":{"message":"m"},"result":"x","status":500})"},
      {R"({"status":500,"result":"x","error":{"message":7}})",
       R"({"error":{"message":7},"result":"x","status":500})"},
      {R"({"status":204,"result":"x","error":{"message":null}})",
       R"({"error":{"message":null},"result":"x","status":204})"},
  };
  for (const auto& row : kCases)
    expectRefusal(row.answer, kMessageBefore, row.content);
}

TEST_F(LowEndAnswer, RefusalBringsTheWordsOfTheDevice) {
  const struct {
    const char* answer;
    const char* words;
    const char* content;
  } kCases[] = {
      {R"({"status":400,"result":"x","error":{"message":"no paper"}})", "no paper",
       R"({"error":{"message":"no paper"},"result":"x","status":400})"},
      {R"({"status":400,"result":"Starting scan","error":{"message":""}})", "",
       R"({"error":{"message":""},"result":"Starting scan","status":400})"},
      {R"({"status":400.7,"result":"x","error":{"code":5,"message":"m"}})", "m",
       R"({"error":{"code":5,"message":"m"},"result":"x","status":400.7})"},
  };
  for (const auto& row : kCases)
    expectRefusal(row.answer, row.words, row.content);
}

TEST_F(LowEndAnswer, MalformedVerdictWithWordsIsKept) {
  const struct {
    const char* answer;
    const char* content;
  } kCases[] = {
      // A key that was asked for and is not there is written as null; the result is asked first.
      {R"({"error":{"message":"no"}})", R"({"error":{"message":"no"},"result":null})"},
      {R"({"status":204,"error":{"message":"no"}})",
       R"({"error":{"message":"no"},"result":null,"status":204})"},
      {R"({"result":"Starting scan","error":{"message":"no"}})",
       R"({"error":{"message":"no"},"result":"Starting scan","status":null})"},
      {R"({"result":5,"error":{"message":"no"}})", R"({"error":{"message":"no"},"result":5})"},
  };
  for (const auto& row : kCases)
    expectRefusal(row.answer, "no", row.content);
}

// One of the two keys with a value of each other type.
TEST_F(LowEndAnswer, MalformedVerdictOfEveryType) {
  for (const TypedValue& value : kTypedValues) {
    const std::string text = value.text;
    const std::string words = R"("error":{"message":"no"})";
    if (value.type != std::string("string")) {
      const std::string verdict = R"("result":)" + text + R"(,"status":204)";
      expectRefusal("{" + verdict + "}", kMessageBefore, kNoFile);
      expectRefusal(filled("{@,@}", {verdict, words}), "no", filled("{@,@}", {words, verdict}));
    }
    if (value.type != std::string("number")) {
      const std::string verdict = R"("result":"Starting scan","status":)" + text;
      expectRefusal("{" + verdict + "}", kMessageBefore, kNoFile);
      expectRefusal(filled("{@,@}", {verdict, words}), "no", filled("{@,@}", {words, verdict}));
    }
  }
}

TEST_F(LowEndAnswer, MalformedVerdictWithoutWordsLeavesNoFile) {
  const char* const kAnswers[] = {
      "{}",
      R"({"status":"204"})",
      R"({"status":204})",
      R"({"result":"Starting scan"})",
      R"({"Status":204,"Result":"Starting scan"})",
      R"({"error":{}})",
      R"({"error":{"Message":"no"}})",
      R"({"error":null})",
      R"({"error":true})",
      R"({"error":7})",
      R"({"error":7.5})",
      R"({"error":"message"})",
      R"({"error":["message"]})",
      R"({"message":"no"})",
  };
  for (const char* answer : kAnswers)
    expectRefusal(answer, kMessageBefore, kNoFile);
}

TEST_F(LowEndAnswer, RefusalWithoutWordsIsKeptAllTheSame) {
  const char* const kErrors[] = {"{}",  "null",        "true",          "7",
                                 "7.5", "\"message\"", "[\"message\"]", R"({"Message":"no"})"};
  for (const char* error : kErrors) {
    const std::string answer =
        R"({"error":)" + std::string(error) + R"(,"result":"x","status":400})";
    expectRefusal(answer, kMessageBefore, answer);
  }
}

TEST_F(LowEndAnswer, WordsThatAreNoTextRaiseAndLeaveNoFile) {
  for (const TypedValue& value : kTypedValues) {
    if (value.type == std::string("string")) continue;
    const std::string error = R"("error":{"message":)" + std::string(value.text) + "}";
    for (const std::string& verdict : {std::string(R"(,"status":400,"result":"x")"),
                                       std::string(R"(,"status":"400")"), std::string()}) {
      EXPECT_EQ(
          thrownBy([&] {
            check(filled("{@@}", {error, verdict}));
          }),
          std::string("[json.exception.type_error.302] type must be string, but is ") + value.type)
          << error << verdict;
      EXPECT_EQ(message, kMessageBefore);
      EXPECT_EQ(fileContent(), kNoFile);
    }
  }
}

TEST_F(LowEndAnswer, TextThatIsNoDocumentRaises) {
  for (const std::string& text : kNoDocuments) {
    EXPECT_TRUE(throwsNumber(kParseError, [&] { check(text); })) << text.substr(0, 40);
    EXPECT_EQ(fileContent(), kNoFile) << text.substr(0, 40);
  }
}

TEST_F(LowEndAnswer, DocumentThatIsNoObjectRaises) {
  for (const TypedValue& value : kTypedValues) {
    if (value.type == std::string("object")) continue;
    EXPECT_NE(thrownBy([&] { check(value.text); }), "nothing") << value.text;
    EXPECT_EQ(message, kMessageBefore) << value.text;
    EXPECT_EQ(fileContent(), kNoFile) << value.text;
  }
}

TEST_F(LowEndAnswer, TextsAreKeptAsUtf8) {
  expectRefusal(R"({"status":400,"result":"zu fr\u00fch","error":{"message":"\u20ac"}})",
                "\xE2\x82\xAC",
                "{\"error\":{\"message\":\"\xE2\x82\xAC\"},\"result\":\"zu fr\xC3\xBCh\","
                "\"status\":400}");
}

TEST_F(LowEndAnswer, DepthOfADocumentIsNoDanger) {
  const std::string deep = nested(kVeryDeep, "1");
  const std::string answer = R"({"deep":)" + deep + R"(,"result":"x","status":400})";
  EXPECT_EQ(check(answer), USB_ERR_GENERAL);
  EXPECT_TRUE(fileContent() == answer);
  EXPECT_EQ(check(R"({"deep":)" + deep + R"(,"result":"Starting scan","status":204})"),
            USB_SUCCESS);
}

TEST_F(LowEndAnswer, LatestRefusalReplacesAnEarlierOne) {
  EXPECT_EQ(check(R"({"status":400,"result":"a long text of the device"})"), USB_ERR_GENERAL);
  const std::wstring path = folder.path().wstring();
  source.CheckScanningRequestStatus(R"({"status":400,"result":"x"})", path, message);
  EXPECT_EQ(fileContent(), R"({"result":"x","status":400})");
  source.CheckScanningRequestStatus(R"({"status":204,"result":"Starting scan"})", path, message);
  EXPECT_EQ(fileContent(), R"({"result":"x","status":400})");
}

TEST_F(LowEndAnswer, FolderThatIsNotThereCostsTheFileAlone) {
  const std::wstring missing = (folder.path() / "missing").wstring();
  message = kMessageBefore;
  EXPECT_EQ(source.CheckScanningRequestStatus(
                R"({"status":400,"result":"x","error":{"message":"m"}})", missing, message),
            USB_ERR_GENERAL);
  EXPECT_EQ(message, "m");
  EXPECT_EQ(folder.fileNames(), std::vector<std::string>{});
}

TEST_F(LowEndAnswer, FileStandsInAFolderOfAnyName) {
  const std::filesystem::path named = folder.path() / "B\xC3\xBCro \xE2\x82\xAC";
  std::filesystem::create_directory(named);
  EXPECT_EQ(
      source.CheckScanningRequestStatus(R"({"status":1,"result":""})",
                                        folder.path().wstring() + L"/B\u00fcro \u20ac", message),
      USB_ERR_GENERAL);
  EXPECT_TRUE(std::filesystem::exists(named / "ScanRequestError.txt"));
}

TEST_F(LowEndAnswer, DebugFileHoldsTheTextAsItIs) {
  const std::wstring path = folder.path().wstring() + L"/debug.bin";
  const std::string text("line\r\nzero\0\xFF\n", 13);
  EXPECT_TRUE(source.DumpDebugDataToFile(path, text));
  const auto content = readFile(folder.path() / "debug.bin");
  EXPECT_EQ(std::string(content.begin(), content.end()), text);
  EXPECT_TRUE(source.DumpDebugDataToFile(path, ""));
  EXPECT_EQ(readFile(folder.path() / "debug.bin").size(), 0U);
}

TEST_F(LowEndAnswer, DebugFileThatCannotBeWrittenIsReportedAsWritten) {
  EXPECT_TRUE(source.DumpDebugDataToFile(folder.path().wstring() + L"/missing/file", "text"));
  EXPECT_TRUE(source.DumpDebugDataToFile(folder.path().wstring(), "text"));
  EXPECT_TRUE(source.DumpDebugDataToFile(L"", "text"));
  EXPECT_EQ(folder.fileNames(), std::vector<std::string>{});
}

}  // namespace
