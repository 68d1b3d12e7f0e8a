// A simulated camera: registers that store values, count or are cleared by reading, and a flash.
import { registers } from "./registers.mjs";

const FLASH_SIZE = 1 << 20;
export const SECTOR = 4096;

// Pseudo-random bytes, the same in each run.
export function noise(size, seed) {
  const bytes = Buffer.alloc(size);
  let state = seed >>> 0;
  for (let index = 0; index < size; index++) {
    state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
    bytes[index] = state >>> 24;
  }
  return bytes;
}

function firstFlash(seed) {
  const flash = Buffer.alloc(FLASH_SIZE, 0xff);
  noise(0x6000, seed).copy(flash, 0);
  flash.write("BOOT loader 1.4", 0x40);
  noise(0x4a300, seed + 1).copy(flash, 0x10000);
  flash.write("FIRMWARE 1.0", 0x10020);
  noise(0x9000, seed + 2).copy(flash, 0x80000);
  noise(0x200, seed + 3).copy(flash, 0xfc000);
  flash.write(`SERIAL ${1000 + seed}`, 0xfc010);
  return flash;
}

export class Camera {
  constructor(index, name, pid, profile) {
    this.index = index;
    this.name = name;
    this.vid = "1234";
    this.pid = pid;
    this.path = `\\\\?\\usb#vid_1234&pid_${pid}&mi_00#6&2a8c5f1&0&000${index}`;
    this.profile = profile;
    this.plugged = true;
    this.seed = index;
    this.job = null;
    this.reset();
  }

  reset() {
    this.values = new Map(registers.map((register) => [register.name, register.reset?.value ?? 0]));
    this.values.set("SYSTEM.EVENTS", 1);
    this.values.set("STATUS.FLAGS", 2);
    this.values.set("EXPOSURE.EXPOSURE", 0x800);
    this.values.set("COLOUR.RED", 0x048c);
    this.values.set("COLOUR.BLUE", 0x05a0);
    this.chip = noise(65536, 77 + this.seed);
    this.flash = firstFlash(this.seed);
    this.journal = null;
    this.waiting = []; // journals of other work
    this.reads = new Map();
    this.began = Date.now();
  }

  identity() {
    const { index, path, name, vid, pid } = this;
    return { index, path, name, vid, pid };
  }

  listed() {
    return { ...this.identity(), profile: this.profile, job: this.job?.id ?? null };
  }

  // Registers that change by themselves: measured values and counters.
  read(register) {
    const seconds = (Date.now() - this.began) / 1000;
    this.reads.set(register.name, (this.reads.get(register.name) ?? 0) + 1);
    const live = {
      "EXPOSURE.MEAN": () => Math.min(255, Math.round(20 + Math.sqrt(this.values.get("EXPOSURE.EXPOSURE")) +
        6 * Math.sin(seconds * 1.7))),
      "EXPOSURE.TEMPERATURE": () => Math.round(41 * 16 + 40 * Math.sin(seconds / 9) + 3 * Math.sin(seconds * 5)),
      "STATUS.FRAME_COUNT": () => Math.floor(seconds * 30) & 0xffff,
      "STREAM.FRAMES": () => Math.floor(seconds * 30),
      "STREAM.DROPPED": () => Math.floor(seconds / 20),
      "GPIO.INPUT": () => (Math.floor(seconds) % 4) << 4,
    }[register.name];
    const value = live ? live() : this.values.get(register.name);
    if (register.read_action === "clear") this.values.set(register.name, 0);
    return value;
  }

  write(register, value) {
    this.values.set(register.name, value);
  }
}

// Ranges of addresses in which a condition is true.
export function runs(size, step, holds) {
  const found = [];
  for (let address = 0; address < size; address += step) {
    if (!holds(address)) continue;
    const before = found.at(-1);
    if (before && before.last + 1 === address) before.last = address + step - 1;
    else found.push({ first: address, last: address + step - 1 });
  }
  return found;
}
