'use strict';

// Runs the table of cases in the current folder: node cases.js cases.json. The folder holds the table's
// files. Prints a line for each case; fails when one does.

const assert = require('node:assert/strict');
const fs = require('node:fs');

const {BorvanError, Camera} = require('borvanusb');

const kNumbers = ['address', 'value', 'slave', 'option', 'first', 'last', 'count'];

function content({repeat, bytes, text}) {
  if (text !== undefined) {
    return Buffer.from(text, 'ascii');
  }
  return Buffer.alloc(bytes, Buffer.from(repeat, 'hex'));
}

// The arguments with their numbers as numbers.
function withNumbers(given) {
  const result = {...given};
  for (const name of kNumbers.filter((key) => key in result)) {
    result[name] = Number(result[name]);
  }
  return result;
}

// Each call by its name in the table.
const kCalls = {
  list: (camera) => camera.list(),
  select: (camera, {index}) => camera.select(index),
  close: (camera) => camera.close(),
  read_register: (camera, {address, wide}) => camera.readRegister(address, {wide}),
  write_register: (camera, {address, value, wide}) => camera.writeRegister(address, value, {wide}),
  read_i2c: (camera, {slave, address, mode, option}) => camera.readI2c(slave, address, mode, {option}),
  write_i2c: (camera, {slave, address, value, mode, option}) =>
    camera.writeI2c(slave, address, value, mode, {option}),
  read_flash_word: (camera, {address}, limit) => camera.readFlashWord(address, limit),
  write_flash_word: (camera, {address, value}) => camera.writeFlashWord(address, value),
  erase_flash_sector: (camera, {address}) => camera.eraseFlashSector(address),
  read_flash: (camera, {first, count}, limit) => camera.readFlash(first, count, limit),
  read_flash_file: (camera, {file, first, last}, limit) => camera.readFlashFile(file, first, last, limit),
  write_flash_file: (camera, {file, address}, limit) => camera.writeFlashFile(file, address, limit),
  read_registers_file: (camera, {file, first, last}, limit) =>
    camera.readRegistersFile(file, first, last, limit),
  write_register_list: (camera, {file}, limit) => camera.writeRegisterList(file, limit),
  read_i2c_file: (camera, {file, slave, mode, first, last}, limit) =>
    camera.readI2cFile(file, slave, mode, first, last, limit),
  write_i2c_list: (camera, {file, option}, limit) => camera.writeI2cList(file, {option, ...limit}),
  wait: (camera, given, limit) => camera.wait(limit),
};

function checkReturned(returned, expected) {
  if (Array.isArray(expected)) {
    assert.deepEqual(returned, expected);
  } else if (typeof expected === 'object') {
    assert.deepEqual(Buffer.from(returned), content(expected));
  } else {
    assert.equal(returned, Number(expected));
  }
}

async function runStep(camera, step) {
  const given = withNumbers(step.arguments ?? {});
  const limit = given.time_limit_ms === undefined ? {} : {timeLimitMs: given.time_limit_ms};
  let returned;
  let error = null;
  try {
    returned = await kCalls[step.call](camera, given, limit);
  } catch (thrown) {
    error = thrown;
  }
  if (step.error === undefined) {
    assert.equal(error, null, error?.stack);
  } else {
    assert(error instanceof BorvanError, `${step.call}: an error was expected, not ${error ?? returned}`);
    assert.equal(error.kind, step.error.kind, error.message);
    assert.equal(error.status, Number(step.error.status ?? error.status));
    assert(error.message.includes(step.error.text), error.message);
  }
  if (step.returns !== undefined) {
    checkReturned(returned, step.returns);
  }
  if (step.file_holds !== undefined) {
    assert.deepEqual(fs.readFileSync(given.file), content(step.file_holds));
  }
}

async function runCase({makes = [], steps}) {
  makes.forEach((file) => fs.writeFileSync(file.file, content(file)));
  const camera = new Camera();
  try {
    for (const step of steps) {
      await runStep(camera, step);
    }
  } finally {
    camera.close();
  }
}

async function main() {
  const {cases} = JSON.parse(fs.readFileSync(process.argv[2], 'utf8'));
  let failed = 0;
  for (const one of cases) {
    const started = Date.now();
    const error = await runCase(one).then(() => null, (thrown) => thrown);
    console.log(`${error === null ? 'ok' : 'FAILED'} ${one.name} (${Date.now() - started} ms)`);
    if (error !== null) {
      console.log(error.message);
      failed += 1;
    }
  }
  console.log(`${cases.length} cases, ${failed} failed`);
  process.exitCode = failed === 0 && cases.length > 0 ? 0 : 1;
}

main();
