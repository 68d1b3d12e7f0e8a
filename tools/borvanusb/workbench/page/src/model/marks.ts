// Marks for values of registers (changed, differs from reset and so on), and filtering by them.
import type { RegisterDescription } from '../types';
import { differsFromReset } from './fields';

export type Mark = 'edited' | 'changed' | 'reset' | 'preset' | 'file';

export interface Known {
  value: bigint;
  previous: bigint | null; // the value before the last change
  time: number;
}

export interface References {
  preset: Map<string, bigint | null> | null; // registers that differ from the preset, with the preset's value
  file: Map<string, bigint | null> | null;
}

export const noReferences: References = { preset: null, file: null };

export const markTexts: Record<Mark, string> = {
  edited: 'Edited, not written',
  changed: 'Changed since last read',
  reset: 'Differs from reset',
  preset: 'Differs from preset',
  file: 'Differs from file',
};

export const markLabels: Record<Mark, string> = {
  edited: 'edited', changed: 'changed', reset: '≠ reset', preset: '≠ preset', file: '≠ file',
};

// The state after a new reading. `previous` is kept until the value changes again.
export function nextKnown(before: Known | undefined, value: bigint, time: number): Known {
  if (before === undefined) return { value, previous: null, time };
  if (before.value === value) return { value, previous: null, time };
  return { value, previous: before.value, time };
}

export function marksOf(
  register: RegisterDescription, known: Known | undefined, references: References, edited: boolean,
): Mark[] {
  const marks: Mark[] = [];
  if (edited) marks.push('edited');
  if (known === undefined) return marks;
  if (known.previous !== null) marks.push('changed');
  if (differsFromReset(known.value, register)) marks.push('reset');
  if (references.preset?.has(register.name)) marks.push('preset');
  if (references.file?.has(register.name)) marks.push('file');
  return marks;
}

export function passesFilter(marks: Mark[], filter: ReadonlySet<Mark>): boolean {
  return filter.size === 0 || marks.some((mark) => filter.has(mark));
}
