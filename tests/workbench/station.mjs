#!/usr/bin/env node
// Virtual cameras and profiles that are like the simulated cameras, so that the same tests run against the program.
//
//   station.mjs FOLDER   writes cameras.json, flash files, maps and the profile into FOLDER, which exists
import fs from "node:fs";
import path from "node:path";
import { Camera } from "./mock/camera.mjs";
import { presets, regions, registers } from "./mock/registers.mjs";

export const profileName = "sample-module.camera.json";
// A sector takes this long, so that there is time to stop, unplug and look while the flash is programmed.
const ERASE_MS = 50;

const hex = (value) => `0x${value.toString(16)}`;
const escaped = (text) => text.replaceAll("&", "&amp;").replaceAll("<", "&lt;");

const simulated = [
  new Camera(0, "Front camera", "0001"), new Camera(1, "Rear camera", "0001"), new Camera(2, "Bench camera", "0002"),
];

function svdField(field) {
  const values = field.values.map(({ name, value, description }) =>
    `<enumeratedValue><name>${name}</name><description>${escaped(description)}</description><value>${value}</value></enumeratedValue>`);
  return `<field><name>${field.name}</name><description>${escaped(field.description)}</description>
<bitOffset>${field.offset}</bitOffset><bitWidth>${field.bits}</bitWidth><access>${field.access}</access>
${values.length > 0 ? `<enumeratedValues>${values.join("\n")}</enumeratedValues>` : ""}${constraint(field.constraint)}</field>`;
}

function constraint(rule) {
  if (!rule) return "";
  const inside = rule.kind === "enumerated" ? "<useEnumeratedValues>true</useEnumeratedValues>"
    : `<range><minimum>${rule.minimum}</minimum><maximum>${rule.maximum}</maximum></range>`;
  return `<writeConstraint>${inside}</writeConstraint>`;
}

function svdRegister(register) {
  const reset = register.reset ? `<resetValue>${hex(register.reset.value)}</resetValue>` : "<resetMask>0</resetMask>";
  const action = register.read_action ? `<readAction>${register.read_action}</readAction>` : "";
  const fields = register.fields.length > 0 ? `<fields>${register.fields.map(svdField).join("\n")}</fields>` : "";
  return `<register><name>${register.name.split(".")[1]}</name><description>${escaped(register.description)}</description>
<addressOffset>${hex(register.address)}</addressOffset><size>${register.bits}</size><access>${register.access}</access>
${reset}${constraint(register.constraint)}${action}${fields}</register>`;
}

function svd(map) {
  const own = registers.filter((register) => register.map === map);
  const peripherals = [...new Set(own.map((register) => register.peripheral))].map((name) =>
    `<peripheral><name>${name}</name><baseAddress>0</baseAddress><registers>
${own.filter((register) => register.peripheral === name).map(svdRegister).join("\n")}
</registers></peripheral>`);
  return `<?xml version="1.0" encoding="utf-8"?>
<device schemaVersion="1.3"><name>${path.basename(map, ".svd").toUpperCase()}</name><version>1.0</version>
<description>A made-up map</description><addressUnitBits>8</addressUnitBits><width>8</width><size>8</size>
<resetValue>0</resetValue><resetMask>0xFFFFFFFF</resetMask><peripherals>
${peripherals.join("\n")}
</peripherals></device>
`;
}

function profile() {
  return {
    name: "Sample module",
    cameras: [{ vid: "1234", pid: "0001" }],
    maps: [
      { file: "chip.svd", device: "chip", "byte-order": "low-first" },
      { file: "sensor.svd", device: "i2c", slave: "0x6c", mode: "16/8", "byte-order": "high-first" },
      { file: "lens.svd", device: "i2c", slave: "0x18", mode: "8/8", "byte-order": "high-first" },
    ],
    flash: {
      size: "1M",
      regions: regions.map((region) => ({
        name: region.name, range: `${hex(region.first)}-${hex(region.last)}`, "read-only": region.read_only,
        description: region.description,
      })),
      "image-region": "firmware",
    },
    presets: Object.entries(presets).map(([name, { description, settings }]) => ({
      name, description, settings: Object.entries(settings).map(([key, value]) => `${key}=${hex(value)}`),
    })),
  };
}

// The bytes that registers of a kind of device have after power was switched on.
function bytesOf(camera, kind, slave) {
  const bytes = {};
  for (const register of registers) {
    if (register.device.kind !== kind || (kind === "i2c" && register.device.slave !== slave)) continue;
    const count = Math.ceil(register.bits / 8);
    for (let index = 0; index < count; index++) {
      const shift = 8 * (kind === "chip" ? index : count - 1 - index);
      bytes[hex(register.address + index)] = Number((BigInt(camera.values.get(register.name)) >> BigInt(shift)) & 255n);
    }
  }
  return bytes;
}

const flashName = (camera) => `camera${camera.index}.flash`;

// What a test may have changed that is not in the registers: flashes and the profile.
export function writeContent(folder) {
  for (const camera of simulated) fs.writeFileSync(path.join(folder, flashName(camera)), camera.flash);
  fs.writeFileSync(path.join(folder, profileName), JSON.stringify(profile(), null, 2) + "\n");
}

export function writeStation(folder) {
  for (const map of new Set(registers.map((register) => register.map))) fs.writeFileSync(path.join(folder, map), svd(map));
  const cameras = simulated.map((camera) => ({
    path: `${camera.path}#{65e8773d-8f56-11d0-a3b9-00a0c9223196}\\global`,
    name: camera.name,
    flash: { size: "1M", file: flashName(camera), erase_ms: ERASE_MS },
    registers: { "0x1a3": "0x20", ...bytesOf(camera, "chip") },
    sensors: [
      { slave: "0x6c", mode: 1, registers: bytesOf(camera, "i2c", 0x6c) },
      { slave: "0x18", mode: 0, registers: bytesOf(camera, "i2c", 0x18) },
    ],
  }));
  fs.writeFileSync(path.join(folder, "cameras.json"), JSON.stringify({ cameras }, null, 2) + "\n");
  writeContent(folder);
}

if (process.argv[1] && fs.realpathSync(process.argv[1]) === fs.realpathSync(new URL(import.meta.url).pathname)) {
  writeStation(process.argv[2]);
}
