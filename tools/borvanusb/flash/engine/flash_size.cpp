#include "flash/engine/flash_size.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <span>
#include <vector>

#include "base/flash_memory.h"
#include "base/format.h"
#include "base/numbers.h"

namespace borvanusb {

namespace {

constexpr std::uint64_t kSmallest = kFlashHead;
constexpr std::uint64_t kLargest = std::uint64_t{64} << 20U;

// The maximum number of distinctive words to compare at each size, and the minimum for a decision.
constexpr std::size_t kMostKnownWords = 6;
constexpr std::size_t kLeastKnownWords = 3;
// Words that are sampled to find distinctive ones, before all words are read.
constexpr std::uint64_t kLooks = 12;
// Words across the whole size that must match to confirm wrapping.
constexpr std::uint64_t kConfirmingWords = 24;
// Words that are sampled in a part that seems not to answer, and in each part after it.
constexpr std::uint64_t kSilentWords = 48;
constexpr std::uint64_t kSilentWordsBeyond = 16;
// Words that are sampled in a sector to check whether it answers.
constexpr std::uint64_t kWordsPerSector = 8;

struct KnownWord {
  std::uint32_t address = 0;
  std::uint32_t word = 0;
};

struct Base {
  std::vector<KnownWord> words;  // distinctive ones
  bool all_zero = true;          // no word other than 0 was read
};

bool IsDistinctive(const Base& base, std::uint32_t word) {
  return word != 0 && word != kErasedWord &&
         std::ranges::none_of(base.words,
                              [&](const KnownWord& known) { return known.word == word; });
}

// Keeps a word if it is unlikely to occur elsewhere by chance.
void Consider(Base& base, std::uint32_t address, std::uint32_t word) {
  base.all_zero = base.all_zero && word == 0;
  if (IsDistinctive(base, word)) {
    base.words.push_back({address, word});
  }
}

// Finds distinctive words in the first 64 KiB.
Base BaseOf(std::span<const std::uint8_t> bytes) {
  Base base;
  // Takes one word from each part, so that not all of them come from a short loader at the start.
  // Then takes any others.
  const std::uint64_t part = kSmallest / kMostKnownWords / kWordSize * kWordSize;
  for (std::uint64_t start = 0; start + part <= kSmallest; start += part) {
    const std::size_t before = base.words.size();
    for (std::uint64_t i = 0; i < part && base.words.size() == before; i += kWordSize) {
      Consider(base, static_cast<std::uint32_t>(start + i), WordAt(bytes, start + i));
    }
  }
  for (std::uint64_t i = 0; i < kSmallest && base.words.size() < kMostKnownWords; i += kWordSize) {
    Consider(base, static_cast<std::uint32_t>(i), WordAt(bytes, i));
  }
  return base;
}

// A position out of `count` evenly distributed ones. Their offsets within sectors differ.
std::uint64_t Spread(std::uint64_t start, std::uint64_t size, std::uint64_t index,
                     std::uint64_t count) {
  const std::uint64_t step = size / count;
  const std::uint64_t within = index * 0x9E4 % step;
  return start + index * step + within / kWordSize * kWordSize;
}

Base BaseOfFewPeeks(Camera& camera) {
  Base base;
  for (std::uint64_t i = 0; i < kLooks && base.words.size() < kMostKnownWords; ++i) {
    const auto address = static_cast<std::uint32_t>(Spread(0, kSmallest, i, kLooks));
    Consider(base, address, camera.PeekFlashWord(address));
  }
  return base;
}

// Finds distinctive words with as few transfers as possible. `head` is the first 64 KiB if already
// read, else empty.
Base FindBase(Camera& camera, std::span<const std::uint8_t> head) {
  if (!head.empty()) {
    return BaseOf(head);
  }
  Base base = BaseOfFewPeeks(camera);
  return base.words.size() < kLeastKnownWords ? BaseOf(camera.ReadFlash(0, kSmallest, {})) : base;
}

std::uint32_t Peek(Camera& camera, std::uint64_t address) {
  return camera.PeekFlashWord(static_cast<std::uint32_t>(address));
}

bool AllZero(Camera& camera, std::uint64_t start, std::uint64_t size, std::uint64_t count) {
  for (std::uint64_t i = 0; i < count; ++i) {
    if (Peek(camera, Spread(start, size, i, count)) != 0) {
      return false;
    }
  }
  return true;
}

bool WrapsAt(Camera& camera, const Base& base, std::uint64_t size) {
  if (base.words.size() < kLeastKnownWords) {
    return false;
  }
  for (const KnownWord& word : base.words) {
    if (Peek(camera, size + word.address) != word.word) {
      return false;
    }
  }
  for (std::uint64_t i = 0; i < kConfirmingWords; ++i) {
    const std::uint64_t address = Spread(0, size, i, kConfirmingWords);
    if (Peek(camera, address) != Peek(camera, size + address)) {
      return false;
    }
  }
  return true;
}

// Whether all samples from `size` up to the end of the largest flash are 0. Zeros in firmware end
// somewhere, or appear again together with other content where addresses wrap.
bool SilentFrom(Camera& camera, std::uint64_t size) {
  if (!AllZero(camera, size, size, kSilentWords)) {
    return false;
  }
  for (std::uint64_t next = size * 2; next <= kLargest; next *= 2) {
    if (!AllZero(camera, next, next, kSilentWordsBeyond)) {
      return false;
    }
  }
  return true;
}

// Reads a silent sector twice, because a word whose read fails is returned as 0.
bool IsSilentSector(Camera& camera, std::uint64_t sector) {
  const auto is_silent = [&] { return AllZero(camera, sector, kSectorSize, kWordsPerSector); };
  const bool at_first = is_silent();
  return at_first && is_silent();
}

// Finds the first sector in [answering, silent) that contains only 0.
std::uint64_t FirstSilentSector(Camera& camera, std::uint64_t answering, std::uint64_t silent) {
  while (silent - answering > kSectorSize) {
    const std::uint64_t middle = answering + (silent - answering) / 2 / kSectorSize * kSectorSize;
    if (IsSilentSector(camera, middle)) {
      silent = middle;
    } else {
      answering = middle;
    }
  }
  return silent;
}

std::string ShortSize(std::uint64_t size) {
  constexpr std::uint64_t kMebi = std::uint64_t{1} << 20U;
  return size % kMebi == 0 ? Format("{} MiB", size / kMebi) : Format("{} KiB", size >> 10U);
}

FlashSizeFinding Wrap(std::uint64_t size) {
  return {size, Format("wraps at {}: the same words answer there again (a flash that holds "
                       "everything twice would look the same)",
                       ShortSize(size))};
}

FlashSizeFinding Silence(std::uint64_t size) {
  return {size, Format("does not answer beyond {}: all words there read 0", ShortSize(size))};
}

FlashSizeFinding NothingToTell(const Base& base) {
  if (base.words.size() >= kLeastKnownWords) {
    return {std::nullopt, {}};
  }
  return {std::nullopt, base.words.empty()
                            ? "unknown: the first 64 KiB are blank"
                            : "unknown: the first 64 KiB hold too few different words"};
}

}  // namespace

FlashSizeFinding FindFlashSize(Camera& camera) {
  const Base base = FindBase(camera, {});
  for (std::uint64_t size = kSmallest; size <= kLargest; size *= 2) {
    if (!base.all_zero && SilentFrom(camera, size)) {
      const std::uint64_t answering = size == kSmallest ? size - kSectorSize : size / 2;
      return Silence(FirstSilentSector(camera, answering, size));
    }
    if (WrapsAt(camera, base, size)) {
      return Wrap(size);
    }
  }
  FlashSizeFinding finding = NothingToTell(base);
  if (finding.text.empty()) {
    finding.text = Format("unknown: no address up to {} wraps or fails", ShortSize(kLargest));
  }
  return finding;
}

FlashSizeFinding FindFlashEndBefore(Camera& camera, std::uint64_t end,
                                    std::span<const std::uint8_t> head) {
  if (end <= kSmallest) {
    return {};
  }
  const Base base = FindBase(camera, head);
  for (std::uint64_t size = kSmallest; size < end && size <= kLargest; size *= 2) {
    if (WrapsAt(camera, base, size)) {
      return Wrap(size);
    }
  }
  // If the last sector answers, all addresses of the image exist. If not, finds out where silence
  // begins.
  const std::uint64_t last_sector = (end - 1) / kSectorSize * kSectorSize;
  if (!base.all_zero && IsSilentSector(camera, last_sector)) {
    const std::uint64_t size = FirstSilentSector(camera, kSmallest - kSectorSize, last_sector);
    // Firmware may also end with zeros, so only a usual flash size is reported.
    if (std::has_single_bit(size) && SilentFrom(camera, size)) {
      return Silence(size);
    }
    return {std::nullopt, Format("unknown: all words from {} on read 0", Hex(size))};
  }
  return NothingToTell(base);
}

}  // namespace borvanusb
