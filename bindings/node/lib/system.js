'use strict';

// What the binding needs of Windows: texts in the ANSI code page, whether a file is closed, and a
// mark that the process has a camera object.

const koffi = require('koffi');

const {BorvanError} = require('./errors');

const kernel32 = koffi.load('kernel32.dll');
const GetACP = kernel32.func('uint32_t GetACP()');
const MultiByteToWideChar = kernel32.func(
  'int MultiByteToWideChar(uint32_t page, uint32_t flags, const uint8_t* text, int size, ' +
  '_Out_ uint16_t* wide, int wide_size)');
const WideCharToMultiByte = kernel32.func(
  'int WideCharToMultiByte(uint32_t page, uint32_t flags, const char16_t* wide, int wide_size, ' +
  '_Out_ uint8_t* text, int size, const char* replacement, _Out_ int* replaced)');
const CreateFileW = kernel32.func(
  'intptr_t CreateFileW(const char16_t* name, uint32_t access, uint32_t share, void* security, ' +
  'uint32_t disposition, uint32_t flags, intptr_t sample)');
const GetFileSizeEx = kernel32.func('int GetFileSizeEx(intptr_t file, _Out_ int64_t* size)');
const CloseHandle = kernel32.func('int CloseHandle(intptr_t handle)');
const CreateMutexW = kernel32.func(
  'intptr_t CreateMutexW(void* security, int owner, const char16_t* name)');
const OpenMutexW = kernel32.func(
  'intptr_t OpenMutexW(uint32_t access, int inherit, const char16_t* name)');

const kAnsi = 0;
const kUtf8 = 65001;
const kNoBestFit = 0x400;
const kGenericRead = 0x80000000;
const kOpenExisting = 3;
const kSynchronize = 0x100000;

// A text in the library's encoding, with its terminating zero. A name that the code page can't express
// would become another name.
function toAnsi(what, text) {
  const refuse = (allowed) =>
    new BorvanError('argument', `${what}: file ${JSON.stringify(text)} is not allowed: ${allowed}`);
  if (typeof text !== 'string') {
    throw new BorvanError('argument', `${what}: file ${text} is not allowed: a text`);
  }
  if (text.includes('\0')) {
    throw refuse('a name without a zero character');
  }
  if (GetACP() === kUtf8) {
    return Buffer.from(`${text}\0`, 'utf8');
  }
  const bytes = Buffer.alloc(4 * text.length + 1);
  const replaced = [0];
  const size = WideCharToMultiByte(kAnsi, kNoBestFit, text, -1, bytes, bytes.length, null, replaced);
  if (size === 0 || replaced[0] !== 0) {
    throw refuse("characters of the system's ANSI code page");
  }
  return bytes.subarray(0, size);
}

// The text of a field of the library, up to its terminating zero if it has one.
function fromAnsi(field) {
  const end = field.indexOf(0);
  const bytes = Buffer.from(field.subarray(0, end < 0 ? field.length : end));
  if (bytes.length === 0) {
    return '';
  }
  const wide = new Uint16Array(bytes.length);
  const size = MultiByteToWideChar(kAnsi, 0, bytes, bytes.length, wide, wide.length);
  return String.fromCharCode(...wide.subarray(0, size));
}

// Whether a file has exactly this size and nobody has it open.
function isFileComplete(name, size) {
  const file = CreateFileW(name, kGenericRead, 0, null, kOpenExisting, 0, 0);
  if (BigInt.asIntN(64, BigInt(file)) === -1n) {
    return false;
  }
  const found = [0];
  const known = GetFileSizeEx(file, found) !== 0;
  CloseHandle(file);
  return known && Number(found[0]) === size;
}

// Marks the process, with all its worker threads, as having a camera object. Returns a function that
// takes the mark back; null when there is one already.
function claimProcess() {
  const name = `Local\\BorvanUSB-binding-${process.pid}`;
  const other = OpenMutexW(kSynchronize, 0, name);
  if (other) {
    CloseHandle(other);
    return null;
  }
  const mark = CreateMutexW(null, 0, name);
  return () => CloseHandle(mark);
}

module.exports = {claimProcess, fromAnsi, isFileComplete, toAnsi};
