'use strict';

// Checks of arguments. The library would use a part of a value that does not fit.

const {BorvanError} = require('./errors');
const {toAnsi} = require('./system');

const kLargest = 0xffffffff;
const kRegistersPerJob = 56;
const kSector = 4096;
// Of the width modes 0 to 5.
const kLargestI2cAddress = [0xff, 0xffff, 0xffff, kLargest, kLargest, kLargest];
const kLargestI2cValue = [0xff, 0xff, 0xffff, 0xff, 0xffff, kLargest];

const hex = (number) => (Number.isInteger(number) && number >= 0 ? `0x${number.toString(16)}` : String(number));

function notAllowed(what, wrong, allowed) {
  return new BorvanError('argument', `${what}: ${wrong} is not allowed: ${allowed}`);
}

// An integer of 0 to `largest`.
function checkNumber(what, name, value, largest = kLargest) {
  if (!Number.isInteger(value) || value < 0 || value > largest) {
    throw notAllowed(what, `${name} ${hex(value)}`, `0 to ${hex(largest)}`);
  }
}

function checkRange(what, first, last) {
  checkNumber(what, 'first', first);
  checkNumber(what, 'last', last);
}

function checkSector(what, address) {
  checkNumber(what, 'address', address);
  if (address % kSector !== 0) {
    throw notAllowed(what, `address ${hex(address)}`, `a multiple of ${kSector}`);
  }
}

function checkMode(what, mode) {
  if (!Number.isInteger(mode) || mode < 0 || mode > 5) {
    throw notAllowed(what, `mode ${mode}`, '0 to 5');
  }
}

function checkI2c(what, slave, address, mode, option = 0) {
  checkNumber(what, 'slave', slave, 0xff);
  checkMode(what, mode);
  checkNumber(what, 'address', address, kLargestI2cAddress[mode]);
  checkNumber(what, 'option', option, 0xff);
}

// A range of registers for one job. With more than 56, a failed transfer would not be noticed.
function checkRun(what, first, last) {
  checkRange(what, first, last);
  const count = last - first + 1;
  if (count < 1 || count > kRegistersPerJob) {
    throw new BorvanError(
      'argument', `${what}: ${count} registers are not allowed: 1 to ${kRegistersPerJob}`);
  }
}

// The file of a job.
function checkFile(what, file) {
  toAnsi(what, file);
}

// The output file of a job. The length of a text file is not known.
function checkRawFile(what, file) {
  checkFile(what, file);
  if (file.slice(file.lastIndexOf('.') + 1) === 'txt') {
    throw new BorvanError('argument', `${what}: a name that ends in .txt is not allowed`);
  }
}

module.exports = {
  checkFile,
  checkI2c,
  checkNumber,
  checkRange,
  checkRawFile,
  checkRun,
  checkSector,
  hex,
  kLargestI2cValue,
  notAllowed,
};
