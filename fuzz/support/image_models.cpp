#include "support/image_models.h"

#include <cctype>
#include <sstream>

#include "support/check.h"

namespace borvan_fuzz {

namespace {

constexpr std::uint64_t kEndOfAddresses = 0x100000000;

// The lines that are not blank.
std::vector<std::string> LinesOf(std::string text) {
  if (text.substr(0, 3) == "\xEF\xBB\xBF") {
    text.erase(0, 3);
  }
  for (char& character : text) {
    character = character == '\r' ? '\n' : character;
  }
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    while (!line.empty() && (line.back() == ' ' || line.back() == '\t')) {
      line.pop_back();
    }
    if (!line.empty()) {
      lines.push_back(line);
    }
  }
  return lines;
}

// Whether the text has an even number of digits and nothing else. Then `bytes` has their values.
bool Decode(const std::string& digits, std::vector<unsigned>& bytes) {
  bytes.clear();
  if (digits.size() % 2 != 0) {
    return false;
  }
  for (const char digit : digits) {
    if (std::isxdigit(static_cast<unsigned char>(digit)) == 0) {
      return false;
    }
  }
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    bytes.push_back(static_cast<unsigned>(std::stoul(digits.substr(i, 2), nullptr, 16)));
  }
  return true;
}

unsigned SumOf(const std::vector<unsigned>& bytes) {
  unsigned sum = 0;
  for (const unsigned byte : bytes) {
    sum += byte;
  }
  return sum % 256;
}

// `count` bytes from `first` as a number.
std::uint64_t Number(const std::vector<unsigned>& bytes, std::size_t first, std::size_t count) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < count; ++i) {
    number = number * 256 + bytes.at(first + i);
  }
  return number;
}

bool Put(ImageBytes& image, std::uint64_t address, std::uint64_t byte) {
  return address < kEndOfAddresses &&
         image.emplace(address, static_cast<std::uint8_t>(byte)).second;
}

// Whether there are bytes, in not too many pieces.
bool IsImage(const ImageBytes& image) {
  std::size_t pieces = 0;
  std::uint64_t next = kEndOfAddresses + 1;
  for (const auto& entry : image) {
    pieces += entry.first != next ? 1 : 0;
    next = entry.first + 1;
  }
  return pieces > 0 && pieces <= 4096;
}

}  // namespace

std::optional<ImageBytes> ModelOfIntelHex(const std::string& file) {
  ImageBytes image;
  std::uint64_t segment = 0;
  std::optional<std::uint64_t> linear;
  bool ended = false;
  bool has_start = false;
  for (const std::string& line : LinesOf(file)) {
    std::vector<unsigned> bytes;
    if (ended || line[0] != ':' || !Decode(line.substr(1), bytes) || bytes.size() < 5 ||
        bytes[0] + 5 != bytes.size() || SumOf(bytes) != 0) {
      return std::nullopt;
    }
    const unsigned length = bytes[0];
    const unsigned type = bytes[3];
    const bool is_base = type == 2 || type == 4;
    const bool is_start = type == 3 || type == 5;
    if (type > 5 || (type == 1 && length != 0) || (is_base && length != 2) ||
        (is_start && (length != 4 || has_start))) {
      return std::nullopt;
    }
    has_start = has_start || is_start;
    ended = type == 1;
    if (type == 2) {
      segment = Number(bytes, 4, 2) * 16;
      linear.reset();
    } else if (type == 4) {
      linear = Number(bytes, 4, 2) * 65536;
    }
    for (unsigned i = 0; type == 0 && i < length; ++i) {
      const std::uint64_t offset = Number(bytes, 1, 2) + i;
      if (!Put(image, linear ? *linear + offset : segment + offset % 65536, bytes[4 + i])) {
        return std::nullopt;
      }
    }
  }
  return ended && IsImage(image) ? std::optional(image) : std::nullopt;
}

std::optional<ImageBytes> ModelOfSRecord(const std::string& file) {
  ImageBytes image;
  std::uint64_t records = 0;
  bool counted = false;
  bool ended = false;
  for (const std::string& line : LinesOf(file)) {
    std::vector<unsigned> bytes;
    if (ended || line.size() < 2 || line[0] != 'S' ||
        std::string("012356789").find(line[1]) == std::string::npos ||
        !Decode(line.substr(2), bytes) || bytes.empty() || bytes[0] + 1 != bytes.size() ||
        SumOf(bytes) != 255) {
      return std::nullopt;
    }
    const bool has_data = line[1] <= '3';
    const std::size_t width = std::string("0159").find(line[1]) != std::string::npos  ? 2
                              : std::string("268").find(line[1]) != std::string::npos ? 3
                                                                                      : 4;
    if (bytes.size() < width + 2 || (!has_data && bytes.size() != width + 2)) {
      return std::nullopt;
    }
    const std::uint64_t address = Number(bytes, 1, width);
    if (line[1] >= '1' && line[1] <= '3') {
      if (counted) {
        return std::nullopt;
      }
      ++records;
      for (std::size_t i = 1 + width; i + 1 < bytes.size(); ++i) {
        if (!Put(image, address + i - 1 - width, bytes[i])) {
          return std::nullopt;
        }
      }
    } else if (line[1] == '5' || line[1] == '6') {
      if (address != records) {
        return std::nullopt;
      }
      counted = true;
    } else {
      ended = line[1] >= '7';
    }
  }
  return (ended || counted) && IsImage(image) ? std::optional(image) : std::nullopt;
}

namespace {

// Reads numbers of an ELF file; nothing beyond its end.
class ElfModel {
 public:
  explicit ElfModel(const std::vector<std::uint8_t>& file) : file_(file) {}

  std::optional<ImageBytes> Read() {
    if (!IsElf()) {
      return std::nullopt;
    }
    wide_ = file_[4] == 2;
    if (file_.size() < (wide_ ? 64U : 52U)) {
      return std::nullopt;
    }
    const std::uint64_t table = wide_ ? Get(32, 8) : Get(28, 4);
    const std::uint64_t size = wide_ ? Get(54, 2) : Get(42, 2);
    const std::uint64_t count = wide_ ? Get(56, 2) : Get(44, 2);
    // All numbers in the table are below 2^32, otherwise the position is beyond the end of the
    // file.
    if (count == 0 || count == 0xFFFF || size < (wide_ ? 56U : 32U) || table > file_.size() ||
        table + size * count > file_.size()) {
      return std::nullopt;
    }
    for (std::uint64_t i = 0; i < count; ++i) {
      if (!Take(table + i * size)) {
        return std::nullopt;
      }
    }
    return IsImage(image_) ? std::optional(image_) : std::nullopt;
  }

 private:
  bool IsElf() const {
    return file_.size() >= 16 && file_[0] == 0x7F && file_[1] == 'E' && file_[2] == 'L' &&
           file_[3] == 'F' && (file_[4] == 1 || file_[4] == 2) &&
           (file_[5] == 1 || file_[5] == 2) && file_[6] == 1;
  }

  std::uint64_t Get(std::uint64_t place, unsigned size) const {
    std::uint64_t number = 0;
    for (unsigned i = 0; i < size; ++i) {
      const std::uint64_t byte = file_.at(place + i);
      number += byte << (8 * (file_[5] == 1 ? i : size - 1 - i));
    }
    return number;
  }

  bool Take(std::uint64_t place) {
    const std::uint64_t offset = wide_ ? Get(place + 8, 8) : Get(place + 4, 4);
    const std::uint64_t address = wide_ ? Get(place + 24, 8) : Get(place + 12, 4);
    const std::uint64_t in_file = wide_ ? Get(place + 32, 8) : Get(place + 16, 4);
    const std::uint64_t in_memory = wide_ ? Get(place + 40, 8) : Get(place + 20, 4);
    if (Get(place, 4) != 1 || in_file == 0) {
      return true;
    }
    if (in_file > in_memory || in_file > file_.size() || offset > file_.size() - in_file ||
        address >= kEndOfAddresses) {
      return false;
    }
    for (std::uint64_t i = 0; i < in_file; ++i) {
      if (!Put(image_, address + i, file_[offset + i])) {
        return false;
      }
    }
    return true;
  }

  const std::vector<std::uint8_t>& file_;
  bool wide_ = false;
  ImageBytes image_;
};

}  // namespace

std::optional<ImageBytes> ModelOfElf(const std::vector<std::uint8_t>& file) {
  return ElfModel(file).Read();
}

borvanusb::Segments CheckAgainst(const std::optional<ImageBytes>& model,
                                 const std::function<borvanusb::ImageContent()>& read) {
  borvanusb::Segments segments;
  try {
    segments = read().segments;
  } catch (const borvanusb::ImageError& error) {
    Check(!model.has_value(), error.what());
    Check(*error.what() != '\0', "an error without a text");
    return {};
  }
  Check(model.has_value(), "a file was read that must be refused");
  ImageBytes found;
  std::uint64_t free = 0;
  for (const borvanusb::Segment& segment : segments) {
    Check(!segment.bytes.empty() && segment.address >= free, "segments that touch or are empty");
    for (std::size_t i = 0; i < segment.bytes.size(); ++i) {
      found[segment.address + i] = segment.bytes[i];
    }
    free = segment.End() + 1;
  }
  Check(found == *model, "other bytes than the model's");
  return segments;
}

std::string Digits(const std::vector<std::uint8_t>& bytes, bool small) {
  const std::string all = small ? "0123456789abcdef" : "0123456789ABCDEF";
  std::string digits;
  for (const std::uint8_t byte : bytes) {
    digits += all[byte >> 4U];
    digits += all[byte & 0xFU];
  }
  return digits;
}

}  // namespace borvan_fuzz
