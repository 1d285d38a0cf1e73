// One transaction: a request out, its reply in, and the reply's data to whoever waits for them.
//
// A READ reply that says "there is more" starts the next READ out of its own handling, and one that
// says "the block ends" a READ BLOCK HEADER, so the transactions of a page nest as deep as the
// device has replies. The depth must not cost stack: a device that always says "more" would overrun
// any. So the request that such a handling sends does not run inside it: it is put down, the
// handling unwinds, and the outermost transaction runs it. What a suspended transaction does when
// the one below it has ended depends on its kind alone, so that a level costs one byte.
#ifndef TVRSCN_FAMILY_QZ_QZ_TRANSACTION_H
#define TVRSCN_FAMILY_QZ_QZ_TRANSACTION_H

#include <optional>
#include <string>
#include <vector>

#include "tvrscn/qz_controller.h"

// The outermost transaction of a controller on this thread, with the chain of READs below it.
class QZTransaction {
 public:
  struct Request {
    HANDLE handle = nullptr;
    std::string header;
    std::string payload;  // as long as length, or empty where the caller gave none
    int length = 0;
  };

  explicit QZTransaction(USB_QZ_Controller& controller);
  QZTransaction(const QZTransaction&) = delete;
  QZTransaction& operator=(const QZTransaction&) = delete;
  ~QZTransaction();

  int run(const Request& first);

  // Said before a READ reply is handled: the request that its state asks for will be put down.
  static void expectFollowUp(const USB_QZ_Controller& controller,
                             const USBVendorPacketHeader& reply);
  // Whether the request is such a follow-up; it is kept then, and counts as a success until the
  // handling has unwound.
  static bool putDown(const USB_QZ_Controller& controller, Request& request);

  // Sends the READ that follows a READ reply and gives the result of that reply's handling.
  static int readOn(USB_QZ_Controller& controller);

 private:
  // What the handling of a reply sends, and how it takes the result.
  enum class FollowUp : unsigned char {
    kNone,
    kRead,         // any failure and any status is its own failure
    kBlockHeader,  // never a failure
  };

  static QZTransaction* of(const USB_QZ_Controller& controller);
  int exchange(const Request& request);
  int send(const Request& request);
  int receive();
  int resume(FollowUp followUp, int result);
  void flushBoth();

  USB_QZ_Controller& controller_;
  QZTransaction* const outer_;  // the one in whose callback this one runs
  FollowUp expected_ = FollowUp::kNone;
  std::optional<Request> next_;
  std::vector<FollowUp> suspended_;  // outermost first
};

#endif  // TVRSCN_FAMILY_QZ_QZ_TRANSACTION_H
