// Sets a flag for the lifetime of the mark, also when an exception leaves the routine.
#pragma once

class FlagMark {
  public:
    explicit FlagMark(bool& flag) : flag_(flag) { flag_ = true; }
    FlagMark(const FlagMark&) = delete;
    FlagMark& operator=(const FlagMark&) = delete;
    ~FlagMark() { flag_ = false; }

  private:
    bool& flag_;
};
