// The `flash` commands of the simulated cameras. Programming takes time, can be stopped, and leaves
// a journal if it is interrupted.
import crypto from "node:crypto";
import { runs, SECTOR } from "./camera.mjs";
import { regions } from "./registers.mjs";
import { Refused } from "./register_commands.mjs";

const wrong = (message, hint) => new Refused(1, "usage", message, hint);
const SIZE = 1 << 20;

function region(name) {
  const found = regions.find((each) => each.name === name);
  if (!found) throw wrong(`--region ${name}: no region has this name`);
  return found;
}

function option(words, name) {
  const at = words.indexOf(name);
  return at < 0 ? null : words[at + 1];
}

function plainWords(words, withValue) {
  return words.filter((word, at) => !word.startsWith("--") && !withValue.includes(words[at - 1]));
}

function parseRange(word) {
  const match = /^(0x[0-9a-f]+|\d+)([-+])(0x[0-9a-f]+|\d+)$/i.exec(word);
  if (!match) throw wrong(`${word} is no range`);
  const first = Number(match[1]);
  const last = match[2] === "+" ? first + Number(match[3]) - 1 : Number(match[3]);
  if (last >= SIZE) throw wrong(`${word} goes beyond the end of the flash, 0xfffff`);
  return { first, last };
}

// The data records of an Intel HEX file as pieces. Other files are raw.
function pieces(name, bytes, address) {
  if (!/\.hex$/i.test(name)) return [{ address: address ?? 0, bytes }];
  const list = [];
  let upper = 0;
  for (const line of bytes.toString().split(/\r?\n/).filter(Boolean)) {
    const record = Buffer.from(line.slice(1), "hex");
    if (line[0] !== ":" || record.reduce((sum, byte) => sum + byte, 0) % 256 !== 0) {
      throw new Refused(5, "file", `${name}: line ${list.length + 1}: the checksum is wrong`);
    }
    if (record[3] === 4) upper = record.readUInt16BE(4) * 65536;
    if (record[3] === 0) list.push({ address: upper + record.readUInt16BE(1), bytes: record.subarray(4, 4 + record[0]) });
  }
  return list;
}

function images(run, words) {
  const given = plainWords(words, ["--address", "--region", "--report", "--journal", "--backup", "--flash-size"]);
  const addressOption = option(words, "--address");
  const regionOption = option(words, "--region");
  const all = [];
  for (const word of given) {
    const [name, place] = word.split("@");
    const bytes = run.files.get(name);
    if (!bytes) throw new Refused(5, "file", `flash: can't read ${name}: it does not exist`);
    let address = addressOption === null ? null : Number(addressOption);
    const regionName = regionOption ?? (place?.startsWith("region:") ? place.slice(7) : null);
    if (regionName) {
      const target = region(regionName);
      if (run.words[1] === "program" && target.read_only) throw wrong(`the region ${regionName} is read-only`);
      if (bytes.length > target.size) {
        throw new Refused(5, "file",
          `${name} does not fit into the region ${regionName} (${hexRange(target.first, target.last)}) of ${target.size} bytes: `
          + `it would go to ${hexRange(target.first, target.first + bytes.length - 1)}`, "Check the file and the region.");
      }
      address = target.first;
    } else if (place) {
      address = Number(place);
    }
    all.push(...pieces(name, bytes, address));
  }
  if (all.some((piece) => piece.address + piece.bytes.length > SIZE)) {
    throw new Refused(5, "file", "the image goes beyond the end of the flash, 0xfffff");
  }
  return { name: given[0], size: run.files.get(given[0].split("@")[0]).length, pieces: all,
           sha256: crypto.createHash("sha256").update(run.files.get(given[0].split("@")[0])).digest("hex") };
}

function planOf(camera, image) {
  const wanted = Buffer.from(camera.flash);
  for (const piece of image.pieces) piece.bytes.copy(wanted, piece.address);
  const first = Math.min(...image.pieces.map((piece) => piece.address));
  const touched = new Set(image.pieces.flatMap((piece) => {
    const sectors = [];
    for (let at = piece.address - (piece.address % SECTOR); at < piece.address + piece.bytes.length; at += SECTOR) sectors.push(at);
    return sectors;
  }));
  const changed = runs(SIZE, SECTOR, (at) => touched.has(at)
    && !wanted.subarray(at, at + SECTOR).equals(camera.flash.subarray(at, at + SECTOR)));
  return { wanted, first, sectors: touched.size, changed };
}

const bytesOf = (ranges) => ranges.reduce((sum, range) => sum + range.last - range.first + 1, 0);

function result(run, image, plan, more) {
  const bytes = bytesOf(plan.changed);
  return {
    camera: run.camera.identity(), image: { file: image.name, size: image.size, sha256: image.sha256 },
    address: plan.first, flash_size: SIZE, dry_run: false, sectors: plan.sectors, changed: plan.changed,
    changed_bytes: bytes, transfers: Math.ceil(bytes / 19), expected_seconds: bytes / SECTOR * run.pace / 1000 * 1.2,
    backup: null, verified: null, state: "unchanged", written: [], unfinished: [], remaining: [], wrong: [],
    started: new Date().toISOString(), finished: new Date().toISOString(),
    seconds: { read: 0.1, program: 0, verify: 0, total: 0.1 }, result: "done", exit_code: 0, message: "", hint: "", ...more,
  };
}

async function steps(run, stage, ranges, each) {
  const sectors = ranges.flatMap((range) => {
    const list = [];
    for (let at = range.first; at < range.last; at += SECTOR) list.push(at);
    return list;
  });
  const total = sectors.length * SECTOR;
  const began = Date.now();
  for (let index = 0; index < sectors.length; index++) {
    if (run.stopped || !run.camera.plugged) return index;
    await each(sectors[index]);
    const done = (index + 1) * SECTOR;
    const rate = Math.round(done / Math.max(0.001, (Date.now() - began) / 1000));
    run.progress({ stage, done, total, unit: "bytes", percent: Math.floor(done * 100 / total), rate,
                   seconds_left: Math.round((total - done) / rate) });
  }
  return sectors.length;
}

const wait = (milliseconds) => new Promise((resolve) => { setTimeout(resolve, milliseconds); });

const journalFile = (number) => `C:\\Users\\station\\AppData\\Local\\BorvanUSB\\journals/borvanusb-1234-0001-b41ae10${number}-20261121T204428Z-0${number}.journal`;

// What the tool states of the journals that it finds.
function takeJournals(run, words) {
  const { journal, waiting } = run.camera;
  const work = ({ image, place, begun }) => `the unfinished flash program of ${image} at ${place}, started ${begun}`;
  if (journal) {
    run.messages.push(`${work(journal)}, was interrupted; the bytes beside it in ${journal.sector} come from ${journalFile(1)}`);
  }
  for (const each of waiting) {
    const file = journalFile(each.number);
    const given = option(words, "--journal");
    if (each.state === "waits") run.messages.push(`${work(each)}, stays unfinished; ${file} holds the bytes beside it in ${each.sector}`);
    if (each.state === "asks" && given === file) run.messages.push(`${work(each)}, was interrupted; the bytes beside it in ${each.sector} come from ${file}`);
    if (each.state === "asks" && given === null) {
      throw new Refused(5, "file", `${file} belongs to ${work(each)}, and it is unknown whether that was this camera: the rest of this flash is blank`,
        `If it was this camera, and nothing was programmed there since, add --journal ${file}: the bytes beside the image come from it.\n`
        + "Otherwise add --journal none: the sector keeps the bytes it holds, and the journal stays.");
    }
  }
}

async function program(run, words) {
  const image = images(run, words);
  const plan = planOf(run.camera, image);
  takeJournals(run, words);
  if (words.includes("--dry-run")) {
    return result(run, image, plan, { dry_run: true });
  }
  if (plan.changed.length === 0) return result(run, image, plan, { verified: true, state: "done" });
  const backup = `${image.name.replace(/\.\w+$/, "")}-backup-1234-${run.camera.pid}-0x${plan.first.toString(16).padStart(8, "0")}.bin`;
  run.files.set(backup, Buffer.from(run.camera.flash.subarray(plan.changed[0].first, plan.changed.at(-1).last + 1)));
  const began = Date.now();
  run.camera.journal = { image: image.name, begun: new Date().toISOString(), place: hexRange(plan.first, plan.first + image.size - 1),
                         sector: hexRange(plan.first, plan.first + SECTOR - 1) };
  const done = await steps(run, "program", plan.changed, async (sector) => {
    await wait(run.pace);
    plan.wanted.copy(run.camera.flash, sector, sector, sector + SECTOR);
  });
  const seconds = (Date.now() - began) / 1000;
  const all = bytesOf(plan.changed) / SECTOR;
  const times = { read: 0.1, program: seconds, verify: 0.1, total: seconds + 0.2 };
  if (done < all) {
    const edge = plan.changed[0].first + done * SECTOR;
    const cut = run.camera.plugged
      ? { kind: "stopped", code: 9, text: "stopped by the user" } : { kind: "device", code: 6, text: "the camera was removed" };
    throw Object.assign(new Refused(cut.code, cut.kind,
      `flash program: ${cut.text}; the flash is changed in part: ${hexRange(plan.changed[0].first, edge - 1)} is written; `
      + `${hexRange(edge, plan.changed.at(-1).last)} is as before`,
      `To continue: borvanusb ${run.words.join(" ")}\nTo go back: borvanusb flash program ${backup} --address 0x${plan.changed[0].first.toString(16)}`),
      { report: result(run, image, plan, { backup, state: "partial", seconds: times, result: cut.kind, exit_code: cut.code }) });
  }
  run.stopped = false;
  await steps(run, "verify", plan.changed, () => wait(run.pace / 10));
  run.camera.journal = null;
  return result(run, image, plan, { backup, verified: true, state: "done", written: plan.changed, seconds: times });
}

function hexRange(first, last) {
  return `0x${first.toString(16)}-0x${last.toString(16)}`;
}

function verify(run, words) {
  const image = images(run, words);
  const { wanted, first } = planOf(run.camera, image);
  const different = runs(SIZE, 1, (at) => wanted[at] !== run.camera.flash[at]);
  const answer = {
    camera: run.camera.identity(), image: { file: image.name, size: image.size, sha256: image.sha256 }, address: first,
    equal: different.length === 0, different_bytes: bytesOf(different), first_difference: different[0]?.first ?? null, different,
  };
  if (different.length > 0) run.exit = 7;
  return answer;
}

export async function flashCommand(run) {
  const [, verb, ...words] = run.words;
  const { camera } = run;
  if (verb === "program") return program(run, words);
  if (verb === "verify") return verify(run, words);
  if (verb === "map") {
    const isBlank = (at) => camera.flash.subarray(at, at + SECTOR).every((byte) => byte === 0xff);
    await steps(run, "read", [{ first: 0, last: SIZE - 1 }], () => wait(1));
    const blank = runs(SIZE, SECTOR, isBlank);
    const used = runs(SIZE, SECTOR, (at) => !isBlank(at));
    return { camera: camera.identity(), first: 0, last: SIZE - 1, sector_size: SECTOR, used, blank,
             used_bytes: bytesOf(used), blank_bytes: bytesOf(blank), regions: camera.profile ? regions : [] };
  }
  if (verb === "read") {
    const named = option(words, "--region");
    const [word, second] = plainWords(words, ["--region", "--flash-size"]);
    const range = named ? region(named) : word === "all" ? { first: 0, last: SIZE - 1 } : parseRange(word);
    const file = named ? word : second;
    run.files.set(file, Buffer.from(camera.flash.subarray(range.first, range.last + 1)));
    return { camera: camera.identity(), ...range, size: range.last - range.first + 1, file, form: "raw", sha256: "" };
  }
  if (verb === "erase") {
    const target = region(option(words, "--region"));
    if (target.read_only) throw wrong(`the region ${target.name} is read-only`);
    await steps(run, "erase", [target], async (sector) => {
      await wait(run.pace / 2);
      camera.flash.fill(0xff, sector, sector + SECTOR);
    });
    return { camera: camera.identity(), first: target.first, last: target.last, size: target.size, erased: [target],
             backup: null, verified: true, wrong: [] };
  }
  throw wrong(`flash ${verb} is no command`);
}
