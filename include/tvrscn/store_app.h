// The entry of store applications, which have no client object.
#ifndef TVRSCN_STORE_APP_H
#define TVRSCN_STORE_APP_H

#include "tvrscn/export.h"

// Runs one command of the QZ family on the device that the settings file names: 0 a whole scan, 1
// the cancel sequence, else the code of a command. The file is one line of twelve fields divided by
// commas, C:\ProgramData\Tevra\ScanInputData.txt on Windows, ScanInputData.txt in
// $TVRSCN_PROGRAM_DATA (by default /var/lib/tevra) elsewhere:
//
//   colour, resolution, sides, width, height (millimetres), paper source, brightness, contrast,
//   background removal, page limit, hardware id, media name
//
// Blocks until the command has ended and tells nothing of its outcome. Pages of a scan go to
// \Image_<number>.jpg at the root of the current drive. Throws std::invalid_argument or
// std::out_of_range when a field should be a number and is none; a line of fewer than twelve
// fields ends the process, before anything is sent.
extern "C" TVRSCN_API void scanFromStoreApp(int command);

#endif  // TVRSCN_STORE_APP_H
