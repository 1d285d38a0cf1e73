// The platform's operations as a test wants them: scripted, recorded, and made to fail one by one.
//
// One FakePlatform is current at a time, from its construction to its destruction; every operation
// of src/platform and the fakes of the utility library talk to it. All calls of all kinds stand in
// one list in the order in which they came. Not for several threads at once.
#ifndef TVRSCN_TESTS_SUPPORT_FAKE_PLATFORM_H
#define TVRSCN_TESTS_SUPPORT_FAKE_PLATFORM_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/imaging.h"
#include "tests/support/bytes.h"
#include "tests/support/fake_device.h"
#include "tests/support/temporary_folder.h"
#include "tvrscn/notifications.h"
#include "tvrscn/types.h"

namespace tvrscn::test {

enum class Kind {
  kSetup,         // device setup and registry
  kOpen,          // CreateFileW, CloseHandle
  kDevice,        // "Flush write", "Write 1B A8 12 00", "Flush read", "Read 72"
  kModule,        // system folder, modules, threads
  kFile,          // temporary files
  kText,          // names and conversions
  kSleep,         // "Sleep 500"
  kDialog,        // "Dialog [title] text 0x40000"
  kImaging,       // Gdip... and the imaging wrapper
  kMutex,         // the named mutex
  kLog,           // "Log " and the line
  kNotification,  // "Notify 1005 /folder/Image_1.JPG"
};

struct Event {
  Kind kind;
  std::string text;
};

// One present device of the fake system. A missing driver or endpoint name cannot be read.
struct PresentDevice {
  std::wstring instanceId;
  std::optional<std::wstring> driver = L"{class guid}\\0001";
  std::optional<std::wstring> createFileName = L"fake:endpoint";
  bool enumKeyOpens = true;
  bool classKeyOpens = true;
};

// What the decoder finds in a strip.
struct Strip {
  UINT width = 16;
  UINT height = 8;
  Gdiplus::PixelFormat format = Gdiplus::PixelFormat24bppRGB;
  float xDpi = 300.0F;
  float yDpi = 300.0F;
};

// A thing that the platform handed out: handle, device set, key, module, bitmap and so on.
struct FakeObject {
  std::string type;  // "handle", "device set", "module", "bitmap", "graphics", "effect" ...
  std::string name;  // "write", "bitmap1" ...
  bool live = true;
  const PresentDevice* device = nullptr;  // keys
  Strip image;                            // bitmaps
};

class FakePlatform {
 public:
  FakePlatform();
  FakePlatform(const FakePlatform&) = delete;
  FakePlatform& operator=(const FakePlatform&) = delete;
  ~FakePlatform();

  // The one that is current; ends the process with a message when there is none.
  static FakePlatform& current();
  static FakePlatform* currentOrNull();

  // --- What was called -------------------------------------------------------------------------

  // The texts of the events of some kinds, or of all, in order.
  std::vector<std::string> calls(std::initializer_list<Kind> kinds) const;
  std::vector<std::string> calls() const;
  std::vector<std::string> logLines() const;       // without the "Log " in front
  std::vector<std::string> notifications() const;  // without the "Notify "
  void forgetCalls() { events_.clear(); }
  // Counting goes on; for jobs too long to be kept.
  void setRecording(bool on) { recording_ = on; }
  // Calls of one function so far ("ReadFile"), of all functions, of WriteFile, ReadFile and
  // FlushFileBuffers together.
  int count(const std::string& function) const;
  int callCount() const { return callCount_; }
  int deviceCallCount() const { return deviceCallCount_; }
  // Calls with things that were never handed out, or were given back before.
  const std::vector<std::string>& problems() const { return problems_; }
  // Names of what was handed out and not given back, of one type or of all.
  std::vector<std::string> liveObjects(const std::string& type = {}) const;

  // --- What is made to go wrong; k counts from 1 -------------------------------------------------

  // The k-th call of a function from now on, or every call, fails. Functions that set the last
  // error set `error`; those of the registry return it and leave the last error alone.
  void failCall(const std::string& function, int k = 1, DWORD error = 31);
  void failEveryCall(const std::string& function, DWORD error = 31);
  // The k-th call of any function; of any of the three device functions.
  void failAnyCall(int k, DWORD error = 31);
  void failDeviceCall(int k, DWORD error = 31);
  // The k-th device call brings or takes only `length` bytes and succeeds; a flush just succeeds.
  void shortDeviceCall(int k, std::size_t length);
  // The k-th ReadFile brings only `length` of what the device gave; the rest is lost.
  void shortRead(int k, std::size_t length);
  // The k-th ReadFile brings what the device gave and says that it were `count` bytes.
  void claimRead(int k, DWORD count);
  // Runs `hook` when the k-th call of a function comes; it may throw.
  void onCall(const std::string& function, int k, std::function<void()> hook);

  // --- The device
  // ---------------------------------------------------------------------------------

  // Who answers. Not owned; without one, every write fails with 1167.
  void plug(FakeDevice* device) { device_ = device; }
  // Two open handles on the device, first for writing, then for reading, as the search opens them.
  std::pair<HANDLE, HANDLE> openDevice();
  // Reads in succession that may bring nothing, and device calls in all, before DeviceExhausted is
  // thrown.
  int emptyReadLimit = 64;
  int deviceCallLimit = 1'000'000;

  // --- The system, free to be changed
  // ---------------------------------------------------------------

  DWORD lastError = 0;
  std::deque<PresentDevice> devices;
  std::wstring systemFolder = L"/system32";
  std::set<std::string> missingFunctions;          // of setupapi.dll
  std::map<unsigned, std::wstring> moduleStrings;  // of every module
  std::vector<int> dialogAnswers;                  // in order; then 1
  std::wstring userName = L"user";
  std::wstring computerName = L"computer";
  bool mutexFree = true;
  // The folder for temporary files is the platform's own; a length given here is what GetTempPathW
  // answers in place of the true one.
  std::optional<DWORD> tempPathLength;
  // Name of a folder in it that is used in its place; empty for none.
  std::wstring tempSubfolder;
  // Decodes a strip; nothing when it cannot be decoded. By default each is a `Strip{}`.
  std::function<std::optional<Strip>(const Bytes& content)> decode;
  // Contents of the files that were decoded, in order.
  std::vector<Bytes> decoded;
  // Contents of the pages that every multi-page TIFF turns out to hold; none: it is no such file.
  std::vector<std::string> tiffPages;
  // Where a store application's settings file is looked for.
  std::filesystem::path storeAppSettings = "/absent/ScanInputData.txt";
  // Threads that were asked for and not run.
  std::vector<std::function<unsigned()>> threads;

  std::wstring tempFolderName() const;
  std::filesystem::path tempFolder() const { return toPath(tempFolderName()); }
  // Where files at the root of the drive, "/name", are found.
  std::filesystem::path driveRoot() const { return tempFolder(); }
  // A callback record that puts each notification into the list. Good until the platform goes.
  TVR_FP_CALLBACK* callback() { return &callback_; }
  // Called with each notification, behind the recording; it may throw.
  std::function<void(const ScanNotification&)> onNotification;

  // --- For the operations themselves
  // -------------------------------------------------------------------

  struct Outcome {
    bool fail = false;
    DWORD error = 0;
    std::optional<std::size_t> shortTo;
    std::optional<DWORD> claimed = {};
  };
  // Counts one call and says what is to become of it.
  Outcome call(const std::string& function);
  void record(Kind kind, std::string text);
  void problem(std::string text) { problems_.push_back(std::move(text)); }
  FakeObject& make(const std::string& type, std::string name);
  FakeObject& makeNumbered(const std::string& type);
  FakeObject& makeHandle();
  // The object behind a pointer, live and of that type; null, with a problem, for any other pointer
  // but null.
  FakeObject* find(const void* pointer, const std::string& type);
  FakeObject* findHandle(HANDLE handle, std::string& name);
  // A path as it stands in the list: temporary files are "temp1" and so on.
  std::string pathName(const std::wstring& path) const;
  std::wstring makeTempFile(const std::wstring& prefix);
  FakeDevice* device() { return device_; }
  void countEmptyRead(bool empty);

 private:
  struct Rule {
    std::string function;  // empty: any; "device": the three device functions
    int countdown;         // 0: every call
    Outcome outcome;
    std::function<void()> hook;
    bool spent = false;
  };
  static bool isDeviceFunction(const std::string& function);
  void apply(Rule& rule, const std::string& function, Outcome& outcome);

  std::vector<Event> events_;
  bool recording_ = true;
  std::map<std::string, int> counts_;
  int callCount_ = 0;
  int deviceCallCount_ = 0;
  int emptyReads_ = 0;
  std::deque<Rule> rules_;
  std::vector<std::string> problems_;
  std::deque<std::unique_ptr<FakeObject>> objects_;
  std::unordered_map<const void*, FakeObject*> byAddress_;
  std::map<std::string, int> numbers_;
  FakeDevice* device_ = nullptr;
  TemporaryFolder tempFolder_;
  std::vector<std::wstring> tempFiles_;
  TVR_FP_CALLBACK callback_;
};

// Class id of the fake JPEG encoder.
inline constexpr CLSID kFakeJpegEncoder = {
    0x0A0B0C0D, 0x0102, 0x0304, {0x05, 0x06, 0x07, 0x08, 0x09, 0x0A, 0x0B, 0x0C}};
std::string guidText(const GUID& guid);

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_SUPPORT_FAKE_PLATFORM_H
