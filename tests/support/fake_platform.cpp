// Recording, counting and the rules of failure. Controllers can outlive a platform (a client never
// deletes its own); they find none then, which only matters if somebody still uses them.
#include "tests/support/fake_platform.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "platform/device_file.h"

namespace tvrscn::test {
namespace {

FakePlatform* g_current = nullptr;

void recordNotification(ScanNotification* notification, void* context) {
  auto* platform = static_cast<FakePlatform*>(context);
  std::string text = "Notify " + std::to_string(notification->type);
  if (notification->priority != TVR_NOTIF_PRIORITY_NORMAL) {
    text += " priority " + std::to_string(notification->priority);
  }
  if (notification->text[0] != '\0') text += " " + std::string(notification->text);
  platform->record(Kind::kNotification, text);
  if (platform->onNotification) platform->onNotification(*notification);
}

std::vector<std::string> withoutPrefix(std::vector<std::string> lines, std::size_t length) {
  for (std::string& line : lines)
    line.erase(0, length);
  return lines;
}

}  // namespace

FakePlatform::FakePlatform() : callback_{recordNotification, this} {
  if (g_current != nullptr) {
    std::fputs("two fake platforms at once\n", stderr);
    std::abort();
  }
  g_current = this;
}

FakePlatform::~FakePlatform() {
  g_current = nullptr;
}

FakePlatform& FakePlatform::current() {
  if (g_current == nullptr) {
    std::fputs("a platform operation was called without a fake platform\n", stderr);
    std::abort();
  }
  return *g_current;
}

FakePlatform* FakePlatform::currentOrNull() {
  return g_current;
}

std::vector<std::string> FakePlatform::calls(std::initializer_list<Kind> kinds) const {
  std::vector<std::string> texts;
  for (const Event& event : events_) {
    if (std::find(kinds.begin(), kinds.end(), event.kind) != kinds.end()) {
      texts.push_back(event.text);
    }
  }
  return texts;
}

std::vector<std::string> FakePlatform::calls() const {
  std::vector<std::string> texts;
  for (const Event& event : events_)
    texts.push_back(event.text);
  return texts;
}

std::vector<std::string> FakePlatform::logLines() const {
  return withoutPrefix(calls({Kind::kLog}), std::string_view("Log ").size());
}

std::vector<std::string> FakePlatform::notifications() const {
  return withoutPrefix(calls({Kind::kNotification}), std::string_view("Notify ").size());
}

int FakePlatform::count(const std::string& function) const {
  const auto found = counts_.find(function);
  return found == counts_.end() ? 0 : found->second;
}

std::vector<std::string> FakePlatform::liveObjects(const std::string& type) const {
  std::vector<std::string> names;
  for (const auto& object : objects_) {
    if (object->live && (type.empty() || object->type == type)) names.push_back(object->name);
  }
  return names;
}

void FakePlatform::failCall(const std::string& function, int k, DWORD error) {
  rules_.push_back({function, k, {true, error, {}}, {}});
}

void FakePlatform::failEveryCall(const std::string& function, DWORD error) {
  rules_.push_back({function, 0, {true, error, {}}, {}});
}

void FakePlatform::failAnyCall(int k, DWORD error) {
  failCall("", k, error);
}

void FakePlatform::failDeviceCall(int k, DWORD error) {
  failCall("device", k, error);
}

void FakePlatform::shortDeviceCall(int k, std::size_t length) {
  rules_.push_back({"device", k, {false, 0, length}, {}});
}

void FakePlatform::shortRead(int k, std::size_t length) {
  rules_.push_back({"ReadFile", k, {false, 0, length}, {}});
}

void FakePlatform::claimRead(int k, DWORD count) {
  rules_.push_back({"ReadFile", k, {false, 0, {}, count}, {}});
}

void FakePlatform::onCall(const std::string& function, int k, std::function<void()> hook) {
  rules_.push_back({function, k, {}, std::move(hook)});
}

std::pair<HANDLE, HANDLE> FakePlatform::openDevice() {
  FakeObject& write = makeHandle();
  FakeObject& read = makeHandle();
  return {&write, &read};
}

bool FakePlatform::isDeviceFunction(const std::string& function) {
  return function == "ReadFile" || function == "WriteFile" || function == "FlushFileBuffers";
}

void FakePlatform::apply(Rule& rule, const std::string& function, Outcome& outcome) {
  const bool meant = rule.function.empty() || rule.function == function ||
                     (rule.function == "device" && isDeviceFunction(function));
  if (!meant || rule.spent) return;
  if (rule.countdown > 0) {
    if (--rule.countdown > 0) return;
    rule.spent = true;
  }
  if (rule.hook) rule.hook();
  if (rule.outcome.fail || rule.outcome.shortTo || rule.outcome.claimed) outcome = rule.outcome;
}

FakePlatform::Outcome FakePlatform::call(const std::string& function) {
  ++callCount_;
  ++counts_[function];
  if (isDeviceFunction(function) && ++deviceCallCount_ > deviceCallLimit) {
    throw DeviceExhausted{"the host makes device calls without end"};
  }
  Outcome outcome;
  for (Rule& rule : rules_)
    apply(rule, function, outcome);
  return outcome;
}

void FakePlatform::record(Kind kind, std::string text) {
  if (recording_) events_.push_back({kind, std::move(text)});
}

FakeObject& FakePlatform::make(const std::string& type, std::string name) {
  objects_.push_back(std::make_unique<FakeObject>());
  objects_.back()->type = type;
  objects_.back()->name = std::move(name);
  byAddress_[objects_.back().get()] = objects_.back().get();
  return *objects_.back();
}

FakeObject& FakePlatform::makeNumbered(const std::string& type) {
  return make(type, type + std::to_string(++numbers_[type]));
}

// The first two handles are "write" and "read", the next two "write2" and "read2".
FakeObject& FakePlatform::makeHandle() {
  const int number = ++numbers_["handle"];
  const int pair = (number + 1) / 2;
  const std::string name = number % 2 == 1 ? "write" : "read";
  return make("handle", pair == 1 ? name : name + std::to_string(pair));
}

FakeObject* FakePlatform::find(const void* pointer, const std::string& type) {
  if (pointer == nullptr) return nullptr;
  const auto found = byAddress_.find(pointer);
  if (found == byAddress_.end()) {
    problem("used as a " + type + ": a pointer from nowhere");
    return nullptr;
  }
  FakeObject* object = found->second;
  if (object->type == type && object->live) return object;
  problem("used as a live " + type + ": " + object->type + " " + object->name);
  return nullptr;
}

FakeObject* FakePlatform::findHandle(HANDLE handle, std::string& name) {
  if (handle == INVALID_HANDLE_VALUE) {
    name = "invalid";
    return nullptr;
  }
  FakeObject* object = find(handle, "handle");
  name = object == nullptr ? "unknown" : object->name;
  return object;
}

std::string FakePlatform::pathName(const std::wstring& path) const {
  const auto found = std::find(tempFiles_.begin(), tempFiles_.end(), path);
  if (found == tempFiles_.end()) return utf8(path);
  return "temp" + std::to_string(found - tempFiles_.begin() + 1);
}

// The name of the folder itself is plain ASCII.
std::wstring FakePlatform::tempFolderName() const {
  const std::string folder = tempFolder_.path().string();
  const std::wstring name(folder.begin(), folder.end());
  return tempSubfolder.empty() ? name : name + L"/" + tempSubfolder;
}

std::wstring FakePlatform::makeTempFile(const std::wstring& prefix) {
  const std::wstring name = prefix.substr(0, 3) + std::to_wstring(tempFiles_.size() + 1) + L".tmp";
  tempFiles_.push_back(tempFolderName() + L"/" + name);
  std::ofstream(toPath(tempFiles_.back()), std::ios::binary).flush();
  return tempFiles_.back();
}

void FakePlatform::countEmptyRead(bool empty) {
  emptyReads_ = empty ? emptyReads_ + 1 : 0;
  if (emptyReads_ >= emptyReadLimit) {
    emptyReads_ = 0;
    throw DeviceExhausted{"the host goes on reading though nothing comes"};
  }
}

std::string guidText(const GUID& guid) {
  char text[64];
  std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                unsigned{guid.Data1}, unsigned{guid.Data2}, unsigned{guid.Data3},
                unsigned{guid.Data4[0]}, unsigned{guid.Data4[1]}, unsigned{guid.Data4[2]},
                unsigned{guid.Data4[3]}, unsigned{guid.Data4[4]}, unsigned{guid.Data4[5]},
                unsigned{guid.Data4[6]}, unsigned{guid.Data4[7]});
  return text;
}

}  // namespace tvrscn::test
