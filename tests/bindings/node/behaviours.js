'use strict';

// What the table of cases does not cover, on the cameras that promises.py plugs in. Prints a line for
// each check; fails when one does. Usage: node behaviours.js STATUS_TEXTS
// Each line of STATUS_TEXTS: a code, a tab, the text.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const {setTimeout: sleep} = require('node:timers/promises');
const {Worker} = require('node:worker_threads');

const {BorvanError, Camera, functions, progressState, statusText} = require('borvanusb');

const kGood = 0;
const kSlow = 1;

const kinds = (kind) => (error) => error instanceof BorvanError && error.kind === kind;

async function withCamera(index, use) {
  const camera = new Camera();
  try {
    camera.select(index);
    return await use(camera);
  } finally {
    camera.close();
  }
}

const kChecks = {
  'each function of the library has its name': () => {
    assert.deepEqual(Object.keys(functions).sort(), [
      'GetProgressInfo', 'UsbDestroyUSB', 'UsbFlashErase', 'UsbFlashQuickReadFile', 'UsbFlashRead',
      'UsbFlashWrite', 'UsbFlashWriteFile', 'UsbGetAllDeviceInfo', 'UsbGetDeviceNum',
      'UsbGetSelectDeviceInfo', 'UsbI2CReadFile', 'UsbI2CWriteFile', 'UsbI2cRead', 'UsbI2cWrite',
      'UsbIniDevice', 'UsbRegisterRead', 'UsbRegisterReadFile', 'UsbRegisterWrite',
      'UsbRegisterWriteFile', 'UsbSelectDevice', 'UsbUpdateDevice', 'borvan_select_device',
    ]);
  },

  'status codes have the texts of the header': () => {
    const texts = fs.readFileSync(process.argv[2], 'utf8').trimEnd().split(/\r?\n/).map((line) => line.split('\t'));
    assert(texts.length > 30);
    texts.forEach(([status, text]) => assert.equal(statusText(Number(status)), text, status));
    assert.equal(statusText(0x80001234), "error code of the system or of the camera's driver");
    assert.equal(statusText(5), 'no failure: a positive status');
  },

  'values of GetProgressInfo': () => {
    assert.deepEqual(progressState(0n), {state: 'running', percent: 0, status: 0});
    assert.deepEqual(progressState(99n), {state: 'running', percent: 99, status: 0});
    assert.deepEqual(progressState(100n), {state: 'done', percent: 100, status: 0});
    assert.deepEqual(progressState(0xe000000a00000000n),
                     {state: 'failed', percent: 0, status: 0xe000000a});
    assert.deepEqual(progressState(0x0000000b00000000n), {state: 'notice', percent: 0, status: 11});
    assert.deepEqual(progressState(0xe000000a00000064n),
                     {state: 'running', percent: 0, status: 0xe000000a});
  },

  'the functions as they are': () => {
    assert.equal(functions.UsbRegisterRead(0x100, [7], 0), false); // no instance
    assert.equal(functions.GetProgressInfo(), 0n);
    assert([0, 1].includes(functions.UsbIniDevice()));
    assert.equal(functions.UsbUpdateDevice(), true);
    assert.equal(functions.UsbGetDeviceNum(), 2);
    assert.equal(functions.UsbSelectDevice(9), false);
    assert.deepEqual(functions.borvan_select_device(9), {selected: false, message: null});
    assert.equal(functions.UsbSelectDevice(kGood), true);
    const selected = functions.UsbGetSelectDeviceInfo();
    assert.equal(selected.vendorId, '1234');
    assert.equal(selected.productId, '0000');
    assert.deepEqual(functions.UsbGetAllDeviceInfo()[0], selected);
    const value = [7];
    assert.equal(functions.UsbRegisterRead(0x100, value, 0), true);
    assert.deepEqual(value, [0x11]);
    assert.equal(functions.UsbRegisterRead(0x100, null, 0), true);
    assert.equal(functions.UsbRegisterWrite(0x8000, 0xdeadbeef, 1), true);
    assert.equal(functions.UsbRegisterRead(0x8000, value, 1), true);
    assert.deepEqual(value, [0xdeadbeef]);
    assert.equal(functions.UsbI2cRead(0x6c, 0x300a, value, 1, 0), true);
    assert.deepEqual(value, [0x56]);
    assert.equal(functions.UsbI2cWrite(0x6c, 0x300a, 0x57, 1, 0), true);
    assert.equal(functions.UsbFlashErase(0x1000), true);
    assert.equal(functions.UsbFlashWrite(0x1000, 0xcafef00d), true);
    assert.equal(functions.UsbFlashRead(0x1000, value), true);
    assert.deepEqual(value, [0xcafef00d]);
    for (const name of [null, '', 'missing.bin']) {
      assert.equal(functions.UsbFlashWriteFile(name, 0), false);
    }
    assert.equal(functions.UsbFlashQuickReadFile('', 0, 3), false);
    assert.equal(functions.UsbRegisterReadFile('', 0, 3), false);
    assert.equal(functions.UsbRegisterWriteFile('missing.txt'), false);
    assert.equal(functions.UsbI2CReadFile(0, 3, '', 0x6c, 1), false);
    assert.equal(functions.UsbI2CWriteFile('missing.txt', 0), false);
    assert.equal(functions.GetProgressInfo(), 0xe000000a00000000n);
    assert.equal(functions.UsbDestroyUSB(), true);
  },

  'names of other languages, and one that fills its field': async () => {
    const camera = new Camera();
    const [good, slow] = camera.list();
    assert.equal(good.name, 'Kamera für Prüfung');
    assert.equal(slow.name, 'n'.repeat(120));
    camera.close();
  },

  'one Camera in a process, over all threads': async () => {
    const camera = new Camera();
    const other = () => new Promise((resolve, reject) => {
      const code = `const {Camera} = require(${JSON.stringify(require.resolve('borvanusb'))}); let kind = 'none'; ` +
        "try { new Camera().close(); } catch (error) { kind = error.kind; } " +
        "require('node:worker_threads').parentPort.postMessage(kind);";
      new Worker(code, {eval: true}).on('message', resolve).on('error', reject);
    });
    assert.throws(() => new Camera(), kinds('busy'));
    assert.equal(await other(), 'busy');
    camera.close();
    camera.close();
    assert.equal(await other(), 'none');
    new Camera().close();
  },

  'file names beyond ASCII': () => withCamera(kGood, async (camera) => {
    await camera.readFlashFile('prüfung.bin', 0x1000, 0x10ff);
    assert.deepEqual([...fs.readFileSync('prüfung.bin').subarray(0, 4)], [0xca, 0xfe, 0xf0, 0x0d]);
    // Code page 1252 could make "Lódz.bin" of the second.
    for (const name of ['日本.bin', 'Łódź.bin', 'a\0b.bin', 7]) {
      await assert.rejects(camera.readFlashFile(name, 0, 255, {timeLimitMs: 5000}), kinds('argument'));
    }
    assert(!fs.readdirSync('.').some((name) => name.startsWith('L')));
    assert.equal(camera.readRegister(0x100), 0x11); // nothing was started
  }),

  'arguments that the library would use in part': () => withCamera(kGood, async (camera) => {
    for (const wrong of [-1, 2 ** 32, 1.5, NaN, '1', undefined]) {
      assert.throws(() => camera.readRegister(wrong), kinds('argument'));
      await assert.rejects(camera.readFlash(wrong, 1), kinds('argument'));
      assert.throws(() => camera.select(wrong), wrong === -1 || wrong === 2 ** 32
        ? kinds('no-such-camera') : kinds('argument'));
    }
    assert.throws(() => camera.readI2c(0x100, 0, 0), kinds('argument'));
    assert.throws(() => camera.readI2c(0x6c, 0x100, 0), kinds('argument'));
    assert.throws(() => camera.writeI2c(0x6c, 0, 0x100, 1), kinds('argument'));
    await assert.rejects(camera.readFlash(0xffffffff, 2), kinds('argument'));
    await assert.rejects(camera.readFlash(0, 1, {timeLimitMs: -1}), kinds('argument'));
    await assert.rejects(camera.readRegistersFile('run.bin', 0xffff, 0x10000), kinds('argument'));
    await assert.rejects(camera.writeI2cList('list.txt', {option: 16}), kinds('argument'));
  }),

  'progress rises to 100': () => withCamera(kGood, async (camera) => {
    const percents = [];
    await camera.readFlash(0, 0x10000, {onProgress: (percent) => percents.push(percent)});
    assert.equal(percents.at(-1), 100);
    assert.deepEqual(percents, [...new Set(percents)].sort((a, b) => a - b));
  }),

  'a job after one whose 100 is still shown, and after one that failed alike': () =>
    withCamera(kGood, async (camera) => {
      fs.writeFileSync('list.txt', '0xfffd,0x00,\n0xfffe,0x00,\n0x0200,0x5a,\n');
      await camera.writeRegisterList('list.txt', {timeLimitMs: 8000});
      fs.writeFileSync('list.txt', '0xfffd,0x00,\n0xfffe,0x00,\n0x0200,0xa5,\n');
      const started = performance.now();
      await camera.writeRegisterList('list.txt', {timeLimitMs: 8000});
      assert.equal(camera.readRegister(0x200), 0xa5);
      // The library clears a 100 after three seconds, and would clear the end of the second job with it.
      assert(performance.now() - started > 2000);
      for (let i = 0; i < 2; i += 1) {
        await assert.rejects(camera.readFlashFile('none.bin', 16, 15, {timeLimitMs: 8000}),
                             (error) => kinds('status')(error) && error.status === 0xe0000004);
      }
    }),

  'a call that writes a file returns when nobody has the file open': () =>
    withCamera(kGood, async (camera) => {
      fs.writeFileSync('held.bin', '');
      const held = fs.openSync('held.bin', 'r');
      const dump = camera.readFlashFile('held.bin', 0x1000, 0x10ff, {timeLimitMs: 20000});
      assert.equal(await Promise.race([dump, sleep(1500, 'held')]), 'held');
      assert.equal(fs.fstatSync(held).size, 256);
      fs.closeSync(held);
      await dump;
    }),

  'an aborted wait leaves the job to wait()': () => withCamera(kSlow, async (camera) => {
    const stop = new AbortController();
    setTimeout(() => stop.abort(new Error('enough')), 60);
    const dump = camera.readFlash(0, 50, {signal: stop.signal});
    assert.throws(() => camera.readRegister(0x100), kinds('busy'));
    await assert.rejects(dump, /enough/);
    assert.throws(() => camera.readRegister(0x100), kinds('busy'));
    await assert.rejects(camera.wait({timeLimitMs: 1}), kinds('time-limit'));
    assert.equal(camera.list().length, 2);
    await camera.wait();
    assert.equal(camera.readRegister(0x100), 0x11);
    await assert.rejects(camera.readFlash(0, 50, {signal: stop.signal}), /enough/);
  }),

  'an error of the progress function ends the wait': () => withCamera(kSlow, async (camera) => {
    const onProgress = () => { throw new RangeError('of the caller'); };
    await assert.rejects(camera.readFlash(0, 50, {onProgress}), /of the caller/);
    await camera.wait();
  }),

  'a job outlives its Camera, and blocks the next one': async () => {
    const first = new Camera();
    first.select(kSlow);
    const dump = first.readFlash(0, 50);
    await new Promise((resolve) => { setTimeout(resolve, 50); });
    first.close();
    assert.throws(() => first.list(), kinds('closed'));
    const second = new Camera();
    assert.throws(() => second.select(kGood), kinds('busy'));
    await second.wait();
    assert.equal((await dump).length, 50);
    second.select(kGood);
    second.close();
  },
};

async function main() {
  let failed = 0;
  for (const [name, check] of Object.entries(kChecks)) {
    try {
      await check();
      console.log(`ok ${name}`);
    } catch (error) {
      failed += 1;
      console.log(`FAILED ${name}\n${error.stack}`);
    }
  }
  process.exitCode = failed === 0 ? 0 : 1;
}

main();
