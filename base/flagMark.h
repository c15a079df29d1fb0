// A flag that is up for as long as a mark lives, however the routine around it is left.
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
