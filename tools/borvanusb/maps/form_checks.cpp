// Checks of single registers: overlapping fields, duplicate names, values that do not fit their
// field.

#include <algorithm>
#include <string_view>

#include "maps/form_builder.h"

namespace borvanusb {

namespace {

bool IsBeyond(const MapField& field, const MapRegisterForm& form) {
  return field.bit_offset + field.bit_width > form.bits;
}

// Fields overlap only if both can be read or both can be written.
bool Overlap(const MapField& left, const MapField& right) {
  const bool same_use = (CanRead(left.access) && CanRead(right.access)) ||
                        (CanWrite(left.access) && CanWrite(right.access));
  return same_use && left.bit_offset < right.bit_offset + right.bit_width &&
         right.bit_offset < left.bit_offset + left.bit_width;
}

// Sets the bits. Returns whether one of them was set before.
bool SetBits(std::vector<std::uint64_t>& bits, std::uint64_t first, std::uint64_t count) {
  bool taken = false;
  while (count > 0) {
    const std::uint64_t shift = first % kWordBits;
    const std::uint64_t here = std::min(count, kWordBits - shift);
    const std::uint64_t mask = LowBits(here) << shift;
    std::uint64_t& word = bits[first / kWordBits];
    taken |= (word & mask) != 0;
    word |= mask;
    first += here;
    count -= here;
  }
  return taken;
}

// A quick check that ignores the access of the fields. All fields must end within the first 64
// bits.
bool MayOverlap(const MapRegisterForm& form) {
  std::uint64_t taken = 0;
  for (const MapField& field : form.fields) {
    const std::uint64_t mask = LowBits(field.bit_width) << field.bit_offset;
    if ((taken & mask) != 0) {
      return true;
    }
    taken |= mask;
  }
  return false;
}

}  // namespace

// Checks the values against the narrowest field that uses them.
void FormBuilder::CheckValues(std::uint32_t id, const MapField& field, MapValueList& list) const {
  if (field.bit_width >= list.checked_bits) {
    return;
  }
  list.checked_bits = field.bit_width;
  const std::uint64_t bits = LowBits(field.bit_width);
  for (const MapEnumeratedValue& value : list.values) {
    if ((value.value & ~bits) != 0) {
      storage_.doubts.Add({.kind = SvdDoubtKind::kValueTooBig,
                           .offset = value.offset,
                           .first = value.name,
                           .second = tree_[id].name,
                           .number = value.value,
                           .other = field.bit_width});
    }
  }
}

void FormBuilder::CheckFields(std::uint32_t id, const MapRegisterForm& form) const {
  // A small hash filter: names are compared only if two of them share a bit.
  std::uint64_t seen = 0;
  for (const MapField& field : form.fields) {
    const auto first = static_cast<unsigned char>(field.name.front());
    const auto last = static_cast<unsigned char>(field.name.back());
    const std::uint64_t bit =
        std::uint64_t{1} << ((field.name.size() * 7 + std::size_t{5} * first + last) % kWordBits);
    if ((seen & bit) != 0) {
      const auto* const other = std::find_if(
          form.fields.data(), &field, [&](const MapField& one) { return one.name == field.name; });
      if (other != &field) {
        storage_.doubts.Add({.kind = SvdDoubtKind::kSameName,
                             .offset = field.offset,
                             .first = NameOf(SvdKind::kField),
                             .second = field.name,
                             .third = tree_[id].name});
      }
    }
    seen |= bit;
    if (IsBeyond(field, form)) {
      storage_.doubts.Add({.kind = SvdDoubtKind::kBeyondRegister,
                           .offset = field.offset,
                           .first = field.name,
                           .second = tree_[id].name,
                           .number = field.bit_offset,
                           .other = field.bit_offset + std::uint64_t{field.bit_width} - 1});
    }
  }
}

void FormBuilder::CheckOverlaps(std::uint32_t id, const MapRegisterForm& form) {
  std::uint64_t end = 0;
  for (const MapField& field : form.fields) {
    end = std::max<std::uint64_t>(end, field.bit_offset + std::uint64_t{field.bit_width});
  }
  if (end <= kWordBits && !MayOverlap(form)) {
    return;
  }
  readable_.assign(end / kWordBits + 1, 0);
  writable_.assign(end / kWordBits + 1, 0);
  for (const MapField& field : form.fields) {
    const bool read =
        CanRead(field.access) && SetBits(readable_, field.bit_offset, field.bit_width);
    const bool written =
        CanWrite(field.access) && SetBits(writable_, field.bit_offset, field.bit_width);
    if (read || written) {
      const auto* const other = std::find_if(
          form.fields.data(), &field, [&](const MapField& one) { return Overlap(one, field); });
      storage_.doubts.Add({.kind = SvdDoubtKind::kOverlap,
                           .offset = field.offset,
                           .first = field.name,
                           .second = tree_[id].name,
                           .third = other->name});
    }
  }
}

}  // namespace borvanusb
