'use strict';

// Sends Ctrl-C to a process that has its own console: node stop.js PID. It leaves its own console
// for that one, and ignores the Ctrl-C itself.

const koffi = require('koffi');

const kernel32 = koffi.load('kernel32.dll');
const FreeConsole = kernel32.func('int FreeConsole()');
const AttachConsole = kernel32.func('int AttachConsole(uint32_t process)');
const SetConsoleCtrlHandler = kernel32.func('int SetConsoleCtrlHandler(void* handler, int add)');
const GenerateConsoleCtrlEvent = kernel32.func(
  'int GenerateConsoleCtrlEvent(uint32_t event, uint32_t group)');

const kCtrlC = 0;
const kAll = 0;

FreeConsole();
const sent = AttachConsole(Number(process.argv[2])) && SetConsoleCtrlHandler(null, 1) &&
  GenerateConsoleCtrlEvent(kCtrlC, kAll);
process.exitCode = sent ? 0 : 1;
