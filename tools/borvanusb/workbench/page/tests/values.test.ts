// Tests of numbers, fields, edits, marks and the tree.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { editField, editWhole, editedField, editedValue, settingsOf, undoOf, type Edits } from '../src/model/edits';
import { changesWhenRead, differsFromReset, fieldOf, isReadByLooking, problemOf, withField } from '../src/model/fields';
import { marksOf, nextKnown, passesFilter } from '../src/model/marks';
import { formatBinary, formatHex, formatSeconds, formatSize, parseAddress, parseNumber } from '../src/model/number';
import { firstOpen, matchesSearch, treeRows } from '../src/model/tree';
import type { FieldDescription, RegisterDescription } from '../src/types';

function field(name: string, offset: number, bits: number, more: Partial<FieldDescription> = {}): FieldDescription {
  return {
    name, offset, bits, access: 'read-write', read_action: null, modified_write: null, description: '',
    constraint: null, values: [], ...more,
  };
}

function register(name: string, more: Partial<RegisterDescription> = {}): RegisterDescription {
  return {
    name, peripheral: name.split('.')[0] ?? '', map: 'sensor.svd', device: { kind: 'chip', wide: false },
    address: 0x3500, bits: 16, access: 'read-write', reset: null, read_action: null, modified_write: null,
    description: '', constraint: null, fields: [], ...more,
  };
}

test('numbers are read as decimal, hexadecimal and binary', () => {
  assert.deepEqual(parseNumber('0x1F', 8), { ok: true, value: 31n });
  assert.deepEqual(parseNumber(' 255 ', 8), { ok: true, value: 255n });
  assert.deepEqual(parseNumber('0b1010_0001', 8), { ok: true, value: 0xa1n });
  assert.deepEqual(parseNumber('0xffff_ffff_ffff_ffff', 64), { ok: true, value: 0xffffffffffffffffn });
});

test('what is no number, or too large, is refused with what is allowed', () => {
  for (const text of ['', '0x', '1f', '-1', '1.5', '0b12']) assert.equal(parseNumber(text, 8).ok, false, text);
  assert.deepEqual(parseNumber('256', 8), { ok: false, problem: 'The largest value of 8 bits is 0xff.' });
});

test('numbers are shown in the width of the register', () => {
  assert.equal(formatHex(0x12n, 24), '0x000012');
  assert.equal(formatHex(5n, 3), '0x5');
  assert.equal(formatBinary(0x25n, 8), '0b0010_0101');
  assert.equal(formatBinary(0x25n, 6), '0b10_0101');
});

test('addresses and sizes', () => {
  assert.equal(parseAddress('0x20800'), 0x20800);
  assert.equal(parseAddress('64K'), 65536);
  assert.equal(parseAddress('1m'), 1048576);
  assert.equal(parseAddress('12q'), null);
  assert.equal(formatSize(1048576), '1 MiB');
  assert.equal(formatSize(4096), '4 KiB');
  assert.equal(formatSize(1), '1 byte');
  assert.equal(formatSeconds(0.0421), '42 ms');
  assert.equal(formatSeconds(4.26), '4.3 s');
  assert.equal(formatSeconds(75), '1:15 min');
});

test('a field is taken out and put in, and the other bits stay', () => {
  const gain = { offset: 4, bits: 3 };
  assert.equal(fieldOf(0xabn, gain), 2n);
  assert.equal(withField(0xabn, gain, 5n), 0xdbn);
  assert.equal(withField(0xffffffffffffffffn, { offset: 60, bits: 4 }, 0n), 0x0fffffffffffffffn);
});

test('a register that reading changes is not read by looking', () => {
  assert.equal(isReadByLooking(register('A.B')), true);
  assert.equal(isReadByLooking(register('A.B', { read_action: 'clear' })), false);
  assert.equal(changesWhenRead(register('A.B', { fields: [field('F', 0, 1, { read_action: 'clear' })] })), true);
  assert.equal(isReadByLooking(register('A.B', { access: 'write-only' })), false);
});

test('constraints name what is allowed', () => {
  const ranged = register('A.B', { constraint: { kind: 'range', minimum: 2, maximum: 9 } });
  assert.equal(problemOf(5n, ranged), null);
  assert.equal(problemOf(10n, ranged), 'Allowed are 2 to 9.');
  const values = [{ name: 'off', value: 0, description: '' }, { name: 'hdr', value: 3, description: '' }];
  const mode = field('MODE', 0, 2, { constraint: { kind: 'enumerated' }, values });
  assert.equal(problemOf(3n, mode), null);
  assert.equal(problemOf(1n, mode), 'Allowed are off, hdr.');
});

test('a reset value counts for the bits of its mask alone', () => {
  const half = register('A.B', { reset: { value: 0x12, mask: 0x00ff } });
  assert.equal(differsFromReset(0x7712n, half), false);
  assert.equal(differsFromReset(0x0013n, half), true);
});

test('a value is marked as changed until it is read unchanged', () => {
  const first = nextKnown(undefined, 1n, 0);
  const second = nextKnown(first, 2n, 1);
  const third = nextKnown(second, 2n, 2);
  assert.deepEqual([first.previous, second.previous, third.previous], [null, 1n, null]);
});

test('marks and the filter by them', () => {
  const references = { preset: new Map([['A.B', 4n]]), file: null };
  const marks = marksOf(register('A.B', { reset: { value: 0, mask: 0xffff } }), { value: 1n, previous: 0n, time: 0 },
    references, true);
  assert.deepEqual(marks, ['edited', 'changed', 'reset', 'preset']);
  assert.equal(passesFilter(marks, new Set(['preset'])), true);
  assert.equal(passesFilter(marks, new Set(['file'])), false);
  assert.equal(passesFilter([], new Set()), true);
});

test('edited fields become settings of fields, an edited register one of the whole', () => {
  const gain = field('GAIN', 4, 4);
  const mode = field('MODE', 0, 2);
  const control = register('S.CTRL', { fields: [gain, mode] });
  let edits: Edits = editField(new Map(), control, gain, 5n);
  edits = editField(edits, control, mode, 1n);
  assert.deepEqual(settingsOf(edits).map((setting) => `${setting.name}=${setting.value}`),
    ['S.CTRL.GAIN=5', 'S.CTRL.MODE=1']);
  const edit = edits.get('S.CTRL');
  assert.ok(edit);
  assert.equal(editedValue(edit, 0xff00n), 0xff51n);
  assert.equal(editedValue(edit, undefined), undefined);
  edits = editField(editWhole(edits, control, 0x1230n), control, mode, 3n);
  assert.deepEqual(settingsOf(edits), [{ name: 'S.CTRL', value: 0x1233n, bits: 16 }]);
  assert.equal(editedField(edits.get('S.CTRL'), gain), 3n);
});

test('undo writes what was there before, the last one first', () => {
  const gain = field('GAIN', 4, 4);
  const registers = [register('S.CTRL', { fields: [gain] }), register('S.TIME')];
  const describe = (name: string) => registers.find((each) => each.name === name);
  const undo = undoOf(
    [{ name: 'S.TIME', address: 1, before: 7, value: 9, verified: true }],
    [{ name: 'S.CTRL.GAIN', value: 5n, bits: 4 }, { name: 'S.TIME', value: 9n, bits: 16 }],
    (name) => (name === 'S.CTRL' ? 0x20n : undefined), describe);
  assert.deepEqual(undo?.settings.map((setting) => `${setting.name}=${setting.value}`),
    ['S.TIME=7', 'S.CTRL.GAIN=2']);
  assert.equal(undoOf([], [{ name: 'S.TIME', value: 9n, bits: 16 }], () => undefined, describe), null);
});

test('the search finds names, numbers and documentation', () => {
  const exposure = register('SENSOR.EXPOSURE', { description: 'Integration time in lines' });
  for (const text of ['expo', '0x3500', '13568', 'lines integration', '0x35']) {
    assert.equal(matchesSearch(exposure, text), true, text);
  }
  assert.equal(matchesSearch(exposure, '0x3501'), false);
});

test('the tree shows what is open; a search opens it', () => {
  const registers = [
    register('SENSOR.EXPOSURE'), register('SENSOR.CTRL', { fields: [field('GAIN', 0, 4)] }),
    register('LENS.POSITION', { map: 'lens.svd' }),
  ];
  const closed = treeRows(registers, { open: new Set(), search: '', accepts: () => true });
  assert.deepEqual(closed.map((row) => row.key), ['map:sensor.svd', 'map:lens.svd']);
  const open = firstOpen(registers).add('register:SENSOR.CTRL');
  assert.deepEqual(treeRows(registers, { open, search: '', accepts: () => true }).map((row) => row.key), [
    'map:sensor.svd', 'group:sensor.svd:SENSOR', 'register:SENSOR.EXPOSURE', 'register:SENSOR.CTRL',
    'field:SENSOR.CTRL.GAIN', 'map:lens.svd', 'group:lens.svd:LENS', 'register:LENS.POSITION',
  ]);
  assert.deepEqual(treeRows(registers, { open: new Set(), search: 'position', accepts: () => true })
    .map((row) => row.key), ['map:lens.svd', 'group:lens.svd:LENS', 'register:LENS.POSITION']);
});
