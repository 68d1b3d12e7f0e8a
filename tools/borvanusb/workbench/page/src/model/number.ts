// Converts numbers to text and back. Register values are bigint, because a register may have 64 bits.

export type NumberForm = 'hex' | 'decimal' | 'binary';

export type Parsed = { ok: true; value: bigint } | { ok: false; problem: string };

export function largest(bits: number): bigint {
  return (1n << BigInt(bits)) - 1n;
}

export function formatHex(value: bigint, bits: number): string {
  return '0x' + value.toString(16).padStart(Math.ceil(bits / 4), '0');
}

// Binary in groups of four digits, as in data sheets.
export function formatBinary(value: bigint, bits: number): string {
  const digits = value.toString(2).padStart(bits, '0');
  return '0b' + digits.replace(/\B(?=(\d{4})+$)/g, '_');
}

export function formatNumber(value: bigint, bits: number, form: NumberForm): string {
  if (form === 'hex') return formatHex(value, bits);
  return form === 'binary' ? formatBinary(value, bits) : value.toString();
}

// Accepts decimal, 0x and 0b. Blanks and underscores between digits are ignored.
export function parseNumber(text: string, bits: number): Parsed {
  const plain = text.trim().replace(/(?<=\w)[ _]+(?=\w)/g, '').toLowerCase();
  if (plain === '') return { ok: false, problem: 'Enter a number.' };
  if (!/^(0x[0-9a-f]+|0b[01]+|[0-9]+)$/.test(plain)) {
    return { ok: false, problem: 'Use decimal, hexadecimal (0x1f) or binary (0b101) digits.' };
  }
  const value = BigInt(plain);
  if (value > largest(bits)) {
    return { ok: false, problem: `The largest value of ${bits} bits is ${formatHex(largest(bits), bits)}.` };
  }
  return { ok: true, value };
}

export function formatAddress(address: number, digits = 4): string {
  return '0x' + address.toString(16).padStart(digits, '0');
}

// An address or size as the tool accepts it: a number, optionally with K or M.
export function parseAddress(text: string): number | null {
  const match = /^\s*(0x[0-9a-f]+|[0-9]+)\s*([km]?)\s*$/i.exec(text);
  if (!match) return null;
  const factor = { k: 1024, m: 1024 * 1024 }[(match[2] ?? '').toLowerCase()] ?? 1;
  return Number(match[1]) * factor;
}

export function formatSize(bytes: number): string {
  if (bytes >= 1 << 20 && bytes % (1 << 18) === 0) return `${bytes / (1 << 20)} MiB`;
  if (bytes >= 1 << 20) return `${(bytes / (1 << 20)).toFixed(2)} MiB`;
  if (bytes >= 1024) return `${Number((bytes / 1024).toFixed(1))} KiB`;
  return `${bytes} ${bytes === 1 ? 'byte' : 'bytes'}`;
}

export function formatSeconds(seconds: number): string {
  if (seconds < 1) return `${Math.round(seconds * 1000)} ms`;
  if (seconds < 10) return `${seconds.toFixed(1)} s`;
  const whole = Math.round(seconds);
  if (whole < 60) return `${whole} s`;
  const minutes = Math.floor(whole / 60);
  if (minutes < 60) return `${minutes}:${String(whole % 60).padStart(2, '0')} min`;
  return `${Math.floor(minutes / 60)}:${String(minutes % 60).padStart(2, '0')} h`;
}

export function plural(count: number, one: string, several = one + 's'): string {
  return `${count.toLocaleString('en')} ${count === 1 ? one : several}`;
}
