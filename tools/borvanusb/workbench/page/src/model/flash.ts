// The flash as a map of sectors, and as rows of bytes.
import type { Range, Region } from '../types';

export const sectorSize = 4096;

export type SectorState = 'unknown' | 'blank' | 'used' | 'differs';

export function sectorCount(size: number): number {
  return Math.ceil(size / sectorSize);
}

function mark(states: SectorState[], ranges: Range[], state: SectorState): void {
  for (const range of ranges) {
    const last = Math.floor(range.last / sectorSize);
    for (let sector = Math.floor(range.first / sectorSize); sector <= last && sector < states.length; sector++) {
      states[sector] = state;
    }
  }
}

export function sectorStates(size: number, used: Range[], blank: Range[], differs: Range[]): SectorState[] {
  const states = new Array<SectorState>(sectorCount(size)).fill('unknown');
  mark(states, blank, 'blank');
  mark(states, used, 'used');
  mark(states, differs, 'differs');
  return states;
}

export function isWithin(address: number, range: Range): boolean {
  return address >= range.first && address <= range.last;
}

export function regionAt(address: number, regions: Region[]): Region | null {
  return regions.find((region) => isWithin(address, region)) ?? null;
}

// The number of bytes of a range that lie in other ranges.
export function overlap(range: Range, others: Range[]): number {
  let bytes = 0;
  for (const other of others) {
    bytes += Math.max(0, Math.min(range.last, other.last) - Math.max(range.first, other.first) + 1);
  }
  return bytes;
}

// Binary search in sorted ranges: the index of the first range that ends at or after the address.
export function rangeFrom(address: number, ranges: Range[]): number {
  let low = 0;
  let high = ranges.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if ((ranges[middle]?.last ?? 0) < address) low = middle + 1;
    else high = middle;
  }
  return low;
}

export function isInRanges(address: number, ranges: Range[]): boolean {
  const range = ranges[rangeFrom(address, ranges)];
  return range !== undefined && isWithin(address, range);
}

// The next or previous difference from an address. Wraps around at the ends.
export function nextRange(address: number, ranges: Range[], forward: boolean): Range | null {
  if (ranges.length === 0) return null;
  if (forward) {
    return ranges.find((range) => range.first > address) ?? ranges[0] ?? null;
  }
  return [...ranges].reverse().find((range) => range.first < address) ?? ranges[ranges.length - 1] ?? null;
}

export function printable(byte: number): string {
  return byte >= 0x20 && byte < 0x7f ? String.fromCharCode(byte) : '.';
}

// The pattern of a search: hexadecimal bytes (`de ad`, `0xdead`), or a text in quotation marks.
export function parsePattern(text: string): Uint8Array | null {
  const inQuotes = /^\s*"(.+)"\s*$/.exec(text);
  if (inQuotes) return new TextEncoder().encode(inQuotes[1]);
  const digits = text.replace(/0x/gi, '').replace(/[\s,]+/g, '');
  if (/^([0-9a-f]{2})+$/i.test(digits)) {
    return Uint8Array.from(digits.match(/../g) ?? [], (pair) => parseInt(pair, 16));
  }
  return text.trim() === '' ? null : new TextEncoder().encode(text.trim());
}

export function findPattern(bytes: Uint8Array, pattern: Uint8Array, from = 0): number {
  outer: for (let start = from; start + pattern.length <= bytes.length; start++) {
    for (let index = 0; index < pattern.length; index++) {
      if (bytes[start + index] !== pattern[index]) continue outer;
    }
    return start;
  }
  return -1;
}

// The address in a file name: 0x20800 for firmware-0x20800.bin.
export function addressInName(name: string): number | null {
  const match = /0x([0-9a-f]{1,8})/i.exec(name);
  return match?.[1] === undefined ? null : parseInt(match[1], 16);
}

// Whether the file's format, by its extension, contains addresses.
export function holdsAddresses(name: string): boolean {
  return /\.(hex|ihex|ihx|s19|s28|s37|srec|mot|elf|axf)$/i.test(name);
}
