#include "flash/sector_writer.h"

#include <algorithm>

#include "failure.h"
#include "flash/sector_plan.h"
#include "flash/tail_words.h"

void SectorWriter::Write(const Ranges& runs, const Content& content, StopWish wish) {
  progress_.Begin("program", TotalSize(runs));
  std::uint64_t done = 0;
  for (const Range& block : CutIntoBlocks(runs)) {
    if (wish == StopWish::kHeed && host_.StopRequested()) {
      throw Failure(ExitCode::kStopped, "stopped by the user");
    }
    WriteBlock(block, content, done);
    done += block.Size();
    progress_.Advance(done);
  }
  progress_.Done();
}

void SectorWriter::WriteBlock(const Range& block, const Content& content,
                              std::uint64_t done_before) {
  const auto hold = host_.HoldStop();
  const BlockParts parts = SplitBlock(content.At(block));
  state_.Begin(block);
  progress_.Stage("erase");
  bool programming = false;
  camera_.ProgramFlash(block.first, parts.packets, [&](std::uint64_t done) {
    if (done > 0 && !programming) {
      programming = true;
      progress_.Stage("program");
    }
    progress_.Advance(done_before + done);
  });
  const auto tail = static_cast<std::uint32_t>(block.first + parts.packets.size());
  for (const TailWord& word : TailWords(tail, parts.tail)) {
    camera_.WriteFlashWord(word.address, word.value);
  }
  state_.End(block);
}

Ranges SectorWriter::Compare(
    const Ranges& runs, const Content& content,
    const std::function<void(const Range&, std::span<const std::uint8_t>)>& read) {
  progress_.Begin("verify", TotalSize(runs));
  Ranges different;
  std::uint64_t done = 0;
  for (const Range& run : runs) {
    const std::vector<std::uint8_t> bytes = camera_.ReadFlash(
        run.first, run.Size(), [&](std::uint64_t part) { progress_.Advance(done + part); });
    done += run.Size();
    const Ranges here = DifferingBytes(run.first, bytes, content.At(run));
    different.insert(different.end(), here.begin(), here.end());
    read(run, bytes);
  }
  progress_.Done();
  return different;
}

Ranges SectorsOf(const Ranges& bytes) {
  Ranges sectors;
  for (const Range& range : bytes) {
    AppendRange(sectors, SectorsAround(range.first, range.Size()).Whole());
  }
  return sectors;
}
