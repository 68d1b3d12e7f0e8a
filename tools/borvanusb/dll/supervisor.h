#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace borvanusb {

// Supervises the thread that uses the library (the working thread). Other threads ask how long it
// has been inside a call, and whether the user asked to stop; they may have to end the process.
class Supervisor {
 public:
  using Clock = std::chrono::steady_clock;

  // Marks a call by the working thread that may hang, from the constructor to the destructor. Calls
  // may be nested; the time of the outer call restarts when the inner call ends.
  class Call {
   public:
    // `doing` describes the call. It must be a string literal, because other threads read it later.
    // Throws Failure kStopped like ObeyStop.
    Call(Supervisor& supervisor, const char* doing);
    ~Call();
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

   private:
    Supervisor& supervisor_;
    const char* const outer_;
  };

  // Defers a stop while an object of this class exists.
  class Hold {
   public:
    explicit Hold(Supervisor& supervisor) : supervisor_(supervisor) { ++supervisor_.holds_; }
    ~Hold() { --supervisor_.holds_; }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

   private:
    Supervisor& supervisor_;
  };

  // Requests a stop. May be called on any thread and in a console signal handler. Returns the
  // number of requests so far.
  int RequestStop() { return ++stop_requests_; }
  bool StopRequested() const { return stop_requests_ > 0; }
  // Resets the requests, for a process that continues after a stopped command.
  void ForgetStop() { stop_requests_ = 0; }
  // Whether a stop is requested and no Hold exists.
  bool MustStop() const { return StopRequested() && holds_ == 0; }
  // Throws Failure kStopped if MustStop returns true.
  void ObeyStop() const;

  // The function that returns the lines to print before the process is ended (see
  // Host::SetLastWords). May be called on any thread.
  void SetLastWords(std::function<std::vector<std::string>()> words);
  std::vector<std::string> LastWords() const;

  bool IsHeld() const { return holds_ > 0; }

  // Returns the descriptions of all calls so far and how often each was made, in the order of their
  // first calls. Must be called on the working thread.
  using Count = std::pair<std::string, std::uint64_t>;
  const std::vector<Count>& Calls() const { return calls_; }

  // Sets the maximum time of a call.
  void SetLimit(std::chrono::milliseconds limit) { limit_ = limit; }

  // Returns the description of the current call if it has taken longer than `limit`. Returns
  // nothing if it has not, or if there is no call.
  std::optional<std::string> Overdue(std::chrono::milliseconds limit) const;
  std::optional<std::string> Overdue() const { return Overdue(limit_); }

 private:
  void CountCall(const char* doing);

  std::atomic<int> stop_requests_{0};
  std::atomic<int> holds_{0};
  std::atomic<std::chrono::milliseconds> limit_{std::chrono::milliseconds(10000)};
  std::atomic<const char*> doing_{nullptr};
  std::atomic<Clock::rep> since_{0};
  std::vector<Count> calls_;
  mutable std::mutex words_mutex_;
  std::function<std::vector<std::string>()> words_;
};

}  // namespace borvanusb
