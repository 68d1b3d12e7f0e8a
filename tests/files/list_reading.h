#pragma once

// What list files give: read as files, and line by line, which is other code of the library.

#include <gtest/gtest.h>

#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "files/list_file.h"
#include "support/temporary_folder.h"

namespace borvan_test {

using Entries = std::vector<borvan::ListEntry>;

// The entries, or the refusal of a line.
struct Reading {
  Entries entries;
  bool refused = false;

  friend bool operator==(const Reading&, const Reading&) = default;
};

inline std::ostream& operator<<(std::ostream& stream, const Reading& reading) {
  return stream << (reading.refused ? "refused"
                                    : std::to_string(reading.entries.size()) + " entries");
}

// The lines of a file one by one, cut where Windows cuts text files.
inline Reading LineByLine(std::string_view content) {
  Reading reading;
  content = content.substr(0, content.find('\x1A'));
  for (;;) {
    const std::size_t end = content.find('\n');
    try {
      if (const auto entry = borvan::ParseListLine(content.substr(0, end))) {
        reading.entries.push_back(*entry);
      }
    } catch (const std::invalid_argument&) {
      return {{}, true};
    }
    if (end == std::string_view::npos) {
      return reading;
    }
    content.remove_prefix(end + 1);
  }
}

class ListReadingTest : public testing::Test {
 protected:
  // A file with this content.
  Reading Read(std::string_view content) const {
    const std::string path = folder.Put("list.txt", content);
    try {
      return {borvan::ReadListFile(path), false};
    } catch (const std::invalid_argument&) {
      return {{}, true};
    }
  }

 public:
  const TemporaryFolder folder;
};

}  // namespace borvan_test
