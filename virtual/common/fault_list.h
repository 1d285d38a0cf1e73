// The faults of one device at run time: each strikes at its step as often as its count says. Counts
// run down over the life of the device, not of a job. Used by the device's thread alone.
#ifndef TVRSCN_VIRTUAL_COMMON_FAULT_LIST_H
#define TVRSCN_VIRTUAL_COMMON_FAULT_LIST_H

#include <algorithm>
#include <chrono>
#include <vector>

namespace tvrscn::virtual_device {

// Fault has the members kind, step, page, count (0 or less: every time) and value.
template <typename Fault>
class FaultList {
 public:
  using Kind = typename Fault::Kind;

  explicit FaultList(const std::vector<Fault>& faults) {
    for (const Fault& fault : faults)
      entries_.push_back({fault, fault.count <= 0, fault.count});
  }

  // The first fault for which matches(fault) holds, with one count less; null when there is none.
  template <typename Matches>
  const Fault* takeIf(const Matches& matches) {
    for (Entry& entry : entries_) {
      if (!matches(entry.fault)) continue;
      if (entry.everyTime) return &entry.fault;
      if (entry.left == 0) continue;
      --entry.left;
      return &entry.fault;
    }
    return nullptr;
  }
  template <typename Step>
  const Fault* take(Kind kind, Step step) {
    return takeIf([&](const Fault& fault) { return fault.kind == kind && fault.step == step; });
  }

  // Whatever its count says.
  template <typename Matches>
  const Fault* findIf(const Matches& matches) const {
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [&](const Entry& entry) { return matches(entry.fault); });
    return found == entries_.end() ? nullptr : &found->fault;
  }
  bool has(Kind kind) const {
    return findIf([&](const Fault& fault) { return fault.kind == kind; }) != nullptr;
  }
  template <typename Step>
  bool hasAt(Kind kind, Step step) const {
    return findIf([&](const Fault& fault) { return fault.kind == kind && fault.step == step; }) !=
           nullptr;
  }
  bool hasOnPage(Kind kind, int page) const {
    return findIf([&](const Fault& fault) { return fault.kind == kind && fault.page == page; }) !=
           nullptr;
  }
  // The values of all faults of this kind together, as milliseconds.
  std::chrono::milliseconds sumOf(Kind kind) const {
    std::chrono::milliseconds sum{0};
    for (const Entry& entry : entries_) {
      if (entry.fault.kind == kind) sum += std::chrono::milliseconds(entry.fault.value);
    }
    return sum;
  }

 private:
  struct Entry {
    Fault fault;
    bool everyTime;
    int left;
  };
  std::vector<Entry> entries_;
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_COMMON_FAULT_LIST_H
