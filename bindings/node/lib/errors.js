'use strict';

// The error that every call throws. The message is "CALL: REASON".
class BorvanError extends Error {
  constructor(kind, message, status = 0, options = undefined) {
    super(message, options);
    this.name = 'BorvanError';
    this.kind = kind;
    this.status = status;
  }
}

// borvanusb reported a failure: its exit code, what that means, and what to do.
class ProgramError extends BorvanError {
  constructor({code, kind, message, hint}, options = undefined) {
    super('program', `programFlash: ${message}`, 0, options);
    this.name = 'ProgramError';
    this.exitCode = code;
    this.exitKind = kind;
    this.hint = hint;
  }
}

module.exports = {BorvanError, ProgramError};
