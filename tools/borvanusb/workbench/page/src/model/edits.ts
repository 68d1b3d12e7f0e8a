// Changes that are not yet written, and how to undo written ones.
import type { FieldDescription, NamedWrite, RegisterDescription } from '../types';
import { fieldOf, withField } from './fields';
import type { Setting } from './words';

// An edit of one register: the whole value, or single fields. With single fields, the others keep the camera's value.
export interface Edit {
  register: RegisterDescription;
  whole: bigint | null;
  fields: ReadonlyMap<string, bigint>;
}

export type Edits = ReadonlyMap<string, Edit>;

export function editWhole(edits: Edits, register: RegisterDescription, value: bigint): Edits {
  return new Map(edits).set(register.name, { register, whole: value, fields: new Map() });
}

export function editField(
  edits: Edits, register: RegisterDescription, field: FieldDescription, value: bigint,
): Edits {
  const before = edits.get(register.name);
  const edit: Edit = before?.whole != null
    ? { register, whole: withField(before.whole, field, value), fields: new Map() }
    : { register, whole: null, fields: new Map(before?.fields).set(field.name, value) };
  return new Map(edits).set(register.name, edit);
}

export function withoutEdit(edits: Edits, name: string): Edits {
  const rest = new Map(edits);
  rest.delete(name);
  return rest;
}

// The register's value after the edit. Undefined if only fields are edited and the register was never read.
export function editedValue(edit: Edit, known: bigint | undefined): bigint | undefined {
  if (edit.whole !== null) return edit.whole;
  if (known === undefined) return undefined;
  let value = known;
  for (const field of edit.register.fields) {
    const part = edit.fields.get(field.name);
    if (part !== undefined) value = withField(value, field, part);
  }
  return value;
}

export function editedField(edit: Edit | undefined, field: FieldDescription): bigint | undefined {
  if (edit === undefined) return undefined;
  return edit.whole !== null ? fieldOf(edit.whole, field) : edit.fields.get(field.name);
}

export function settingsOf(edits: Edits): Setting[] {
  const settings: Setting[] = [];
  for (const edit of edits.values()) {
    const { register } = edit;
    if (edit.whole !== null) settings.push({ name: register.name, value: edit.whole, bits: register.bits });
    for (const field of register.fields) {
      const value = edit.fields.get(field.name);
      if (value !== undefined) settings.push({ name: `${register.name}.${field.name}`, value, bits: field.bits });
    }
  }
  return settings;
}

export interface Undo {
  settings: Setting[];
  text: string;
}

// The register that a name refers to and, if the name is that of a field, the field.
function partOf(
  name: string, describe: (name: string) => RegisterDescription | undefined,
): { register: RegisterDescription; field: FieldDescription | null } | null {
  const whole = describe(name);
  if (whole !== undefined) return { register: whole, field: null };
  const dot = name.lastIndexOf('.');
  const register = describe(name.slice(0, dot));
  const field = register?.fields.find((each) => each.name === name.slice(dot + 1));
  return register && field ? { register, field } : null;
}

// Settings that restore the previous values, in reverse order. null if no previous value is known.
export function undoOf(
  writes: NamedWrite[], settings: Setting[], known: (register: string) => bigint | undefined,
  describe: (name: string) => RegisterDescription | undefined,
): Undo | null {
  const back: Setting[] = [];
  for (const setting of settings) {
    const part = partOf(setting.name, describe);
    if (part === null) continue;
    const read = writes.find((write) => write.name === part.register.name)?.before;
    const before = read != null ? BigInt(read) : known(part.register.name);
    if (before === undefined) continue;
    back.unshift({ ...setting, value: part.field === null ? before : fieldOf(before, part.field) });
  }
  return back.length === 0 ? null : { settings: back, text: back.map((setting) => setting.name).join(', ') };
}
