// One set of jobs on a virtual scanner of each family, for setting the pages of both systems side
// by side; see compare-pages.sh. The same program is built for both.
//
//   page_jobs FOLDER
//
// The strips are made with the quality that every system's encoder takes of its own accord: one of
// them may not let it be chosen, and then the two devices would deliver different pages.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/e2e/job_end.h"
#include "tests/e2e/system.h"
#include "tvrscn/scan_client.h"
#include "virtual/virtual_lowend_scanner.h"
#include "virtual/virtual_qz_scanner.h"
#include "virtual/virtual_scanner.h"

namespace {

namespace fs = std::filesystem;
using namespace tvrscn::virtual_device;

constexpr int kEveryEncodersQuality = 75;

struct Job {
  const char* name;
  const char* colorMode;
  const char* resolution;
  const wchar_t* brightness;  // larger is darker
  const wchar_t* contrast;
  int sheets;  // 0: flatbed
};

const Job kHpJobs[] = {
    {"color", "FullColor", "300x300", L"0", L"0", 0},
    {"gray", "Grayscale", "300x300", L"0", L"0", 0},
    {"bw", "BlackAndWhite", "300x300", L"0", L"0", 0},
    {"feeder", "FullColor", "100x100", L"0", L"0", 2},
    {"color-brighter", "FullColor", "150x150", L"-160", L"0", 0},
    {"color-harder", "FullColor", "150x150", L"80", L"200", 0},
    {"gray-darker", "Grayscale", "150x150", L"160", L"-120", 0},
    {"bw-brighter", "BlackAndWhite", "150x150", L"-80", L"0", 0},
    {"bw-harder", "BlackAndWhite", "150x150", L"-80", L"240", 0},
};

const Job kLowEndJobs[] = {
    {"lowend-color", "FullColor", "200x200", L"0", L"0", 0},
    {"lowend-gray-darker", "Grayscale", "150x150", L"40", L"20", 0},
    {"lowend-bw", "BlackAndWhite", "300x300", L"0", L"0", 2},
};

const Job kQzJobs[] = {
    {"qz-color", "FullColor", "300x300", L"0", L"0", 0},
    {"qz-bw", "BlackAndWhite", "300x300", L"0", L"0", 0},
    {"qz-feeder-brighter", "FullColor", "100x100", L"-160", L"0", 3},
    {"qz-gray-harder", "Grayscale", "150x150", L"80", L"200", 0},
    {"qz-bw-brighter", "BlackAndWhite", "150x150", L"-80", L"0", 0},
};

TevraScanUIData settingsOf(const Job& job) {
  TevraScanUIData settings;
  settings.mediaSize = "ISO_A4SEF";
  settings.pageWidth = 210;
  settings.pageHeight = 297;
  settings.sides = "OneSided";
  settings.resolution = job.resolution;
  settings.colorMode = job.colorMode;
  settings.brightness = job.brightness;
  settings.contrast = job.contrast;
  settings.backgroundRemoval = L"Off";
  return settings;
}

// The pages of a job in the order of their numbers, which go on from job to job.
std::vector<fs::path> pagesIn(const fs::path& folder) {
  std::vector<fs::path> pages;
  for (const auto& entry : fs::directory_iterator(folder))
    pages.push_back(entry.path());
  std::sort(pages.begin(), pages.end(), [](const fs::path& left, const fs::path& right) {
    return std::pair(left.native().size(), left) < std::pair(right.native().size(), right);
  });
  return pages;
}

template <class Options>
Options loadedFor(const Job& job) {
  Options options;
  options.jpegQuality = kEveryEncodersQuality;
  options.feeder = job.sheets != 0;
  options.sheets = job.sheets;
  return options;
}

void run(const Job& job, ControllerType family, const RunningScanner& scanner,
         const fs::path& folder) {
  tvrscn::test::setVariable("TVRSCN_DEVICE_PATH", scanner.placement().deviceFolder.string());

  const fs::path pages = folder / "job";
  fs::create_directories(pages);
  CScanUSBClient client(family);
  client.InitExceptionStrings(nullptr);
  client.SetUsingTevraUI(0);
  client.InitScanConfigInfo("scanner", scanner.placement().instanceId, L"label");
  TevraScanUIData settings = settingsOf(job);
  tvrscn::test::JobEnd end;
  if (client.Scan(settings, end.callback(), pages.wstring(), nullptr) != 0 ||
      end.type() != NOTIFY_JOB_COMPLETE)
    throw std::runtime_error(std::string("the job failed: ") + job.name);

  int number = 0;
  for (const fs::path& page : pagesIn(pages)) {
    std::string extension = page.extension().string();
    if (extension == ".JPG") extension = ".jpg";
    fs::rename(page, folder / (std::string(job.name) + "-" + std::to_string(++number) + extension));
  }
  fs::remove(pages);
  if (number == 0) throw std::runtime_error(std::string("no page came: ") + job.name);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: page_jobs FOLDER\n", stderr);
    return 2;
  }
  try {
    for (const Job& job : kHpJobs)
      run(job, CONTROLLER_HP, *startHpScanner(loadedFor<HpScannerOptions>(job), {}), argv[1]);
    for (const Job& job : kLowEndJobs) {
      const auto options = loadedFor<LowEndScannerOptions>(job);
      run(job, CONTROLLER_LOWEND, *startLowEndScanner(options, lowEndPlacement()), argv[1]);
    }
    for (const Job& job : kQzJobs) {
      const auto options = loadedFor<QzScannerOptions>(job);
      run(job, CONTROLLER_QZ, *startQzScanner(options, qzPlacement()), argv[1]);
    }
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "page_jobs: %s\n", error.what());
    return 1;
  }
}
