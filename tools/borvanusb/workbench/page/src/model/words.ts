// The words of every command that the page runs. The server adds --camera, --json and --progress.
import type { Device } from '../types';
import { formatAddress, formatHex } from './number';

// Quotes a word for a shell, if necessary.
export function quoted(word: string): string {
  return /^[\w@%+=:,./-]+$/.test(word) ? word : `"${word.replace(/(["$`\\])/g, '\\$1')}"`;
}

export function commandLine(words: string[]): string {
  return ['borvanusb', ...words].map(quoted).join(' ');
}

export function rangeWord(first: number, size: number): string {
  return `${formatAddress(first, 1)}+${size}`;
}

export const findRegisters = (): string[] => ['reg', 'find'];
export const showProfile = (): string[] => ['profile', 'show'];
export const readRegisters = (names: string[]): string[] => ['reg', 'read', ...names];

export interface Setting {
  name: string; // of a register or field
  value: bigint;
  bits: number;
}

export function writeRegisters(settings: Setting[]): string[] {
  return ['reg', 'write', ...settings.map((setting) => `${setting.name}=${formatHex(setting.value, setting.bits)}`),
    '--verify'];
}

function deviceOptions(device: Device): string[] {
  if (device.kind === 'chip') return device.wide ? ['--wide'] : [];
  const options = ['--slave', formatAddress(device.slave, 2), '--mode', device.mode];
  return device.option === 0 ? options : [...options, '--option', String(device.option)];
}

function deviceCommand(device: Device): string {
  return device.kind === 'chip' ? 'reg' : 'i2c';
}

export function readNumbers(device: Device, first: number, last: number): string[] {
  return [deviceCommand(device), 'read', `${formatAddress(first)}-${formatAddress(last)}`, ...deviceOptions(device)];
}

export function writeNumber(device: Device, address: number, value: bigint): string[] {
  return [deviceCommand(device), 'write', formatAddress(address), formatHex(value, 8), ...deviceOptions(device),
    '--verify'];
}

export const compare = (left: string, right: string): string[] => ['reg', 'diff', left, right];
export const presetWord = (name: string): string => `preset:${name}`;
export const cameraWord = (path: string): string => `camera:${path}`;
export const applyPreset = (name: string): string[] => ['preset', 'apply', name];
export const savePreset = (name: string, registers: string[]): string[] => ['preset', 'save', name, ...registers];
export const dumpNamed = (file: string): string[] => ['reg', 'dump', '--all-named', file];

export const flashMap = (): string[] => ['flash', 'map'];
export const readFlash = (range: string, file: string): string[] => ['flash', 'read', range, file];
export const readRegion = (region: string, file: string): string[] => ['flash', 'read', '--region', region, file];
export const eraseRegion = (region: string): string[] => ['flash', 'erase', '--region', region, '--yes'];

export interface Image {
  file: string;
  place: { kind: 'file' } | { kind: 'address'; address: number } | { kind: 'region'; region: string };
}

function placeSuffix(place: Image['place']): string {
  if (place.kind === 'address') return '@' + formatAddress(place.address, 1);
  return place.kind === 'region' ? `@region:${place.region}` : '';
}

// A single image uses options for its position; several images have the position in the word itself.
export function imageWords(images: Image[]): string[] {
  const [image] = images;
  if (images.length !== 1 || !image) return images.map((each) => each.file + placeSuffix(each.place));
  if (image.place.kind === 'address') return [image.file, '--address', formatAddress(image.place.address, 1)];
  return image.place.kind === 'region' ? ['--region', image.place.region, image.file] : [image.file];
}

// The answer to the question whose journal it is: its file, or none.
function journalWords(journal: string | null): string[] {
  return journal === null ? [] : ['--journal', journal];
}

export function planImages(images: Image[], journal: string | null = null): string[] {
  return ['flash', 'program', ...imageWords(images), '--dry-run', ...journalWords(journal)];
}

export function programImages(images: Image[], report: string, journal: string | null = null): string[] {
  return ['flash', 'program', ...imageWords(images), '--report', report, ...journalWords(journal)];
}

export function verifyImages(images: Image[]): string[] {
  return ['flash', 'verify', ...imageWords(images)];
}

// Whether a command changes a camera. The log marks such commands.
export function isWrite(words: string[]): boolean {
  if (words.includes('--dry-run') || words.includes('--check-only')) return false;
  const [first, second] = words;
  if (first === 'reg' || first === 'i2c') return second === 'write' || second === 'load';
  if (first === 'preset') return second === 'apply';
  return first === 'flash' && (second === 'program' || second === 'erase' || second === 'word');
}
