#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <vector>

#include "bench_native.h"
#include "files/flash_dump_file.h"
#include "transfer_script.h"

namespace bench {
namespace {

constexpr std::uint32_t kSize = 16U << 20U;
constexpr int kRounds = 9;

double Milliseconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) * 1e-3;
}

// The processor time of xxd's whole run, from its start to its end, with its output thrown away.
double TimeXxd(const std::string& path) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  std::string program = "xxd";
  std::string argument = path;
  char* const arguments[] = {program.data(), argument.data(), nullptr};
  pid_t child = 0;
  Require(posix_spawnp(&child, "xxd", &actions, nullptr, arguments, environ) == 0,
          "xxd can't be started");
  int status = 0;
  rusage usage{};
  Require(wait4(child, &status, 0, &usage) == child && status == 0, "xxd failed");
  posix_spawn_file_actions_destroy(&actions);
  return Milliseconds(usage.ru_utime) + Milliseconds(usage.ru_stime);
}

// The library's dump of `bytes` into the file at `path`, opening and closing included.
double TimeDump(const std::string& path, const std::vector<std::uint8_t>& bytes) {
  const double start = ProcessorMilliseconds();
  {
    auto file = borvan::File::OpenToWrite(path);
    Require(file.has_value(), path + " can't be written");
    borvan::WriteTextDump(*file, bytes, 0, kSize - 1);
  }
  return ProcessorMilliseconds() - start;
}

// One unbuffered write of `text` into the file at `path`, opening and closing included.
double TimeOneWrite(const std::string& path, const std::vector<char>& text) {
  const double start = ProcessorMilliseconds();
  {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"),
                                                               std::fclose);
    Require(file != nullptr, path + " can't be written");
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    Require(std::fwrite(text.data(), 1, text.size(), file.get()) == text.size(),
            path + " can't be written");
  }
  return ProcessorMilliseconds() - start;
}

}  // namespace

void MeasureDumps(const std::string& folder) {
  const std::vector<std::uint8_t> bytes = MakeImage(kSize);
  const std::string data_path = folder + "/dump_data.bin";
  const std::string empty_path = folder + "/dump_empty.bin";
  const std::string text_path = folder + "/dump_text.txt";
  std::ofstream(data_path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), kSize);
  std::ofstream(empty_path).close();

  // The text to compare with comes from the dump itself: what counts is that it is the same bytes.
  static_cast<void>(TimeDump(text_path, bytes));
  std::vector<char> text(std::filesystem::file_size(text_path));
  Require(text.size() == std::size_t{kSize} / borvan::kDumpLineBytes * borvan::kDumpLineLength,
          "the dump has another size");
  std::ifstream(text_path, std::ios::binary)
      .read(text.data(), static_cast<std::streamsize>(text.size()));

  for (int round = 0; round < kRounds; ++round) {
    Print("dump.native.format_ms", TimeDump("/dev/null", bytes));
    Print("dump.native.xxd_ms", TimeXxd(data_path));
    Print("dump.native.xxd_start_ms", TimeXxd(empty_path));
  }
  for (int round = 0; round < kRounds; ++round) {
    // Each starts without a file, and what was written before need not reach the disk any more.
    std::filesystem::remove(text_path);
    Print("dump.native.write_ms", TimeDump(text_path, bytes));
    std::filesystem::remove(text_path);
    Print("dump.native.one_write_ms", TimeOneWrite(text_path, text));
  }
  for (const std::string& path : {data_path, empty_path, text_path}) {
    std::filesystem::remove(path);
  }
}

}  // namespace bench
