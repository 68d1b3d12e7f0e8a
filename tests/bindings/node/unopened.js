'use strict';

// A camera that is listed but can't be opened: node unopened.js

const assert = require('node:assert/strict');

const koffi = require('koffi');

const {BorvanError, Camera} = require('borvanusb');

// Wine keeps frames of its own on the main stack. It takes every one at a lower address for a frame of the
// function that throws; koffi's calls have a stack of their own, at higher addresses. Windows has no such
// frames on x64. This ends their list, the first field of the thread's block.
function forgetFramesOfWine() {
  const ntdll = koffi.load('ntdll.dll');
  const query = ntdll.func(
    'int NtQueryInformationThread(intptr_t thread, int kind, _Out_ uint8_t* information, uint32_t size, ' +
    'void* written)');
  const information = Buffer.alloc(48);
  assert.equal(query(-2, 0, information, information.length, null), 0);
  koffi.encode(information.readBigUInt64LE(8), 'int64', -1n);
}

forgetFramesOfWine();
const camera = new Camera();
assert.throws(() => camera.select(0), (error) =>
  error instanceof BorvanError && error.kind === 'cannot-open' && /^select: ERROR: /.test(error.message));
camera.close();
console.log('ok a camera that can not be opened');
