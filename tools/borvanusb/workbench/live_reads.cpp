#include "workbench/live_reads.h"

#include <algorithm>

namespace borvanusb {

std::vector<LiveRead> ReadsFor(const LiveWishes& wishes) {
  std::vector<LiveRead> reads;
  for (const auto& [page, page_wishes] : wishes) {
    for (const LiveWish& wish : page_wishes) {
      const auto same = std::ranges::find(reads, wish.words, &LiveRead::words);
      if (same == reads.end()) {
        reads.push_back({wish.words, wish.rate, {page}});
        continue;
      }
      same->rate = std::max(same->rate, wish.rate);
      if (same->pages.back() != page) {
        same->pages.push_back(page);
      }
    }
  }
  return reads;
}

LiveWishes WishesOfOpen(const LiveWishes& wishes, const std::vector<std::string>& open_pages) {
  LiveWishes open;
  for (const auto& [page, page_wishes] : wishes) {
    const bool is_open = page.empty() ? !open_pages.empty()
                                      : std::ranges::find(open_pages, page) != open_pages.end();
    if (is_open) {
      open.emplace(page, page_wishes);
    }
  }
  return open;
}

}  // namespace borvanusb
