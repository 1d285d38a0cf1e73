#include "check.h"

void checkExceptions() {
  const USBException exception;
  const USBException copy(exception);
  USBException assigned;
  assigned = copy;
  const std::exception& base = assigned;
  CHECK(base.what() != nullptr);
  CHECK(USBException::m_bIsCommError == 0);
  USBException::m_bIsCommError = 3;
  CHECK(USBException::m_bIsCommError == 3);
  USBException::m_bIsCommError = 0;

  constexpr unsigned char kCheckCondition = 2;
  Listener sense;
  CHECK(USBException::USBExceptionHandler("", 0, &sense.record, nullptr, 1) == -1);
  CHECK(sense.types.empty());
  CHECK(USBException::USBExceptionHandler("023A00", 0, &sense.record, nullptr, 0) == 1022);
  CHECK(USBException::USBExceptionHandler("023A00", 0, &sense.record, nullptr, 1) == -1);
  CHECK((sense.types == Heard{NOTIFY_SCAN_FAILED, NOTIFY_SCAN_FAILED}));

  Listener exchange;
  CHECK(USBException::USBReturnHandler(&exchange.record, 15000, 0, nullptr, 0) == 1022);
  CHECK(USBException::USBReturnHandler(&exchange.record, 15000, 0, nullptr, 1) == 15000);
  CHECK(USBException::USBReturnHandler(&exchange.record, 7, 0, nullptr, 1) == 52);
  CHECK((exchange.types == Heard{NOTIFY_CONN_FAILURE, NOTIFY_CONN_FAILURE, NOTIFY_CONN_FAILURE}));
  CHECK(USBException::USBReturnHandler(&exchange.record, 15010, kCheckCondition, nullptr, 1) ==
        15010);
  CHECK(exchange.types.size() == 3);

  Listener reply;
  CHECK(USBException::USBReturnHandlerForLowEnd(&reply.record, 1, nullptr, 0) == 1022);
  CHECK(reply.types == Heard{NOTIFY_CONN_FAILURE});
}
