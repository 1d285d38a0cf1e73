// A lock that all processes of one user's session share by its name.
#ifndef TVRSCN_TEVRAUTIL_NAMED_MUTEX_H
#define TVRSCN_TEVRAUTIL_NAMED_MUTEX_H

#include "tvrscn/export.h"

// One mutex per name across processes. Construction takes nothing; a holder that dies gives the
// mutex up. An object belongs to one thread at a time.
class TVRSCN_UTIL_API XMutex {
 public:
  explicit XMutex(const wchar_t* name);
  XMutex(const XMutex&) = delete;
  XMutex& operator=(const XMutex&) = delete;

  // Gives the mutex up if this object holds it.
  virtual ~XMutex();

  // Tries up to `tries` times, waiting up to `millisecondsPerTry` each; true when the mutex is
  // held, also when this object held it before. False when it could not be had in time or at all.
  bool WaitWithRetry(unsigned long millisecondsPerTry, unsigned long tries);

 private:
  void* m_hMutex;  // owned; null when the system gave none
  bool m_bHeld;
};

#endif  // TVRSCN_TEVRAUTIL_NAMED_MUTEX_H
