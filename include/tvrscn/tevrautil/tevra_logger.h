// The process-wide logger of the suite.
#ifndef TVRSCN_TEVRAUTIL_TEVRA_LOGGER_H
#define TVRSCN_TEVRAUTIL_TEVRA_LOGGER_H

#include "tvrscn/export.h"

// Lines go to the file named by the environment variable TVRSCN_LOG, appended as UTF-8, one line
// each; unset means no log. All operations may be called from any thread.
class TVRSCN_UTIL_API CTevraLogger {
 public:
  // Receives each line as it was written, before any change for the file, on the writing thread.
  using LineListener = void (*)(const wchar_t* line, void* context);

  CTevraLogger(const CTevraLogger&) = delete;
  CTevraLogger& operator=(const CTevraLogger&) = delete;

  // The one logger of the process; never null, never destroyed.
  static CTevraLogger* GetLogInstance();

  // Appends one line. A file that cannot be written loses the line and nothing else.
  void WriteToLog(const wchar_t* line);

  // Hears every further line too, whether or not there is a file: the cause of a failure stands in
  // the log long before a notification says that there was one. A null listener ends it.
  void SetLineListener(LineListener listener, void* context);

 private:
  CTevraLogger();
  ~CTevraLogger();
};

#endif  // TVRSCN_TEVRAUTIL_TEVRA_LOGGER_H
