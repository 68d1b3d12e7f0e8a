'use strict';

const {Camera, I2cMode} = require('./lib/camera');
const {BorvanError, ProgramError} = require('./lib/errors');
const functions = require('./lib/functions');
const {programFlash} = require('./lib/program');
const {progressState, statusText} = require('./lib/status');

module.exports = {
  BorvanError,
  Camera,
  I2cMode,
  ProgramError,
  functions,
  programFlash,
  progressState,
  statusText,
};
