// derivedFrom: finds the element that is meant, and what is inherited from it.

#include <algorithm>
#include <functional>
#include <string>
#include <unordered_set>

#include "base/format.h"
#include "maps/svd_tree.h"
#include "maps/xml_guard.h"

namespace borvanusb {

namespace {

constexpr std::uint64_t kMostSteps = 20'000'000;
constexpr std::uint32_t kLongestChain = 64;

std::string_view LastName(std::string_view path) {
  const std::size_t dot = path.rfind('.');
  return dot == std::string_view::npos ? path : path.substr(dot + 1);
}

std::size_t HashOf(std::string_view name) {
  return std::hash<std::string_view>{}(NameWithoutIndex(name));
}

bool IsNamed(std::string_view name, std::string_view wanted) {
  return name == wanted || NameWithoutIndex(name) == NameWithoutIndex(wanted);
}

}  // namespace

std::string_view NameWithoutIndex(std::string_view name) {
  for (const std::string_view mark : {"[%s]", "%s"}) {
    if (name.ends_with(mark)) {
      return name.substr(0, name.size() - mark.size());
    }
  }
  return name;
}

void SvdTree::Derive() {
  std::size_t buckets = 64;
  while (buckets < elements_.size()) {
    buckets *= 2;
  }
  std::vector<std::uint32_t> heads(buckets, SvdElement::kNone);
  // Runs backwards, so that each list is in the order of the file.
  for (auto id = static_cast<std::uint32_t>(elements_.size()); id-- > 1;) {
    SvdElement& element = elements_[id];
    if (!element.name.empty()) {
      std::uint32_t& head = heads[HashOf(element.name) & (buckets - 1)];
      element.same_hash = head;
      head = id;
    }
  }
  std::uint64_t steps = 0;
  for (std::uint32_t id = 1; id < elements_.size(); ++id) {
    if (!elements_[id].derived_from.empty()) {
      FindBase(id, heads, steps);
    }
  }
  for (std::uint32_t id = 1; id < elements_.size(); ++id) {
    if (elements_[id].base != SvdElement::kNone) {
      RefuseCircles(id);
    }
  }
}

// Finds the nearest element of that name: first in the same parent, then in the same peripheral,
// then in the rest of the file.
void SvdTree::FindBase(std::uint32_t id, const std::vector<std::uint32_t>& heads,
                       std::uint64_t& steps) {
  SvdElement& element = elements_[id];
  const std::string_view path = element.derived_from;
  const std::string_view last = LastName(path);
  std::uint32_t nearness = 0;
  bool several = false;
  for (std::uint32_t other = heads[HashOf(last) & (heads.size() - 1)]; other != SvdElement::kNone;
       other = elements_[other].same_hash) {
    if (++steps > kMostSteps) {
      Fail(*element.node, Format("derivedFrom \"{}\": too many elements of the file have the same "
                                 "names",
                                 path.substr(0, std::size_t{40})));
    }
    if (other == id || elements_[other].kind != element.kind ||
        !IsNamed(elements_[other].name, last) || !LiesOnPath(other, path)) {
      continue;
    }
    const std::uint32_t near = Nearness(id, other);
    several = near == nearness || (several && near < nearness);
    if (near > nearness) {
      nearness = near;
      element.base = other;
    }
  }
  const bool found = element.base != SvdElement::kNone;
  if (!found || several) {
    storage_.doubts.Add({.kind = found ? SvdDoubtKind::kSeveralBases : SvdDoubtKind::kNoBase,
                         .offset = OffsetOf(id),
                         .first = NameOf(element.kind),
                         .second = path});
  }
}

// Whether the names of the element's parents match the parts of the path before its last dot.
bool SvdTree::LiesOnPath(std::uint32_t id, std::string_view path) const {
  for (std::size_t dot = path.rfind('.'); dot != std::string_view::npos; dot = path.rfind('.')) {
    path = path.substr(0, dot);
    id = elements_[id].parent;
    if (id == SvdElement::kNone || !IsNamed(elements_[id].name, LastName(path))) {
      return false;
    }
  }
  return true;
}

// The number of parents that two elements share, plus one.
std::uint32_t SvdTree::Nearness(std::uint32_t id, std::uint32_t other) const {
  const auto depth_of = [&](std::uint32_t one) {
    std::uint32_t depth = 0;
    for (; elements_[one].parent != SvdElement::kNone; one = elements_[one].parent) {
      ++depth;
    }
    return depth;
  };
  std::uint32_t depth = depth_of(id);
  std::uint32_t other_depth = depth_of(other);
  while (depth > other_depth) {
    id = elements_[id].parent;
    --depth;
  }
  while (other_depth > depth) {
    other = elements_[other].parent;
    --other_depth;
  }
  while (id != other) {
    id = elements_[id].parent;
    other = elements_[other].parent;
    --depth;
  }
  return depth + 1;
}

void SvdTree::RefuseCircles(std::uint32_t id) const {
  const SvdElement& element = elements_[id];
  std::uint32_t length = 0;
  for (std::uint32_t base = element.base; base != SvdElement::kNone; base = elements_[base].base) {
    if (base == id) {
      Fail(*element.node, Format("derivedFrom \"{}\" leads back to {} itself",
                                 element.derived_from.substr(0, std::size_t{40}),
                                 element.name.substr(0, std::size_t{40})));
    }
    if (++length > kLongestChain) {
      Fail(*element.node, Format("derivedFrom \"{}\" has a chain of more than {} elements",
                                 element.derived_from.substr(0, std::size_t{40}), kLongestChain));
    }
  }
}

std::vector<std::uint32_t> SvdTree::Children(std::uint32_t id) const {
  std::vector<std::uint32_t> children;
  std::unordered_set<std::string_view> nearer;
  for (; id != SvdElement::kNone; id = elements_[id].base) {
    const auto own_size = children.size();
    for (std::uint32_t child = elements_[id].first_child; child != SvdElement::kNone;
         child = elements_[child].next) {
      if (nearer.empty() || !nearer.contains(elements_[child].name)) {
        children.push_back(child);
      }
    }
    if (elements_[id].base != SvdElement::kNone) {
      for (std::size_t i = own_size; i < children.size(); ++i) {
        nearer.insert(elements_[children[i]].name);
      }
    }
    std::rotate(children.begin(), children.begin() + static_cast<std::ptrdiff_t>(own_size),
                children.end());
  }
  return children;
}

}  // namespace borvanusb
