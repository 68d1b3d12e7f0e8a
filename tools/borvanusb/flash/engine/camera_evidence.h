#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "camera/camera.h"
#include "flash/engine/journal.h"
#include "flash/engine/sector_plan.h"

namespace borvanusb {

// Decides whether a flash is the one that a journal belongs to. Without a serial number, a camera
// has another path at another port, and cameras of one kind have the same firmware. Therefore the
// content of the flash is better evidence than the path.

// Counts the comparisons. Blank places are not counted.
struct Evidence {
  unsigned agreeing = 0;
  unsigned differing = 0;
};

enum class SameCamera { kYes, kUnknown, kNo };

// A single difference means another camera, because journals keep track of changes that this
// program makes later.
SameCamera Weigh(const Evidence& evidence);

// Takes words that a change of `sectors` does not touch: from the first 64 KiB, and from the flash
// before the sectors. Throws Failure as the camera's reads do.
std::vector<Landmark> TakeLandmarks(Camera& camera, const SectorSet& sectors);

// Whether a word can belong to the landmark: a value it had, or the result of a later interrupted
// change.
bool AgreesWith(const Landmark& landmark, std::uint32_t word);

// Reads the journal's landmarks again and compares them.
Evidence CompareLandmarks(Camera& camera, const Journal& journal);

// Compares the sectors in the journal, except the open one, with `now`, the content of `sectors`.
// They must be equal, because only the open sector changes while it is open.
Evidence CompareSectors(const Journal& journal, const SectorSet& sectors,
                        std::span<const std::uint8_t> now);

// Records in a journal that a later change may have changed its flash. The change was made on the
// same camera or one that looks the same. `before` and `after` are the content of `sectors` before
// and after that change. Returns whether anything was added.
bool FollowChange(Journal& journal, const SectorSpan& sectors, std::span<const std::uint8_t> before,
                  std::span<const std::uint8_t> after);

Evidence operator+(const Evidence& left, const Evidence& right);

}  // namespace borvanusb
