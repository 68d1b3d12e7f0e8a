'use strict';

// Jobs of the library with a time limit, as borvan_wait_for_job.h waits for them. A job is watched
// until its end, also when the program has stopped waiting for it. The Camera starts jobs.

const {performance} = require('node:perf_hooks');
const {setTimeout: sleep} = require('node:timers/promises');

const {BorvanError} = require('./errors');
const functions = require('./functions');
const {isFileComplete} = require('./system');
const {kFileError, kWaitEndMissed, kWaitTimeLimit, progressState, statusText} = require('./status');

const kPollMs = 20;
const kDoneMs = 3000; // maximum time for which a job's 100 is visible
const kClearMs = 3500; // time after which it is cleared, even on a slow machine
const kUsualLimitMs = 600000;
const kLongestLimitMs = 0x7fffffff;
const kNothingWritten = 11;

// State that exists once per process, like the library's instance: the job whose result nobody has yet.
const pending = {job: null};

function statusError(what, status) {
  const kinds = {[kWaitTimeLimit]: 'time-limit', [kWaitEndMissed]: 'end-missed'};
  return new BorvanError(kinds[status] ?? 'status', `${what}: ${statusText(status)}`, status);
}

// The checked options of a call that runs a job.
function jobOptions(what, {timeLimitMs = kUsualLimitMs, signal, onProgress} = {}) {
  if (!(timeLimitMs >= 0 && timeLimitMs <= kLongestLimitMs)) {
    throw new BorvanError(
      'argument', `${what}: timeLimitMs ${timeLimitMs} is not allowed: 0 to ${kLongestLimitMs}`);
  }
  signal?.throwIfAborted();
  return {timeLimitMs, signal, onProgress};
}

// Prepares for a job: waits until the 100 of a former one is cleared, and replaces a failure that a
// former one left. Returns what GetProgressInfo shows until the job reports something.
async function beforeJob() {
  const start = performance.now();
  while (progressState(functions.GetProgressInfo()).state === 'done' &&
         performance.now() - start < kClearMs) {
    await sleep(kPollMs);
    if (functions.GetProgressInfo() === 0n) {
      await sleep(kPollMs); // a dump of less than eight bytes is cleared twice
    }
  }
  if (functions.GetProgressInfo() !== 0n) {
    functions.UsbFlashWriteFile('', 0); // fails at once and without a transfer
  }
  return functions.GetProgressInfo();
}

class Job {
  // `file` is what the job writes, `size` its bytes; null when it writes none.
  constructor(what, {isRegisterList = false, file = null, size = 0} = {}) {
    this.what = what;
    this.file = file;
    this.ended = false;
    this.listeners = new Set();
    this.#isRegisterList = isRegisterList;
    this.#size = size;
  }

  #isRegisterList;
  #size;
  #before = 0n;

  // Starts the job directly after beforeJob returned `before`.
  start(before, begin) {
    this.#before = before;
    if (!begin()) {
      throw statusError(this.what, kFileError);
    }
    pending.job = this;
    this.end = this.#watch();
  }

  // Waits for the end. Throws if the job failed. The job stays pending when its
  // end was not seen.
  async wait({timeLimitMs, signal, onProgress}) {
    const status = await this.#statusWithin(timeLimitMs, signal, onProgress);
    if (status !== kWaitTimeLimit && pending.job === this) {
      pending.job = null;
    }
    if (this.#isRegisterList && status === kNothingWritten) {
      throw new BorvanError(
        'nothing-written',
        `${this.what}: nothing was written: the list does not begin with 0xfffd`, status);
    }
    if (status >= 0x80000000) {
      throw statusError(this.what, status);
    }
  }

  #statusWithin(timeLimitMs, signal, onProgress) {
    return new Promise((resolve, reject) => {
      const listener = (percent) => {
        try {
          onProgress?.(percent);
        } catch (error) {
          finish(() => reject(error));
        }
      };
      const onAbort = () => finish(() => reject(signal.reason));
      const onTime = () =>
        finish(() => resolve(this.#isFileComplete() ? 0 : kWaitTimeLimit));
      const timer = setTimeout(onTime, timeLimitMs);
      const finish = (settle) => {
        clearTimeout(timer);
        this.listeners.delete(listener);
        signal?.removeEventListener('abort', onAbort);
        settle();
      };
      this.listeners.add(listener);
      signal?.addEventListener('abort', onAbort);
      this.end.then((status) => finish(() => resolve(status)), (error) => finish(() => reject(error)));
    });
  }

  #isFileComplete() {
    return this.file !== null && isFileComplete(this.file, this.#size);
  }

  async #watch() {
    // Does not keep the process alive: whoever waits has a timer that does.
    const pause = () => sleep(kPollMs, undefined, {ref: false});
    const status = await this.#watchProgress(pause);
    this.ended = true;
    return status;
  }

  async #watchProgress(pause) {
    let reported = false; // by this job
    let shown = 0;
    let lastLook = performance.now();
    for (;;) {
      const look = performance.now();
      let value = functions.GetProgressInfo();
      if (progressState(value).state === 'done' && value !== this.#before) {
        // A dump of less than eight bytes reports 100 whether it fails or not, and a job that can't
        // write its file fails after its 100.
        await pause();
        const next = functions.GetProgressInfo();
        value = progressState(next).state === 'failed' ? next : value;
        reported = true;
      }
      const {state, percent, status} = progressState(value);
      if (value === 0n) {
        // The value was cleared. If this process polled often enough to see a 100, it was not from this job.
        if ((reported || this.#before !== 0n) && performance.now() - lastLook >= kDoneMs) {
          return this.#isFileComplete() ? 0 : kWaitEndMissed;
        }
      } else if (value !== this.#before || reported) {
        reported = true;
        if (percent > shown) {
          shown = percent;
          this.listeners.forEach((listener) => listener(percent));
        }
        if (state === 'done') {
          return this.#watchFile(pause);
        }
        if (state === 'failed' || (state === 'notice' && this.#isRegisterList)) {
          return status;
        }
      }
      lastLook = look;
      await pause();
    }
  }

  // A job reports its 100 before it writes its file. If it can't, it reports a failure then.
  async #watchFile(pause) {
    while (this.file !== null && !this.#isFileComplete()) {
      const {state, status} = progressState(functions.GetProgressInfo());
      if (state === 'failed') {
        return status;
      }
      await pause();
    }
    return 0;
  }
}

module.exports = {Job, beforeJob, jobOptions, pending, statusError};
