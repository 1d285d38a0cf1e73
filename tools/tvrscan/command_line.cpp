#include "command_line.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <regex>

#include <CLI/CLI.hpp>

#include "device_model.h"
#include "families.h"
#include "media_sizes.h"
#include "store_words.h"
#include "system.h"
#include "words.h"

namespace tvrscn::cli {
namespace {

constexpr const char* kFooter = R"(
Examples:
  tvrscan devices
  tvrscan scan --out ~/scans
  tvrscan scan --device 'VID_0A7E&PID_1F48&MI_00' --mode gray --resolution 200 --size letter
  tvrscan scan --virtual hp --feeder 3 --sides two --name 'page-%03d'
  tvrscan scan --virtual lowend --mode bw --name 'fax-%03d'
  tvrscan scan --virtual qz --feeder 3 --sides two
  tvrscan virtual hp --flatbed
  tvrscan models --over usb --sides two
  tvrscan alerts 192.0.2.7

tvrscan help exit-codes lists how it ends, tvrscan help sizes the page sizes, tvrscan help faults
what a virtual scanner can be told to do wrong. The manual: man tvrscan.)";

constexpr const char* kScanFooter = R"(
Page files go to standard output, one path a line; messages go to standard error. No file is
ever replaced. 'tvrscan help exit-codes' tells what the exit code means.)";

constexpr const char* kAlertsFooter = R"(
It ends by the worst severity: 0 for nothing or reports, 14 for a warning, 11 for an error; and with
3 when no device answers.)";

[[noreturn]] void refuse(const std::string& option, const std::string& text) {
  throw CLI::ValidationError(option, text);
}

[[noreturn]] void refuseWord(const std::string& option, const std::string& word,
                             const std::vector<std::string>& words, const std::string& hint) {
  const std::string guess = suggestion(word, words);
  refuse(option, "'" + word + "' is unknown; " + (guess.empty() ? hint : guess));
}

// An option whose word stands for a text of the settings.
void addWord(CLI::App& app, const std::string& option, const std::string& description,
             std::string& target, std::optional<std::string> (*parse)(std::string_view),
             std::vector<std::string> (*words)(), const std::string& hint) {
  app.add_option_function<std::string>(
         option,
         [=, &target](const std::string& word) {
           const std::optional<std::string> setting = parse(word);
           if (!setting) refuseWord(option, word, words(), hint);
           target = *setting;
         },
         description)
      ->type_name("WORD");
}

// An option whose word is the path of a file or folder.
CLI::Option* addPath(CLI::App& app, const std::string& option, const std::string& description,
                     std::filesystem::path& target) {
  return app.add_option_function<std::string>(
      option, [&target](const std::string& word) { target = pathOf(word); }, description);
}

// The family of a word. Throws what the user has to be told of any other.
const Family& servedFamily(const std::string& option, const std::string& word) {
  if (const Family* family = findFamily(word)) return *family;
  std::vector<std::string> words;
  for (const Family& family : families())
    words.emplace_back(family.word);
  refuseWord(option, word, words, "the families are " + familyList());
}

// The media name of a size that has one.
std::optional<std::string> mediaNameOf(std::string_view word) {
  const std::optional<PageSize> size = parsePageSize(word);
  if (!size || size->mediaName == "Custom") return std::nullopt;
  return size->mediaName;
}

// The form of an instance id: three parts, of which the middle one is a hardware id.
bool isInstanceId(const std::string& text) {
  constexpr std::size_t kLongest = 120;
  static const std::regex form(
      R"(USB\\VID_[0-9A-F]{4}&PID_[0-9A-F]{4}(&MI_[0-9A-F]{2})?\\[0-9A-Z_.&-]+)");
  return text.size() <= kLongest && std::regex_match(text, form);
}

CLI::Option* addPercent(CLI::App& app, const std::string& option, const std::string& description,
                        int& target) {
  return app.add_option(option, target, description)
      ->check(CLI::Range(-100, 100))
      ->type_name("PERCENT");
}

void addVirtual(CLI::App& app, VirtualOptions& target) {
  app.add_option_function<std::vector<std::string>>(
         "--page",
         [&target](const std::vector<std::string>& words) {
           std::transform(words.begin(), words.end(), std::back_inserter(target.pageFiles), pathOf);
         },
         "virtual scanner: image to scan (JPEG, PNG, TIFF); may be repeated")
      ->type_name("FILE")
      ->expected(1)
      ->take_all();
  auto* feeder = app.add_option("--feeder", target.feederSheets,
                                "virtual scanner: so many sheets lie in the feeder");
  feeder->check(CLI::Range(1, 999))->type_name("SHEETS");
  app.add_flag("--flatbed", target.flatbed, "virtual scanner: the document lies on the glass")
      ->excludes(feeder);
  app.add_option("--fault", target.faults,
                 "virtual scanner: misbehave; may be repeated; 'help' lists what there is")
      ->type_name("FAULT")
      ->expected(1)
      ->take_all();
}

void addDevice(CLI::App& app, DeviceOptions& target) {
  auto* device = app.add_option_function<std::string>(
      "--device",
      [&target](const std::string& word) {
        if (word.empty()) refuse("--device", "it is empty; 'tvrscan devices' lists hardware ids");
        target.hardwareId = upperCase(word);
      },
      "hardware id of the device; needed when there is more than one");
  device->type_name("HWID");
  auto* inProcess = app.add_option_function<std::string>(
      "--virtual",
      [&target](const std::string& word) {
        target.family = &servedFamily("--virtual", word);
        target.useVirtual = true;
      },
      "scan with a software scanner of this family");
  inProcess->type_name("FAMILY")->excludes(device);
  // Read behind --virtual, wherever it stands.
  app.add_option_function<std::string>(
         "--family",
         [&target](const std::string& word) {
           const Family& family = servedFamily("--family", word);
           if (target.useVirtual && target.family != &family) {
             refuse("--family", std::string("the scanner of --virtual is of the family ") +
                                    target.family->word);
           }
           target.family = &family;
         },
         "device family: " + familyList() + " (default: that of the device's model, else " +
             families().front().word + ")")
      ->type_name("FAMILY");
  addVirtual(app, target.virtualOptions);
  for (const char* option : {"--page", "--feeder", "--flatbed", "--fault"}) {
    app.get_option(option)->needs(inProcess);
  }
}

void addSettings(CLI::App& app, ScanSettings& target) {
  addWord(app, "--resolution", "dots per inch: 75 100 150 200 300 400 600 1200 (default 300)",
          target.resolution, parseResolution, resolutionWords,
          "write for instance 300; known are 72 75 100 150 200 300 400 600 1200 200x100 200x400");
  addWord(app, "--mode", "color, gray, bw or auto (default color)", target.colorMode, parseMode,
          modeWords, "the modes are color, gray, bw and auto");
  addWord(app, "--sides", "one, two, or flip: two with the back turned (default one)", target.sides,
          parseSides, sidesWords, "the sides are one, two and flip");
  app.add_option_function<std::string>(
         "--size",
         [&target](const std::string& word) {
           const std::optional<PageSize> size = parsePageSize(word);
           if (!size) {
             refuseWord("--size", word, pageSizeWords(),
                        "write a name ('tvrscan help sizes') or for instance 210x297mm or 4x6in, "
                        "sides of 1 to 2000 mm");
           }
           target.size = *size;
         },
         "a4, letter, ..., or WIDTHxHEIGHT with mm, cm or in (default a4)")
      ->type_name("SIZE");
  addPercent(app, "--brightness", "-100 (black) to 100 (white); positive is brighter (default 0)",
             target.brightness);
  addPercent(app, "--contrast", "-100 (flat grey) to 100 (hardest) (default 0)", target.contrast);
  addWord(app, "--background", "remove the background of the paper: off or on (default off)",
          target.background, parseBackground, backgroundWords, "it is off or on");
}

void addLog(CLI::App& app, std::filesystem::path& target) {
  addPath(app, "--log", "append the library's log to this file", target)->type_name("FILE");
}

void addScan(CLI::App& root, ScanOptions& target) {
  CLI::App& app = *root.add_subcommand("scan", "Scan pages into files");
  app.footer(kScanFooter);
  addDevice(app, target.device);
  addSettings(app, target.settings);
  addPath(app, "--out,-o", "folder for the pages; made if missing (default .)", target.folder)
      ->type_name("FOLDER");
  app.add_option_function<std::string>(
         "--name",
         [&target](const std::string& word) {
           std::string problem;
           const std::optional<NamePattern> pattern = NamePattern::parse(word, problem);
           if (!pattern) refuse("--name", "'" + word + "' is no name for pages: " + problem);
           target.name = *pattern;
         },
         "names of the pages, with one number, such as 'page-%03d' (default Image_%d)")
      ->type_name("PATTERN");
  app.add_option("--timeout", target.timeoutSeconds,
                 "give up when nothing happens for so many seconds, and keep the pages")
      ->check(CLI::Range(1, 86400))
      ->type_name("SECONDS");
  app.add_flag("--dialogs", target.dialogs, "show the library's message boxes for failures");
  app.add_flag("--json", target.json, "write one JSON object a line to standard output");
  app.add_flag("--quiet,-q", target.quiet, "say nothing but failures on standard error");
  addLog(app, target.logFile);
}

void addCatalogueFamily(CLI::App& app, const std::string& description, std::string& target) {
  app.add_option_function<std::string>(
         "--family",
         [&target](const std::string& word) {
           target = upperCase(word);
           const std::vector<std::string> words = catalogueFamilies();
           if (std::find(words.begin(), words.end(), target) == words.end()) {
             refuseWord("--family", word, words, "'tvrscan models' shows the families");
           }
         },
         description)
      ->type_name("FAMILY");
}

void addModelFilters(CLI::App& app, ModelsOptions& target) {
  app.add_option("--text", target.text, "with this text in the name or USB product id")
      ->type_name("TEXT");
  addCatalogueFamily(app, "of this family of models, such as LANTERN", target.family);
  app.add_option("--over", target.connection, "that scan over usb, nsp or ipp")
      ->transform(CLI::IsMember({"usb", "nsp", "ipp"}, CLI::ignore_case))
      ->type_name("WORD");
  addWord(app, "--resolution", "with this resolution, such as 300", target.resolution,
          parseResolution, resolutionWords, "write for instance 300");
  addWord(app, "--mode", "with the mode color, gray, bw or auto", target.colorMode, parseMode,
          modeWords, "the modes are color, gray, bw and auto");
  addWord(app, "--sides", "that scan sides one, two or flip", target.sides, parseSides, sidesWords,
          "the sides are one, two and flip");
  addWord(app, "--size", "that take this size by its name, such as a4", target.mediaName,
          mediaNameOf, pageSizeWords, "'tvrscan help sizes' lists the names");
}

void addModels(CLI::App& root, ModelsOptions& target) {
  CLI::App& app = *root.add_subcommand("models", "List the models, or show one");
  auto* name = app.add_option("name", target.name, "show this model, by its name or short name");
  name->type_name("NAME");
  addModelFilters(app, target);
  for (const char* option :
       {"--text", "--family", "--over", "--resolution", "--mode", "--sides", "--size"}) {
    name->excludes(app.get_option(option));
  }
  app.add_flag("--json", target.json, "write one JSON object a line to standard output");
}

void addAlerts(CLI::App& root, AlertsOptions& target) {
  CLI::App& app = *root.add_subcommand("alerts", "Show what a device on the network reports");
  app.footer(kAlertsFooter);
  app.add_option_function<std::string>(
         "address",
         [&target](const std::string& word) {
           if (word.empty()) refuse("alerts", "the address is empty");
           target.address = word;
         },
         "HOST, HOST:PORT or SCHEME://HOST; the port is 631 where none is named")
      ->type_name("ADDRESS")
      ->required();
  addCatalogueFamily(app, "put it in the words of this family, such as LANTERN", target.family);
  app.add_option("--model", target.model, "put it in the words of this model's family")
      ->type_name("NAME")
      ->excludes(app.get_option("--family"));
  app.add_flag("--json", target.json, "write one JSON object a line to standard output");
  app.add_flag("--quiet,-q", target.quiet, "say nothing but failures on standard error");
}

void addRanges(CLI::App& root, RangesOptions& target) {
  CLI::App& app =
      *root.add_subcommand("ranges", "Show the device's ranges of brightness and contrast");
  addDevice(app, target.device);
  app.add_flag("--json", target.json, "write one JSON object to standard output");
}

void addStore(CLI::App& root, StoreOptions& target) {
  CLI::App& app = *root.add_subcommand(
      "store", "Run a command of a QZ device with the settings of a store application");
  app.footer("\nCommands, with their codes:\n" + storeCommandHelp());
  auto* command = app.add_option_function<std::string>(
      "command",
      [&target](const std::string& word) {
        target.command = parseStoreCommand(word);
        if (!target.command) {
          refuseWord("store", word, storeCommandWords(),
                     "'tvrscan help store' lists the commands and their codes");
        }
      },
      "a command, by its word or its code");
  command->type_name("COMMAND");
  app.add_flag("--check", target.check, "look at the settings file and send nothing")
      ->excludes(command);
  app.add_flag("--print-template", target.printTemplate, "print a line for the settings file")
      ->excludes(command);
  app.add_flag("--quiet,-q", target.quiet, "say nothing but failures on standard error");
  addLog(app, target.logFile);
}

void addInstanceId(CLI::App& app, std::string& target) {
  app.add_option_function<std::string>(
         "--instance-id",
         [&target](const std::string& word) {
           target = upperCase(word);
           if (isInstanceId(target)) return;
           refuse("--instance-id", "'" + word +
                                       "' is no instance id; write for instance "
                                       R"(USB\VID_0A7E&PID_1F48&MI_00\SECOND)");
         },
         "id to register as, for more than one scanner at a time")
      ->type_name("ID");
}

void addVirtualCommand(CLI::App& root, VirtualCommandOptions& target) {
  CLI::App& app = *root.add_subcommand("virtual", "Run a software scanner until Ctrl-C");
  app.require_subcommand(1);
  for (const Family& family : families()) {
    CLI::App& scanner = *app.add_subcommand(
        family.word, std::string("A scanner of the ") + family.title + " family");
    scanner.final_callback([&target, &family] { target.family = &family; });
    scanner.add_option("--listen", target.listen, "path of its endpoint (default: a private one)")
        ->type_name("PATH");
    addInstanceId(scanner, target.instanceId);
    addPath(scanner, "--device-folder",
            "where it registers (default: $TVRSCN_DEVICE_PATH, else the user's)",
            target.deviceFolder)
        ->type_name("FOLDER");
    addVirtual(scanner, target.scanner);
  }
}

// The faults of all software scanners.
std::string faultHelp() {
  std::string text;
  for (const Family& family : families()) {
    text += (text.empty() ? "" : "\n") + std::string("Faults of 'tvrscan virtual ") + family.word +
            "' and 'tvrscan scan --virtual " + family.word + "':\n\n" + family.faultHelp();
  }
  return text;
}

std::string topicText(const std::string& topic, const CLI::App& root) {
  if (topic.empty()) return root.help();
  if (topic == "exit-codes") return exitCodeHelp();
  if (topic == "sizes") return pageSizeHelp();
  if (topic == "faults") return faultHelp();
  for (const CLI::App* app : root.get_subcommands([](const CLI::App*) { return true; })) {
    if (app->get_name() == topic) return app->help();
  }
  refuseWord("help", topic,
             {"exit-codes", "sizes", "faults", "scan", "devices", "models", "alerts", "ranges",
              "store", "virtual"},
             "the topics are exit-codes, sizes, faults and the commands");
}

void checkFaults(const VirtualOptions& options, const Family& family) {
  for (const std::string& fault : options.faults) {
    const std::string problem = family.faultProblem(fault);
    if (!problem.empty()) throw UsageProblem{ExitCode::kUsage, "--fault: " + problem};
  }
}

bool asksForFaultHelp(const VirtualOptions& options) {
  return std::find(options.faults.begin(), options.faults.end(), "help") != options.faults.end();
}

// What can stand behind a command: its options and commands.
std::vector<std::string> wordsOf(const CLI::App& app) {
  std::vector<std::string> words;
  for (const CLI::Option* option : app.get_options())
    words.push_back(option->get_name());
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
    words.push_back(command->get_name());
  return words;
}

// What CLI11 says, with the nearest option or command where a word was not expected.
UsageProblem usageProblem(const CLI::ParseError& error, const CLI::App& root) {
  std::string text = error.what();
  const CLI::App* app = &root;
  std::string commands = "tvrscan";
  while (!app->get_subcommands().empty()) {
    app = app->get_subcommands().front();
    commands += " " + app->get_name();
  }
  const std::vector<std::string> extras = root.remaining(true);
  if (!extras.empty()) {
    // An unknown option comes with its value; the option is what was misspelt.
    const auto option = std::find_if(extras.begin(), extras.end(), [](const std::string& extra) {
      return extra.starts_with("-");
    });
    const std::string& word = option != extras.end() ? *option : extras.front();
    const std::string guess = suggestion(word.substr(0, word.find('=')), wordsOf(*app));
    text = "'" + word + "' is not expected here" + (guess.empty() ? "" : "; " + guess);
  }
  return {ExitCode::kUsage, text + "\nTry '" + commands + " --help'."};
}

class Parser {
 public:
  Parser() {
    root_.name("tvrscan");
    // A word that begins with a slash is a path on every system.
    root_.allow_windows_style_options(false);
    root_.footer(kFooter);
    root_.require_subcommand(1);
    root_.set_version_flag("--version", std::string("tvrscan ") + TVRSCAN_VERSION);
    addScan(root_, scan_);
    root_.add_subcommand("devices", "List the USB devices that are present")
        ->add_flag("--json", devices_.json, "write one JSON object a line to standard output");
    addModels(root_, models_);
    addAlerts(root_, alerts_);
    addRanges(root_, ranges_);
    addStore(root_, store_);
    addVirtualCommand(root_, virtual_);
    root_.add_subcommand("help", "Show help on a topic or command")
        ->add_option("topic", topic_, "exit-codes, sizes, faults, or a command");
  }

  Command parse(std::vector<std::string> arguments) {
    std::reverse(arguments.begin(), arguments.end());
    try {
      root_.parse(arguments);
      return command();
    } catch (const CLI::CallForVersion& version) {
      return HelpOptions{std::string(version.what()) + "\n"};
    } catch (const CLI::CallForHelp&) {
      return HelpOptions{innermost().help()};
    } catch (const CLI::ParseError& error) {
      throw usageProblem(error, root_);
    }
  }

 private:
  const CLI::App& innermost() const {
    const CLI::App* app = &root_;
    while (!app->get_subcommands().empty())
      app = app->get_subcommands().front();
    return *app;
  }

  Command storeCommand() const {
    if (store_.command || store_.check || store_.printTemplate) return store_;
    throw UsageProblem{ExitCode::kUsage,
                       "store: a COMMAND is missing\nTry 'tvrscan store --help'."};
  }

  Command command() const {
    if (root_.got_subcommand("help")) return HelpOptions{topicText(topic_, root_)};
    if (root_.got_subcommand("devices")) return devices_;
    if (root_.got_subcommand("models")) return models_;
    if (root_.got_subcommand("alerts")) return alerts_;
    if (root_.got_subcommand("store")) return storeCommand();
    const bool own = root_.got_subcommand("virtual");
    const DeviceOptions& device = root_.got_subcommand("scan") ? scan_.device : ranges_.device;
    const VirtualOptions& options = own ? virtual_.scanner : device.virtualOptions;
    // Only a virtual scanner has faults, and its family is known.
    if (const Family* const family = own ? virtual_.family : device.family) {
      if (asksForFaultHelp(options)) return HelpOptions{family->faultHelp()};
      checkFaults(options, *family);
    }
    if (root_.got_subcommand("scan")) return scan_;
    if (root_.got_subcommand("ranges")) return ranges_;
    return virtual_;
  }

  CLI::App root_{"Scan with USB scanners, or with virtual ones, from the command line."};
  ScanOptions scan_;
  DevicesOptions devices_;
  ModelsOptions models_;
  AlertsOptions alerts_;
  RangesOptions ranges_;
  StoreOptions store_;
  VirtualCommandOptions virtual_;
  std::string topic_;
};

}  // namespace

Command parseCommandLine(const std::vector<std::string>& arguments) {
  return Parser().parse(arguments);
}

}  // namespace tvrscn::cli
