'use strict';

// programFlash: the safe programming of borvanusb, run as a process of its own.

const {spawn} = require('node:child_process');
const path = require('node:path');

const {BorvanError, ProgramError} = require('./errors');

const kProgram = path.join(__dirname, '..', 'native', 'borvanusb.exe');
const kStop = path.join(__dirname, 'stop.js');
const kWhat = 'programFlash';
// The exit code if Ctrl-C ends the process before it can handle it.
const kEndedByCtrlC = 0xc000013a;
const kStopped = 9;
const kStopping = 'stopping at the next safe place';
// A Ctrl-C can get lost while the process starts, so it is repeated if nothing happens.
const kAnswerMs = 5000;

// The arguments of the command line.
function commandLine(image, options) {
  const words = ['flash', 'program', '--json', '--progress', 'json'];
  const add = (name, value) => value !== undefined && words.push(name, String(value));
  const addIf = (name, condition) => condition && words.push(name);
  add('--address', options.address);
  add('--camera', options.camera);
  add('--flash-size', options.flashSize);
  add('--backup', options.backup === false ? undefined : options.backup);
  addIf('--no-backup', options.backup === false);
  addIf('--no-verify', options.verify === false);
  addIf('--dry-run', options.dryRun);
  addIf('--restore-on-failure', options.restoreOnFailure);
  addIf('--force', options.force);
  add('--journal', options.journal);
  add('--report', options.report);
  add('--timeout', options.timeoutSeconds);
  return [...words, '--', image];
}

const camelCase = (name) => name.replace(/_(.)/g, (all, letter) => letter.toUpperCase());

// Converts the tool's JSON to JavaScript names.
function withOurNames(value) {
  if (Array.isArray(value)) {
    return value.map(withOurNames);
  }
  if (value === null || typeof value !== 'object') {
    return value;
  }
  return Object.fromEntries(
    Object.entries(value).map(([name, part]) => [camelCase(name), withOurNames(part)]));
}

function parsed(line) {
  try {
    return JSON.parse(line);
  } catch {
    return null;
  }
}

// Calls `take` with each line of a stream.
function eachLine(stream, take) {
  let rest = '';
  stream.setEncoding('utf8');
  stream.on('data', (text) => {
    const lines = (rest + text).split(/\r?\n/);
    rest = lines.pop();
    lines.filter((line) => line !== '').forEach(take);
  });
  stream.on('end', () => rest !== '' && take(rest));
}

// Ctrl-C for a process that has its own console. Another process sends it, because a process can
// have one console only.
function sendCtrlC(pid) {
  const environment = {...process.env, ELECTRON_RUN_AS_NODE: '1'};
  spawn(process.execPath, [kStop, String(pid)], {env: environment, stdio: 'ignore', windowsHide: true})
    .on('error', () => {}); // repeated below
}

// Stops the process when the signal aborts. Returns what takes lines of standard error, and what ends
// this.
function stopper(child, signal) {
  let timer;
  const stop = () => {
    if (child.pid === undefined) {
      return; // it was not started
    }
    sendCtrlC(child.pid);
    timer = setTimeout(stop, kAnswerMs);
  };
  signal?.addEventListener('abort', stop);
  return {
    take: (line) => line.startsWith(kStopping) && clearTimeout(timer),
    end: () => {
      clearTimeout(timer);
      signal?.removeEventListener('abort', stop);
    },
  };
}

// The result of the process as a value or an error.
function outcome(code, output, signal) {
  const cause = signal?.aborted ? {cause: signal.reason} : undefined;
  const json = parsed(output);
  if (code === 0 && json?.result === 'done') {
    return withOurNames(json);
  }
  if (json?.error?.code === code) {
    throw new ProgramError(json.error, cause);
  }
  if (code === kEndedByCtrlC) {
    throw new ProgramError(
      {code: kStopped, kind: 'stopped', message: 'stopped by the user before it began', hint: ''}, cause);
  }
  throw new BorvanError('process', `${kWhat}: ${kProgram} ended with ${code} and without a result`);
}

async function programFlash(image, options = {}) {
  const {signal, onProgress, onRemark} = options;
  if (typeof image !== 'string' || image === '') {
    throw new BorvanError('argument', `${kWhat}: image ${image} is not allowed: the name of a file`);
  }
  signal?.throwIfAborted();
  const child = spawn(kProgram, commandLine(image, options),
                      {stdio: ['ignore', 'pipe', 'pipe'], windowsHide: true});
  const stop = stopper(child, signal);
  let failure; // thrown by a callback; the work continues, and the error is thrown at its end
  const call = (callback, value) => {
    try {
      callback?.(value);
    } catch (error) {
      failure ??= {error};
    }
  };
  let output = '';
  child.stdout.setEncoding('utf8').on('data', (text) => { output += text; });
  eachLine(child.stderr, (line) => {
    stop.take(line);
    const progress = parsed(line)?.progress;
    if (progress === undefined) {
      call(onRemark, line);
    } else {
      call(onProgress, withOurNames(progress));
    }
  });
  let code;
  try {
    code = await new Promise((resolve, reject) => {
      child.on('close', resolve);
      child.on('error', reject);
    });
  } catch (error) {
    throw new BorvanError('process', `${kWhat}: ${kProgram} can't be started: ${error.message}`, 0,
                          {cause: error});
  } finally {
    stop.end();
  }
  const result = outcome(code, output, signal);
  if (failure !== undefined) {
    throw failure.error;
  }
  return result;
}

module.exports = {programFlash};
