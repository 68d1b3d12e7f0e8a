'use strict';

// Status codes, their texts, and the values of GetProgressInfo, as in borvan_usb_status.h and
// borvan_usb_values.h.

const kFileError = 0xe000000a;
const kSystemOutOfMemory = 0x8007000e;
const kWaitTimeLimit = 0xe0001001;
const kWaitEndMissed = 0xe0001002;

const kTexts = new Map([
  [0, 'no failure'],
  [0xe0000001, 'Flash failed to erase'],
  [0xe0000002, 'GetLen fails in channel'],
  [0xe0000003, 'Flash write  failed'], // programs compare the texts: the two spaces stay
  [0xe0000004, 'Invalid address'],
  [0xe0000005, 'Flash read failed'],
  [0xe0000006, 'Termination of work'],
  [0xe0000007, 'The Fast interface failed to execute'],
  [0xe0000008, 'The values of fff8 and fffe were not obtained'],
  [0xe0000009, 'Device not found'],
  [kFileError, 'File name error or file error'],
  [0xe000000b, 'File format failed'],
  [kWaitTimeLimit, 'The job did not end within the time limit'],
  [kWaitEndMissed, "The job's last report was cleared before it was read"],
  [0x80004001, 'not implemented'],
  [0x80004003, 'no camera is open'],
  [0x80004005, 'failed, without a reason'],
  [0x80070001, "the camera's driver does not support the request"],
  [0x80070005, 'access denied'],
  [0x80070006, 'the camera was closed'],
  [0x8007000d, 'the camera reported an impossible length'],
  [kSystemOutOfMemory, 'out of memory'],
  [0x80070015, 'the camera is not ready'],
  [0x80070017, 'data error on the bus'],
  [0x8007001f, 'the camera refused the transfer'],
  [0x80070057, "the camera's driver refused an argument"],
  [0x80070079, 'the camera did not answer in time'],
  [0x800705b4, 'the camera did not answer in time'],
  [0x8007007a, "the camera's answer is longer than the transfer"],
  [0x800701b1, 'the camera is not connected any more'],
  [0x8007048f, 'the camera is not connected any more'],
  [0x800703e3, 'the transfer was aborted'],
  [0x80070490, "the camera's vendor unit has no such control"],
  [0x80070492, 'the camera has no such vendor unit'],
]);

// A text for any status.
function statusText(status) {
  const code = status >>> 0;
  const text = kTexts.get(code);
  if (text !== undefined) {
    return text;
  }
  return code < 0x80000000 ? 'no failure: a positive status'
                           : "error code of the system or of the camera's driver";
}

// What a value of GetProgressInfo (a BigInt) means. A value that combines halves of two reports
// counts as running: the next poll sees the whole report.
function progressState(value) {
  const percent = Number(BigInt.asIntN(32, value));
  const signed = Number(BigInt.asIntN(32, value >> 32n));
  const status = signed >>> 0;
  if (status === 0) {
    return {state: percent === 100 ? 'done' : 'running', percent, status};
  }
  if (percent !== 0) {
    return {state: 'running', percent: 0, status};
  }
  return {state: signed < 0 ? 'failed' : 'notice', percent: 0, status};
}

module.exports = {
  kFileError,
  kSystemOutOfMemory,
  kWaitEndMissed,
  kWaitTimeLimit,
  progressState,
  statusText,
};
