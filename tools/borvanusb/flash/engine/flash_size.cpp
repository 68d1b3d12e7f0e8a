#include "flash/engine/flash_size.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <span>
#include <vector>

#include "base/format.h"
#include "base/numbers.h"

namespace borvanusb {

namespace {

constexpr std::uint64_t kSmallest = std::uint64_t{64} << 10U;
constexpr std::uint64_t kLargest = std::uint64_t{64} << 20U;
constexpr std::uint32_t kWordSize = 4;
constexpr std::uint32_t kBlankWord = 0xFFFFFFFF;

// How many words are read.
struct Effort {
  std::size_t words;        // distinctive words that are compared at each size
  std::size_t least_words;  // fewer tell nothing
  std::size_t confirming;   // words over the whole size that confirm it
};
constexpr Effort kThorough{16, 4, 128};
constexpr Effort kQuick{6, 3, 48};
// Words looked at for distinctive ones when every transfer counts.
constexpr std::uint64_t kQuickLooks = 12;
// Words that are looked at in a sector, to see whether it answers.
constexpr std::uint64_t kWordsPerSector = 8;
// Looks at a word that do not end before two in a row agree.
constexpr int kMostLooks = 5;

struct KnownWord {
  std::uint32_t address = 0;
  std::uint32_t word = 0;
};

struct Base {
  std::vector<KnownWord> words;  // distinctive ones
  bool all_zero = true;          // nothing but 0 was seen
};

// A word that was seen once, as further looks confirm it. A single look proves nothing: it may have
// failed, which shows as 0, or have shown the word that was looked at before.
std::uint32_t Confirmed(Camera& camera, std::uint32_t address, std::uint32_t seen) {
  for (int looks = 1; looks < kMostLooks; ++looks) {
    const std::uint32_t again = camera.PeekFlashWord(address);
    if (again == seen) {
      break;
    }
    seen = again;
  }
  return seen;
}

bool IsDistinctive(const Base& base, std::uint32_t word) {
  return word != 0 && word != kBlankWord &&
         std::ranges::none_of(base.words,
                              [&](const KnownWord& known) { return known.word == word; });
}

// Keeps a word that could not stand elsewhere by chance.
void Consider(Camera& camera, Base& base, std::uint32_t address, std::uint32_t seen) {
  const bool decides = (base.all_zero && seen != 0) || IsDistinctive(base, seen);
  const std::uint32_t word = decides ? Confirmed(camera, address, seen) : seen;
  base.all_zero = base.all_zero && word == 0;
  if (IsDistinctive(base, word)) {
    base.words.push_back({address, word});
  }
}

std::uint32_t WordAt(std::span<const std::uint8_t> bytes, std::uint64_t offset) {
  std::uint32_t word = 0;
  for (std::uint64_t i = 0; i < kWordSize; ++i) {
    word = word << 8U | bytes[offset + i];
  }
  return word;
}

Base BaseOfWholeRead(Camera& camera) {
  const std::vector<std::uint8_t> bytes = camera.ReadFlash(0, kSmallest, {});
  Base base;
  // One from each sixteenth, so that a short loader at the start does not make them all; then any.
  const std::uint64_t part = kSmallest / kThorough.words;
  for (std::uint64_t start = 0; start < kSmallest; start += part) {
    const std::size_t before = base.words.size();
    for (std::uint64_t i = 0; i < part && base.words.size() == before; i += kWordSize) {
      Consider(camera, base, static_cast<std::uint32_t>(start + i), WordAt(bytes, start + i));
    }
  }
  for (std::uint64_t i = 0; i < kSmallest && base.words.size() < kThorough.words; i += kWordSize) {
    Consider(camera, base, static_cast<std::uint32_t>(i), WordAt(bytes, i));
  }
  return base;
}

// Positions that are spread evenly and lie differently in their sectors.
std::uint64_t Spread(std::uint64_t start, std::uint64_t size, std::uint64_t index,
                     std::uint64_t count) {
  const std::uint64_t step = size / count;
  const std::uint64_t within = index * 0x9E4 % step;
  return start + index * step + within / kWordSize * kWordSize;
}

Base BaseOfFewPeeks(Camera& camera) {
  Base base;
  for (std::uint64_t i = 0; i < kQuickLooks && base.words.size() < kQuick.words; ++i) {
    const auto address = static_cast<std::uint32_t>(Spread(0, kSmallest, i, kQuickLooks));
    Consider(camera, base, address, camera.PeekFlashWord(address));
  }
  return base;
}

bool AllZero(Camera& camera, std::uint64_t start, std::uint64_t size, std::uint64_t count) {
  for (std::uint64_t i = 0; i < count; ++i) {
    const auto address = static_cast<std::uint32_t>(Spread(start, size, i, count));
    const std::uint32_t seen = camera.PeekFlashWord(address);
    if (seen != 0 && Confirmed(camera, address, seen) != 0) {
      return false;
    }
  }
  return true;
}

// Whether the word stands at an address.
bool Holds(Camera& camera, std::uint64_t address, std::uint32_t word) {
  const auto place = static_cast<std::uint32_t>(address);
  const std::uint32_t seen = camera.PeekFlashWord(place);
  return seen == word || Confirmed(camera, place, seen) == word;
}

// Whether the words at both addresses are the same.
bool SameWords(Camera& camera, std::uint64_t left, std::uint64_t right) {
  const auto left_place = static_cast<std::uint32_t>(left);
  const auto right_place = static_cast<std::uint32_t>(right);
  const std::uint32_t left_seen = camera.PeekFlashWord(left_place);
  const std::uint32_t right_seen = camera.PeekFlashWord(right_place);
  return left_seen == right_seen ||
         Confirmed(camera, left_place, left_seen) == Confirmed(camera, right_place, right_seen);
}

bool WrapsAt(Camera& camera, const Base& base, std::uint64_t size, const Effort& effort) {
  if (base.words.size() < effort.least_words) {
    return false;
  }
  for (const KnownWord& word : base.words) {
    if (!Holds(camera, size + word.address, word.word)) {
      return false;
    }
  }
  for (std::uint64_t i = 0; i < effort.confirming; ++i) {
    const std::uint64_t address = Spread(0, size, i, effort.confirming);
    if (!SameWords(camera, address, size + address)) {
      return false;
    }
  }
  return true;
}

// Whether nothing but 0 is read from `size` on, up to where the largest flash would end: zeros that
// a firmware holds end somewhere, or come back with the rest where addresses wrap.
bool SilentFrom(Camera& camera, std::uint64_t size) {
  if (!AllZero(camera, size, size, kThorough.confirming)) {
    return false;
  }
  for (std::uint64_t next = size * 2; next <= kLargest; next *= 2) {
    if (!AllZero(camera, next, next, kThorough.words)) {
      return false;
    }
  }
  return true;
}

// A word that failed to be read shows as 0, so what seems silent is read twice.
bool IsSilentSector(Camera& camera, std::uint64_t sector) {
  const auto is_silent = [&] { return AllZero(camera, sector, kSectorSize, kWordsPerSector); };
  const bool at_first = is_silent();
  return at_first && is_silent();
}

// The first sector in [answering, silent) that reads as nothing but 0.
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

FlashSizeFinding NothingToTell(const Base& base, const Effort& effort) {
  if (base.words.size() >= effort.least_words) {
    return {std::nullopt, {}};
  }
  return {std::nullopt, base.words.empty()
                            ? "can't be told: the first 64 KiB are blank"
                            : "can't be told: the first 64 KiB hold too few different words"};
}

}  // namespace

FlashSizeFinding FindFlashSize(Camera& camera) {
  const Base base = BaseOfWholeRead(camera);
  for (std::uint64_t size = kSmallest; size <= kLargest; size *= 2) {
    if (!base.all_zero && SilentFrom(camera, size)) {
      const std::uint64_t answering = size == kSmallest ? size - kSectorSize : size / 2;
      return Silence(FirstSilentSector(camera, answering, size));
    }
    if (WrapsAt(camera, base, size, kThorough)) {
      return Wrap(size);
    }
  }
  FlashSizeFinding finding = NothingToTell(base, kThorough);
  if (finding.text.empty()) {
    finding.text = Format("can't be told: no address up to {} wraps or fails", ShortSize(kLargest));
  }
  return finding;
}

FlashSizeFinding FindFlashEndBefore(Camera& camera, std::uint64_t end) {
  if (end <= kSmallest) {
    return {};
  }
  Base base = BaseOfFewPeeks(camera);
  Effort effort = kQuick;
  if (base.words.size() < effort.least_words) {
    // What FindFlashSize can tell must not be missed here.
    base = BaseOfWholeRead(camera);
    effort = kThorough;
  }
  for (std::uint64_t size = kSmallest; size < end && size <= kLargest; size *= 2) {
    if (WrapsAt(camera, base, size, effort)) {
      return Wrap(size);
    }
  }
  // The last sector tells whether the whole image's addresses answer; only when it is silent it
  // must be found where that begins.
  const std::uint64_t last_sector = (end - 1) / kSectorSize * kSectorSize;
  if (!base.all_zero && IsSilentSector(camera, last_sector)) {
    const std::uint64_t size = FirstSilentSector(camera, kSmallest - kSectorSize, last_sector);
    // Firmware may end with zeros, too: only a flash's usual size is worth refusing for.
    if (std::has_single_bit(size) && SilentFrom(camera, size)) {
      return Silence(size);
    }
    return {std::nullopt, Format("can't be told: all words from {} on read 0", Hex(size))};
  }
  return NothingToTell(base, effort);
}

}  // namespace borvanusb
