// What lies in the QZ scanner: the sheets in its feeder, or the one on its glass.
#ifndef TVRSCN_VIRTUAL_QZ_QZ_SHEETS_H
#define TVRSCN_VIRTUAL_QZ_QZ_SHEETS_H

namespace tvrscn::virtual_device {

class QzSheets {
 public:
  // One side of a sheet.
  struct Side {
    int page = 1;   // in this job, from 1
    int sheet = 1;  // in this job, from 1
    bool isBack = false;
  };

  explicit QzSheets(int inFeeder) : inFeeder_(inFeeder) {}

  // The document sensor: the feeder has something that this job has not got yet.
  bool isWaiting() const {
    return !now_.isOver && (now_.backWaits || now_.sheetsTaken < inFeeder_);
  }
  int nextPage() const { return now_.pages + 1; }

  // REQUIRES: isWaiting().
  Side takeFromFeeder(bool twoSides) {
    before_ = now_;
    const bool isBack = now_.backWaits && twoSides;
    if (!isBack) ++now_.sheetsTaken;
    now_.backWaits = twoSides && !isBack;
    return {++now_.pages, now_.sheetsTaken, isBack};
  }
  Side takeFromGlass() {
    before_ = now_;
    ++now_.pages;
    return {now_.pages, now_.pages, false};
  }
  // The last page comes once more.
  void putBack() { now_ = before_; }
  // This job gets no more.
  void close() { now_.isOver = true; }
  void refill() { now_ = {}; }

 private:
  struct State {
    int pages = 0;
    int sheetsTaken = 0;
    bool backWaits = false;
    bool isOver = false;
  };

  int inFeeder_;
  State now_;
  State before_;
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_QZ_QZ_SHEETS_H
