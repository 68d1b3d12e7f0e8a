// What the views of this page want to be read live, and the command lines for it.
import { readRegisters } from './words';

export interface LiveRead {
  words: string[]; // of a command line: reg read or i2c read
  rate: number;
}

export interface LiveWish {
  camera: string;
  names: string[]; // of registers
  lines?: LiveRead[]; // registers by number
  rate: number;
}

// The registers that views want by name are one reading, at the highest rate asked for.
export function readsOf(wishes: Iterable<LiveWish>): Map<string, LiveRead[]> {
  const byCamera = new Map<string, { names: Set<string>; rate: number; lines: LiveRead[] }>();
  for (const wish of wishes) {
    const all = byCamera.get(wish.camera) ?? { names: new Set<string>(), rate: 0, lines: [] };
    wish.names.forEach((name) => all.names.add(name));
    if (wish.names.length > 0) all.rate = Math.max(all.rate, wish.rate);
    all.lines.push(...(wish.lines ?? []));
    byCamera.set(wish.camera, all);
  }
  return new Map([...byCamera].map(([camera, { names, rate, lines }]) => [
    camera, names.size === 0 ? lines : [{ words: readRegisters([...names]), rate }, ...lines],
  ]));
}
