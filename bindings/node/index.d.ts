/** One camera of the list. */
export interface CameraInfo {
  index: number;
  name: string;
  /** Vendor ID, four upper-case hexadecimal digits. */
  vid: string;
  /** Product ID, four upper-case hexadecimal digits. */
  pid: string;
  /** Device path, lower case. */
  path: string;
}

/** Widths of I2C accesses: bits of the register address, bits of the data. */
export declare const I2cMode: {
  readonly address8Data8: 0;
  readonly address16Data8: 1;
  readonly address16Data16: 2;
  readonly address32Data8: 3;
  readonly address32Data16: 4;
  readonly address32Data32: 5;
};
export type I2cMode = 0 | 1 | 2 | 3 | 4 | 5;

export interface RegisterOptions {
  /** 32 bits instead of 8. */
  wide?: boolean;
}

export interface I2cOptions {
  /** Sent to the chip as it is; 0 unless the chip's maker says otherwise. */
  option?: number;
}

/** Options of every call that runs a job. */
export interface JobOptions {
  /** Time limit in milliseconds; default ten minutes. */
  timeLimitMs?: number;
  /** Ends the waiting, not the job: nothing can stop a job. Call wait() afterwards. */
  signal?: AbortSignal;
  /** Receives percentages that rise. Only writeFlashFile and reads of flash report some below 100. */
  onProgress?: (percent: number) => void;
}

export type ErrorKind =
  /** An argument is not allowed; nothing was done. */
  | 'argument'
  /** A job may still run, or another Camera exists in the process. */
  | 'busy'
  /** The Camera was closed. */
  | 'closed'
  /** No camera has this index. */
  | 'no-such-camera'
  /** The camera can't be opened. */
  | 'cannot-open'
  /** A single access failed; the library gives no code. */
  | 'access'
  /** The transfers succeeded, but the reply belongs to another request. */
  | 'no-answer'
  /** A register list does not begin with 0xfffd. */
  | 'nothing-written'
  /** A job failed, with a status code. */
  | 'status'
  /** A job did not end in time and may still run. */
  | 'time-limit'
  /** The end of a job was missed. */
  | 'end-missed'
  /** borvanusb can't be started, or ended without a result. */
  | 'process'
  /** borvanusb reported a failure: see ProgramError. */
  | 'program';

/** The error that every call throws. The message is "CALL: REASON". */
export declare class BorvanError extends Error {
  readonly kind: ErrorKind;
  /** The code of borvan_usb_status.h of a failed job; otherwise 0. */
  readonly status: number;
}

/** borvanusb reported a failure. */
export declare class ProgramError extends BorvanError {
  readonly kind: 'program';
  /** The exit code of borvanusb, 1 to 10. */
  readonly exitCode: number;
  /** The exit code's name. */
  readonly exitKind:
    | 'usage' | 'no-camera' | 'several-cameras' | 'refused' | 'file' | 'device' | 'verify' | 'timeout'
    | 'stopped' | 'internal';
  /** What to do, with the command lines that continue or go back; may be empty. */
  readonly hint: string;
}

/**
 * The library's instance and the camera that it has selected. One object at a time in a process. Single
 * accesses return at once; calls that run a job return a promise, and all other calls but list, wait and
 * close are refused until the job's result was received.
 */
export declare class Camera {
  /** Creates the instance. Throws `busy` when another Camera exists. */
  constructor();
  /** Ends the instance. A running job continues. */
  close(): void;
  /** The cameras that are plugged in now. Call it when something was plugged in, not in a loop. */
  list(): CameraInfo[];
  /** Selects a camera of the list. One without a vendor unit is selected too; then accesses fail. */
  select(index: number): void;

  readRegister(address: number, options?: RegisterOptions): number;
  writeRegister(address: number, value: number, options?: RegisterOptions): void;
  readI2c(slave: number, address: number, mode: I2cMode, options?: I2cOptions): number;
  writeI2c(slave: number, address: number, value: number, mode: I2cMode, options?: I2cOptions): void;

  /** Four bytes of flash, the one at `address` in bits 24 to 31. A 0 is confirmed by a job. */
  readFlashWord(address: number, options?: JobOptions): Promise<number>;
  /** Programs four bytes, which only clears bits. It neither reads back nor waits for the flash. */
  writeFlashWord(address: number, value: number): void;
  /** Erases the sector of 4096 bytes at `address`. It does not wait for the erase. */
  eraseFlashSector(address: number): void;

  /** Bytes of flash. */
  readFlash(first: number, count: number, options?: JobOptions): Promise<Uint8Array>;
  /** Dumps flash into a file of raw bytes; `last` is included. */
  readFlashFile(file: string, first: number, last: number, options?: JobOptions): Promise<void>;
  /**
   * Programs a file without a backup and without reading back: see programFlash for the safe way. It
   * erases sectors of 4096 bytes counted from `address`, and up to 59 bytes after the image become 0.
   */
  writeFlashFile(file: string, address: number, options?: JobOptions): Promise<void>;
  /** Reads 1 to 56 registers of 8 bits into a file, one byte for each; `last` is included. */
  readRegistersFile(file: string, first: number, last: number, options?: JobOptions): Promise<void>;
  /** Writes the registers of a list file, which begins with 0xfffd. */
  writeRegisterList(file: string, options?: JobOptions): Promise<void>;
  /** Reads 1 to 56 registers into a file, one byte for each: of wider values the low 8 bits. */
  readI2cFile(
    file: string, slave: number, mode: I2cMode, first: number, last: number,
    options?: JobOptions): Promise<void>;
  /** Writes the registers of a list file, which names slave and width. */
  writeI2cList(file: string, options?: JobOptions & I2cOptions): Promise<void>;
  /** Waits again for a job that went on after `time-limit` or an abort. */
  wait(options?: JobOptions): Promise<void>;
}

/** A text for any status code. */
export declare function statusText(status: number): string;

export interface ProgressState {
  state: 'running' | 'done' | 'failed' | 'notice';
  /** 0 to 100; 0 together with every status but 0. */
  percent: number;
  /** 0 to 0xffffffff. */
  status: number;
}
/** The meaning of a value of GetProgressInfo. */
export declare function progressState(value: bigint): ProgressState;

// ---- Safe programming -------------------------------------------------------------------------------

export interface ProgramOptions {
  /** Where the image begins in the flash; default 0. */
  address?: number;
  /** Index, IDs such as "1234:0002", name or path; needed when several cameras are plugged in. */
  camera?: string | number;
  /** Size of the flash, such as "1M" or 1048576, if the tool can't detect it. */
  flashSize?: string | number;
  /** File for the old bytes; false: no backup. Default: a file beside the image. */
  backup?: string | false;
  /** false: do not read back. */
  verify?: boolean;
  /** Only show what would be done. */
  dryRun?: boolean;
  /** Restore the old bytes when programming fails. */
  restoreOnFailure?: boolean;
  /** Program a file that does not look like firmware. */
  force?: boolean;
  /** The journal that belongs to this camera, or "none". */
  journal?: string;
  /** File for a report. It is also written after a failure. */
  report?: string;
  /** Maximum time without progress, 0.1 to 3600; default 10. */
  timeoutSeconds?: number;
  onProgress?: (progress: ProgramProgress) => void;
  /** Receives each other line that the tool writes, such as the name of the backup. */
  onRemark?: (line: string) => void;
  /** Stops as Ctrl-C does: at the next safe place. The promise is rejected with a ProgramError (9). */
  signal?: AbortSignal;
}

/** See docs/json/progress.schema.json. */
export interface ProgramProgress {
  stage: string;
  done: number;
  total: number;
  unit: 'bytes' | 'registers' | 'entries' | 'slaves' | 'tests' | 'measurements';
  percent: number;
  rate: number | null;
  secondsLeft: number | null;
}

export interface FlashRange {
  first: number;
  /** Included. */
  last: number;
}

/** See docs/json/flash-program.schema.json. */
export interface ProgramResult {
  camera: CameraInfo;
  image: {file: string; size: number; sha256: string};
  address: number;
  flashSize: number | null;
  dryRun: boolean;
  sectors: number;
  changed: FlashRange[];
  changedBytes: number;
  transfers: number;
  expectedSeconds: number;
  backup: string | null;
  verified: boolean | null;
  state: 'unchanged' | 'partial' | 'written' | 'done' | 'restoring' | 'restored';
  written: FlashRange[];
  unfinished: FlashRange[];
  remaining: FlashRange[];
  wrong: FlashRange[];
  started: string;
  finished: string;
  seconds: {read: number; program: number; verify: number; total: number};
  result: 'done';
  exitCode: 0;
  message: string;
  hint: string;
}

/**
 * Programs an image as `borvanusb flash program` does: only the image's bytes change, the old bytes are
 * saved first, the new ones are read back, and interrupted work continues when the call is repeated.
 * Close a Camera first: one process at a time uses a camera.
 */
export declare function programFlash(image: string, options?: ProgramOptions): Promise<ProgramResult>;

// ---- The functions of the library as they are ---------------------------------------------------------

export interface UsbDeviceInfo {
  path: string;
  name: string;
  vendorId: string;
  productId: string;
}

/** Receives a value; what it holds before stays when the function stores nothing. */
export type Out = [number];

/** The 21 functions of borvan_usb.h, which describes them and their traps, and borvan_select_device. */
export declare const functions: {
  UsbIniDevice(): number;
  UsbUpdateDevice(): boolean;
  /** Crashes without an instance. */
  UsbGetDeviceNum(): number;
  /** Crashes without an instance. */
  UsbGetAllDeviceInfo(): UsbDeviceInfo[];
  /** Crashes without an instance. */
  UsbGetSelectDeviceInfo(): UsbDeviceInfo;
  /** Ends the process when the camera can't be opened: use borvan_select_device. */
  UsbSelectDevice(index: number): boolean;
  /** Crashes without an instance. */
  UsbDestroyUSB(): boolean;
  UsbRegisterRead(address: number, value: Out | null, flag: number): boolean;
  UsbRegisterWrite(address: number, value: number, flag: number): boolean;
  UsbI2cRead(
    deviceId: number, registerAddress: number, value: Out | null, mode: number, option: number): boolean;
  UsbI2cWrite(
    deviceId: number, registerAddress: number, value: number, mode: number, option: number): boolean;
  UsbFlashRead(address: number, value: Out | null): boolean;
  UsbFlashWrite(address: number, value: number): boolean;
  UsbFlashErase(address: number): boolean;
  UsbFlashWriteFile(fileName: string | null, startAddress: number): boolean;
  UsbFlashQuickReadFile(fileName: string | null, startAddress: number, endAddress: number): boolean;
  UsbRegisterReadFile(fileName: string | null, startAddress: number, endAddress: number): boolean;
  UsbRegisterWriteFile(fileName: string | null): boolean;
  UsbI2CReadFile(
    startAddress: number, endAddress: number, fileName: string | null, slave: number,
    mode: number): boolean;
  UsbI2CWriteFile(fileName: string | null, option: number): boolean;
  GetProgressInfo(): bigint;
  /** Needs an instance, unless index is negative. */
  borvan_select_device(index: number): {selected: boolean; message: string | null};
};
