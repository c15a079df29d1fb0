// Sets a flag for the lifetime of the guard, also when an exception leaves the routine.
#pragma once

class FlagGuard {
  public:
    explicit FlagGuard(bool& flag) : flag_(flag) { flag_ = true; }
    FlagGuard(const FlagGuard&) = delete;
    FlagGuard& operator=(const FlagGuard&) = delete;
    ~FlagGuard() { flag_ = false; }

  private:
    bool& flag_;
};
