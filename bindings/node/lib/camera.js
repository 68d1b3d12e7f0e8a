'use strict';

// The Camera: the instance of the library and the camera that it has selected.

const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');

const {
  checkFile, checkI2c, checkNumber, checkRange, checkRawFile, checkRun, checkSector, hex,
  kLargestI2cValue, notAllowed,
} = require('./arguments');
const {BorvanError} = require('./errors');
const functions = require('./functions');
const {Job, beforeJob, jobOptions, pending, statusError} = require('./job');
const {claimProcess} = require('./system');

// Widths of I2C accesses: bits of the register address, bits of the data.
const I2cMode = Object.freeze({
  address8Data8: 0,
  address16Data8: 1,
  address16Data16: 2,
  address32Data8: 3,
  address32Data16: 4,
  address32Data32: 5,
});

const kLargestAddress = 0xffffffff;

// State that exists once per process.
let camera = null;
let releaseProcess = null;

class Camera {
  #starting = false;

  // Creates the library's instance. While a job of a former Camera may still run, it takes over that
  // Camera's instance, so that wait() can wait for the job.
  constructor() {
    const busy = () => new BorvanError('busy', 'Camera: another Camera exists: close it first');
    if (camera !== null) {
      throw busy();
    }
    releaseProcess ??= claimProcess();
    if (releaseProcess === null) {
      throw busy();
    }
    if (pending.job?.ended) {
      pending.job = null;
    }
    if (pending.job === null) {
      const code = functions.UsbIniDevice();
      if (code < 0) {
        functions.UsbDestroyUSB();
        this.#release();
        throw statusError('Camera', code >>> 0);
      }
    }
    camera = this;
  }

  // Ends the instance, except while a job may run, because this makes a transfer.
  close() {
    if (camera !== this) {
      return;
    }
    camera = null;
    const job = pending.job;
    if (job === null) {
      functions.UsbDestroyUSB();
      this.#release();
    } else {
      job.end.then(() => camera === null && this.#release(), () => {});
    }
  }

  // The cameras that are plugged in now. Each call leaks the library's array.
  list() {
    this.#refuse('list', true);
    if (!functions.UsbUpdateDevice()) {
      throw new BorvanError('access', "list: the system's list of cameras can't be read");
    }
    return functions.UsbGetAllDeviceInfo().map(({path: device, name, vendorId, productId}, index) =>
      ({index, name, vid: vendorId, pid: productId, path: device}));
  }

  // Selects a camera of the list. One without a vendor unit is selected as well; then every access
  // fails.
  select(index) {
    this.#refuse('select');
    if (!Number.isInteger(index)) {
      throw notAllowed('select', `index ${index}`, 'an integer');
    }
    const isInt32 = index === (index | 0);
    const {selected, message} =
      isInt32 ? functions.borvan_select_device(index) : {selected: false, message: null};
    if (message !== null) {
      throw new BorvanError('cannot-open', `select: ${message}`);
    }
    if (!selected) {
      throw new BorvanError(
        'no-such-camera',
        `select: there is no camera with index ${index}: the list has ${functions.UsbGetDeviceNum()}`);
    }
  }

  readRegister(address, {wide = false} = {}) {
    const what = `readRegister(${hex(address)})`;
    this.#refuse(what);
    checkNumber(what, 'address', address);
    return this.#read(what, (value) => functions.UsbRegisterRead(address, value, wide ? 1 : 0));
  }

  writeRegister(address, value, {wide = false} = {}) {
    const what = `writeRegister(${hex(address)})`;
    this.#refuse(what);
    checkNumber(what, 'address', address);
    checkNumber(what, 'value', value, wide ? kLargestAddress : 0xff);
    this.#access(what, functions.UsbRegisterWrite(address, value, wide ? 1 : 0));
  }

  readI2c(slave, address, mode, {option = 0} = {}) {
    const what = `readI2c(${hex(address)})`;
    this.#refuse(what);
    checkI2c(what, slave, address, mode, option);
    return this.#read(what, (value) => functions.UsbI2cRead(slave, address, value, mode, option));
  }

  writeI2c(slave, address, value, mode, {option = 0} = {}) {
    const what = `writeI2c(${hex(address)})`;
    this.#refuse(what);
    checkI2c(what, slave, address, mode, option);
    checkNumber(what, 'value', value, kLargestI2cValue[mode]);
    this.#access(what, functions.UsbI2cWrite(slave, address, value, mode, option));
  }

  // The library reports a failed read as the value 0. So a 0 is confirmed by a dump of the four bytes.
  async readFlashWord(address, options) {
    const what = `readFlashWord(${hex(address)})`;
    this.#refuse(what);
    checkNumber(what, 'address', address, kLargestAddress - 3);
    const checked = jobOptions(what, options);
    const value = [0];
    this.#access(what, functions.UsbFlashRead(address, value));
    if (value[0] !== 0) {
      return value[0];
    }
    const bytes = await this.#dump(what, address, 4, checked);
    return bytes.readUInt32BE(0);
  }

  writeFlashWord(address, value) {
    const what = `writeFlashWord(${hex(address)})`;
    this.#refuse(what);
    checkNumber(what, 'address', address);
    checkNumber(what, 'value', value);
    this.#access(what, functions.UsbFlashWrite(address, value));
  }

  eraseFlashSector(address) {
    const what = `eraseFlashSector(${hex(address)})`;
    this.#refuse(what);
    checkSector(what, address);
    this.#access(what, functions.UsbFlashErase(address));
  }

  async readFlash(first, count, options) {
    const what = `readFlash(${hex(first)})`;
    this.#refuse(what);
    checkNumber(what, 'first', first);
    if (!Number.isInteger(count) || count < 1 || count > kLargestAddress + 1 - first) {
      throw notAllowed(what, `count ${count}`, `1 to ${kLargestAddress + 1 - first}`);
    }
    return this.#dump(what, first, count, jobOptions(what, options));
  }

  async readFlashFile(file, first, last, options) {
    const what = `readFlashFile(${file})`;
    this.#refuse(what);
    checkRawFile(what, file);
    checkRange(what, first, last);
    const job = this.#fileJob(what, file, last - first + 1);
    await this.#run(job, jobOptions(what, options),
                    () => functions.UsbFlashQuickReadFile(file, first, last));
  }

  async writeFlashFile(file, address, options) {
    const what = `writeFlashFile(${file})`;
    this.#refuse(what);
    checkFile(what, file);
    checkNumber(what, 'address', address);
    await this.#run(new Job(what), jobOptions(what, options),
                    () => functions.UsbFlashWriteFile(file, address));
  }

  async readRegistersFile(file, first, last, options) {
    const what = `readRegistersFile(${file})`;
    this.#refuse(what);
    checkRawFile(what, file);
    checkRun(what, first, last);
    if (first >>> 16 !== last >>> 16) {
      throw notAllowed(what, `last ${hex(last)}`, 'a register with the bits 16 to 31 of the first');
    }
    const job = this.#fileJob(what, file, last - first + 1);
    await this.#run(job, jobOptions(what, options),
                    () => functions.UsbRegisterReadFile(file, first, last));
  }

  async writeRegisterList(file, options) {
    const what = `writeRegisterList(${file})`;
    this.#refuse(what);
    checkFile(what, file);
    await this.#run(new Job(what, {isRegisterList: true}), jobOptions(what, options),
                    () => functions.UsbRegisterWriteFile(file));
  }

  // Of values wider than 8 bits the file has the low 8 bits.
  async readI2cFile(file, slave, mode, first, last, options) {
    const what = `readI2cFile(${file})`;
    this.#refuse(what);
    checkRawFile(what, file);
    checkI2c(what, slave, last, mode);
    checkRun(what, first, last);
    const job = this.#fileJob(what, file, last - first + 1);
    await this.#run(job, jobOptions(what, options),
                    () => functions.UsbI2CReadFile(first, last, file, slave, mode));
  }

  async writeI2cList(file, {option = 0, ...options} = {}) {
    const what = `writeI2cList(${file})`;
    this.#refuse(what);
    checkFile(what, file);
    checkNumber(what, 'option', option, 0xf);
    await this.#run(new Job(what), jobOptions(what, options),
                    () => functions.UsbI2CWriteFile(file, option));
  }

  // Waits again for a job whose call ended before the job did.
  async wait(options) {
    this.#refuse('wait', true);
    const checked = jobOptions('wait', options);
    await pending.job?.wait(checked);
  }

  #refuse(what, duringJob = false) {
    if (camera !== this) {
      throw new BorvanError('closed', `${what}: the camera object is closed`);
    }
    if (!duringJob && (this.#starting || pending.job !== null)) {
      throw new BorvanError('busy', `${what}: a job may still be running: wait for it with wait()`);
    }
  }

  #access(what, succeeded) {
    if (!succeeded) {
      throw new BorvanError(
        'access', `${what}: the access failed: no camera is open, or the camera refused a transfer`);
    }
  }

  // After a reply to another request, the call also returns true and does not change the value.
  #read(what, read) {
    for (const before of [0xa5a5a5a5, 0x5a5a5a5a]) {
      const value = [before];
      this.#access(what, read(value));
      if (value[0] !== before) {
        return value[0];
      }
    }
    throw new BorvanError('no-answer', `${what}: the camera did not answer the request`);
  }

  #fileJob(what, file, size) {
    return new Job(what, {file: file === '' ? null : path.resolve(file), size});
  }

  async #run(job, options, begin) {
    this.#starting = true;
    try {
      const before = await beforeJob();
      options.signal?.throwIfAborted();
      if (camera !== this) {
        throw new BorvanError('closed', `${job.what}: the camera object is closed`);
      }
      job.start(before, begin);
    } finally {
      this.#starting = false;
    }
    await job.wait(options);
  }

  // Flash through a temporary file, which is removed when the job has closed it.
  async #dump(what, first, count, options) {
    const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'borvanusb-'));
    const file = path.join(folder, 'dump.bin');
    const remove = () => fs.rmSync(folder, {recursive: true, force: true, maxRetries: 5});
    const job = this.#fileJob(what, file, count);
    try {
      await this.#run(job, options,
                      () => functions.UsbFlashQuickReadFile(file, first, first + count - 1));
      return fs.readFileSync(file);
    } finally {
      if (job.end === undefined || job.ended) {
        remove();
      } else {
        job.end.then(remove, () => {});
      }
    }
  }

  #release() {
    releaseProcess?.();
    releaseProcess = null;
  }
}

module.exports = {Camera, I2cMode};
