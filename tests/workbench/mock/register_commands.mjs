// The commands `reg`, `i2c` and `preset` of the simulated cameras.
import { presets, registers } from "./registers.mjs";

export class Refused extends Error {
  constructor(code, kind, message, hint = "") {
    super(message);
    this.failure = { code, kind, message, hint };
  }
}

const wrong = (message, hint) => new Refused(1, "usage", message, hint);
const byName = new Map(registers.map((register) => [register.name, register]));

function hex(value, bits) {
  return "0x" + BigInt(value).toString(16).padStart(Math.ceil(bits / 4), "0");
}

function part(value, field) {
  return Number((BigInt(value) >> BigInt(field.offset)) & ((1n << BigInt(field.bits)) - 1n));
}

function meaning(field, value) {
  return field.values.find((entry) => entry.value === value)?.name ?? null;
}

function described(camera, register) {
  const value = camera.read(register);
  return {
    address: register.address, value, name: register.name, hex: hex(value, register.bits), device: register.device,
    fields: register.fields.map((field) => {
      const fieldValue = part(value, field);
      return { name: field.name, value: fieldValue, meaning: meaning(field, fieldValue) };
    }),
  };
}

function found(word) {
  const pattern = new RegExp("^" + word.replace(/[.]/g, "\\.").replace(/\*/g, "[^.]*") + "$");
  return registers.filter((register) => pattern.test(register.name) || pattern.test(register.name.split(".")[1]));
}

// The numbers of a word such as 0x100, 0x100-0x1ff or 0x100+16; null for a name.
function numbers(word) {
  const match = /^(0x[0-9a-f]+|\d+)(?:([-+])(0x[0-9a-f]+|\d+))?$/i.exec(word);
  if (!match) return null;
  const first = Number(match[1]);
  if (match[2] === "+") return { first, last: first + Number(match[3]) - 1 };
  return { first, last: match[2] ? Number(match[3]) : first };
}

export function readWords(camera, words) {
  const read = [];
  for (const word of words) {
    const range = numbers(word);
    if (range) {
      for (let address = range.first; address <= range.last; address++) {
        read.push({ address, value: camera.chip[address] });
      }
      continue;
    }
    const matching = found(word);
    if (matching.length === 0) {
      throw wrong(`reg read: ${word}: no register has this name`, "borvanusb reg find shows all names.");
    }
    read.push(...matching.map((register) => described(camera, register)));
  }
  return { wide: false, checked: true, registers: read };
}

const option = (words, name) => (words.includes(name) ? words[words.indexOf(name) + 1] : null);

// A line of `reg read` or `i2c read`.
export function readLine(camera, line) {
  const [room, , ...words] = line;
  const plain = words.filter((word, at) => !word.startsWith("--") && !(words[at - 1]?.startsWith("--") && words[at - 1] !== "--wide"));
  if (room === "reg" && !words.includes("--wide")) return readWords(camera, plain);
  const bits = room === "i2c" ? Number((option(words, "--mode") ?? "16/8").split("/")[1]) : 32;
  const { first, last } = numbers(plain[0]);
  if (room === "i2c" && option(words, "--slave") === "0x00") throw new Refused(6, "device", "i2c read: slave 0x00 does not answer");
  if (last > 0xffff) throw wrong(`${room} read: ${plain[0]} goes beyond 0xffff`);
  const read = [];
  for (let address = first; address <= last; address++) {
    const bytes = Array.from({ length: bits / 8 }, (_, at) => camera.chip[(address + at) & 0xffff]);
    read.push({ address, value: bytes.reduceRight((sum, byte) => sum * 256 + byte, 0) });
  }
  return { wide: room === "reg", checked: true, registers: read };
}

function writeOne(camera, name, text) {
  let register = byName.get(name);
  let field = null;
  if (!register) {
    register = byName.get(name.split(".").slice(0, -1).join("."));
    field = register?.fields.find((each) => each.name === name.split(".").at(-1));
    if (!field) throw wrong(`reg write: ${name}: no register or field has this name`);
  }
  if (register.access === "read-only") throw wrong(`reg write: ${name} is read-only`);
  const value = Number(text);
  const limits = (field ?? register).constraint;
  if (limits?.kind === "range" && (value < limits.minimum || value > limits.maximum)) {
    throw wrong(`reg write: ${name}: allowed are ${limits.minimum} to ${limits.maximum}`);
  }
  const before = camera.values.get(register.name);
  let after = value;
  if (field) {
    const mask = ((1n << BigInt(field.bits)) - 1n) << BigInt(field.offset);
    after = Number((BigInt(before) & ~mask) | (BigInt(value) << BigInt(field.offset)));
  }
  camera.write(register, after);
  return { name: register.name, address: register.address, device: register.device, before, value: after, verified: true };
}

function write(camera, words) {
  const settings = words.filter((word) => !word.startsWith("--"));
  if (!settings[0].includes("=")) {
    const address = Number(settings[0]);
    const before = camera.chip[address];
    camera.chip[address] = Number(settings[1]);
    return { wide: false, address, before, value: Number(settings[1]), verified: true };
  }
  return { writes: settings.map((word) => writeOne(camera, ...word.split("="))) };
}

// One side of a comparison, as values by name.
function side(run, word) {
  const all = (camera) => new Map(registers.filter((register) => register.access !== "write-only"
    && !register.read_action).map((register) => [register.name, camera.read(register)]));
  if (word === "camera") return all(run.camera);
  if (word.startsWith("camera:")) return all(run.find(word.slice(7)));
  if (word === "reset") {
    return new Map(registers.filter((register) => register.reset).map((register) => [register.name, register.reset.value]));
  }
  if (word.startsWith("preset:")) {
    const preset = presets[word.slice(7)];
    if (!preset) throw wrong(`${word}: no preset has this name`);
    return new Map(Object.entries(preset.settings));
  }
  const file = run.files.get(word);
  if (!file) throw new Refused(5, "file", `reg diff: can't read ${word}: it does not exist`);
  const lines = file.toString().split(/\r?\n/).map((line) => /^\s*([\w.]+)\s*[=,]\s*(0x[0-9a-f]+|\d+)/i.exec(line));
  const values = new Map();
  for (const line of lines.filter(Boolean)) {
    const register = byName.get(line[1]) ?? registers.find((each) => each.address === Number(line[1]));
    if (register) values.set(register.name, Number(line[2]));
  }
  if (values.size === 0) throw new Refused(5, "file", `${word} is no list of registers`);
  return values;
}

function diff(run, left, right) {
  const values = [side(run, left), side(run, right)];
  const isWhole = (word) => word === "reset" || word.startsWith("camera");
  const differences = [];
  for (const register of registers) {
    const [a, b] = values.map((each) => each.get(register.name) ?? null);
    if (a === b || (a === null && !isWhole(right)) || (b === null && !isWhole(left))) continue;
    if ((a === null || b === null) && !(isWhole(left) && isWhole(right))) continue;
    if (a === null || b === null) continue;
    differences.push({
      address: register.address, left: a, right: b, name: register.name, device: register.device,
      fields: register.fields.filter((field) => part(a, field) !== part(b, field)).map((field) => ({
        name: field.name, left: part(a, field), right: part(b, field),
        left_meaning: meaning(field, part(a, field)), right_meaning: meaning(field, part(b, field)),
      })),
    });
  }
  return { left, right, equal: differences.length === 0, differences };
}

function settingsText(values) {
  return [...values].map(([name, value]) => `${name} = 0x${value.toString(16)}`).join("\n") + "\n";
}

export function registerCommand(run) {
  const [room, verb, ...words] = run.words;
  if (room === "preset") {
    const [name, ...what] = words;
    if (verb !== "save" && !presets[name]) throw wrong(`preset ${verb}: ${name}: no preset has this name`);
    if (verb === "diff") return diff(run, presets[name] && `preset:${name}`, "camera");
    if (verb === "apply") {
      const writes = Object.entries(presets[name].settings).map(([key, value]) => writeOne(run.camera, key, value));
      return { preset: name, writes };
    }
    const names = what.flatMap(found).filter((register) => register.access === "read-write").map((register) => register.name);
    const values = names.map((key) => [key, run.camera.values.get(key)]);
    presets[name] = { description: "", settings: Object.fromEntries(values) };
    return { preset: name, profile: "sample-module.camera.json", settings: values.map(([key, value]) => `${key}=${value}`) };
  }
  switch (verb) {
    case "find": {
      if (!run.camera.profile) throw wrong("reg find: this camera has no profile", "Give one with --profile FILE.");
      return { registers };
    }
    case "read": return readLine(run.camera, run.words);
    case "write": return write(run.camera, words);
    case "dump": {
      const values = side(run, "camera");
      run.files.set(words.at(-1), Buffer.from(settingsText(values)));
      return { file: words.at(-1), form: "list" };
    }
    case "diff": return diff(run, words[0], words[1]);
    default: throw wrong(`${room} ${verb} is no command`);
  }
}
