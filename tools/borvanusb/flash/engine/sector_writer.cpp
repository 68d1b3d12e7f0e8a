#include "flash/engine/sector_writer.h"

#include <algorithm>

#include "base/failure.h"
#include "base/format.h"
#include "flash/engine/flash_words.h"

namespace borvanusb {

namespace {

Mismatch Differences(std::uint32_t address, std::span<const std::uint8_t> found,
                     std::span<const std::uint8_t> wanted) {
  Mismatch mismatch{.wrong = DifferingBytes(address, found, wanted)};
  if (!mismatch.wrong.empty()) {
    mismatch.first = mismatch.wrong.front().first;
    mismatch.found = found[mismatch.first - address];
    mismatch.wanted = wanted[mismatch.first - address];
  }
  return mismatch;
}

}  // namespace

std::string DifferenceText(const Ranges& wrong) {
  const std::uint64_t count = TotalSize(wrong);
  return Format("{}{} from what was written", SizeText(count), count == 1 ? " differs" : " differ");
}

void FailVerify(const Mismatch& mismatch) {
  throw Failure(ExitCode::kVerify,
                Format("{}, at the second try too: {}; first at {}: {} in place of {}",
                       DifferenceText(mismatch.wrong), RangesText(mismatch.wrong),
                       Hex(mismatch.first), Hex(mismatch.found, 2), Hex(mismatch.wanted, 2)),
                "The flash may be protected, worn out, or smaller than the image's addresses.");
}

void SectorWriter::HeedStop(StopWish wish) const {
  if (wish == StopWish::kHeed && host_.StopRequested()) {
    throw Failure(ExitCode::kStopped, "stopped by the user");
  }
}

Ranges SectorWriter::Write(const Ranges& runs, const Content& content,
                           const std::vector<WordSector>& by_words, StopWish wish) {
  progress_.Begin("program", TotalSize(runs));
  done_ = 0;
  told_ = 0;
  std::vector<std::uint32_t> first;
  std::vector<std::uint32_t> last;
  Ranges whole = WithoutWordSectors(runs, by_words);
  for (const std::uint32_t address : shared_.addresses) {
    if (!IsIn(whole, SectorAt(address))) {
      continue;
    }
    const auto& open = shared_.journal->OpenSector();
    const bool is_in_danger =
        shared_.taken_over.contains(address) || (open && open->address == address);
    (is_in_danger ? first : last).push_back(address);
    whole = Without(whole, {SectorAt(address)});
  }
  for (const std::uint32_t address : first) {
    HeedStop(wish);
    WriteShared(SectorAt(address), content);
  }
  for (const WordSector& sector : by_words) {
    HeedStop(wish);
    WriteWords(sector, content);
  }
  for (const Range& block : CutIntoBlocks(whole)) {
    HeedStop(wish);
    WriteBlock(block, content);
    Wrote(block, content);
  }
  for (const std::uint32_t address : last) {
    HeedStop(wish);
    WriteShared(SectorAt(address), content);
  }
  progress_.Done();
  if (!last.empty()) {
    return {SectorAt(last.back())};
  }
  return whole.empty() && by_words.empty() && !first.empty() ? Ranges{SectorAt(first.back())}
                                                             : Ranges{};
}

void SectorWriter::WriteShared(const Range& sector, const Content& content) {
  const auto hold = host_.HoldStop();
  const auto planned = content.At(sector);
  const auto taken_over = shared_.taken_over.find(sector.first);
  const bool is_taken_over = taken_over != shared_.taken_over.end();
  shared_.journal->Open(sector.first, shared_.original.At(sector), planned,
                        is_taken_over ? &taken_over->second : nullptr);
  if (is_taken_over) {
    shared_.taken_over.erase(taken_over);
  }
  state_.SetKept({sector}, shared_.journal->File());
  bool was_wrong = false;
  for (;;) {
    WriteBlock(sector, content);
    const std::vector<std::uint8_t> found = camera_.ReadFlash(sector.first, kSectorSize, {});
    const Mismatch mismatch = Differences(sector.first, found, planned);
    if (mismatch.wrong.empty()) {
      break;
    }
    shared_.journal->Seen(SectorDigest(found));
    state_.SetWrong(mismatch.wrong);
    if (was_wrong) {
      FailVerify(mismatch);
    }
    was_wrong = true;
    output_.Note(Format("{}: {}; writing {} once more", DifferenceText(mismatch.wrong),
                        RangesText(mismatch.wrong), Text(sector)));
  }
  if (was_wrong) {
    state_.SetWrong({});
  }
  shared_.journal->Close(planned);
  state_.SetKept({}, {});
  done_ += sector.Size();
  Tell(done_);
}

// Clearing bits needs no erase, so an interruption can't destroy other bytes.
void SectorWriter::WriteWords(const WordSector& sector, const Content& content) {
  const auto hold = host_.HoldStop();
  const Range whole = SectorAt(sector.address);
  state_.Begin(whole);
  for (const FlashWord& word : sector.words) {
    camera_.WriteFlashWord(word.address, word.value);
  }
  state_.End(whole);
  Wrote(whole, content);
}

void SectorWriter::Wrote(const Range& block, const Content& content) {
  if (shared_.journal != nullptr) {
    shared_.journal->Wrote(block.first, content.At(block));
  }
  done_ += block.Size();
  Tell(done_);
}

// A second attempt starts from the beginning, but a progress bar must not run backwards.
void SectorWriter::Tell(std::uint64_t done) {
  told_ = std::max(told_, done);
  progress_.Advance(told_);
}

void SectorWriter::WriteBlock(const Range& block, const Content& content) {
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
    Tell(done_ + done);
  });
  const auto tail = static_cast<std::uint32_t>(block.first + parts.packets.size());
  for (const FlashWord& word : TailWords(tail, parts.tail)) {
    camera_.WriteFlashWord(word.address, word.value);
  }
  state_.End(block);
}

Mismatch SectorWriter::Compare(const Ranges& runs, const Content& content) {
  if (runs.empty()) {
    return {};
  }
  progress_.Begin("verify", TotalSize(runs));
  Mismatch all;
  std::uint64_t done = 0;
  for (const Range& run : runs) {
    const std::vector<std::uint8_t> found = camera_.ReadFlash(
        run.first, run.Size(), [&](std::uint64_t part) { progress_.Advance(done + part); });
    done += run.Size();
    const Mismatch here = Differences(run.first, found, content.At(run));
    if (all.wrong.empty()) {
      all = here;
    } else {
      all.wrong.insert(all.wrong.end(), here.wrong.begin(), here.wrong.end());
    }
  }
  progress_.Done();
  return all;
}

Ranges SectorsOf(const Ranges& bytes) {
  Ranges sectors;
  for (const Range& range : bytes) {
    AppendRange(sectors, SectorsAround(range.first, range.Size()).Whole());
  }
  return sectors;
}

}  // namespace borvanusb
