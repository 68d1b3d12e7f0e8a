#include "flash/engine/camera_evidence.h"

#include <algorithm>
#include <array>

#include "base/flash_memory.h"
#include "flash/engine/byte_ranges.h"

namespace borvanusb {

namespace {

// A word that can't be read is returned as 0.
constexpr std::uint32_t kZeroWord = 0;
// Every flash has the first 64 KiB. Addresses after the change are not used, because addresses may
// wrap at the flash's end.
constexpr std::uint64_t kSure = std::uint64_t{64} << 10U;
constexpr std::uint64_t kLandmarks = 8;
// An offset, so that landmarks lie at different positions within their sectors.
constexpr std::uint64_t kStagger = 0x0A94;
constexpr std::array<std::uint32_t, 2> kDistances = {0x4, 0xE10};

bool Says(std::uint32_t word) {
  return word != kErasedWord && word != kZeroWord;
}

template <typename Value>
bool Holds(const std::vector<Value>& values, const Value& value) {
  return std::ranges::find(values, value) != values.end();
}

// If the landmark may have been `was`, adds `is`, and the erased word that occurs in between.
bool Add(Landmark& landmark, std::uint32_t was, std::uint32_t is) {
  if (!AgreesWith(landmark, was)) {
    return false;
  }
  bool added = false;
  for (const std::uint32_t word : {is, kErasedWord}) {
    if (!Holds(landmark.words, word)) {
      landmark.words.push_back(word);
      added = true;
    }
  }
  return added;
}

void Count(Evidence& evidence, bool agrees) {
  ++(agrees ? evidence.agreeing : evidence.differing);
}

}  // namespace

bool AgreesWith(const Landmark& landmark, std::uint32_t word) {
  if (Holds(landmark.words, word)) {
    return true;
  }
  // If the word was erased in between, an interruption may have left it half erased or half
  // programmed: a known value with additional bits set.
  return Holds(landmark.words, kErasedWord) &&
         std::ranges::any_of(landmark.words,
                             [word](std::uint32_t known) { return (word & known) == known; });
}

SameCamera Weigh(const Evidence& evidence) {
  if (evidence.differing > 0) {
    return SameCamera::kNo;
  }
  return evidence.agreeing > 0 ? SameCamera::kYes : SameCamera::kUnknown;
}

Evidence operator+(const Evidence& left, const Evidence& right) {
  return {left.agreeing + right.agreeing, left.differing + right.differing};
}

std::vector<Landmark> TakeLandmarks(Camera& camera, const SectorSet& sectors) {
  const std::uint64_t end = std::max<std::uint64_t>(kSure, sectors.First());
  const std::uint64_t step = end / kLandmarks;
  std::vector<Landmark> landmarks;
  const auto take = [&](std::uint32_t address) {
    if (!sectors.Holds({address, address})) {
      landmarks.push_back({address, {camera.PeekFlashWord(address)}});
    }
  };
  for (std::uint64_t i = 0; i < kLandmarks; ++i) {
    const auto address =
        static_cast<std::uint32_t>((i * step + i * kStagger % step) / kWordSize * kWordSize);
    take(address);
  }
  // Cameras of one kind are likely to differ just before the change.
  for (const std::uint32_t distance : kDistances) {
    if (distance <= sectors.First()) {
      take(sectors.First() - distance);
    }
  }
  return landmarks;
}

Evidence CompareLandmarks(Camera& camera, const Journal& journal) {
  Evidence evidence;
  for (const Landmark& landmark : journal.landmarks) {
    const std::uint32_t word = camera.PeekFlashWord(landmark.address);
    const bool agrees = AgreesWith(landmark, word);
    if (Says(word) || !agrees) {
      Count(evidence, agrees);
    }
  }
  return evidence;
}

Evidence CompareSectors(const Journal& journal, const SectorSet& sectors,
                        std::span<const std::uint8_t> now) {
  const std::vector<std::uint8_t> blank(kSectorSize, 0xFF);
  const std::string blank_digest = SectorDigest(blank);
  Evidence evidence;
  for (const SectorRecord& record : journal.sectors) {
    const Range sector{record.address, record.address + (kSectorSize - 1)};
    const bool is_open = journal.open_sector && journal.open_sector->address == record.address;
    if (is_open || !sectors.Holds(sector)) {
      continue;
    }
    const std::string digest = SectorDigest(sectors.PartOf(now, sector));
    const bool agrees = digest == record.now || Holds(record.since, digest) ||
                        (!journal.open_sector && digest == record.after);
    if (!agrees && Holds(record.since, std::string(kAnyContent))) {
      continue;
    }
    if (!agrees || digest != blank_digest) {
      Count(evidence, agrees);
    }
  }
  return evidence;
}

bool FollowChange(Journal& journal, const SectorSpan& sectors, std::span<const std::uint8_t> before,
                  std::span<const std::uint8_t> after) {
  bool added = false;
  for (Landmark& landmark : journal.landmarks) {
    if (sectors.Holds({landmark.address, landmark.address + (kWordSize - 1)})) {
      const std::uint64_t offset = landmark.address - sectors.address;
      added |= Add(landmark, WordAt(before, offset), WordAt(after, offset));
    }
  }
  for (SectorRecord& record : journal.sectors) {
    const Range sector{record.address, record.address + (kSectorSize - 1)};
    if (!sectors.Holds(sector)) {
      continue;
    }
    const std::string was = SectorDigest(PartOf(before, sectors.address, sector));
    const std::string is = SectorDigest(PartOf(after, sectors.address, sector));
    const std::string any(kAnyContent);
    const bool was_known = was == record.now || was == record.after || Holds(record.since, was) ||
                           Holds(record.since, any);
    for (const std::string& content : {is, any}) {
      if (was_known && content != record.now && !Holds(record.since, content)) {
        record.since.push_back(content);
        added = true;
      }
    }
  }
  return added;
}

}  // namespace borvanusb
