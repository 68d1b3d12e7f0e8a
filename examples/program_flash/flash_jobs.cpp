#include "flash_jobs.h"

#include <windows.h>

#include <atomic>
#include <exception>
#include <thread>

#include "borvan_usb.h"
#include "cameras.h"
#include "failure.h"
#include "flash_dump.h"
#include "image_files.h"
#include "job_watch.h"
#include "progress_bar.h"

namespace {

// A job's 100 lasts three seconds; this is short beside that and long beside a poll.
constexpr std::chrono::milliseconds kPollInterval{20};

// The console calls the handler on a thread of its own.
std::atomic<bool> interrupted{false};

BOOL WINAPI OnConsoleEvent(DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
    return FALSE;
  }
  interrupted = true;
  return TRUE;
}

// Starts a job. The library throws when it gets no thread for it.
template <typename Start>
void StartJob(Start start, ExitCode code, const std::string& doing) {
  bool started = false;
  try {
    started = start();
  } catch (const std::exception& error) {
    throw Failure(code, doing + " can't be started: " + error.what());
  }
  if (!started) {
    const auto status = static_cast<std::uint32_t>(borvan_progress_status(GetProgressInfo()));
    throw Failure(code, doing + " can't be started: " + StatusText(status));
  }
}

}  // namespace

Patience::Patience(std::chrono::seconds time_limit)
    : time_limit_(time_limit), end_(std::chrono::steady_clock::now() + time_limit) {
  SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
}

void Patience::WaitABit(const std::string& doing) const {
  if (interrupted) {
    throw Failure(ExitCode::kInterrupted, "interrupted while " + doing);
  }
  if (std::chrono::steady_clock::now() >= end_) {
    throw Failure(ExitCode::kTimeLimit, "still " + doing + " after the time limit of " +
                                            std::to_string(time_limit_.count()) + " s");
  }
  std::this_thread::sleep_for(kPollInterval);
}

double ProgramFlash(const std::string& image_file, std::uint32_t address,
                    const Patience& patience) {
  ProgressBar bar("programming");
  StartJob([&] { return UsbFlashWriteFile(image_file.c_str(), address); },
           ExitCode::kProgrammingFailed, "programming");
  JobWatch watch;
  for (;;) {
    const JobWatch::State state = watch.See(GetProgressInfo());
    bar.Show(watch.Percent());
    if (state == JobWatch::State::kDone) {
      return bar.Seconds();
    }
    if (state == JobWatch::State::kFailed) {
      throw Failure(ExitCode::kProgrammingFailed,
                    "programming failed: " + StatusText(watch.Status()));
    }
    patience.WaitABit("programming");
  }
}

double DumpFlash(const std::string& dump_file, std::uint32_t address, std::uint32_t size,
                 const Patience& patience) {
  const std::uint64_t whole_length = DumpFileLength(IsTextDump(dump_file), size);
  ProgressBar bar("reading back");
  StartJob([&] { return UsbFlashQuickReadFile(dump_file.c_str(), address, address + (size - 1)); },
           ExitCode::kReadingBackFailed, "reading back");
  JobWatch watch;
  for (;;) {
    // First the progress, then the file: the job opens the file before it reads and closes it after
    // it reported, so a file that nobody has open after the 100 is as long as it will ever be.
    const JobWatch::State state = watch.See(GetProgressInfo());
    const FileState file = LookAtFile(dump_file);
    if (state == JobWatch::State::kFailed) {
      throw Failure(ExitCode::kReadingBackFailed,
                    "reading back failed: " + StatusText(watch.Status()));
    }
    if (file.exists && !file.in_use && file.length == whole_length) {
      bar.Show(100);
      return bar.Seconds();
    }
    if (state == JobWatch::State::kDone && !file.in_use) {
      throw Failure(ExitCode::kReadingBackFailed,
                    dump_file + " has " + std::to_string(file.length) + " bytes instead of " +
                        std::to_string(whole_length) + ": is the disk full?");
    }
    bar.Show(watch.Percent());
    patience.WaitABit("reading back");
  }
}
