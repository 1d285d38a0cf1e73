// The catalogue as it is written down in product_rows.cpp: a model names its series, a series its
// line, and each holds what all below it share.
#ifndef TVRSCN_CATALOGUE_PRODUCT_ROWS_H
#define TVRSCN_CATALOGUE_PRODUCT_ROWS_H

#include <span>

namespace tvrscn {

// How a model is reached to scan.
struct ProductConnections {
  bool usb;
  bool nsp;
  bool ipp;
  int defaultNetworkScan;
};

// What a model starts with. No model makes a choice of sides.
struct ProductDefaults {
  const char* color;
  const char* resolution;
  const char* paper;
};

// What models of one kind of controller and connection have in common.
struct ProductLine {
  const char* controllerFamily;
  const ProductConnections& connections;
  const char* usbInterface;
  const ProductDefaults& defaults;
  const char* resolutions;
  const wchar_t* settingsPage;
  const wchar_t* secureObjectId;  // may be empty
};

// Models that look alike and offer the same.
struct ProductSeries {
  const ProductLine& line;
  const wchar_t* picture;  // the file names of the pictures begin with it
  const char* colors;
  const char* sides;
  const char* paper;
};

struct ProductRow {
  const wchar_t* model;
  const wchar_t* designation;
  const wchar_t* objectId;  // below the number of the enterprise
  const wchar_t* usbProductId;
  int ratedSpeed;
  const ProductSeries& series;
};

// All models, in the order of the search.
std::span<const ProductRow> productRows();

}  // namespace tvrscn

#endif  // TVRSCN_CATALOGUE_PRODUCT_ROWS_H
