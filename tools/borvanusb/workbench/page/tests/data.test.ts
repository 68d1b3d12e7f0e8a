// Tests of samples, flash, scrolling, words and other pure functions.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { csv } from '../src/model/csv';
import {
  addressInName, findPattern, isInRanges, nextRange, overlap, parsePattern, sectorStates,
} from '../src/model/flash';
import { deviceForCamera, histogramOf } from '../src/model/histogram';
import { baseName, isAtHand, journalsIn } from '../src/model/journals';
import { readsOf } from '../src/model/live';
import { SampleRing } from '../src/model/ring';
import { highest, scrollHeight, scrollTopFor, scrollTopWith, windowAt } from '../src/model/scroll';
import { EventClock } from '../src/model/time';
import * as words from '../src/model/words';

test('a full ring forgets the oldest samples and does not grow', () => {
  const ring = new SampleRing(4);
  ring.add('a');
  for (let time = 0; time < 20_000; time++) ring.push(time, new Map([['a', time * 2]]));
  assert.equal(ring.length, 4);
  const slice = ring.slice(0, 1e9, ['a'], 100);
  assert.deepEqual(slice.times, [19996, 19997, 19998, 19999]);
  assert.deepEqual(slice.series, [[39992, 39994, 39996, 39998]]);
  assert.equal(ring.latest('a'), 39998);
});

test('a curve that joins later has no values before', () => {
  const ring = new SampleRing(8);
  ring.add('a');
  ring.push(1, new Map([['a', 1]]));
  ring.add('b');
  ring.push(2, new Map([['a', 2], ['b', 9]]));
  assert.deepEqual(ring.slice(0, 10, ['a', 'b'], 100).series, [[1, 2], [null, 9]]);
});

test('thinning keeps the peaks', () => {
  const ring = new SampleRing(10_000);
  ring.add('a');
  for (let time = 0; time < 10_000; time++) ring.push(time, new Map([['a', time === 4321 ? 500 : time === 77 ? -9 : 1]]));
  const slice = ring.slice(0, 10_000, ['a'], 200);
  assert.ok(slice.times.length <= 202);
  assert.ok(slice.series[0]?.includes(500));
  assert.ok(slice.series[0]?.includes(-9));
  assert.ok(slice.times.every((time, index) => index === 0 || time > (slice.times[index - 1] ?? 0)));
});

test('sectors get the state of the ranges that touch them', () => {
  const states = sectorStates(4 * 4096, [{ first: 0, last: 4095 }], [{ first: 4096, last: 16383 }],
    [{ first: 8200, last: 8201 }]);
  assert.deepEqual(states, ['used', 'blank', 'differs', 'blank']);
});

test('ranges: inside, next, overlap', () => {
  const ranges = [{ first: 0x10, last: 0x1f }, { first: 0x100, last: 0x100 }];
  assert.equal(isInRanges(0x1f, ranges), true);
  assert.equal(isInRanges(0x20, ranges), false);
  assert.equal(nextRange(0x10, ranges, true)?.first, 0x100);
  assert.equal(nextRange(0x100, ranges, true)?.first, 0x10);
  assert.equal(nextRange(0x100, ranges, false)?.first, 0x10);
  assert.equal(overlap({ first: 0x18, last: 0x10f }, ranges), 9);
});

test('what is searched for in the flash', () => {
  assert.deepEqual([...(parsePattern('de ad 0xBE') ?? [])], [0xde, 0xad, 0xbe]);
  assert.deepEqual([...(parsePattern('"ab"') ?? [])], [0x61, 0x62]);
  assert.deepEqual([...(parsePattern('boot') ?? [])], [0x62, 0x6f, 0x6f, 0x74]);
  assert.equal(parsePattern('  '), null);
  assert.equal(findPattern(Uint8Array.of(1, 2, 1, 2, 3), Uint8Array.of(1, 2, 3)), 2);
  assert.equal(findPattern(Uint8Array.of(1, 2), Uint8Array.of(2, 3)), -1);
});

test('an address in the name of a file', () => {
  assert.equal(addressInName('firmware-0x20800.bin'), 0x20800);
  assert.equal(addressInName('firmware.bin'), null);
});

test('a short list scrolls row by row, a very long one in proportion', () => {
  assert.deepEqual(windowAt(200, 100, 1000, 20, 0), { first: 10, count: 6, offset: 200 });
  const rows = 4_194_304;
  assert.equal(scrollHeight(rows, 20), highest);
  assert.equal(windowAt(0, 400, rows, 20, 0).first, 0);
  const end = windowAt(highest - 400, 400, rows, 20, 0);
  assert.equal(end.first + end.count, rows);
  const top = scrollTopFor(2_000_000, 0, 400, rows, 20);
  assert.ok(top !== null);
  const view = windowAt(top, 400, rows, 20, 0);
  assert.ok(view.first <= 2_000_000 && view.first + view.count > 2_000_000);
  assert.equal(windowAt(scrollTopWith(3_000_000, 400, rows, 20), 400, rows, 20, 0).first, 3_000_000);
  assert.equal(scrollTopWith(7, 400, 1000, 20), 140);
  assert.equal(scrollTopFor(12, 200, 100, 1000, 20), null);
  assert.equal(scrollTopFor(40, 200, 100, 1000, 20), 720);
});

test('histogram of a picture', () => {
  const histogram = histogramOf(Uint8ClampedArray.of(255, 255, 255, 255, 0, 0, 0, 255));
  assert.deepEqual([histogram.luma[255], histogram.luma[0], histogram.red[255]], [1, 1, 1]);
  assert.equal(histogram.clipped, 0.5);
});

test('the picture comes from the device that has the camera\'s name', () => {
  const devices = [{ label: 'Notebook camera' }, { label: 'Front camera (1234:0001)' }];
  assert.equal(deviceForCamera(devices, 'Front camera'), devices[1]);
  assert.equal(deviceForCamera(devices, 'Rear camera'), null);
  assert.equal(deviceForCamera(devices, ''), null);
});

test('times of readings', () => {
  const clock = new EventClock();
  assert.equal(clock.secondsOf('2026-11-22T10:00:00Z', 0), Date.UTC(2026, 10, 22, 10) / 1000);
  assert.equal(clock.secondsOf(undefined, 17), 17);
  assert.equal(clock.secondsOf(1_800_000_000.5, 0), 1_800_000_000.5);
  assert.equal(clock.secondsOf(3, 1000), 1000);
  assert.equal(clock.secondsOf(4.5, 1001.6), 1001.5);
});

test('tables as CSV', () => {
  assert.equal(csv(['time', 'A, B'], [[1, null], ['x"y', 2]]), 'time,"A, B"\r\n1,\r\n"x""y",2\r\n');
});

test('words of commands', () => {
  assert.deepEqual(words.writeRegisters([{ name: 'S.CTRL.GAIN', value: 5n, bits: 4 }]),
    ['reg', 'write', 'S.CTRL.GAIN=0x5', '--verify']);
  assert.deepEqual(words.readNumbers({ kind: 'i2c', slave: 0x6c, mode: '16/8', option: 0 }, 0x3500, 0x35ff),
    ['i2c', 'read', '0x3500-0x35ff', '--slave', '0x6c', '--mode', '16/8']);
  const raw: words.Image = { file: 'a.bin', place: { kind: 'address', address: 0x20000 } };
  const config: words.Image = { file: 'c.bin', place: { kind: 'region', region: 'config' } };
  assert.deepEqual(words.planImages([raw]), ['flash', 'program', 'a.bin', '--address', '0x20000', '--dry-run']);
  assert.deepEqual(words.verifyImages([config]), ['flash', 'verify', '--region', 'config', 'c.bin']);
  assert.deepEqual(words.planImages([raw, config]),
    ['flash', 'program', 'a.bin@0x20000', 'c.bin@region:config', '--dry-run']);
  assert.equal(words.commandLine(['reg', 'read', 'CTRL*', 'a b']), 'borvanusb reg read "CTRL*" "a b"');
});

test('what changes a camera', () => {
  assert.equal(words.isWrite(['flash', 'program', 'a.hex', '--dry-run']), false);
  assert.equal(words.isWrite(['flash', 'program', 'a.hex']), true);
  assert.equal(words.isWrite(['reg', 'read', 'A']), false);
  assert.equal(words.isWrite(['preset', 'apply', 'night']), true);
});

test('what the views of a page want by name is one reading, by number one each', () => {
  assert.deepEqual([...readsOf([])], []);
  const line = { words: ['i2c', 'read', '0x0000-0x00ff', '--slave', '0x6c', '--mode', '16/16'], rate: 2 };
  const reads = readsOf([
    { camera: 'a', names: ['X', 'Y'], rate: 5 }, { camera: 'a', names: ['Y', 'Z'], rate: 10 },
    { camera: 'a', names: [], lines: [line], rate: 2 }, { camera: 'b', names: [], lines: [line], rate: 20 },
  ]);
  assert.deepEqual(reads.get('a'), [{ words: ['reg', 'read', 'X', 'Y', 'Z'], rate: 10 }, line]);
  assert.deepEqual(reads.get('b'), [line]);
});

test('journals are found in what the commands state', () => {
  const start = "the unfinished flash program of fw.bin at 0x10010-0x1fffe, started 2026-11-21T20:44:28Z";
  const folder = 'C:\\Users\\a b\\journals/';
  const used = journalsIn([`${start}, was interrupted; the bytes beside it in 0x10000-0x10fff come from ${folder}x.journal`])[0];
  assert.deepEqual(used, {
    file: `${folder}x.journal`, command: 'flash program', image: 'fw.bin', places: '0x10010-0x1fffe',
    started: '2026-11-21T20:44:28Z', state: 'used', why: '',
  });
  const erase = 'the unfinished flash erase at 0x0-0xfff and 0x2000-0x2fff, started 2026-11-21T20:44:28Z';
  const waits = journalsIn(['other', `${erase}, stays unfinished; ${folder}y.journal holds the bytes beside it in 0x0-0xfff`]);
  assert.equal(waits.length, 1);
  assert.equal(waits[0]?.state, 'waits');
  assert.equal(waits[0]?.image, null);
  assert.equal(waits[0]?.places, '0x0-0xfff and 0x2000-0x2fff');
  const asked = journalsIn([`flash program: ${folder}x.journal belongs to ${start}, and it is unknown whether that was this `
    + `camera: ${folder}z.journal may be this camera's as well`]);
  assert.deepEqual(asked.map((each) => [each.file, each.state]), [[`${folder}x.journal`, 'asks'], [`${folder}z.journal`, 'asks']]);
  assert.deepEqual(journalsIn(['the backup from before the interrupted programming is kept: C:\\a.bin']), []);
});

test('an image of this run is planned again, one of another folder is not', () => {
  const line = (image: string) => `the unfinished flash program of ${image} at 0x1-0x2, started t, stays unfinished; `
    + 'C:\\j\\a.journal holds the bytes beside it in 0x0-0xfff';
  assert.deepEqual(['fw.bin', 'C:\\line\\fw.bin'].map((image) => journalsIn([line(image)]).map(isAtHand)), [[true], [false]]);
  assert.equal(baseName('C:\\a\\b/c.journal'), 'c.journal');
});
