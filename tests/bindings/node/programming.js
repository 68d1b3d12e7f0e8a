'use strict';

// programFlash on the camera that node_test.py plugs in. Prints a line for each check; fails when one
// does. Usage: node programming.js IMAGE, a file that differs from the flash in many sectors.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');

const {BorvanError, ProgramError, programFlash} = require('borvanusb');

const image = process.argv[2];
const options = {address: 0x810, flashSize: '1M'};
const fails = (exitCode, exitKind) => (error) =>
  error instanceof ProgramError && error instanceof BorvanError && error.kind === 'program' &&
  error.exitCode === exitCode && error.exitKind === exitKind && error.message.startsWith('programFlash: ');

const kChecks = {
  'a dry run changes nothing': async () => {
    const result = await programFlash(image, {...options, dryRun: true});
    assert.equal(result.dryRun, true);
    assert.equal(result.state, 'unchanged');
    assert.equal(result.address, 0x810);
    assert.equal(result.flashSize, 1048576);
    assert(result.changedBytes >= 4096 * 100);
    assert.equal(result.backup, null);
  },

  'failures of the tool': async () => {
    await assert.rejects(programFlash(image, {...options, camera: '9999:9999'}), fails(2, 'no-camera'));
    await assert.rejects(programFlash('missing.bin', options), fails(5, 'file'));
    await assert.rejects(programFlash(image, {...options, timeoutSeconds: 0}), fails(1, 'usage'));
    await assert.rejects(programFlash(image, {...options, address: 0xff000}), fails(5, 'file'));
    await assert.rejects(programFlash('-image.bin', options), fails(5, 'file'));
  },

  'arguments that can not be meant': async () => {
    for (const wrong of [undefined, '', 7]) {
      await assert.rejects(programFlash(wrong), (error) => error.kind === 'argument');
    }
  },

  'a signal that was aborted before': async () => {
    const signal = AbortSignal.abort(new Error('not today'));
    await assert.rejects(programFlash(image, {...options, signal}), /not today/);
  },

  'an abort stops the tool at a safe place': async () => {
    const stop = new AbortController();
    const reason = new Error('enough');
    const remarks = [];
    const programming = programFlash(image, {
      ...options,
      signal: stop.signal,
      onRemark: (line) => remarks.push(line),
      onProgress: ({stage, done}) => {
        if (stage !== 'read' && done > 0) {
          stop.abort(reason);
        }
      },
    });
    await assert.rejects(programming, (error) => {
      assert(fails(9, 'stopped')(error), error.stack);
      assert.match(error.hint, /borvanusb flash program/);
      assert.equal(error.cause, reason);
      return true;
    });
    assert.match(remarks.join('\n'), /stopping at the next safe place/);
  },

  'the same call again continues, with progress': async () => {
    const seen = [];
    const result = await programFlash(image, {...options, onProgress: (one) => seen.push(one)});
    assert.equal(result.result, 'done');
    assert.equal(result.state, 'done');
    assert.equal(result.verified, true);
    assert.equal(result.exitCode, 0);
    assert.equal(result.camera.vid, '1234');
    assert.equal(result.image.size, fs.statSync(image).size);
    assert(fs.existsSync(result.backup), result.backup);
    assert.deepEqual(Object.keys(seen[0]).sort(),
                     ['done', 'percent', 'rate', 'secondsLeft', 'stage', 'total', 'unit']);
    assert(seen.some(({stage}) => stage === 'program'), JSON.stringify(seen));
    assert.equal(seen.at(-1).stage, 'verify');
    assert.equal(seen.at(-1).percent, 100);
  },

  'nothing to change': async () => {
    const result = await programFlash(image, {...options, backup: false});
    assert.deepEqual(result.changed, []);
    assert.equal(result.changedBytes, 0);
  },

  'an error of a callback comes after the work': async () => {
    const onProgress = () => { throw new RangeError('of the caller'); };
    await assert.rejects(programFlash(image, {...options, onProgress}), /of the caller/);
  },

  'a program that is missing': async () => {
    const native = path.join(path.dirname(require.resolve('borvanusb')), 'native');
    fs.renameSync(path.join(native, 'borvanusb.exe'), path.join(native, 'elsewhere.exe'));
    try {
      await assert.rejects(programFlash(image, options), (error) => error.kind === 'process');
    } finally {
      fs.renameSync(path.join(native, 'elsewhere.exe'), path.join(native, 'borvanusb.exe'));
    }
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
