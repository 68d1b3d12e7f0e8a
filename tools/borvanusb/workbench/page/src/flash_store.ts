// The flash of a camera: map, bytes read so far, plan for images, programming, differences.
import { api, newId } from './api';
import { findPattern, sectorSize } from './model/flash';
import { journalsIn, type Journal } from './model/journals';
import * as words from './model/words';
import { asProblem, Problem, run, session } from './session';
import { Versioned } from './store';
import type { FlashMap, ProgramResult, Range, RunAnswer, VerifyResult } from './types';

const mostBlocks = 512; // of one sector each: 2 MiB
const pageId = newId().slice(0, 6);

export interface Outcome {
  result: ProgramResult | null;
  problem: Problem | null;
  messages: string[];
  report: string | null;
}

export class FlashStore extends Versioned {
  map: FlashMap | null = null;
  givenSize: string | null = null;
  images: words.Image[] = [];
  journals: Journal[] = []; // that the last work on the flash named
  private journal: string | null = null; // the user's answer: a journal's file, or none
  plan: (RunAnswer<ProgramResult> & { result: ProgramResult }) | null = null;
  outcome: Outcome | null = null;
  verified: VerifyResult | null = null;
  differences: Range[] = [];
  problem: Problem | null = null;
  work: string | null = null; // current work
  job: string | null = null; // of the current programming
  readonly own = new Set<string>(); // jobs started by this page
  jump: { address: number; count: number } = { address: 0, count: 0 };
  private readonly blocks = new Map<number, Uint8Array | 'failed'>();
  private queue: number[] = [];
  private reading = false;

  constructor(readonly path: string) {
    super();
  }

  get size(): number | null {
    return this.map === null ? null : this.map.last + 1;
  }

  async guarded(work: string, action: () => Promise<void>): Promise<void> {
    this.work = work;
    this.problem = null;
    this.touch();
    try {
      await action();
    } catch (error) {
      this.problem = asProblem(error);
    }
    this.work = null;
    this.touch();
  }

  // Adds --flash-size if the user entered the size, because it can't be detected from a blank flash.
  withSize(command: string[]): string[] {
    return this.givenSize === null ? command : [...command, '--flash-size', this.givenSize];
  }

  private run<T>(command: string[], job?: string, long = false): Promise<RunAnswer<T> & { result: T }> {
    return run<T>(this.withSize(command), { camera: this.path, job, long });
  }

  readMap(): Promise<void> {
    return this.guarded('map', async () => {
      this.map = (await this.run<FlashMap>(words.flashMap())).result;
    });
  }

  goTo(address: number): void {
    this.jump = { address, count: this.jump.count + 1 };
    this.touch();
  }

  blockAt(address: number): Uint8Array | 'failed' | null {
    return this.blocks.get(Math.floor(address / sectorSize)) ?? null;
  }

  // Requests the sectors of a range. Sectors from earlier calls that are still queued are dropped.
  want(first: number, last: number): void {
    const wanted: number[] = [];
    for (let sector = Math.floor(first / sectorSize); sector <= Math.floor(last / sectorSize); sector++) {
      if (!this.blocks.has(sector)) wanted.push(sector);
    }
    this.queue = wanted;
    void this.readQueue();
  }

  forget(): void {
    this.blocks.clear();
    this.touch();
  }

  private keep(sector: number, bytes: Uint8Array | 'failed'): void {
    this.blocks.set(sector, bytes);
    for (const oldest of this.blocks.keys()) {
      if (this.blocks.size <= mostBlocks) break;
      this.blocks.delete(oldest);
    }
    this.touch();
  }

  private async readSectors(first: number, count: number): Promise<Uint8Array> {
    const file = `view-${pageId}.bin`;
    await run(this.withSize(words.readFlash(words.rangeWord(first * sectorSize, count * sectorSize), file)),
      { camera: this.path, background: true });
    return api.bytes(file);
  }

  private async readQueue(): Promise<void> {
    if (this.reading || this.work === 'program') return;
    this.reading = true;
    while (this.queue.length > 0) {
      const sector = this.queue.shift() ?? 0;
      try {
        this.keep(sector, await this.readSectors(sector, 1));
      } catch (error) {
        this.problem = asProblem(error);
        this.keep(sector, 'failed');
        this.queue = [];
      }
    }
    this.reading = false;
  }

  // Searches from `from` to the end, then from the beginning. Returns the address of the hit, or null.
  async search(pattern: Uint8Array, from: number, stopped: () => boolean): Promise<number | null> {
    const size = this.size ?? 0;
    const sectors = Math.ceil(size / sectorSize);
    const step = 16;
    const start = Math.floor(from / sectorSize);
    let tail = new Uint8Array(0);
    for (let done = 0; done <= sectors; done += step) {
      if (stopped()) return null;
      const first = (start + done) % sectors;
      if (first < step && done > 0 && start > 0) tail = new Uint8Array(0);
      const count = Math.min(step, sectors - first);
      const read = await this.readSectors(first, count);
      for (let index = 0; index < count; index++) {
        this.keep(first + index, read.slice(index * sectorSize, (index + 1) * sectorSize));
      }
      const bytes = new Uint8Array(tail.length + read.length);
      bytes.set(tail);
      bytes.set(read, tail.length);
      const base = first * sectorSize - tail.length;
      const at = findPattern(bytes, pattern, done === 0 ? Math.max(0, from - base) : 0);
      if (at >= 0) return base + at;
      tail = bytes.slice(-(pattern.length - 1) || bytes.length);
      if (count < step) {
        done -= step - count;
        tail = new Uint8Array(0);
      }
    }
    return null;
  }

  choose(images: words.Image[]): void {
    this.images = images;
    this.plan = null;
    this.outcome = null;
    this.verified = null;
    this.differences = [];
    this.journals = [];
    this.journal = null;
    this.touch();
  }

  makePlan(): Promise<void> {
    this.plan = null;
    this.outcome = null;
    this.verified = null;
    return this.guarded('plan', async () => {
      try {
        this.plan = await this.run<ProgramResult>(words.planImages(this.images, this.journal));
      } catch (error) {
        this.takeJournals(asProblem(error));
        throw error;
      }
      this.journals = journalsIn(this.plan.messages);
      this.differences = this.plan.result.changed;
    });
  }

  private takeJournals(problem: Problem): void {
    this.journals = journalsIn([...problem.messages, problem.message]);
  }

  // Whose journal it is, when the plan or the programming asked.
  answer(journal: string): Promise<void> {
    const programs = this.outcome !== null;
    this.journal = journal;
    this.problem = null;
    return programs ? this.program() : this.makePlan();
  }

  // As it is programmed, for a terminal.
  get programWords(): string[] {
    return this.withSize(words.programImages(this.images, 'report.json', this.journal));
  }

  program(): Promise<void> {
    const job = newId();
    const report = `report-${job}.json`;
    return this.guarded('program', async () => {
      this.job = job;
      this.own.add(job);
      this.outcome = null;
      this.verified = null;
      try {
        const answer = await this.run<ProgramResult>(words.programImages(this.images, report, this.journal), job, true);
        const problem = answer.exit === 0 ? null : asProblem(new Error(answer.result.message));
        this.outcome = { result: answer.result, problem, messages: answer.messages, report };
        this.journals = journalsIn(answer.messages);
        if (answer.exit === 0) {
          this.plan = null;
          this.journals = this.journals.filter((each) => each.state === 'waits');
          this.journal = null;
        }
      } catch (error) {
        const problem = asProblem(error);
        this.takeJournals(problem);
        // After a failure, too, the report contains the state of the flash.
        const result = await api.json<ProgramResult>(report).catch(() => null);
        this.outcome = { result, problem, messages: problem.messages, report };
      }
      this.job = null;
      this.differences = [];
      this.blocks.clear();
      if (session.get().cameras.some((camera) => camera.path === this.path)) {
        this.map = (await this.run<FlashMap>(words.flashMap())).result;
      }
    });
  }

  verify(): Promise<void> {
    return this.guarded('verify', async () => {
      const { result } = await this.run<VerifyResult>(words.verifyImages(this.images));
      this.verified = result;
      this.differences = result.different;
      if (result.first_difference !== null) this.goTo(result.first_difference);
    });
  }

  // Shows the result of a job that a previous page started, once it has ended.
  async takeOutcome(job: string): Promise<void> {
    try {
      const answer = await api.job<ProgramResult>(job);
      if ('running' in answer) return;
      const { result } = answer;
      if (result?.dry_run) return;
      const problem = answer.error === null ? null
        : new Problem(answer.error.message, answer.error.hint, answer.error.kind, answer.line, answer.messages);
      this.outcome = { result, problem, messages: answer.messages, report: null };
      this.blocks.clear();
    } catch {
      // Ignored: the server only keeps the last answers.
    }
    this.touch();
  }

  stop(): void {
    if (this.job !== null) void api.stop(this.job);
  }
}

const stores = new Map<string, FlashStore>();

export function flashOf(path: string): FlashStore {
  let store = stores.get(path);
  if (!store) {
    store = new FlashStore(path);
    stores.set(path, store);
  }
  return store;
}
