#include "names/register_setting.h"

#include <algorithm>

#include "base/failure.h"
#include "base/format.h"
#include "base/numbers.h"
#include "base/text_lines.h"
#include "names/field_value.h"
#include "output/output.h"

namespace borvanusb {

namespace {

bool IsSameRegister(const RegisterAccess& one, const RegisterAccess& other) {
  return one.on_i2c == other.on_i2c && one.address == other.address && one.width == other.width &&
         one.accesses == other.accesses && one.target.slave == other.target.slave &&
         one.target.mode == other.target.mode && one.target.option == other.target.option;
}

RegisterSetting NumberSetting(const std::string& word, const std::string& text,
                              const NumberMeaning& numbers) {
  const std::vector<WordTarget> found = TargetsOf({word}, nullptr, numbers);
  if (found.size() != 1) {
    throw Failure(ExitCode::kUsage, Format("{}: is more than one register", word),
                  "Write them one by one: 0x100=1 0x101=2");
  }
  RegisterSetting setting;
  setting.access = found.front().access;
  setting.bits = ValueBits(setting.access);
  const auto value = ParseNumber(text);
  if (!value || *value > setting.bits) {
    throw Failure(ExitCode::kUsage,
                  Format("{}: {} {}", word, text.empty() ? "an empty text" : text,
                         value ? Format("is too big for {} bits", setting.access.access_bits)
                               : std::string("is not a valid number")),
                  Format("Allowed are 0 to {}.", Hex(setting.bits)));
  }
  setting.value = *value;
  return setting;
}

// Bits that the setting does not name and that must be read first, because the write keeps them.
std::uint64_t BitsToRead(const RegisterSetting& setting) {
  if (setting.named == nullptr) {
    return 0;
  }
  const std::uint64_t mask = ValueBits(setting.access);
  return KeptBitsOf(*setting.named->in_map->form, mask).as_read & ~setting.bits & mask;
}

bool CanBeReadFirst(const NamedRegister& named) {
  const MapRegisterForm& form = *named.in_map->form;
  return CanRead(form.access) && !ChangesWhenRead(form);
}

// Bits of writable fields that the setting does not name.
std::uint64_t OpenFieldBits(const RegisterSetting& setting) {
  std::uint64_t bits = 0;
  for (const MapField& field : setting.named->in_map->form->fields) {
    bits |= CanWrite(field.access) ? BitsOf(field) : 0;
  }
  return bits & BitsToRead(setting);
}

std::uint64_t Combined(const RegisterSetting& setting, std::uint64_t before) {
  if (setting.named == nullptr) {
    return setting.value;
  }
  const std::uint64_t mask = ValueBits(setting.access);
  const KeptBits kept = KeptBitsOf(*setting.named->in_map->form, mask);
  return setting.value | (kept.ones & ~setting.bits & mask) | (before & BitsToRead(setting));
}

// Named bits that are expected to read back as written.
std::uint64_t BitsToVerify(const RegisterSetting& setting) {
  return setting.named == nullptr
             ? setting.bits
             : BitsThatReadBack(*setting.named->in_map->form, ValueBits(setting.access)) &
                   setting.bits;
}

std::string RegisterText(const RegisterSetting& setting, std::uint64_t value) {
  return Hex(value, ValueDigits(setting.access));
}

// Reads the register back. If bits that the setting does not name have changed, a part of the write
// may have been lost, so the register is written a second time.
void VerifySetting(const RegisterSetting& setting, const WrittenSetting& written, Camera& camera,
                   Context& context) {
  const std::uint64_t kept = written.before ? BitsToRead(setting) : 0;
  std::uint64_t found = ReadOne(setting.access, camera);
  const auto others_changed = [&] { return ((found ^ written.value) & kept) != 0; };
  if (others_changed()) {
    WriteOne(setting.access, written.value, camera);
    found = ReadOne(setting.access, camera);
  }
  if (others_changed()) {
    context.output.Note(Format("note: other bits changed, too: {} reads back as {}", setting.Name(),
                               RegisterText(setting, found)));
  }
  if (((found ^ written.value) & BitsToVerify(setting)) != 0) {
    throw Failure(ExitCode::kVerify,
                  Format("{} reads back as {} after {} was written", setting.Name(),
                         RegisterText(setting, found), RegisterText(setting, written.value)),
                  "It may be read-only, or change by itself.");
  }
}

}  // namespace

std::string RegisterSetting::Name() const {
  if (named != nullptr) {
    return named->name;
  }
  return access.on_i2c
             ? Format("slave {}, register {}", Hex(access.target.slave, 2), Hex(access.address, 4))
             : Format("register {}", Hex(access.address, 4));
}

RegisterSetting MakeSetting(const std::string& word, const std::string& value,
                            const RegisterNames* names, const NumberMeaning& numbers) {
  if (IsNumberWord(word)) {
    return NumberSetting(word, value, numbers);
  }
  const NamedTarget target = names->Find(word);
  RegisterSetting setting;
  setting.access = AccessOf(*target.of);
  if (target.field != nullptr &&
      (BitsOf(*target.field) == 0 || (BitsOf(*target.field) & ~ValueBits(setting.access)) != 0)) {
    throw Failure(ExitCode::kFile,
                  Format("{}: lies outside of its register, which has {} bits", NameOf(target),
                         target.of->Bits()),
                  Format("borvanusb map check {} shows more.", target.of->map->file));
  }
  setting.named = target.of;
  setting.targets = {target};
  const std::uint64_t number = WritableValue(target, value);
  setting.bits = target.field != nullptr ? BitsOf(*target.field) : ValueBits(setting.access);
  setting.value = target.field != nullptr ? number << target.field->bit_offset : number;
  return setting;
}

SettingWords SplitSetting(const std::string& text) {
  const std::size_t sign = text.find('=');
  const std::string_view of = Trimmed(std::string_view(text).substr(0, sign));
  if (sign == std::string::npos || of.empty()) {
    throw Failure(ExitCode::kUsage, Format("{}: is not a valid setting", text),
                  "A setting is a register, =, and its value: SENSOR.GAIN=0x10");
  }
  return {std::string(of), std::string(Trimmed(std::string_view(text).substr(sign + 1)))};
}

RegisterSetting ParseSetting(const std::string& text, const RegisterNames* names,
                             const NumberMeaning& numbers) {
  const SettingWords words = SplitSetting(text);
  return MakeSetting(words.of, words.value, names, numbers);
}

std::vector<RegisterSetting> MergeSettings(std::vector<RegisterSetting> settings, bool anywhere) {
  std::vector<RegisterSetting> merged;
  for (RegisterSetting& setting : settings) {
    auto same = std::ranges::find_if(merged, [&](const RegisterSetting& other) {
      return IsSameRegister(other.access, setting.access);
    });
    if (!anywhere && same != merged.end() && same + 1 != merged.end()) {
      same = merged.end();
    }
    const bool overlaps = same != merged.end() && (same->bits & setting.bits) != 0;
    if (overlaps && anywhere) {
      throw Failure(ExitCode::kUsage, Format("{}: is set twice", setting.Name()),
                    "Give one value for each register or field.");
    }
    if (same == merged.end() || overlaps) {
      merged.push_back(std::move(setting));
      continue;
    }
    same->value |= setting.value;
    same->bits |= setting.bits;
    same->named = same->named != nullptr ? same->named : setting.named;
    same->targets.insert(same->targets.end(), setting.targets.begin(), setting.targets.end());
  }
  return merged;
}

void CheckSetting(const RegisterSetting& setting) {
  if (setting.named != nullptr && !CanBeReadFirst(*setting.named) && OpenFieldBits(setting) != 0) {
    throw Failure(ExitCode::kUsage,
                  Format("{}: has fields that would have to be kept, but {}", setting.named->name,
                         CanRead(setting.named->in_map->form->access) ? "reading it changes it"
                                                                      : "it can't be read"),
                  Format("Set all of its fields, or the register: {}=VALUE.", setting.named->name));
  }
}

WrittenSetting WriteSetting(const RegisterSetting& setting, bool verify, Camera& camera,
                            Context& context) {
  CheckSetting(setting);
  WrittenSetting written;
  if (BitsToRead(setting) != 0) {
    const MapRegisterForm& form = *setting.named->in_map->form;
    if (CanBeReadFirst(*setting.named)) {
      written.before = ReadOne(setting.access, camera);
    }
    written.value = Combined(setting, written.before.value_or(form.reset_value & form.reset_mask));
  } else {
    written.value = Combined(setting, 0);
  }
  WriteOne(setting.access, written.value, camera);
  if (verify && BitsToVerify(setting) != 0 &&
      (setting.named == nullptr || CanBeReadFirst(*setting.named))) {
    VerifySetting(setting, written, camera, context);
    written.verified = true;
  }
  return written;
}

}  // namespace borvanusb
