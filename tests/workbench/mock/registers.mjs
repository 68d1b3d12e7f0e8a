// The registers of the simulated modules: a chip, an invented image sensor and a lens driver.

const CHIP = { kind: "chip", wide: false };
const SENSOR = { kind: "i2c", slave: 0x6c, mode: "16/8", option: 0 };
const LENS = { kind: "i2c", slave: 0x18, mode: "8/8", option: 0 };

function field(name, offset, bits, description, more = {}) {
  return {
    name, offset, bits, access: "read-write", read_action: null, modified_write: null, description,
    constraint: null, values: [], ...more,
  };
}

function values(...entries) {
  const list = entries.map(([value, name, description]) => ({ name, value, description }));
  return { values: list, constraint: { kind: "enumerated" } };
}

function builder(map, device) {
  return (peripheral, name, address, bits, reset, description, more = {}) => ({
    name: `${peripheral}.${name}`, peripheral, map, device, address, bits, access: "read-write",
    reset: reset === null ? null : { value: reset, mask: 2 ** bits - 1 },
    read_action: null, modified_write: null, description, constraint: null, fields: [], ...more,
  });
}

const readOnly = { access: "read-only" };

function chipRegisters() {
  const chip = builder("chip.svd", CHIP);
  return [
    chip("SYSTEM", "ID", 0x100, 16, 0x1125, "Identification of the chip.", readOnly),
    chip("SYSTEM", "FEATURES", 0x1a3, 8, 0x20, "Features of the firmware that runs.", {
      ...readOnly, fields: [field("FAST_LIST", 5, 1, "I2C lists are accepted in packets.", readOnly)],
    }),
    chip("SYSTEM", "CLOCK", 0x104, 8, 0x03, "Clock of the core.", {
      fields: [
        field("DIVIDER", 0, 4, "The clock is 96 MHz divided by this number plus one."),
        field("SOURCE", 6, 2, "Where the clock comes from.",
              values([0, "crystal", "Crystal of 24 MHz"], [1, "pll", "PLL at 96 MHz"], [2, "ring", "Ring oscillator"])),
      ],
    }),
    chip("SYSTEM", "EVENTS", 0x106, 8, 0x00, "Events since the last read. Reading clears all of them.", {
      ...readOnly, read_action: "clear",
      fields: [field("USB_RESET", 0, 1, "The bus was reset.", readOnly),
               field("SUSPEND", 1, 1, "The bus was suspended.", readOnly)],
    }),
    chip("GPIO", "DIRECTION", 0x110, 8, 0x00, "Direction of the pins; 1 is output.", {
      fields: Array.from({ length: 8 }, (_, pin) => field(`PIN${pin}`, pin, 1, `Pin ${pin} is an output.`)),
    }),
    chip("GPIO", "OUTPUT", 0x111, 8, 0x00, "Level of the pins that are outputs."),
    chip("GPIO", "INPUT", 0x112, 8, null, "Level of the pins now.", readOnly),
    chip("LED", "CONTROL", 0x120, 8, 0x01, "The light on the front.", {
      fields: [field("ENABLE", 0, 1, "The light follows the stream."),
               field("BRIGHTNESS", 1, 5, "Current in steps of 0.5 mA.")],
    }),
    chip("STREAM", "FORMAT", 0x140, 8, 0x01, "Format of the pictures that the chip sends.", {
      fields: [field("FORMAT", 0, 2, "Format.", values([0, "raw10", "Raw, 10 bits"], [1, "yuy2", "YUY2"],
                                                       [2, "mjpeg", "Motion JPEG"]))],
    }),
    chip("STREAM", "FRAMES", 0x144, 32, null, "Pictures since the stream began.", readOnly),
    chip("STREAM", "DROPPED", 0x148, 16, null, "Pictures that were lost.", readOnly),
    chip("STREAM", "KEY", 0x14a, 16, null, "Writing 0xa55a restarts the stream.", { access: "write-only" }),
  ];
}

function sensorRegisters() {
  const sensor = builder("sensor.svd", SENSOR);
  const list = [
    sensor("SENSOR", "ID", 0x300a, 16, 0x5640, "Identification of the sensor.", readOnly),
    sensor("SENSOR", "MODE", 0x3008, 8, 0x02, "Operating mode.", {
      fields: [
        field("MODE", 0, 2, "Operating mode.", values([0, "standby", "Clocks are stopped"], [2, "stream", "Pictures are sent"],
                                                      [3, "hdr", "Two exposures for each picture"])),
        field("MIRROR", 4, 1, "The picture is mirrored left to right."),
        field("FLIP", 5, 1, "The picture is turned upside down."),
      ],
    }),
    sensor("SENSOR", "TEST_PATTERN", 0x503d, 8, 0x00, "A pattern in place of the picture.", {
      fields: [field("PATTERN", 0, 3, "Which pattern.", values([0, "none", "The picture"], [1, "bars", "Colour bars"],
        [2, "ramp", "Grey ramp"], [3, "squares", "Black and white squares"])),
        field("ROLL", 7, 1, "The pattern moves.")],
    }),
    sensor("EXPOSURE", "EXPOSURE", 0x3500, 24, 0x000200, "Integration time in sixteenths of a line. Takes effect with "
      + "the next picture.", { constraint: { kind: "range", minimum: 16, maximum: 0x0ffff0 } }),
    sensor("EXPOSURE", "AUTO", 0x3503, 8, 0x00, "Automatic exposure and gain.", {
      fields: [field("EXPOSURE_MANUAL", 0, 1, "The exposure is that of the register EXPOSURE."),
               field("GAIN_MANUAL", 1, 1, "The gain is that of the register GAIN.")],
    }),
    sensor("EXPOSURE", "GAIN", 0x350a, 16, 0x0010, "Analogue gain.", {
      fields: [field("FINE", 0, 4, "Sixteenths."), field("COARSE", 4, 6, "Whole steps.",
                                                         { constraint: { kind: "range", minimum: 1, maximum: 31 } })],
    }),
    sensor("EXPOSURE", "MEAN", 0x350c, 8, null, "Mean brightness of the last picture.", readOnly),
    sensor("EXPOSURE", "TEMPERATURE", 0x350e, 16, null, "Temperature of the die in sixteenths of a degree.", readOnly),
    sensor("TIMING", "WIDTH", 0x3808, 16, 1920, "Width of the picture in pixels."),
    sensor("TIMING", "HEIGHT", 0x380a, 16, 1080, "Height of the picture in lines."),
    sensor("TIMING", "LINE_LENGTH", 0x380c, 16, 2200, "Length of a line in pixel clocks."),
    sensor("TIMING", "FRAME_LENGTH", 0x380e, 16, 1125, "Length of a frame in lines."),
    sensor("COLOUR", "RED", 0x5180, 16, 0x0400, "Gain of red, 0x400 is 1."),
    sensor("COLOUR", "GREEN", 0x5182, 16, 0x0400, "Gain of green, 0x400 is 1."),
    sensor("COLOUR", "BLUE", 0x5184, 16, 0x0400, "Gain of blue, 0x400 is 1."),
    sensor("COLOUR", "SATURATION", 0x5188, 8, 0x40, "Saturation, 0x40 is 1."),
    sensor("COLOUR", "GAMMA", 0x518a, 8, 0x16, "Gamma in tenths."),
    sensor("STATUS", "FLAGS", 0x3560, 8, 0x00, "What happened since the last read. Reading clears it.", {
      ...readOnly, read_action: "clear",
      fields: [field("SATURATED", 0, 1, "A pixel was saturated.", readOnly),
               field("SYNC_LOST", 1, 1, "The synchronisation was lost.", readOnly)],
    }),
    sensor("STATUS", "FRAME_COUNT", 0x3562, 16, null, "Pictures since the stream began.", readOnly),
  ];
  for (let index = 0; index < 160; index++) {
    list.push(sensor("SHADING", `POINT${index}`, 0x5800 + index, 8, 0x80, `Lens shading at point ${index}.`));
  }
  return list;
}

function lensRegisters() {
  const lens = builder("lens.svd", LENS);
  return [
    lens("LENS", "POSITION", 0x03, 16, 0x0000, "Position of the lens.",
         { constraint: { kind: "range", minimum: 0, maximum: 1023 } }),
    lens("LENS", "MODE", 0x02, 8, 0x00, "How the lens moves.", {
      fields: [field("RING", 1, 1, "Control of the ringing."), field("PERIOD", 2, 6, "Period in steps of 0.1 ms.")],
    }),
  ];
}

export const registers = [...chipRegisters(), ...sensorRegisters(), ...lensRegisters()];

export const regions = [
  { name: "boot", first: 0x0, last: 0x0ffff, read_only: true, description: "Boot loader of the chip" },
  { name: "firmware", first: 0x10000, last: 0x7ffff, read_only: false, description: "Firmware of the chip" },
  { name: "tuning", first: 0x80000, last: 0xbffff, read_only: false, description: "Tuning tables of the sensor" },
  { name: "calibration", first: 0xf0000, last: 0xfbfff, read_only: false, description: "Calibration of this module" },
  { name: "config", first: 0xfc000, last: 0xfffff, read_only: false, description: "Serial number and settings" },
].map((region) => ({ ...region, size: region.last - region.first + 1 }));

export const presets = {
  indoor: { description: "Office light, 50 Hz", settings: { "EXPOSURE.EXPOSURE": 0x4000, "EXPOSURE.GAIN": 0x40 } },
  sun: { description: "Outdoors, bright", settings: { "EXPOSURE.EXPOSURE": 0x80, "EXPOSURE.GAIN": 0x10,
                                                      "COLOUR.SATURATION": 0x48 } },
  hdr: { description: "Two exposures for each picture", settings: { "SENSOR.MODE": 0x03, "EXPOSURE.EXPOSURE": 0x1000 } },
};
