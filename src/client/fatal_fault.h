// The one place in which the process ends when a caller's mistake leaves nothing to go on with.
#ifndef TVRSCN_CLIENT_FATAL_FAULT_H
#define TVRSCN_CLIENT_FATAL_FAULT_H

namespace tvrscn {

// Writes message, which names the mistake and the remedy, to standard error and aborts.
[[noreturn]] void endAtFault(const char* message);

}  // namespace tvrscn

#endif  // TVRSCN_CLIENT_FATAL_FAULT_H
