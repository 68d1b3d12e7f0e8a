// Curves and their samples. Samples are collected as long as there are curves, whichever view is open.
import { wantLive } from './live';
import { exactValue, fieldOf } from './model/fields';
import { SampleRing } from './model/ring';
import { EventClock } from './model/time';
import { onValues, session } from './session';
import { Store, Versioned } from './store';
import type { FieldDescription, RegisterDescription, RegisterValue } from './types';

export interface Curve {
  id: string;
  camera: string;
  cameraName: string;
  register: RegisterDescription;
  field: FieldDescription | null;
  label: string; // name of the register or field
  style: number; // index in the palette
  shown: boolean;
}

export interface Plotting {
  curves: Curve[];
  reading: boolean;
  rate: number;
}

// One hour at ten samples a second.
const capacity = 36_000;
export const mostCurves = 32;

export const plotting = new Store<Plotting>({ curves: [], reading: true, rate: 10 });
export const samples = new SampleRing(capacity);
export const sampled = new Versioned();

export function addCurve(camera: string, register: RegisterDescription, field: FieldDescription | null): void {
  const { curves } = plotting.get();
  const name = field ? `${register.name}.${field.name}` : register.name;
  const id = `${camera} ${name}`;
  if (curves.some((curve) => curve.id === id) || curves.length >= mostCurves) return;
  const used = new Set(curves.map((curve) => curve.style));
  let style = 0;
  while (used.has(style)) style++;
  samples.add(id);
  plotting.set({
    curves: [...curves, { id, camera, register, field, label: name, cameraName: session.get().camera?.name ?? '', style, shown: true }],
  });
}

// Includes the camera's name if the curves belong to several cameras.
export function curveTitle(curve: Curve, curves: Curve[]): string {
  return curves.every((each) => each.camera === curve.camera) ? curve.label : `${curve.cameraName}: ${curve.label}`;
}

export function removeCurve(id: string): void {
  samples.remove(id);
  plotting.set({ curves: plotting.get().curves.filter((curve) => curve.id !== id) });
  if (plotting.get().curves.length === 0) samples.clear();
}

export function showCurve(id: string, shown: boolean): void {
  plotting.set({ curves: plotting.get().curves.map((curve) => (curve.id === id ? { ...curve, shown } : curve)) });
}

function wantAll(): void {
  const { curves, reading, rate } = plotting.get();
  const cameras = new Set(curves.map((curve) => curve.camera));
  for (const { path } of session.get().cameras) {
    const names = cameras.has(path) && reading
      ? [...new Set(curves.filter((curve) => curve.camera === path).map((curve) => curve.register.name))] : [];
    wantLive(`plots ${path}`, names.length > 0 ? { camera: path, names, rate } : null);
  }
}

let wanted = '';
function follow(): void {
  const { curves, reading, rate } = plotting.get();
  const plugged = session.get().cameras.map((camera) => camera.path);
  const key = JSON.stringify([curves.map((curve) => curve.id), reading, rate, plugged]);
  if (key === wanted) return;
  wanted = key;
  wantAll();
}
plotting.follow(follow);
session.follow(follow);

const clocks = new Map<string, EventClock>();

function sampleOf(curves: Curve[], registers: RegisterValue[]): Map<string, number> {
  const byName = new Map(registers.map((register) => [register.name, register]));
  const sample = new Map<string, number>();
  for (const curve of curves) {
    const read = byName.get(curve.register.name);
    if (!read) continue;
    const value = exactValue(read);
    sample.set(curve.id, Number(curve.field ? fieldOf(value, curve.field) : value));
  }
  return sample;
}

onValues((event) => {
  const curves = plotting.get().curves.filter((curve) => curve.camera === event.camera);
  if (curves.length === 0 || !plotting.get().reading) return;
  const sample = sampleOf(curves, event.registers);
  if (sample.size === 0) return;
  let clock = clocks.get(event.camera);
  if (!clock) {
    clock = new EventClock();
    clocks.set(event.camera, clock);
  }
  const time = clock.secondsOf(event.time, Date.now() / 1000);
  samples.push(Math.max(time, samples.lastTime ?? time), sample);
  sampled.touch();
});

