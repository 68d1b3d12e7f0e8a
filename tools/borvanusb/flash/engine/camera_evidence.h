#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "camera/camera.h"
#include "flash/engine/journal.h"
#include "flash/engine/sector_plan.h"

namespace borvanusb {

// Whether a flash is the one that a journal belongs to. A camera without a serial number has
// another path at another port, and cameras of one kind share their firmware: content tells more
// than a path.

// What was compared. Blank places count for neither side.
struct Evidence {
  unsigned agreeing = 0;
  unsigned differing = 0;
};

enum class SameCamera { kYes, kUnknown, kNo };

// A single difference speaks for another camera: what this program changed since is followed.
SameCamera Weigh(const Evidence& evidence);

// Words that a change of `sectors` leaves alone: of the first 64 KiB and of all that lies before
// the sectors. Throws Failure as the camera's reads do.
std::vector<Landmark> TakeLandmarks(Camera& camera, const SectorSet& sectors);

// Whether a word can be the landmark's: one that it held, or what a later change that was cut off
// made of it.
bool AgreesWith(const Landmark& landmark, std::uint32_t word);

// The journal's landmarks, read again.
Evidence CompareLandmarks(Camera& camera, const Journal& journal);

// The sectors that the journal knows, its open one aside, against `now`, the content of `sectors`.
// While a sector is open the others stand still.
Evidence CompareSectors(const Journal& journal, const SectorSet& sectors,
                        std::span<const std::uint8_t> now);

// Adds to what a journal knows of its flash what a later change may have put there, with the same
// camera or one that looks the same: `before` and `after` are the content of `sectors` around that
// change. Returns whether anything was added.
bool FollowChange(Journal& journal, const SectorSpan& sectors, std::span<const std::uint8_t> before,
                  std::span<const std::uint8_t> after);

Evidence operator+(const Evidence& left, const Evidence& right);

}  // namespace borvanusb
