#include "images/elf.h"

#include <algorithm>
#include <array>
#include <limits>

#include "base/format.h"

namespace borvanusb {

namespace {

constexpr std::array<std::uint8_t, 4> kMagic = {0x7F, 'E', 'L', 'F'};
constexpr std::size_t kClassPlace = 4;
constexpr std::size_t kOrderPlace = 5;
constexpr std::size_t kVersionPlace = 6;
constexpr std::size_t kIdentity = 16;
constexpr std::uint32_t kLoad = 1;              // p_type
constexpr std::uint64_t kManyHeaders = 0xFFFF;  // e_phnum if the number is stored elsewhere

// Offsets of the fields that differ between 32 and 64 bits.
struct Layout {
  std::size_t word;  // size of addresses, offsets and sizes
  std::size_t header_size;
  std::size_t entry;        // e_entry
  std::size_t table;        // e_phoff
  std::size_t table_entry;  // e_phentsize; e_phnum follows
  std::size_t program_header_size;
  std::size_t offset;  // p_offset
  std::size_t physical;
  std::size_t file_size;
  std::size_t memory_size;
};
constexpr Layout kLayout32{4, 52, 24, 28, 42, 32, 4, 12, 16, 20};
constexpr Layout kLayout64{8, 64, 24, 32, 54, 56, 8, 24, 32, 40};

[[noreturn]] void Refuse(std::uint64_t offset, const std::string& why) {
  throw ImageError(Format("byte {}: {}", offset, why));
}

class ElfReader {
 public:
  explicit ElfReader(std::span<const std::uint8_t> file) : file_(file) {
    if (file.size() < kIdentity || !std::ranges::equal(file.first(kMagic.size()), kMagic)) {
      Refuse(0, "the ELF magic number is missing");
    }
    const std::uint8_t bits = file[kClassPlace];
    if (bits != 1 && bits != 2) {
      Refuse(kClassPlace, Format("{} is neither 1 (32 bits) nor 2 (64 bits)", bits));
    }
    layout_ = bits == 1 ? &kLayout32 : &kLayout64;
    const std::uint8_t order = file[kOrderPlace];
    if (order != 1 && order != 2) {
      Refuse(kOrderPlace,
             Format("{} is not a valid byte order: 1 is low byte first, 2 high byte first", order));
    }
    low_first_ = order == 1;
    if (file[kVersionPlace] != 1) {
      Refuse(kVersionPlace, Format("the version is {}, not 1", file[kVersionPlace]));
    }
    if (file.size() < layout_->header_size) {
      Refuse(file.size(),
             Format("the file ends within its header of {} bytes", layout_->header_size));
    }
  }

  ImageContent Read() {
    const std::uint64_t table = Word(layout_->table);
    const std::uint64_t size = Number(layout_->table_entry, 2);
    const std::uint64_t count = Number(layout_->table_entry + 2, 2);
    if (count == 0) {
      throw ImageError("it has no program headers and therefore no addresses: link it first");
    }
    if (count == kManyHeaders) {
      Refuse(layout_->table_entry + 2, "more program headers than this tool reads: 65534");
    }
    if (size < layout_->program_header_size) {
      Refuse(layout_->table_entry, Format("a program header of {} bytes is shorter than {}", size,
                                          layout_->program_header_size));
    }
    if (table > file_.size() || count * size > file_.size() - table) {
      Refuse(table, Format("the {} program headers of {} bytes exceed the file's end, {}", count,
                           size, file_.size()));
    }
    for (std::uint64_t i = 0; i < count; ++i) {
      TakeSegment(table + i * size);
    }
    const std::uint64_t entry = Word(layout_->entry);
    ImageContent content{collector_.Take(), std::nullopt};
    if (entry <= std::numeric_limits<std::uint32_t>::max()) {
      content.start = static_cast<std::uint32_t>(entry);
    }
    return content;
  }

 private:
  std::uint64_t Number(std::uint64_t place, std::size_t size) const {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < size; ++i) {
      number = number << 8U | file_[place + (low_first_ ? size - 1 - i : i)];
    }
    return number;
  }

  std::uint64_t Word(std::uint64_t place) const { return Number(place, layout_->word); }

  void TakeSegment(std::uint64_t header) {
    const std::uint64_t size = Word(header + layout_->file_size);
    if (Number(header, 4) != kLoad || size == 0) {
      return;
    }
    const std::uint64_t offset = Word(header + layout_->offset);
    const std::uint64_t memory = Word(header + layout_->memory_size);
    if (size > memory) {
      Refuse(header, Format("a segment has {} in the file, more than the {} in memory",
                            SizeText(size), SizeText(memory)));
    }
    if (offset > file_.size() || size > file_.size() - offset) {
      Refuse(header, Format("a segment's {} at byte {} exceed the file's end, {}", SizeText(size),
                            offset, file_.size()));
    }
    collector_.Add(Word(header + layout_->physical), file_.subspan(offset, size),
                   {"the program header at byte", header});
  }

  std::span<const std::uint8_t> file_;
  const Layout* layout_ = nullptr;
  bool low_first_ = true;
  SegmentCollector collector_;
};

}  // namespace

ImageContent ReadElf(std::span<const std::uint8_t> file) {
  return ElfReader(file).Read();
}

}  // namespace borvanusb
