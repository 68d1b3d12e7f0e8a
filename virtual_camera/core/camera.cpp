#include "core/camera.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "core/blocks.h"
#include "core/chip.h"
#include "core/faults.h"
#include "core/names.h"
#include "core/nor_flash.h"
#include "core/plug.h"
#include "core/result_codes.h"
#include "core/state_file.h"
#include "core/trace_writer.h"

namespace virtual_camera {
namespace {

constexpr bool IsKnown(std::uint32_t selector) {
  return selector >= kRegisterSelector && selector <= kRegisterBlockSelector;
}

// The position of the tag by which a host checks that a reply belongs to its request.
constexpr std::size_t TagPosition(std::uint32_t selector) {
  return selector == kRegisterSelector ? 3 : 0;
}

// A transfer by a host, and its result.
struct Transfer {
  Direction direction = Direction::kSet;
  std::uint32_t selector = 0;
  std::span<const std::uint8_t> sent = {};
  std::span<std::uint8_t> received = {};
  Answer answer = {};
  std::uint64_t delay_ms = 0;
  std::optional<UnplugAction> unplug = std::nullopt;
};

}  // namespace

class Camera::Implementation {
 public:
  explicit Implementation(const CameraConfiguration& configuration)
      : configuration_(configuration),
        state_file_(configuration.state_file, configuration.plugged) {
    const StateLock lock(state_file_);  // two processes must not fill the same new flash file
    flash_.emplace(configuration.flash);
    OpenTraces();
  }

  void Run(Transfer& transfer) {
    const std::lock_guard guard(mutex_);
    try {
      RunShared(transfer);
    } catch (const std::exception&) {
      // To the host, a failing file is a failing device.
      transfer.answer = {kGeneralFailure, 0};
    }
  }

 private:
  void OpenTraces();
  void RunShared(Transfer& transfer);
  void RunPlugged(Transfer& transfer);
  void QueryLength(Transfer& transfer, const FaultEffects& effects) const;
  void Set(Transfer& transfer, const FaultEffects& effects);
  void Get(Transfer& transfer, const FaultEffects& effects);
  std::uint64_t BusyUs();
  void Trace(const Transfer& transfer, std::uint64_t time_us) noexcept;

  DeviceFields& Fields() { return state_file_.State().fields; }
  std::uint32_t LengthOf(std::uint32_t selector) const {
    return configuration_.lengths[selector - 1];
  }

  const CameraConfiguration configuration_;
  std::mutex mutex_;
  StateFile state_file_;
  std::optional<NorFlash> flash_;
  std::optional<TraceWriter> trace_;
  std::optional<TraceWriter> process_trace_;
  std::uint64_t process_untraced_ = 0;  // number of last transfers missing in process_trace_
};

void Camera::Implementation::OpenTraces() {
  const std::string& file = configuration_.trace_file;
  const std::string& process_file = configuration_.process_trace_file;
  if (!file.empty()) {
    trace_.emplace(file, configuration_.path);
  }
  // If both are the same file, it receives each line once.
  if (!process_file.empty() && !(trace_ && IdentifyFile(file) == IdentifyFile(process_file))) {
    process_trace_.emplace(process_file, configuration_.path);
  }
}

// The chip has no busy reply: while the flash works, the next transfer waits. The length of a
// control comes from the USB side, which is never busy.
void Camera::Implementation::RunShared(Transfer& transfer) {
  const std::uint64_t time_us = WallClockUs();
  while (true) {
    std::uint64_t busy_us = 0;
    {
      const StateLock lock(state_file_);
      busy_us = transfer.direction == Direction::kLength ? 0 : BusyUs();
      if (busy_us == 0) {
        RunPlugged(transfer);
        state_file_.Commit();
        Trace(transfer, time_us);
        return;
      }
    }
    std::this_thread::sleep_for(std::chrono::microseconds(busy_us));
  }
}

// Microseconds until the flash is ready. A deadline farther away than any that this camera can
// set comes from a clock that was changed, and counts as passed.
std::uint64_t Camera::Implementation::BusyUs() {
  const std::uint64_t now = WallClockUs();
  const std::uint64_t longest = std::max(std::uint64_t{configuration_.flash.erase_ms} * 1000,
                                         std::uint64_t{2} * configuration_.flash.program_us);
  const std::uint64_t until = Fields().busy_until_us;
  return until > now && until - now <= longest ? until - now : 0;
}

void Camera::Implementation::RunPlugged(Transfer& transfer) {
  if (!RefreshPlug(state_file_.State(), WallClockUs())) {
    transfer.answer = {kNotConnected, 0};
    return;
  }
  if (!IsKnown(transfer.selector)) {
    transfer.answer = {kNotFound, 0};
    return;
  }
  const FaultEffects effects =
      StrikeFaults(configuration_, transfer.direction, transfer.selector, Fields());
  transfer.delay_ms = effects.delay_ms;
  transfer.unplug = effects.unplug;
  if (effects.result && *effects.result < 0) {
    transfer.answer = {*effects.result, 0};
  } else {
    switch (transfer.direction) {
      case Direction::kSet:
        Set(transfer, effects);
        break;
      case Direction::kGet:
        Get(transfer, effects);
        break;
      case Direction::kLength:
        QueryLength(transfer, effects);
        break;
    }
    const bool went_well = transfer.answer.result >= 0 || transfer.direction == Direction::kLength;
    if (effects.result && went_well) {
      transfer.answer.result = *effects.result;
    }
  }
  if (effects.unplug) {
    Fields().plugged = false;
    Fields().back_at_us = effects.unplug->back_after_ms
                              ? WallClockUs() + std::uint64_t{*effects.unplug->back_after_ms} * 1000
                              : 0;
  }
}

void Camera::Implementation::QueryLength(Transfer& transfer, const FaultEffects& effects) const {
  transfer.answer = {kMoreData, effects.length.value_or(LengthOf(transfer.selector))};
}

void Camera::Implementation::Set(Transfer& transfer, const FaultEffects& effects) {
  if (effects.lie) {
    transfer.answer = {kSuccess, 0};
    return;
  }
  Chip chip(configuration_, state_file_.State(), *flash_);
  transfer.answer = {chip.Execute(transfer.selector, transfer.sent, effects.stuck_words), 0};
  if (chip.BusyUs() != 0) {
    Fields().busy_until_us = WallClockUs() + chip.BusyUs();
  }
}

void Camera::Implementation::Get(Transfer& transfer, const FaultEffects& effects) {
  const std::uint32_t length = LengthOf(transfer.selector);
  if (transfer.received.size() < length) {
    transfer.answer = {kInsufficientBuffer, 0};
    return;
  }
  Reply& reply = Fields().replies[transfer.selector - 1];
  if (reply.result < 0) {
    transfer.answer = {reply.result, 0};
    return;
  }
  std::array<std::uint8_t, kPacketSize> bytes = reply.bytes;
  if (reply.has_second) {
    std::copy(reply.second.begin(), reply.second.end(), reply.bytes.begin());
    reply.has_second = false;
  }
  if (effects.wrong_tag) {
    bytes[TagPosition(transfer.selector)] ^= 0xFF;
  }
  const std::uint32_t answered = std::min(length, effects.short_answer.value_or(length));
  const auto target = transfer.received.first(answered);
  std::fill(target.begin(), target.end(), std::uint8_t{0});
  std::copy_n(bytes.begin(), std::min<std::size_t>(bytes.size(), answered), target.begin());
  transfer.answer = {kSuccess, answered};
}

// The transfer is done. A failure to write its line does not change its result.
void Camera::Implementation::Trace(const Transfer& transfer, std::uint64_t time_us) noexcept {
  if (!trace_ && !process_trace_) {
    return;
  }
  TracedTransfer traced{.time_us = time_us,
                        .direction = transfer.direction,
                        .selector = transfer.selector,
                        .length = static_cast<std::uint32_t>(transfer.sent.size()),
                        .bytes = transfer.sent,
                        .result = transfer.answer.result};
  if (transfer.direction == Direction::kGet) {
    traced.length = static_cast<std::uint32_t>(transfer.received.size());
    traced.bytes = transfer.received.first(transfer.answer.bytes);
  } else if (transfer.direction == Direction::kLength) {
    traced.length = transfer.answer.bytes;
  }
  const std::uint64_t untraced = Fields().untraced;
  const std::uint64_t process_untraced = Fields().process_untraced;
  if (trace_) {
    Fields().untraced = trace_->Write(traced, untraced) ? 0 : untraced + 1;
  }
  if (process_trace_) {
    process_untraced_ =
        process_trace_->Write(traced, process_untraced_) ? 0 : process_untraced_ + 1;
    Fields().process_untraced = process_untraced_;
  }
  if (Fields().untraced != untraced || Fields().process_untraced != process_untraced) {
    try {
      state_file_.Commit();
    } catch (const std::exception&) {
      // A state that can't be written keeps no count either.
    }
  }
}

Camera::Camera(const CameraConfiguration& configuration)
    : implementation_(std::make_unique<Implementation>(configuration)) {}

Camera::~Camera() = default;

namespace {

// The work after a transfer holds no lock, because the host may make a transfer on another thread.
Answer Finish(const Transfer& transfer,
              const std::function<void(std::optional<std::uint32_t>)>& on_unplug) {
  if (transfer.delay_ms != 0) {
    std::this_thread::sleep_for(std::chrono::milliseconds(transfer.delay_ms));
  }
  if (transfer.unplug && on_unplug) {
    on_unplug(transfer.unplug->back_after_ms);
  }
  return transfer.answer;
}

}  // namespace

Answer Camera::QueryLength(std::uint32_t selector) {
  Transfer transfer{.direction = Direction::kLength, .selector = selector};
  implementation_->Run(transfer);
  return Finish(transfer, on_unplug);
}

Answer Camera::Set(std::uint32_t selector, std::span<const std::uint8_t> data) {
  Transfer transfer{.direction = Direction::kSet, .selector = selector, .sent = data};
  implementation_->Run(transfer);
  return Finish(transfer, on_unplug);
}

Answer Camera::Get(std::uint32_t selector, std::span<std::uint8_t> data) {
  Transfer transfer{.direction = Direction::kGet, .selector = selector, .received = data};
  implementation_->Run(transfer);
  return Finish(transfer, on_unplug);
}

}  // namespace virtual_camera
