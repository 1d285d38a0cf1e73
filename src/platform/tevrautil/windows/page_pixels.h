// The imaging jobs on a stored page, through the system's imaging library.
#ifndef TVRSCN_PLATFORM_TEVRAUTIL_WINDOWS_PAGE_PIXELS_H
#define TVRSCN_PLATFORM_TEVRAUTIL_WINDOWS_PAGE_PIXELS_H

#include <string>

#include "tvrscn/types.h"

namespace tvrscn::imaging {

// The encoder's place in the system's list and its class id; -1, and clsid is left alone, when the
// system has none for the type.
int findEncoder(const wchar_t* mimeType, CLSID& clsid);

// Both work in place on the JPEG file at path, leave one that cannot be read as it is, and throw
// std::runtime_error, which names the file, when the result cannot be written.
void makeBlackAndWhite(const std::wstring& path, int brightness);
void applyBrightnessContrast(const std::wstring& path, int brightness, int contrast);

}  // namespace tvrscn::imaging

#endif  // TVRSCN_PLATFORM_TEVRAUTIL_WINDOWS_PAGE_PIXELS_H
