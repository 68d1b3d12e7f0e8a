// A ring buffer for samples of several curves. New samples replace the oldest ones.

export interface Slice {
  times: number[];
  series: (number | null)[][];
}

export class SampleRing {
  private readonly times: Float64Array;
  private readonly curves = new Map<string, Float64Array>();
  private next = 0;
  private filled = 0;

  constructor(readonly capacity: number) {
    this.times = new Float64Array(capacity);
  }

  get length(): number {
    return this.filled;
  }

  get names(): string[] {
    return [...this.curves.keys()];
  }

  add(name: string): void {
    if (!this.curves.has(name)) this.curves.set(name, new Float64Array(this.capacity).fill(NaN));
  }

  remove(name: string): void {
    this.curves.delete(name);
  }

  clear(): void {
    this.next = 0;
    this.filled = 0;
    for (const values of this.curves.values()) values.fill(NaN);
  }

  push(time: number, sample: ReadonlyMap<string, number>): void {
    this.times[this.next] = time;
    for (const [name, values] of this.curves) values[this.next] = sample.get(name) ?? NaN;
    this.next = (this.next + 1) % this.capacity;
    this.filled = Math.min(this.filled + 1, this.capacity);
  }

  private at(index: number): number {
    return (this.next - this.filled + index + this.capacity) % this.capacity;
  }

  timeAt(index: number): number {
    return this.times[this.at(index)] ?? NaN;
  }

  get lastTime(): number | null {
    return this.filled === 0 ? null : this.timeAt(this.filled - 1);
  }

  latest(name: string): number | null {
    const values = this.curves.get(name);
    if (!values || this.filled === 0) return null;
    const value = values[this.at(this.filled - 1)] ?? NaN;
    return Number.isNaN(value) ? null : value;
  }

  // Index of the first sample at or after a time.
  private find(time: number): number {
    let low = 0;
    let high = this.filled;
    while (low < high) {
      const middle = (low + high) >> 1;
      if (this.timeAt(middle) < time) low = middle + 1;
      else high = middle;
    }
    return low;
  }

  // The samples between two times. If there are more than `points`, samples are grouped, and each group is shown by its
  // smallest and largest value, so that no peak is lost.
  slice(from: number, to: number, names: string[], points: number): Slice {
    const first = this.find(from);
    const end = Math.min(this.find(to) + 1, this.filled);
    const count = end - first;
    const step = Math.max(1, Math.ceil((count * 2) / Math.max(points, 2)));
    const curves = names.map((name) => this.curves.get(name));
    const times: number[] = [];
    const series: (number | null)[][] = names.map(() => []);
    if (count <= points) {
      for (let index = first; index < end; index++) {
        times.push(this.timeAt(index));
        curves.forEach((values, curve) => series[curve]?.push(known(values?.[this.at(index)])));
      }
      return { times, series };
    }
    for (let index = first; index < end; index += step) {
      const last = Math.min(index + step, end) - 1;
      times.push(this.timeAt(index), this.timeAt(Math.max(last, index)) + (last === index ? 1e-6 : 0));
      curves.forEach((values, curve) => series[curve]?.push(...this.extremes(values, index, last)));
    }
    return { times, series };
  }

  private extremes(values: Float64Array | undefined, first: number, last: number): (number | null)[] {
    let smallest = Infinity;
    let largest = -Infinity;
    let smallestAt = first;
    let largestAt = first;
    for (let index = first; index <= last; index++) {
      const value = values?.[this.at(index)] ?? NaN;
      if (value < smallest) [smallest, smallestAt] = [value, index];
      if (value > largest) [largest, largestAt] = [value, index];
    }
    if (smallest === Infinity) return [null, null];
    return smallestAt <= largestAt ? [smallest, largest] : [largest, smallest];
  }
}

function known(value: number | undefined): number | null {
  return value === undefined || Number.isNaN(value) ? null : value;
}
