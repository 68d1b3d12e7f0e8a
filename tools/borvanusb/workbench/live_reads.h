#pragma once

#include <map>
#include <string>
#include <vector>

namespace borvanusb {

// What the pages read live from one camera, and what the camera then reads. Each page has wishes of
// its own, which other pages neither replace nor end.

// A command line, such as `reg read EXPOSURE.MEAN`, and how often a page wants it.
struct LiveWish {
  std::vector<std::string> words;
  double rate = 10;  // readings a second
};

// By the name of the page; the name is empty for pages that give none.
using LiveWishes = std::map<std::string, std::vector<LiveWish>>;

// One command line that is repeated.
struct LiveRead {
  std::vector<std::string> words;
  double rate = 10;
  std::vector<std::string> pages;  // whose wish it is, each once

  friend bool operator==(const LiveRead&, const LiveRead&) = default;
};

// All that the pages want. Each page is read at its own rate; what several pages want in the same
// words is read once, at the fastest of their rates.
std::vector<LiveRead> ReadsFor(const LiveWishes& wishes);

// The wishes of the pages that are still open. Wishes without a page's name stay as long as any
// page is open.
LiveWishes WishesOfOpen(const LiveWishes& wishes, const std::vector<std::string>& open_pages);

}  // namespace borvanusb
