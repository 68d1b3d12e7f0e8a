#pragma once

#include <memory>
#include <string>

#include "profile/read_profile.h"

namespace borvanusb::tool_test {

// A chip with registers of 8 bits, and two devices on the bus.
constexpr const char* kChipMap = R"(<device><name>D</name><addressUnitBits>8</addressUnitBits>
<width>32</width><size>8</size><access>read-write</access><resetValue>0</resetValue><peripherals>
<peripheral><name>CHIP</name><baseAddress>0x100</baseAddress><registers>
<register><name>CTRL</name><addressOffset>0</addressOffset><fields>
 <field><name>MODE</name><bitRange>[1:0]</bitRange><enumeratedValues>
  <enumeratedValue><name>off</name><value>0</value></enumeratedValue>
  <enumeratedValue><name>hdr</name><value>2</value></enumeratedValue></enumeratedValues></field>
 <field><name>GAIN</name><bitRange>[6:2]</bitRange>
  <writeConstraint><range><minimum>0</minimum><maximum>20</maximum></range></writeConstraint></field>
 <field><name>STATE</name><bitRange>[7:7]</bitRange><access>read-only</access></field></fields></register>
<register><name>CTRL2</name><addressOffset>1</addressOffset></register>
<register><name>FLAGS</name><addressOffset>2</addressOffset><fields>
 <field><name>DONE</name><bitRange>[0:0]</bitRange><modifiedWriteValues>oneToClear</modifiedWriteValues></field>
 <field><name>HIT</name><bitRange>[1:1]</bitRange><modifiedWriteValues>zeroToClear</modifiedWriteValues></field>
 <field><name>ON</name><bitRange>[4:4]</bitRange></field></fields></register>
<register><name>EVENTS</name><addressOffset>3</addressOffset><readAction>clear</readAction></register>
<register><name>KEY</name><addressOffset>4</addressOffset><access>write-only</access><fields>
 <field><name>LOW</name><bitRange>[3:0]</bitRange></field>
 <field><name>HIGH</name><bitRange>[7:4]</bitRange></field></fields></register>
<register><name>SERIAL</name><addressOffset>8</addressOffset><size>32</size><access>read-only</access></register>
</registers></peripheral></peripherals></device>)";

constexpr const char* kSensorMap = R"(<device><name>S</name><addressUnitBits>8</addressUnitBits>
<width>8</width><size>8</size><access>read-write</access><peripherals>
<peripheral><name>SENSOR</name><baseAddress>0x3500</baseAddress><registers>
<register><name>EXPOSURE</name><addressOffset>0</addressOffset><size>24</size></register>
<register><name>CTRL</name><addressOffset>3</addressOffset></register>
</registers></peripheral></peripherals></device>)";

inline std::shared_ptr<const CameraProfile> TestProfile(
    const std::string& sensor_keys = "\"byte-order\": \"high-first\"") {
  const std::string text =
      R"({"name": "M", "cameras": [{"name": "*"}], "maps": [
        {"file": "chip.svd", "device": "chip"},
        {"file": "sensor.svd", "device": "i2c", "slave": "0x6c", "mode": "16/8", )" +
      sensor_keys + "}]}";
  auto reading = std::make_shared<ProfileReading>(
      ReadProfileText(text, "m.camera.json", [](const std::string& name) {
        return std::string(name == "chip.svd" ? kChipMap : kSensorMap);
      }));
  return {reading, &reading->profile};
}

}  // namespace borvanusb::tool_test
