#pragma once

#include <chrono>
#include <cstddef>
#include <deque>

namespace borvan_fuzz {

// While an object exists, threads that its own thread starts are queued and run on request, one
// after another, on that same thread. Sleeping takes no time, but advances the steady clock. So the
// behaviour of several threads is reproducible, and tasks that wait for seconds finish immediately.
class Turns {
 public:
  Turns();
  // Runs all queued threads.
  ~Turns();
  Turns(const Turns&) = delete;
  Turns& operator=(const Turns&) = delete;

  // Runs the first queued thread to its end. Returns false if there is none.
  bool RunNext();

  std::size_t Waiting() const { return threads_.size(); }

  // The total time slept.
  std::chrono::nanoseconds Slept() const { return slept_; }

  // Used by the replaced system functions.
  using Procedure = void* (*)(void*);
  void Add(Procedure procedure, void* argument) { threads_.push_back({procedure, argument}); }
  void Sleep(std::chrono::nanoseconds time) { slept_ += time; }
  static Turns* OfThisThread();

 private:
  struct Thread {
    Procedure procedure;
    void* argument;
  };
  std::deque<Thread> threads_;
  std::chrono::nanoseconds slept_{0};
};

}  // namespace borvan_fuzz
