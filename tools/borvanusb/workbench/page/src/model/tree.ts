// The visible rows of the register tree: map, peripheral, register, field.
import type { FieldDescription, RegisterDescription } from '../types';
import { formatAddress } from './number';

export type TreeRow =
  | { kind: 'map'; key: string; level: number; label: string; count: number; open: boolean }
  | { kind: 'group'; key: string; level: number; label: string; count: number; open: boolean }
  | { kind: 'register'; key: string; level: number; register: RegisterDescription; open: boolean }
  | { kind: 'field'; key: string; level: number; register: RegisterDescription; field: FieldDescription };

export interface TreeOptions {
  open: ReadonlySet<string>;
  search: string;
  accepts: (register: RegisterDescription) => boolean;
}

function fileName(path: string): string {
  return path.split(/[\\/]/).pop() ?? path;
}

// Whether a register matches a search. Each word must occur in a name, number or documentation.
export function matchesSearch(register: RegisterDescription, search: string): boolean {
  const words = search.toLowerCase().split(/\s+/).filter((word) => word !== '');
  if (words.length === 0) return true;
  const fields = register.fields
    .map((field) => `${field.name} ${field.description} ${field.values.map((value) => value.name).join(' ')}`)
    .join(' ');
  const text = `${register.name} ${register.description} ${fields}`.toLowerCase();
  return words.every((word) => {
    if (/^(0x[0-9a-f]+|[0-9]+)$/.test(word) && Number(word) === register.address) return true;
    if (/^0x[0-9a-f]+$/.test(word) && formatAddress(register.address).startsWith(word)) return true;
    return text.includes(word);
  });
}

export function shortName(register: RegisterDescription): string {
  const prefix = register.peripheral + '.';
  return register.name.startsWith(prefix) ? register.name.slice(prefix.length) : register.name;
}

function groupBy<T>(items: T[], key: (item: T) => string): Map<string, T[]> {
  const groups = new Map<string, T[]>();
  for (const item of items) {
    const group = groups.get(key(item));
    if (group) group.push(item);
    else groups.set(key(item), [item]);
  }
  return groups;
}

// The visible rows. During a search, maps and groups with a match are open.
export function treeRows(registers: RegisterDescription[], options: TreeOptions): TreeRow[] {
  const found = registers.filter((register) => matchesSearch(register, options.search) && options.accepts(register));
  const searching = options.search.trim() !== '';
  const isOpen = (key: string) => searching || options.open.has(key);
  const rows: TreeRow[] = [];
  for (const [map, ofMap] of groupBy(found, (register) => register.map)) {
    const mapKey = `map:${map}`;
    const mapOpen = isOpen(mapKey);
    rows.push({ kind: 'map', key: mapKey, level: 1, label: fileName(map), count: ofMap.length, open: mapOpen });
    if (!mapOpen) continue;
    for (const [group, ofGroup] of groupBy(ofMap, (register) => register.peripheral)) {
      const groupKey = `group:${map}:${group}`;
      const groupOpen = isOpen(groupKey);
      rows.push({ kind: 'group', key: groupKey, level: 2, label: group, count: ofGroup.length, open: groupOpen });
      if (!groupOpen) continue;
      for (const register of ofGroup) {
        const key = `register:${register.name}`;
        const open = register.fields.length > 0 && options.open.has(key);
        rows.push({ kind: 'register', key, level: 3, register, open });
        if (!open) continue;
        for (const field of register.fields) {
          rows.push({ kind: 'field', key: `field:${register.name}.${field.name}`, level: 4, register, field });
        }
      }
    }
  }
  return rows;
}

// The keys that are open initially: all maps, and the groups unless there are too many registers.
export function firstOpen(registers: RegisterDescription[]): Set<string> {
  const open = new Set<string>();
  for (const register of registers) {
    open.add(`map:${register.map}`);
    if (registers.length <= 400) open.add(`group:${register.map}:${register.peripheral}`);
  }
  return open;
}
