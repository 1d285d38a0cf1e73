// The models of the suite. From the top: the lists that models offer, what the models of a line
// share, what those of a series share, and one row a model. A list, a line or a series is changed
// for all its models at once; a new model is a new row. docs/catalogue.md tells what the columns
// mean, and what the tests hold a change against.
#include "catalogue/product_rows.h"

namespace tvrscn {
namespace {

// Colours.

constexpr char kAutoColors[] = "Auto, BlackAndWhite, FullColor, Grayscale";
constexpr char kAutoNoBlack[] = "Auto, FullColor, Grayscale";
constexpr char kColors[] = "BlackAndWhite, FullColor, Grayscale";
constexpr char kNoBlack[] = "FullColor, Grayscale";

// Resolutions.

constexpr char kFrom72[] = "72x72, 100x100, 150x150, 200x200, 300x300, 400x400, 600x600";
constexpr char kFrom75[] = "75x75, 150x150, 200x200, 300x300, 400x400, 600x600";
constexpr char kFrom150[] = "150x150, 200x200, 300x300, 400x400, 600x600";
constexpr char kFrom200[] = "200x200, 300x300, 400x400, 600x600, 1200x1200";
constexpr char kTwoResolutions[] = "200x200, 300x300";

// Sides.

constexpr char kOneSided[] = "OneSided";
constexpr char kTwoSided[] = "OneSided, TwoSided";
constexpr char kAllSides[] = "OneSided, TwoSided, SecondSideRotation";

// Media: by the largest sheet, and by the kind of device.

constexpr char kPaperA4Glass[] =
    "NA_8.5x11SEF, NA_5.5x8.5SEF, ISO_A5SEF, ISO_A4SEF, ISO_B5SEF, JIS_B5SEF, "
    "NA_7.25x10.5SEF, ISO_A6SEF";
constexpr char kPaperA4Desk[] =
    "NA_8.5x11LEF, NA_8.5x11SEF, NA_8.5x14SEF, NA_5.5x8.5SEF, ISO_A5LEF, ISO_A5SEF, "
    "ISO_A4LEF, ISO_A4SEF, JIS_B5SEF";
constexpr char kPaperA4Small[] =
    "NA_8.5x11SEF, NA_8.5x14SEF, NA_5.5x8.5SEF, NA_8.5x13SEF, ISO_A5SEF, ISO_A4SEF, "
    "ISO_B5SEF, JIS_B5SEF, NA_7.25x10.5SEF, ISO_A6SEF";
constexpr char kPaperA4Feeder[] =
    "NA_8.5x11SEF, NA_8.5x14SEF, NA_5.5x8.5SEF, NA_8.5x13SEF, NA_8.5x13.4SEF, ISO_A5SEF, "
    "ISO_A4SEF, ISO_B5SEF, JIS_B6SEF, JIS_B5SEF, NA_7.25x10.5SEF, NA_5x7SEF, ISO_A6SEF, "
    "NA_4x6SEF";
constexpr char kPaperA4Envelopes[] =
    "NA_8.5x11SEF, NA_8.5x14SEF, NA_5.5x8.5SEF, NA_8.5x13SEF, NA_8.5x13.4SEF, ISO_A5SEF, "
    "ISO_A4SEF, ISO_B5SEF, JIS_B6SEF, JIS_B5SEF, NA_7.25x10.5SEF, NA_5x7SEF, ISO_A6SEF, "
    "ISO_C6_ENVELOPE_C6, ISO_C5_ENVELOPE_C5, NA-NUMBER-10-ENVELOPE, "
    "ISO-DESIGNATED-LONG-ENVELOPE-DL, NA_4x6SEF";
constexpr char kPaperA4Office[] =
    "NA_8.5x11LEF, NA_8.5x11SEF, NA_8.5x14SEF, NA_5.5x8.5LEF, NA_5.5x8.5SEF, NA_8.5x13SEF, "
    "ISO_A5LEF, ISO_A5SEF, ISO_A4LEF, ISO_A4SEF, JIS_B5LEF, JIS_B5SEF, ISO_A6SEF";
constexpr char kPaperA3[] =
    "NA_8.5x11LEF, NA_8.5x11SEF, NA_8.5x14SEF, NA_5.5x8.5LEF, NA_5.5x8.5SEF, NA_8.5x13SEF, "
    "NA_11x17SEF, ISO_A5LEF, ISO_A5SEF, ISO_A4LEF, ISO_A4SEF, ISO_A3SEF, JIS_B5LEF, "
    "JIS_B5SEF, JIS_B4SEF";
constexpr char kPaperA3Small[] =
    "NA_8.5x11LEF, NA_8.5x11SEF, NA_8.5x14SEF, NA_5.5x8.5SEF, NA_8.5x13SEF, NA_11x17SEF, "
    "ISO_A5SEF, ISO_A4LEF, ISO_A4SEF, ISO_A3SEF, ISO_B5SEF, ISO_B4SEF, JIS_B5SEF, JIS_B4SEF, "
    "NA_7.25x10.5SEF, ISO_A6SEF";
constexpr char kPaperA3Office[] =
    "NA_8.5x11LEF, NA_8.5x11SEF, NA_8.5x14SEF, NA_5.5x8.5LEF, NA_5.5x8.5SEF, NA_8.5x13SEF, "
    "NA_8.5x13.4SEF, NA_11x17SEF, ISO_A5LEF, ISO_A5SEF, ISO_A4LEF, ISO_A4SEF, ISO_A3SEF, "
    "JIS_B5LEF, JIS_B5SEF, JIS_B4SEF, ISO_A6SEF";
constexpr char kPaperA3Wide[] =
    "NA_8.5x11LEF, NA_8.5x11SEF, NA_8.5x14SEF, NA_5.5x8.5LEF, NA_5.5x8.5SEF, NA_8.5x13SEF, "
    "NA_11x17SEF, ISO_A5LEF, ISO_A5SEF, ISO_A4LEF, ISO_A4SEF, ISO_A3SEF, ISO_B5SEF, "
    "ISO_B5LEF, ISO_B4SEF, JIS_B5LEF, JIS_B5SEF, JIS_B4SEF, NA_7.25x10.5LEF, NA_7.25x10.5SEF";
constexpr char kPaperA3Large[] =
    "NA_8.5x11LEF, NA_8.5x11SEF, NA_8.5x14SEF, NA_5.5x8.5LEF, NA_5.5x8.5SEF, NA_8.5x13SEF, "
    "NA_11x17SEF, ISO_A5LEF, ISO_A5SEF, ISO_A4LEF, ISO_A4SEF, ISO_A3SEF, ISO_B5SEF, "
    "ISO_B5LEF, ISO_B4SEF, JIS_B5LEF, JIS_B5SEF, JIS_B4SEF, NA_7.25x10.5LEF, "
    "NA_7.25x10.5SEF, ISO_A6SEF";
constexpr char kPaperA3Press[] =
    "NA_8.5x11LEF, NA_8.5x11SEF, NA_8.5x14SEF, NA_5.5x8.5LEF, NA_5.5x8.5SEF, NA_8.5x13SEF, "
    "NA_11x17SEF, ISO_A5LEF, ISO_A5SEF, ISO_A4LEF, ISO_A4SEF, ISO_A3SEF, ISO_B5SEF, "
    "ISO_B5LEF, ISO_B4SEF, JIS_B6SEF, JIS_B6LEF, JIS_B5LEF, JIS_B5SEF, JIS_B4SEF, "
    "NA_7.25x10.5LEF, NA_7.25x10.5SEF, NA_9x11SEF, NA_11x15SEF";
constexpr char kPaperA3Envelopes[] =
    "NA_8.5x11LEF, NA_8.5x11SEF, NA_8.5x14SEF, NA_5.5x8.5LEF, NA_5.5x8.5SEF, NA_8.5x13SEF, "
    "NA_11x17SEF, ISO_A5LEF, ISO_A5SEF, ISO_A4LEF, ISO_A4SEF, ISO_A3SEF, ISO_B5SEF, "
    "ISO_B5LEF, ISO_B4SEF, JIS_B5LEF, JIS_B5SEF, JIS_B4SEF, NA_7.25x10.5LEF, "
    "NA_7.25x10.5SEF, ISO_A6SEF, ISO_C6_ENVELOPE_C6, ISO_C5_ENVELOPE_C5, "
    "NA-3.875X7.5-ENVELOPE-MONARCH, NA-NUMBER-10-ENVELOPE, ISO-DESIGNATED-LONG-ENVELOPE-DL";
constexpr char kPaperAutoA4[] =
    "Auto, NA_8.5x11SEF, NA_8.5x14SEF, NA_5.5x8.5SEF, NA_8.5x13SEF, NA_8.5x13.4SEF, "
    "ISO_A5SEF, ISO_A4SEF, JIS_B5SEF, NA_7.25x10.5SEF, NA_5x7SEF, ISO_A6SEF";
constexpr char kPaperAutoA3[] =
    "Auto, Mixed, NA_8.5x11LEF, NA_8.5x11SEF, NA_8.5x14SEF, NA_5.5x8.5LEF, NA_5.5x8.5SEF, "
    "NA_8.5x13SEF, NA_11x17SEF, ISO_A5LEF, ISO_A5SEF, ISO_A4LEF, ISO_A4SEF, ISO_A3SEF, "
    "JIS_B5LEF, JIS_B5SEF, JIS_B4SEF, ISO_A6SEF";
constexpr char kPaperAutoA3Wide[] =
    "Auto, Mixed, NA_8.5x11LEF, NA_8.5x11SEF, NA_8.5x14SEF, NA_5.5x8.5LEF, NA_5.5x8.5SEF, "
    "NA_8.5x13SEF, NA_11x17SEF, ISO_A5LEF, ISO_A5SEF, ISO_A4LEF, ISO_A4SEF, ISO_A3SEF, "
    "ISO_B5SEF, ISO_B5LEF, ISO_B4SEF, JIS_B5LEF, JIS_B5SEF, JIS_B4SEF, NA_7.25x10.5LEF, "
    "NA_7.25x10.5SEF";
constexpr char kPaperAutoA3Press[] =
    "Auto, Mixed, NA_8.5x11LEF, NA_8.5x11SEF, NA_8.5x14SEF, NA_5.5x8.5LEF, NA_5.5x8.5SEF, "
    "NA_8.5x13SEF, NA_11x17SEF, ISO_A5LEF, ISO_A5SEF, ISO_A4LEF, ISO_A4SEF, ISO_A3SEF, "
    "ISO_B5SEF, ISO_B5LEF, ISO_B4SEF, JIS_B6SEF, JIS_B6LEF, JIS_B5LEF, JIS_B5SEF, JIS_B4SEF, "
    "NA_7.25x10.5LEF, NA_7.25x10.5SEF, NA_215x315SEF, NA_9x11SEF, NA_11x15SEF, "
    "NA_216x343SEF, CN_270x390SEF, CN_195x270LEF";

// Pages of the device itself.

constexpr wchar_t kScanService[] = L"http://{0}/web_srvc/twainScanning.php";
constexpr wchar_t kProperties[] = L"http://{0}/properties/index.dhtml";
constexpr wchar_t kApps[] = L"http://{0}/apps/index.html#hashPortalkey/hashApps";

// Second object ids.

constexpr wchar_t kNotSecure[] = L"";
constexpr wchar_t kSecureLantern[] = L"1.3.6.1.4.1.99999.9.1";
constexpr wchar_t kSecureAmber[] = L"1.3.6.1.4.1.99999.9.2";
constexpr wchar_t kSecureLowEnd[] = L"1.3.6.1.4.1.99999.9.3";

// Connections: USB, NSP, IPP, and the network protocol to start with.

constexpr int kStartWithNsp = 1;
constexpr int kStartWithIpp = 4;

constexpr ProductConnections kNsp{false, true, false, kStartWithNsp};
constexpr ProductConnections kNspAndIpp{false, true, true, kStartWithIpp};
constexpr ProductConnections kUsbAndIpp{true, false, true, kStartWithIpp};
constexpr ProductConnections kUsbNspAndIpp{true, true, true, kStartWithIpp};

// What a model starts with: colour, resolution, paper.

constexpr ProductDefaults kManual{"FullColor", "200x200", "Manual"};
constexpr ProductDefaults kAutoColor{"Auto", "200x200", "Manual"};
constexpr ProductDefaults kAuto300{"Auto", "300x300", "Manual"};
constexpr ProductDefaults kAllAuto{"Auto", "200x200", "Auto"};

// clang-format off
// From here on one row a line, in columns.

// Lines: family, connections, USB interface, start, resolutions, settings page, second object id.

constexpr ProductLine kMeridian{
    "MERIDIAN", kNsp,          "MI_00", kManual,    kFrom200,        kApps,        kNotSecure};
constexpr ProductLine kLantern{
    "LANTERN",  kNsp,          "MI_02", kAllAuto,   kFrom72,         kScanService, kSecureLantern};
constexpr ProductLine kLanternUsb{
    "LANTERN",  kUsbNspAndIpp, "MI_02", kAutoColor, kFrom150,        kScanService, kSecureLantern};
constexpr ProductLine kHarbor{
    "HARBOR",   kNsp,          "MI_00", kManual,    kTwoResolutions, kProperties,  kNotSecure};
constexpr ProductLine kAmber{
    "AMBER",    kNsp,          "MI_00", kAllAuto,   kFrom200,        kApps,        kNotSecure};
constexpr ProductLine kAmberIpp{
    "AMBER",    kNspAndIpp,    "MI_00", kAuto300,   kFrom200,        kApps,        kSecureAmber};
constexpr ProductLine kLowEnd{
    "LOWEND",   kUsbAndIpp,    "MI_00", kManual,    kFrom75,         kProperties,  kSecureLowEnd};

// Series.
using Series = ProductSeries;
//                         line          pictures     colours       sides      media
constexpr Series kAlder    {kMeridian,   L"Alder",    kNoBlack,     kAllSides, kPaperA3};
constexpr Series kAlderXL  {kMeridian,   L"AlderXL",  kNoBlack,     kAllSides, kPaperA3Wide};
constexpr Series kCedar    {kMeridian,   L"Cedar",    kNoBlack,     kAllSides, kPaperA3Wide};
constexpr Series kCedarXL  {kMeridian,   L"CedarXL",  kNoBlack,     kAllSides, kPaperA3Press};
constexpr Series kHazel    {kMeridian,   L"Hazel",    kColors,      kAllSides, kPaperA3};
constexpr Series kLinden   {kMeridian,   L"Linden",   kNoBlack,     kAllSides, kPaperA3Press};
constexpr Series kLindenXL {kMeridian,   L"LindenXL", kNoBlack,     kAllSides, kPaperA3Press};
constexpr Series kRowan    {kMeridian,   L"General",  kNoBlack,     kAllSides, kPaperA3};
constexpr Series kSorrel   {kMeridian,   L"General",  kNoBlack,     kAllSides, kPaperA3};
constexpr Series kAspen    {kLantern,    L"Aspen",    kAutoColors,  kAllSides, kPaperAutoA3};
constexpr Series kAspenXL  {kLantern,    L"AspenXL",  kAutoColors,  kAllSides, kPaperAutoA3Wide};
constexpr Series kBeech    {kLantern,    L"Beech",    kAutoColors,  kAllSides, kPaperAutoA3Wide};
constexpr Series kChestnut {kLantern,    L"Chestnut", kAutoNoBlack, kAllSides, kPaperAutoA4};
constexpr Series kElm      {kLantern,    L"Elm",      kAutoColors,  kAllSides, kPaperAutoA3Press};
constexpr Series kHornbeam {kLantern,    L"Hornbeam", kAutoColors,  kAllSides, kPaperAutoA3Wide};
constexpr Series kLarch    {kLantern,    L"Larch",    kAutoNoBlack, kAllSides, kPaperAutoA3};
constexpr Series kLarchXL  {kLantern,    L"LarchXL",  kAutoNoBlack, kAllSides, kPaperAutoA3Press};
constexpr Series kMaple    {kLanternUsb, L"Maple",    kAutoColors,  kAllSides, kPaperA3Office};
constexpr Series kMapleXL  {kLanternUsb, L"MapleXL",  kAutoColors,  kAllSides, kPaperA3Office};
constexpr Series kOak      {kLanternUsb, L"Oak",      kAutoColors,  kAllSides, kPaperA3Large};
constexpr Series kOakXL    {kLanternUsb, L"OakXL",    kAutoColors,  kAllSides, kPaperA3Large};
constexpr Series kPoplar   {kLanternUsb, L"Poplar",   kAutoColors,  kAllSides, kPaperA4Office};
constexpr Series kSpruce   {kLanternUsb, L"Spruce",   kAutoColors,  kAllSides, kPaperA3Large};
constexpr Series kWalnut   {kLanternUsb, L"Walnut",   kAutoColors,  kAllSides, kPaperA4Office};
constexpr Series kQuay     {kHarbor,     L"General",  kColors,      kAllSides, kPaperA4Desk};
constexpr Series kYew      {kAmber,      L"Yew",      kAutoNoBlack, kAllSides, kPaperAutoA3};
constexpr Series kWillow   {kAmber,      L"Willow",   kAutoNoBlack, kAllSides, kPaperAutoA3Wide};
constexpr Series kWillowXL {kAmber,      L"WillowXL", kAutoNoBlack, kAllSides, kPaperAutoA3Press};
constexpr Series kSequoia  {kAmberIpp,   L"Sequoia",  kAutoNoBlack, kAllSides, kPaperA3Envelopes};
constexpr Series kCypress  {kLowEnd,     L"Cypress",  kColors,      kOneSided, kPaperA4Glass};
constexpr Series kFir      {kLowEnd,     L"Fir",      kColors,      kOneSided, kPaperA4Glass};
constexpr Series kBirch    {kLowEnd,     L"Birch",    kColors,      kTwoSided, kPaperA4Small};
constexpr Series kGinkgo   {kLowEnd,     L"Ginkgo",   kColors,      kTwoSided, kPaperA4Small};
constexpr Series kHolly    {kLowEnd,     L"Holly",    kColors,      kTwoSided, kPaperA4Feeder};
constexpr Series kJuniper  {kLowEnd,     L"Juniper",  kColors,      kTwoSided, kPaperA4Envelopes};
constexpr Series kOlive    {kLowEnd,     L"Olive",    kColors,      kTwoSided, kPaperA3Small};
constexpr Series kTamarisk {kLowEnd,     L"Tamarisk", kColors,      kTwoSided, kPaperA3Small};

// Models, in the order of the search: the first one whose name stands in the text asked for is
// taken. No name stands in another, so that the order decides nothing as long as it stays so.
constexpr ProductRow kRows[] = {
    // model                    short     id       USB id   rate series

    // MERIDIAN
    {L"Tevra Alder 3020",       L"3020",  L"1.1",  L"1234", 30,  kAlder},
    {L"Tevra Alder 3520",       L"3520",  L"1.2",  L"1A11", 35,  kAlder},
    {L"Tevra Alder 4520",       L"4520",  L"1.3",  L"1A12", 45,  kAlderXL},
    {L"Tevra Alder 5520",       L"5520",  L"1.4",  L"1A13", 55,  kAlderXL},
    {L"Tevra Cedar 6530",       L"6530",  L"1.5",  L"1A14", 65,  kCedar},
    {L"Tevra Cedar 7530",       L"7530",  L"1.6",  L"1A15", 75,  kCedar},
    {L"Tevra Cedar 9030",       L"9030",  L"1.7",  L"1A16", 90,  kCedarXL},
    {L"Tevra Hazel 2515",       L"2515",  L"1.8",  L"1A17", 25,  kHazel},
    {L"Tevra Hazel 3015",       L"3015",  L"1.9",  L"1A18", 30,  kHazel},
    {L"Tevra Hazel 3515",       L"3515",  L"1.10", L"1A19", 35,  kHazel},
    {L"Tevra Linden P100",      L"P100",  L"1.11", L"1A1A", 100, kLinden},
    {L"Tevra Linden P110",      L"P110",  L"1.12", L"1A1B", 110, kLinden},
    {L"Tevra Linden P125",      L"P125",  L"1.13", L"1A1C", 125, kLindenXL},
    {L"Tevra Linden P136",      L"P136",  L"1.14", L"1A1D", 136, kLindenXL},
    {L"Tevra Rowan 50",         L"50",    L"1.15", L"1A1E", 50,  kRowan},
    {L"Tevra Rowan 70",         L"70",    L"1.16", L"1A1F", 70,  kRowan},
    {L"Tevra Rowan 81",         L"81",    L"1.17", L"1A20", 81,  kRowan},
    {L"Tevra Sorrel B25",       L"B25",   L"1.18", L"1A21", 25,  kSorrel},
    {L"Tevra Sorrel B32",       L"B32",   L"1.19", L"1A22", 32,  kSorrel},

    // LANTERN over the network
    {L"Tevra Aspen 3035",       L"3035",  L"3.1",  L"1B10", 30,  kAspen},
    {L"Tevra Aspen 3535",       L"3535",  L"3.2",  L"1B11", 35,  kAspen},
    {L"Tevra Aspen 4535",       L"4535",  L"3.3",  L"1B12", 45,  kAspenXL},
    {L"Tevra Aspen 5535",       L"5535",  L"3.4",  L"1B13", 55,  kAspenXL},
    {L"Tevra Beech 6530",       L"6530",  L"3.5",  L"1B14", 65,  kBeech},
    {L"Tevra Beech 7530",       L"7530",  L"3.6",  L"1B15", 75,  kBeech},
    {L"Tevra Beech 9030",       L"9030",  L"3.7",  L"1B16", 90,  kBeech},
    {L"Tevra Chestnut 2020",    L"2020",  L"3.8",  L"1B17", 20,  kChestnut},
    {L"Tevra Chestnut 2520",    L"2520",  L"3.9",  L"1B18", 25,  kChestnut},
    {L"Tevra Chestnut 3020",    L"3020",  L"3.10", L"1B19", 30,  kChestnut},
    {L"Tevra Elm P100",         L"P100",  L"3.11", L"1B1A", 100, kElm},
    {L"Tevra Elm P110",         L"P110",  L"3.12", L"1B1B", 110, kElm},
    {L"Tevra Elm P125",         L"P125",  L"3.13", L"1B1C", 125, kElm},
    {L"Tevra Hornbeam 4750",    L"4750",  L"3.14", L"1B1D", 47,  kHornbeam},
    {L"Tevra Hornbeam 5150",    L"5150",  L"3.15", L"1B1E", 51,  kHornbeam},
    {L"Tevra Hornbeam 5650",    L"5650",  L"3.16", L"1B1F", 56,  kHornbeam},
    {L"Tevra Larch 3650",       L"3650",  L"3.17", L"1B20", 36,  kLarch},
    {L"Tevra Larch 4250",       L"4250",  L"3.18", L"1B21", 42,  kLarch},
    {L"Tevra Larch 5250",       L"5250",  L"3.19", L"1B22", 52,  kLarchXL},
    {L"Tevra Larch 8150",       L"8150",  L"3.20", L"1B23", 81,  kLarchXL},

    // LANTERN over the network and USB
    {L"Tevra Maple C25",        L"C25",   L"3.21", L"1C50", 25,  kMaple},
    {L"Tevra Maple C30",        L"C30",   L"3.22", L"1C51", 30,  kMaple},
    {L"Tevra Maple C35",        L"C35",   L"3.23", L"1C52", 35,  kMapleXL},
    {L"Tevra Maple C45",        L"C45",   L"3.24", L"1C53", 45,  kMapleXL},
    {L"Tevra Oak 3055",         L"3055",  L"3.25", L"1C54", 30,  kOak},
    {L"Tevra Oak 3555",         L"3555",  L"3.26", L"1C55", 35,  kOak},
    {L"Tevra Oak 4555",         L"4555",  L"3.27", L"1C56", 45,  kOakXL},
    {L"Tevra Oak 5555",         L"5555",  L"3.28", L"1C57", 55,  kOakXL},
    {L"Tevra Poplar B32",       L"B32",   L"3.29", L"1C58", 32,  kPoplar},
    {L"Tevra Poplar B36",       L"B36",   L"3.30", L"1C59", 36,  kPoplar},
    {L"Tevra Poplar B42",       L"B42",   L"3.31", L"1C5A", 42,  kPoplar},
    {L"Tevra Spruce 5050",      L"5050",  L"3.32", L"1C5B", 50,  kSpruce},
    {L"Tevra Spruce 5650",      L"5650",  L"3.33", L"1C5C", 56,  kSpruce},
    {L"Tevra Spruce 7050",      L"7050",  L"3.34", L"1C5D", 70,  kSpruce},
    {L"Tevra Walnut 2060",      L"2060",  L"3.35", L"1F48", 20,  kWalnut},
    {L"Tevra Walnut 2560",      L"2560",  L"3.36", L"1F49", 25,  kWalnut},
    {L"Tevra Walnut 2660",      L"2660",  L"3.37", L"1F4A", 26,  kWalnut},

    // HARBOR
    {L"Tevra Quay 200",         L"200",   L"4.1",  L"1D10", 20,  kQuay},
    {L"Tevra Quay 260",         L"260",   L"4.2",  L"1D11", 26,  kQuay},

    // AMBER
    {L"Tevra Yew 3510",         L"3510",  L"5.1",  L"1D20", 35,  kYew},
    {L"Tevra Yew 4510",         L"4510",  L"5.2",  L"1D21", 45,  kYew},
    {L"Tevra Yew 5510",         L"5510",  L"5.3",  L"1D22", 55,  kYew},
    {L"Tevra Willow 7010",      L"7010",  L"5.4",  L"1D23", 70,  kWillow},
    {L"Tevra Willow 9010",      L"9010",  L"5.5",  L"1D24", 90,  kWillow},
    {L"Tevra Willow 11010",     L"11010", L"5.6",  L"1D25", 110, kWillowXL},

    // AMBER with IPP
    {L"Tevra Sequoia 6575",     L"6575",  L"5.7",  L"1D30", 65,  kSequoia},
    {L"Tevra Sequoia 7575",     L"7575",  L"5.8",  L"1D31", 75,  kSequoia},
    {L"Tevra Sequoia 10075",    L"10075", L"5.9",  L"1D32", 100, kSequoia},

    // LOWEND
    {L"Tevra Cypress 210 MFP",  L"210",   L"2.1",  L"1E40", 20,  kCypress},
    {L"Tevra Cypress 215 MFP",  L"215",   L"2.2",  L"1E41", 20,  kCypress},
    {L"Tevra Cypress 220 MFP",  L"220",   L"2.3",  L"1E42", 25,  kCypress},
    {L"Tevra Fir 305 MFP",      L"305",   L"2.4",  L"1E43", 20,  kFir},
    {L"Tevra Fir 310 MFP",      L"310",   L"2.5",  L"1E44", 25,  kFir},
    {L"Tevra Fir 315 MFP",      L"315",   L"2.6",  L"1E45", 26,  kFir},
    {L"Tevra Birch 120 MFP",    L"120",   L"2.7",  L"5678", 26,  kBirch},
    {L"Tevra Birch 125 MFP",    L"125",   L"2.8",  L"1E47", 30,  kBirch},
    {L"Tevra Birch 130 MFP",    L"130",   L"2.9",  L"1E48", 32,  kBirch},
    {L"Tevra Ginkgo 420 MFP",   L"420",   L"2.10", L"1E49", 30,  kGinkgo},
    {L"Tevra Ginkgo 425 MFP",   L"425",   L"2.11", L"1E4A", 35,  kGinkgo},
    {L"Tevra Ginkgo 430 MFP",   L"430",   L"2.12", L"1E4B", 36,  kGinkgo},
    {L"Tevra Holly 520 MFP",    L"520",   L"2.13", L"1E4C", 32,  kHolly},
    {L"Tevra Holly 525 MFP",    L"525",   L"2.14", L"1E4D", 36,  kHolly},
    {L"Tevra Holly 530 MFP",    L"530",   L"2.15", L"1E4E", 42,  kHolly},
    {L"Tevra Juniper 620 MFP",  L"620",   L"2.16", L"1E4F", 35,  kJuniper},
    {L"Tevra Juniper 625 MFP",  L"625",   L"2.17", L"1E50", 42,  kJuniper},
    {L"Tevra Juniper 630 MFP",  L"630",   L"2.18", L"1E51", 45,  kJuniper},
    {L"Tevra Olive 720 MFP",    L"720",   L"2.19", L"1E52", 42,  kOlive},
    {L"Tevra Olive 725 MFP",    L"725",   L"2.20", L"1E53", 47,  kOlive},
    {L"Tevra Olive 730 MFP",    L"730",   L"2.21", L"1E54", 52,  kOlive},
    {L"Tevra Tamarisk 820 MFP", L"820",   L"2.22", L"1E55", 45,  kTamarisk},
    {L"Tevra Tamarisk 825 MFP", L"825",   L"2.23", L"1E56", 50,  kTamarisk},
};

// clang-format on

}  // namespace

std::span<const ProductRow> productRows() {
  return kRows;
}

}  // namespace tvrscn
