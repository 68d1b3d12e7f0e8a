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

// Watches the thread that works with the library, for the threads that may have to end the process:
// how long it has been inside one call, and whether the user wants to stop.
class Supervisor {
 public:
  using Clock = std::chrono::steady_clock;

  // What the working thread is doing in a call that may hang. It must outlive the call: a literal.
  // May be nested: the time of the outer one then begins anew behind the inner one.
  class Call {
   public:
    // Throws Failure kStopped when a stop is asked for and not held.
    Call(Supervisor& supervisor, const char* doing);
    ~Call();
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

   private:
    Supervisor& supervisor_;
    const char* const outer_;
  };

  // While one exists, a stop is not yet obeyed.
  class Hold {
   public:
    explicit Hold(Supervisor& supervisor) : supervisor_(supervisor) { ++supervisor_.holds_; }
    ~Hold() { --supervisor_.holds_; }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

   private:
    Supervisor& supervisor_;
  };

  // May be called from any thread, a console's signal included. Returns how often it was called.
  int RequestStop() { return ++stop_requests_; }
  bool StopRequested() const { return stop_requests_ > 0; }
  // For a process that continues after a stopped command.
  void ForgetStop() { stop_requests_ = 0; }
  // Whether a stop is asked for and not held.
  bool MustStop() const { return StopRequested() && holds_ == 0; }
  // Throws Failure kStopped when it must stop.
  void ObeyStop() const;

  void SetLastWords(std::function<std::vector<std::string>()> words);
  std::vector<std::string> LastWords() const;

  bool IsHeld() const { return holds_ > 0; }

  // What the working thread did in such calls, and how often, in the order of the first times. To
  // be called on that thread.
  using Count = std::pair<std::string, std::uint64_t>;
  const std::vector<Count>& Calls() const { return calls_; }

  // How long a call may take.
  void SetLimit(std::chrono::milliseconds limit) { limit_ = limit; }

  // What the working thread has been doing for longer than `limit`, inside one call; nothing when
  // it moves.
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
