// Reads the register maps of a profile: the device of each map, and how its registers are accessed.
#include <algorithm>

#include "base/failure.h"
#include "base/format.h"
#include "base/width_modes.h"
#include "maps/read_svd.h"
#include "profile/profile_sections.h"

namespace borvanusb {

namespace {

constexpr std::uint64_t kHighestAddress = 0xFFFFFFFF;
constexpr std::uint64_t kHighestByte = 0xFF;
constexpr std::uint32_t kByteBits = 8;
constexpr std::uint32_t kWideBits = 32;
constexpr std::size_t kMostLatchWrites = 16;
constexpr std::size_t kHighFirst = 0;
constexpr std::size_t kUpwards = 0;

std::vector<LatchWrite> ReadLatch(const JsonNode& object, std::string_view key,
                                  const ProfileMap& map, ValueReader& values) {
  std::vector<LatchWrite> writes;
  const JsonNode* const node = object.Find(key);
  const std::uint64_t highest_value =
      map.access_bits == kWideBits ? kHighestAddress : (std::uint64_t{1} << map.access_bits) - 1;
  for (const JsonNode& item : values.Items(node)) {
    if (!values.IsObject(item, {"address", "value"})) {
      continue;
    }
    for (const std::string_view needed : {"address", "value"}) {
      if (item.Find(needed) == nullptr) {
        values.Wrong(item, Format("the key \"{}\" is missing", needed));
      }
    }
    const auto address = values.Number(item, "address", kHighestAddress);
    const auto value = values.Number(item, "value", highest_value);
    writes.push_back({static_cast<std::uint32_t>(address.value_or(0)),
                      static_cast<std::uint32_t>(value.value_or(0))});
  }
  if (writes.size() > kMostLatchWrites) {
    values.Wrong(*node, Format("has more than {} writes", kMostLatchWrites));
    writes.clear();
  }
  return writes;
}

// Reads an access rule. Missing keys keep the value of `otherwise`.
AccessRule ReadRule(const JsonNode& object, const AccessRule& otherwise, const ProfileMap& map,
                    ValueReader& values) {
  AccessRule rule = otherwise;
  if (const auto bytes = values.Choice(object, "byte-order", {"high-first", "low-first"})) {
    rule.bytes = *bytes == kHighFirst ? ByteOrder::kHighFirst : ByteOrder::kLowFirst;
  }
  if (const auto order = values.Choice(object, "access-order", {"upwards", "downwards"})) {
    rule.order = *order == kUpwards ? AccessOrder::kUpwards : AccessOrder::kDownwards;
  }
  const auto latch = [&](std::string_view key, std::vector<LatchWrite>& writes) {
    if (object.Find(key) != nullptr) {
      writes = ReadLatch(object, key, map, values);
    }
  };
  latch("before-read", rule.before_read);
  latch("before-write", rule.before_write);
  latch("after-write", rule.after_write);
  return rule;
}

void ReadChip(const JsonNode& item, ProfileMap& map, ValueReader& values) {
  constexpr std::size_t kWide = 1;
  const bool wide = values.Choice(item, "access", {"byte", "wide"}).value_or(0) == kWide;
  map.width = wide ? RegisterWidth::kWide : RegisterWidth::kByte;
  map.access_bits = wide ? kWideBits : kByteBits;
  map.rule.bytes = ByteOrder::kLowFirst;
  for (const std::string_view key : {"slave", "mode", "option"}) {
    if (const JsonNode* const node = item.Find(key)) {
      values.Wrong(*node, "is for devices on the I2C bus: \"device\": \"i2c\"");
    }
  }
}

void ReadI2cDevice(const JsonNode& item, ProfileMap& map, ValueReader& values) {
  map.on_i2c = true;
  if (item.Find("slave") == nullptr) {
    values.Wrong(item, "the key \"slave\" is missing: the device's address on the bus");
  }
  if (const JsonNode* const node = item.Find("access")) {
    values.Wrong(*node, "is for registers of the chip; a device on the I2C bus has a \"mode\"");
  }
  map.target.slave =
      static_cast<std::uint32_t>(values.Number(item, "slave", kHighestByte).value_or(0));
  map.target.option =
      static_cast<std::uint32_t>(values.Number(item, "option", kHighestByte).value_or(0));
  const auto mode = values.Choice(item, "mode", {"8/8", "16/8", "16/16", "32/8", "32/16", "32/32"});
  constexpr std::size_t kUsualMode = 1;  // 16/8, the mode of most sensors
  map.target.mode = static_cast<std::int32_t>(mode.value_or(kUsualMode));
  map.access_bits = static_cast<std::uint32_t>(WidthModeOf(map.target.mode).data_bits);
}

void LoadMap(const JsonNode& item, const FilesOfProfile& files, ProfileMap& map,
             ValueReader& values) {
  const std::string name = values.NeededText(item, "file");
  if (name.empty()) {
    return;
  }
  const JsonNode& node = *item.Find("file");
  map.file = files.full_name(name);
  try {
    map.map = std::make_shared<const RegisterMap>(ReadSvd(files.read(map.file)));
  } catch (const SvdError& error) {
    values.Wrong(node, Format("{}{}: {}", map.file,
                              error.Line() == 0 ? "" : Format(":{}", error.Line()), error.what()));
  } catch (const Failure& failure) {
    values.Wrong(node, failure.Message());
  }
}

void ReadRegisterRules(const JsonNode& item, ProfileMap& map, ValueReader& values) {
  const JsonNode* const node = item.Find("registers");
  if (node == nullptr) {
    return;
  }
  if (node->kind != JsonNode::Kind::kObject) {
    values.Wrong(*node, "must be an object: {…}");
    return;
  }
  for (const auto& [name, rule] : node->members) {
    if (!values.IsObject(
            rule, {"byte-order", "access-order", "before-read", "before-write", "after-write"})) {
      continue;
    }
    if (map.map != nullptr && std::ranges::find(map.map->registers, name, &MapRegister::name) ==
                                  map.map->registers.end()) {
      values.Wrong(rule, "is not a register of the map");
    }
    map.register_rules.emplace(name, ReadRule(rule, map.rule, map, values));
  }
}

std::optional<ProfileMap> ReadMap(const JsonNode& item, const FilesOfProfile& files,
                                  ValueReader& values) {
  if (!values.IsObject(item, {"file", "prefix", "device", "access", "slave", "mode", "option",
                              "base", "step", "byte-order", "access-order", "before-read",
                              "before-write", "after-write", "registers"})) {
    return std::nullopt;
  }
  ProfileMap map;
  map.prefix = values.Text(item, "prefix").value_or("");
  if (!map.prefix.empty() && !IsPlainName(map.prefix)) {
    values.Wrong(*item.Find("prefix"), "may have letters, digits and _ - . only");
  }
  if (item.Find("device") == nullptr) {
    values.Wrong(item, "the key \"device\" is missing: chip or i2c");
  }
  constexpr std::size_t kI2c = 1;
  if (values.Choice(item, "device", {"chip", "i2c"}).value_or(0) == kI2c) {
    ReadI2cDevice(item, map, values);
  } else {
    ReadChip(item, map, values);
  }
  map.base = values.Number(item, "base", kHighestAddress).value_or(0);
  LoadMap(item, files, map, values);
  if (map.map == nullptr) {
    return std::nullopt;
  }
  map.step = std::max<std::uint32_t>(1, map.access_bits / map.map->address_unit_bits);
  if (const auto step = values.Number(item, "step", kWideBits)) {
    map.step = static_cast<std::uint32_t>(*step);
    if (*step == 0) {
      values.Wrong(*item.Find("step"), "must be at least 1");
      map.step = 1;
    }
  }
  map.rule = ReadRule(item, map.rule, map, values);
  ReadRegisterRules(item, map, values);
  return map;
}

}  // namespace

std::vector<ProfileMap> ReadMapSection(const JsonNode* node, const FilesOfProfile& files,
                                       ValueReader& values) {
  std::vector<ProfileMap> maps;
  for (const JsonNode& item : values.Items(node)) {
    if (auto map = ReadMap(item, files, values)) {
      maps.push_back(std::move(*map));
    }
  }
  return maps;
}

}  // namespace borvanusb
