// The layout as a foreign compilation sees it, and the tables of the libraries as this program
// imports them.
#include "layout.h"

#include <typeinfo>

#include "check.h"

void checkLayout() {
  using namespace tvrscn::contract;
  for (const Field& field : kFields)
    check(field.offset == field.expectedOffset && field.size == field.expectedSize, field.name,
          field.record, 0);
  for (const Slot& slot : virtualSlots())
    check(slot.slot == slot.expected, slot.function, __FILE__, __LINE__);
  for (const Slot& slot : QZTestPeer::virtualSlots())
    check(slot.slot == slot.expected, slot.function, __FILE__, __LINE__);
  CHECK(QZTestPeer::membersAreInOrder(USB_QZ_Controller()));
  CHECK(QZTestPeer::membersAreInOrder(CQZUSBScanDataSource()));
  CHECK(dictionaryIsInOrder(CErrorCodeDictionary()));
  CHECK(productIsInOrder(ProductData()));
  CHECK(settingsAreInOrder(TevraScanUIData()));

  const CScanUSBClient client(CONTROLLER_HP);
  const ScanBaseClient& base = client;
  CHECK(typeid(base) == typeid(CScanUSBClient));
  CHECK(dynamic_cast<const CScanUSBClient*>(&base) == &client);
}
