#pragma once

#include <chrono>
#include <cstddef>
#include <deque>

namespace borvan_fuzz {

// While one lives, the threads that its own thread starts wait until they are told to run, one
// after the other, on that same thread; and sleeping takes no time but moves the steady clock on.
// What several threads do is the same each time then, and a task that waits for seconds is done at
// once.
class Turns {
 public:
  Turns();
  // Runs what still waits.
  ~Turns();
  Turns(const Turns&) = delete;
  Turns& operator=(const Turns&) = delete;

  // Runs the thread that was started first, to its end. False when none waits.
  bool RunNext();

  std::size_t Waiting() const { return threads_.size(); }

  // What was slept so far.
  std::chrono::nanoseconds Slept() const { return slept_; }

  // For the system's functions that take part.
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
