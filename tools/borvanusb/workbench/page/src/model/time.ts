// Converts the times of readings to seconds since the epoch.

// The server sends an ISO text, seconds since the epoch, or seconds since the start of live reading. The latter are
// related to the clock when the first of them arrives.
export class EventClock {
  private base: number | null = null;

  secondsOf(time: string | number | undefined, now: number): number {
    if (typeof time === 'string') {
      const parsed = Date.parse(time);
      return Number.isNaN(parsed) ? now : parsed / 1000;
    }
    if (time === undefined) return now;
    if (time > 1e12) return time / 1000;
    if (time > 1e9) return time;
    if (this.base === null || this.base + time > now + 5) this.base = now - time;
    return this.base + time;
  }

  restart(): void {
    this.base = null;
  }
}

export function clockText(milliseconds: number): string {
  const time = new Date(milliseconds);
  const two = (part: number) => String(part).padStart(2, '0');
  return `${two(time.getHours())}:${two(time.getMinutes())}:${two(time.getSeconds())}`;
}
