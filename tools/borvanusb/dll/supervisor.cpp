#include "dll/supervisor.h"

#include <algorithm>
#include <utility>

#include "base/failure.h"

namespace borvanusb {

Supervisor::Call::Call(Supervisor& supervisor, const char* doing)
    : supervisor_(supervisor), outer_(supervisor.doing_) {
  supervisor.ObeyStop();
  supervisor.CountCall(doing);
  supervisor.since_ = Clock::now().time_since_epoch().count();
  supervisor.doing_ = doing;
}

Supervisor::Call::~Call() {
  supervisor_.since_ = Clock::now().time_since_epoch().count();
  supervisor_.doing_ = outer_;
}

void Supervisor::CountCall(const char* doing) {
  const auto known = std::find_if(calls_.begin(), calls_.end(),
                                  [&](const Count& count) { return count.first == doing; });
  if (known != calls_.end()) {
    ++known->second;
  } else {
    calls_.emplace_back(doing, 1);
  }
}

void Supervisor::ObeyStop() const {
  if (MustStop()) {
    throw Failure(ExitCode::kStopped, "stopped by the user");
  }
}

void Supervisor::SetLastWords(std::function<std::vector<std::string>()> words) {
  const std::lock_guard lock(words_mutex_);
  words_ = std::move(words);
}

std::vector<std::string> Supervisor::LastWords() const {
  const std::lock_guard lock(words_mutex_);
  return words_ ? words_() : std::vector<std::string>();
}

std::optional<std::string> Supervisor::Overdue(std::chrono::milliseconds limit) const {
  const char* const doing = doing_;
  const Clock::time_point since{Clock::duration(since_.load())};
  // If another call starts between the two loads, `since` is the later start, so the result is
  // never too early.
  if (doing == nullptr || Clock::now() - since < limit) {
    return std::nullopt;
  }
  return doing;
}

}  // namespace borvanusb
