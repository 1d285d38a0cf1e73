// The settings of one job as typed values; each family turns them into its own request.
#ifndef TVRSCN_SCAN_DATA_SOURCE_H
#define TVRSCN_SCAN_DATA_SOURCE_H

#include <cstdint>
#include <string>

#include "tvrscn/export.h"
#include "tvrscn/tevrautil/scan_ui_data.h"

// Made by a controller for each job, filled once. Texts are those of the user interface and are
// compared exactly and case-sensitively.
class TVRSCN_API CUSBScanDataSource {
 public:
  CUSBScanDataSource();
  CUSBScanDataSource(const CUSBScanDataSource& other);
  CUSBScanDataSource& operator=(const CUSBScanDataSource& other);
  virtual ~CUSBScanDataSource();

  // Takes the settings of the user interface, with the flatbed as paper source. Always true.
  // Throws std::invalid_argument ("invalid stoi argument") or std::out_of_range ("stoi argument
  // out of range") when contrast or brightness is no number; nothing is stored then.
  bool setAppDataToScanCommand(const TevraScanUIData& settings);

  // The same from one line: colour, resolution, sides, width, height, brightness, contrast,
  // background, media name, divided by commas; empty fields do not count, and a tenth is ignored.
  // False for an empty text, which changes nothing. Throws as above, and std::logic_error when
  // there are fewer than nine fields.
  bool setAppDataToScanCommand(const std::string& settings);

  // Stores each value. A media name with "LEF" in it is fed long edge first from then on. The
  // operation's name is spelt as drivers know it.
  void SetScaningPropertiesFromApp(std::string colorMode, std::string resolution, std::string sides,
                                   int width, int height, int paperSource, int brightness,
                                   int contrast, std::string backgroundRemoval, int pageLimit,
                                   std::string mediaSize);

  // Dots per inch of the resolution text: 75, 100, 150, 200, 300, 400 or 600, and 200 for any other
  // text.
  short GetAppResolution();

  // Turns the interface's values into those of the image: brightness is negated (it came as a
  // darkness) and both are divided by four, towards zero. Zero twice does nothing. Not idempotent.
  void SetBrightnessContrast();

  int getBrightness();
  int getContrast();
  std::string getColorToScan();
  std::string getHardwareId();
  void setHardwareId(const std::string& hardwareId);
  int GetPaperSource();  // 0 the flatbed, any other the feeder
  void SetPaperSource(int paperSource);
  bool isNeedImageProcessing();

 protected:
  std::int32_t m_nWidth;      // millimetres
  std::int32_t m_nHeight;     // millimetres
  std::int32_t m_nPageLimit;  // 0: no limit
  std::int32_t m_nFeedEdge;   // 1 short edge first, 0 long edge first
  std::string m_backgroundRemoval;
  std::string m_resolution;
  std::string m_sides;
  std::int32_t m_nContrast;
  std::int32_t m_nBrightness;
  std::string m_colorMode;
  std::string m_hardwareId;     // set by the store application's path only
  bool m_bNeedImageProcessing;  // the stored image must be post-processed
  std::int32_t m_nPaperSource;  // 0 the flatbed, 1 the feeder
  std::string m_mediaSize;

 private:
  friend struct DataSourceTestPeer;
};

#endif  // TVRSCN_SCAN_DATA_SOURCE_H
