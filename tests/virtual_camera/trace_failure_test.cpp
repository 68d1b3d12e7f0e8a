// A trace that can't be written: transfers answer as without one, and what is missing is told.
#include <sstream>

#include "core/trace.h"
#include "device_fixture.h"

#ifndef _WIN32
#include <sys/resource.h>

#include <csignal>
#endif

namespace virtual_camera_test {
namespace {

using testing::HasSubstr;
using testing::Not;
using virtual_camera::DescribeState;

class TraceFailureTest : public DeviceTest {
 protected:
  TraceFailureTest() { configuration.path = "virtual"; }

  std::vector<std::string> Lines(const std::string& name) const {
    std::istringstream stream(folder.Read(name));
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
      lines.push_back(line);
    }
    return lines;
  }
  // A line without its time.
  static std::string AfterTime(const std::string& line) {
    EXPECT_TRUE(line.starts_with(R"({"time":"20)")) << line;
    return line.substr(line.find(',') + 1);
  }

  const std::string length_line =
      R"("camera":"virtual","direction":"length","selector":1,"length":4,"bytes":"",)"
      R"("result":"0x800700ea"})";
};

TEST_F(TraceFailureTest, AForeignFileIsRefusedAndKept) {
  configuration.trace_file = folder.File("list.txt");
  folder.Write("list.txt", "0x0100, 0x11\n");
  try {
    camera();
    FAIL() << "a list was taken for a trace";
  } catch (const virtual_camera::ConfigurationError& error) {
    EXPECT_EQ(std::string(error.what()),
              "trace: the file \"" + folder.File("list.txt") +
                  "\" is not a trace of a virtual camera; name another one or remove it");
  }
  EXPECT_EQ(folder.Read("list.txt"), "0x0100, 0x11\n");
  configuration.trace_file.clear();
  configuration.process_trace_file = folder.File("list.txt");
  EXPECT_THROW(camera(), virtual_camera::ConfigurationError);
  EXPECT_EQ(folder.Read("list.txt"), "0x0100, 0x11\n");
}

TEST_F(TraceFailureTest, AnEmptyFileIsATrace) {
  configuration.trace_file = folder.File("trace.jsonl");
  folder.Write("trace.jsonl", "");
  camera().QueryLength(1);
  EXPECT_EQ(Lines("trace.jsonl").size(), 1U);
}

// A process that is killed, or a computer that loses its power, may leave such a file.
TEST_F(TraceFailureTest, ALineThatWasCutShortSpoilsNoOther) {
  configuration.trace_file = folder.File("trace.jsonl");
  for (const char* const cut : {"{\"ti", R"({"time":"2026)"}) {
    folder.Write("trace.jsonl", cut);
    camera().QueryLength(1);
    CloseCamera();
    const std::vector<std::string> lines = Lines("trace.jsonl");
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], cut);
    EXPECT_EQ(AfterTime(lines[1]), length_line);
  }
}

TEST_F(TraceFailureTest, ATraceOfTheProcessThatIsTheConfiguredOneGetsEachLineOnce) {
  configuration.trace_file = folder.File("trace.jsonl");
  configuration.process_trace_file = folder.File("./trace.jsonl");
  camera().QueryLength(1);
  EXPECT_EQ(Lines("trace.jsonl").size(), 1U);
}

TEST_F(TraceFailureTest, MissingTransfersArePrintedInWords) {
  const std::string gap = R"({"time":"2026-01-31T12:00:00.000000Z","camera":"a","missing":)";
  const std::string set =
      R"({"time":"2026-01-31T12:00:01.000000Z","camera":"a","direction":"set","selector":1,)"
      R"("length":4,"bytes":"24a30118","result":"0x00000000"})";
  std::istringstream input(set + "\n" + gap + "2}\n" + set + "\n" + gap + "1}\n" + gap + "0}\n" +
                           gap + "-1}\n");
  std::ostringstream output;
  virtual_camera::PrintTrace(input, output);
  // The gap ends the first set's command: it is not the begin of what follows.
  EXPECT_EQ(output.str(),
            "camera a\n"
            "2026-01-31T12:00:01.000000Z  set     1  register byte read: address bits 0 to 15 = "
            "0x01a3\n"
            "2026-01-31T12:00:00.000000Z  2 transfers before this line are missing: the file could "
            "not be written\n"
            "2026-01-31T12:00:01.000000Z  set     1  register byte read: address bits 0 to 15 = "
            "0x01a3\n"
            "2026-01-31T12:00:00.000000Z  1 transfer before this line is missing: the file could "
            "not be written\n"
            "line 5: not a line of a trace\n"
            "line 6: not a line of a trace\n"
            "\n"
            "selector  purpose                   transfers  failed       bytes\n"
            "-----------------------------------------------------------------\n"
            "       1  register byte read                2       0           8\n"
            "-----------------------------------------------------------------\n"
            "          all                               2       0           8\n"
            "          missing                           3\n");
}

#ifndef _WIN32

TEST_F(TraceFailureTest, AFullDiskChangesNoAnswer) {
  configuration.trace_file = "/dev/full";
  EXPECT_EQ(camera().QueryLength(1).result, Code(0x800700EA));
  EXPECT_EQ(Set(3, {0x38, 0, 0, 0, 0, 0x77, 0x66, 0x55, 0x44, 0, 0}), kOk);
  EXPECT_EQ(FlashByte(0), 0x77);
  EXPECT_EQ(Set(3, {0x34, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), kOk);
  EXPECT_EQ(Get(3, 11), (Bytes{0x34, 0, 0, 0, 0, 0x77, 0x66, 0x55, 0x44, 0, 0}));
  EXPECT_EQ(camera().QueryLength(9).result, Code(0x80070490));
}

TEST_F(TraceFailureTest, TheStateTellsHowManyTransfersTheTraceLacks) {
  configuration.trace_file = "/dev/full";
  camera();
  EXPECT_THAT(DescribeState(configuration), Not(HasSubstr("trace")));
  camera().QueryLength(1);
  EXPECT_THAT(DescribeState(configuration),
              HasSubstr("\n  trace: the last transfer is missing: /dev/full could not be "
                        "written\n"));
  // Every object of every process counts on.
  CloseCamera();
  camera().QueryLength(1);
  camera().QueryLength(1);
  EXPECT_THAT(DescribeState(configuration),
              HasSubstr("\n  trace: the last 3 transfers are missing: /dev/full could not be "
                        "written\n"));
  configuration.trace_file.clear();
  EXPECT_THAT(DescribeState(configuration), Not(HasSubstr("trace")));
}

TEST_F(TraceFailureTest, ATraceOfTheProcessThatFailsIsToldApart) {
  configuration.trace_file = folder.File("trace.jsonl");
  configuration.process_trace_file = "/dev/full";
  EXPECT_EQ(camera().QueryLength(1).result, Code(0x800700EA));
  EXPECT_EQ(camera().QueryLength(1).result, Code(0x800700EA));
  EXPECT_EQ(Lines("trace.jsonl").size(), 2U);
  EXPECT_THAT(DescribeState(configuration),
              HasSubstr("\n  trace of a process: its last 2 transfers are missing: its file could "
                        "not be written\n"));
  // The next process that has a trace begins a new one, which lacks nothing.
  CloseCamera();
  configuration.process_trace_file = folder.File("process.jsonl");
  camera().QueryLength(1);
  EXPECT_EQ(Lines("process.jsonl").size(), 1U);
  EXPECT_THAT(DescribeState(configuration), Not(HasSubstr("trace")));
}

// No file grows beyond a size while it exists; writes end there, as on a disk that becomes full.
class SizeLimit {
 public:
  explicit SizeLimit(rlim_t size) : old_handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &old_);
    const rlimit limit{size, old_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~SizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &old_);
    std::signal(SIGXFSZ, old_handler_);
  }
  SizeLimit(const SizeLimit&) = delete;
  SizeLimit& operator=(const SizeLimit&) = delete;

 private:
  void (*old_handler_)(int);
  rlimit old_{};
};

class FullForAWhileTest : public TraceFailureTest {
 protected:
  // 20 bytes of the next line find room.
  static constexpr std::size_t kLimit = 70'000;
  const std::string begin = R"({"time":")" + std::string(kLimit - 20 - 10, 'x') + "\n";
};

TEST_F(FullForAWhileTest, ATraceHasWholeLinesAndTellsItsGap) {
  configuration.trace_file = folder.File("trace.jsonl");
  folder.Write("trace.jsonl", begin);
  camera();
  {
    const SizeLimit limit(kLimit);
    EXPECT_EQ(camera().QueryLength(1).result, Code(0x800700EA));
    EXPECT_EQ(Set(1, {0x24, 0xA3, 0x01, 0x18}), kOk);
  }
  EXPECT_EQ(folder.Read("trace.jsonl").size(), begin.size());
  // Another object of the camera, as another process has one, is the next to write.
  CloseCamera();
  camera().QueryLength(1);
  camera().QueryLength(1);
  const std::vector<std::string> lines = Lines("trace.jsonl");
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(AfterTime(lines[1]), R"("camera":"virtual","missing":2})");
  EXPECT_EQ(AfterTime(lines[2]), length_line);
  EXPECT_EQ(AfterTime(lines[3]), length_line);
  EXPECT_THAT(DescribeState(configuration), Not(HasSubstr("trace")));
}

TEST_F(FullForAWhileTest, ATraceOfTheProcessTellsItsGapToo) {
  configuration.process_trace_file = folder.File("trace.jsonl");
  folder.Write("trace.jsonl", begin);
  camera();
  {
    const SizeLimit limit(kLimit);
    EXPECT_EQ(camera().QueryLength(1).result, Code(0x800700EA));
  }
  camera().QueryLength(1);
  const std::vector<std::string> lines = Lines("trace.jsonl");
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(AfterTime(lines[1]), R"("camera":"virtual","missing":1})");
  EXPECT_EQ(AfterTime(lines[2]), length_line);
}

#endif

}  // namespace
}  // namespace virtual_camera_test
