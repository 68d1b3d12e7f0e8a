// Fields of registers: extract, insert, and check what is allowed.
import type { EnumeratedValue, FieldDescription, RegisterDescription, RegisterValue } from '../types';
import { largest } from './number';

export function fieldOf(value: bigint, field: { offset: number; bits: number }): bigint {
  return (value >> BigInt(field.offset)) & largest(field.bits);
}

export function withField(value: bigint, field: { offset: number; bits: number }, part: bigint): bigint {
  const mask = largest(field.bits) << BigInt(field.offset);
  return (value & ~mask) | ((part << BigInt(field.offset)) & mask);
}

export function meaningOf(value: bigint, values: EnumeratedValue[]): EnumeratedValue | null {
  return values.find((entry) => BigInt(entry.value) === value) ?? null;
}

export function isReadable(access: string): boolean {
  return access !== 'write-only' && access !== 'writeOnce';
}

export function isWritable(access: string): boolean {
  return access !== 'read-only';
}

// Reading such a register has side effects, so the page reads it only on request.
export function changesWhenRead(register: RegisterDescription): boolean {
  return register.read_action !== null || register.fields.some((field) => field.read_action !== null);
}

export function isReadByLooking(register: RegisterDescription): boolean {
  return isReadable(register.access) && !changesWhenRead(register);
}

export function exactValue(read: RegisterValue): bigint {
  return read.hex === undefined ? BigInt(read.value) : BigInt(read.hex);
}

export function accessText(access: string): string {
  const texts: Record<string, string> = {
    'read-write': 'RW', 'read-only': 'RO', 'write-only': 'WO', writeOnce: 'W1', 'read-writeOnce': 'RW1',
  };
  return texts[access] ?? access;
}

export function bitsText(field: { offset: number; bits: number }): string {
  return field.bits === 1 ? `[${field.offset}]` : `[${field.offset + field.bits - 1}:${field.offset}]`;
}

// Why a value can't be written; null if it can.
export function problemOf(value: bigint, part: FieldDescription | RegisterDescription): string | null {
  if (value > largest(part.bits)) return `The largest value of ${part.bits} bits is ${largest(part.bits)}.`;
  const constraint = part.constraint;
  if (constraint?.kind === 'range') {
    if (value < BigInt(constraint.minimum) || value > BigInt(constraint.maximum)) {
      return `Allowed are ${constraint.minimum} to ${constraint.maximum}.`;
    }
  }
  if (constraint?.kind === 'enumerated' && 'values' in part && !meaningOf(value, part.values)) {
    return `Allowed are ${part.values.map((entry) => entry.name).join(', ')}.`;
  }
  return null;
}

// The reset value is known only for the bits of its mask.
export function differsFromReset(value: bigint, register: RegisterDescription): boolean {
  if (register.reset === null) return false;
  const mask = BigInt(register.reset.mask);
  return (value & mask) !== (BigInt(register.reset.value) & mask);
}
