#include "reporter.h"

#include "json_output.h"
#include "system.h"

namespace tvrscn::cli {

Reporter::Reporter(Console& console, bool json)
    : console_(console), json_(json), start_(std::chrono::steady_clock::now()) {}

std::chrono::milliseconds Reporter::elapsed() const {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                               start_);
}

void Reporter::device(const Device& device, const std::string& family) {
  if (json_) {
    console_.data(deviceLine(device, family));
  } else {
    console_.note("scanning with " + device.hardwareId);
  }
}

void Reporter::page(const StoredPage& page) {
  if (json_) {
    console_.data(pageLine(page));
    return;
  }
  console_.note("page " + std::to_string(page.number) + ": " + textOf(page.file.filename()) + ", " +
                byteText(page.bytes) + ", " + timeText(elapsed()));
  console_.data(textOf(page.file));
}

int Reporter::end(const Outcome& outcome, const std::vector<StoredPage>& pages) {
  if (json_) console_.data(endLine(outcome, pages));
  endInWords(outcome, pages);
  return static_cast<int>(outcome.code);
}

void Reporter::endInWords(const Outcome& outcome, const std::vector<StoredPage>& pages) {
  std::uintmax_t bytes = 0;
  std::string names;
  for (const StoredPage& page : pages) {
    bytes += page.bytes;
    names += (names.empty() ? "" : ", ") + textOf(page.file);
  }
  if (outcome.code == ExitCode::kDone) {
    console_.note(pageText(pages.size()) + " stored, " + byteText(bytes) + ", " +
                  timeText(elapsed()));
    return;
  }
  console_.problem(std::string(exitCodeRow(outcome.code).name) + ": " + outcome.what + ".");
  if (!outcome.remedy.empty()) console_.detail(outcome.remedy);
  if (!outcome.deviceSaid.empty()) console_.detail("The device said: " + outcome.deviceSaid);
  for (const std::string& note : outcome.notes)
    console_.detail("Besides: " + note + ".");
  if (!pages.empty()) {
    console_.detail(pageText(pages.size()) + (pages.size() == 1 ? " is" : " are") +
                    " safe: " + names);
  }
}

}  // namespace tvrscn::cli
