// State that all views share: cameras, the chosen camera, running work, the log of commands, the theme.
import { api, newId, pageName, RequestFailed, type Events } from './api';
import { commandLine, isWrite } from './model/words';
import { Store } from './store';
import type { Camera, Job, Progress, RunAnswer } from './types';

export interface LogEntry {
  id: number;
  time: number;
  line: string;
  camera: string | null;
  exit: number | null; // null while running
  seconds: number | null;
  message: string;
  write: boolean;
  background: boolean; // caused by scrolling or live reading, not by the user
}

export type Theme = 'system' | 'light' | 'dark';

export interface Session {
  known: boolean; // whether the server's state arrived once
  connected: boolean;
  everConnected: boolean;
  version: string;
  readOnly: boolean;
  library: string | null;
  cameras: Camera[];
  camera: Camera | null; // the chosen one, even while unplugged
  jobs: ReadonlyMap<string, Job>;
  log: LogEntry[];
  theme: Theme;
  view: string;
  problem: Problem | null; // of a command without a view
}

// A failure as the tool reports it: what failed, and what to do.
export class Problem extends Error {
  constructor(message: string, readonly hint = '', readonly kind = 'internal', readonly line = '',
    readonly messages: string[] = []) {
    super(message);
  }
}

const longestLog = 2000;

export const session = new Store<Session>({
  known: false, connected: false, everConnected: false, version: '', readOnly: false, library: null, cameras: [], camera: null,
  jobs: new Map(), log: [], theme: 'system', view: 'cameras', problem: null,
});

export function isPlugged(state: Session, camera: Camera | null): boolean {
  return camera !== null && state.cameras.some((each) => each.path === camera.path);
}

function takeCameras(cameras: Camera[]): void {
  const before = session.get().camera;
  const same = before && cameras.find((camera) => camera.path === before.path);
  session.set({ cameras, camera: same ?? before ?? cameras[0] ?? null });
}

export function chooseCamera(path: string): void {
  const camera = session.get().cameras.find((each) => each.path === path);
  if (camera) session.set({ camera });
}

function takeJob(event: Events['job']): void {
  const jobs = new Map(session.get().jobs);
  if (event.state === 'started') jobs.set(event.job.id, event.job);
  else jobs.delete(event.job.id);
  const cameras = session.get().cameras.map((camera) => {
    if (camera.path !== event.job.camera) return camera;
    return { ...camera, job: event.state === 'started' ? event.job.id : null };
  });
  session.set({ jobs });
  takeCameras(cameras);
  if (event.state === 'ended') endListeners.get(event.job.id)?.();
}

function takeProgress({ job: id, ...rest }: Progress & { job: string }): void {
  // Accepts both forms: the progress itself, or an object that contains it.
  const progress = (rest as unknown as { progress?: Progress }).progress ?? rest;
  const job = session.get().jobs.get(id);
  if (job) session.set({ jobs: new Map(session.get().jobs).set(id, { ...job, progress }) });
}

type ValuesListener = (event: Events['values']) => void;
const valuesListeners = new Set<ValuesListener>();

export function onValues(listener: ValuesListener): () => void {
  valuesListeners.add(listener);
  return () => valuesListeners.delete(listener);
}

// What other pages read is theirs.
function takeValues(event: Events['values']): void {
  if (event.pages.includes(pageName)) valuesListeners.forEach((listener) => listener(event));
}

type ConnectListener = () => void;
const connectListeners = new Set<ConnectListener>();

export function onConnect(listener: ConnectListener): () => void {
  connectListeners.add(listener);
  return () => connectListeners.delete(listener);
}

async function takeState(): Promise<void> {
  const state = await api.state();
  session.set({
    known: true, version: state.version, readOnly: state.read_only, library: state.library,
    jobs: new Map(state.jobs.map((job) => [job.id, job])),
  });
  takeCameras(state.cameras);
}

export function connect(): void {
  let opened = false;
  // The page appears with this state; the one after the event stream has opened misses no event.
  const first = takeState().catch(() => undefined);
  const opens = async (open: boolean) => {
    if (open === opened && open) return;
    opened = open;
    if (open) {
      try {
        await first;
        await takeState();
      } catch {
        return; // the event stream will fail as well, and reconnect
      }
      for (const listener of connectListeners) listener();
    }
    session.set({ connected: open, everConnected: session.get().everConnected || open });
  };
  api.events((name, data) => {
    if (name === 'cameras') takeCameras((data as Events['cameras']).cameras);
    else if (name === 'job') takeJob(data as Events['job']);
    else if (name === 'progress') takeProgress(data as Events['progress']);
    else if (name === 'values') takeValues(data as Events['values']);
    else if (name === 'log') takeNote(data as Events['log']);
  }, (open) => void opens(open));
}

let nextEntry = 1;

function addEntry(entry: Omit<LogEntry, 'id'>): number {
  const id = nextEntry++;
  session.set({ log: [...session.get().log.slice(1 - longestLog), { ...entry, id }] });
  return id;
}

function takeNote(note: Events['log']): void {
  if (note.pages && !note.pages.includes(pageName)) return;
  if (note.ended) {
    report(new Problem(`Live reading has ended: ${note.text}`, 'Correct it, then switch Live off and on.', 'usage', note.line ?? ''));
  }
  addEntry({
    time: Date.parse(note.time) || Date.now(), line: note.line ?? '', camera: null, exit: 0, seconds: null,
    message: note.text, write: false, background: false,
  });
}

function endEntry(id: number, change: Partial<LogEntry>): void {
  session.set({ log: session.get().log.map((entry) => (entry.id === id ? { ...entry, ...change } : entry)) });
}

// Waits for the result of long work. It is queried when the end is announced, and every 3 s in case the event was lost.
async function outcomeOf<T>(job: string): Promise<RunAnswer<T>> {
  for (;;) {
    await new Promise<void>((resolve) => {
      const timer = setTimeout(resolve, 3000);
      const stop = onJobEnd(job, () => {
        clearTimeout(timer);
        stop();
        resolve();
      });
      setTimeout(stop, 3000);
    });
    try {
      const answer = await api.job<T>(job);
      if (!('running' in answer)) return answer;
    } catch (error) {
      // The work continues while the connection is lost. Only an answer that the server no longer keeps is an error.
      if (error instanceof RequestFailed && error.status === 404) throw error;
    }
  }
}

const endListeners = new Map<string, () => void>();

function onJobEnd(job: string, listener: () => void): () => void {
  endListeners.set(job, listener);
  return () => {
    if (endListeners.get(job) === listener) endListeners.delete(job);
  };
}

export interface RunOptions {
  camera?: string | null; // default: the chosen one
  job?: string;
  background?: boolean;
  long?: boolean; // does not occupy a connection while it runs
}

// Runs a command and returns its answer. Throws a Problem if there is no result.
export async function run<T>(words: string[], options: RunOptions = {}): Promise<RunAnswer<T> & { result: T }> {
  const camera = options.camera === undefined ? (session.get().camera?.path ?? null) : options.camera;
  const began = performance.now();
  const entry = addEntry({
    time: Date.now(), line: commandLine(words), camera, exit: null, seconds: null, message: '',
    write: isWrite(words), background: options.background ?? false,
  });
  const seconds = () => (performance.now() - began) / 1000;
  let answer: RunAnswer<T>;
  try {
    const job = options.job ?? newId();
    if (options.long) {
      const ended = outcomeOf<T>(job);
      // If the start is refused, `begin` throws and nobody awaits `ended`. This avoids an unhandled rejection.
      ended.catch(() => undefined);
      await api.begin(words, camera, job);
      answer = await ended;
    } else {
      answer = await api.run<T>(words, camera, job);
    }
  } catch (error) {
    const text = error instanceof RequestFailed ? error.message : String(error);
    endEntry(entry, { exit: -1, seconds: seconds(), message: text });
    const failed = error instanceof RequestFailed ? error : null;
    const hint = failed?.status === 409 ? 'Wait until it ends, or stop it.' : (failed?.hint ?? '');
    throw new Problem(text, hint, failed?.kind ?? 'internal', commandLine(words));
  }
  endEntry(entry, {
    exit: answer.exit, seconds: seconds(), line: answer.line || commandLine(words), message: answer.error?.message ?? '',
  });
  if (answer.error !== null || answer.result === null) {
    const message = answer.error?.message ?? answer.messages.at(-1) ?? `The command ended with exit code ${answer.exit}.`;
    throw new Problem(message, answer.error?.hint ?? '', answer.error?.kind ?? 'internal', answer.line, answer.messages);
  }
  return { ...answer, result: answer.result };
}

export function asProblem(error: unknown): Problem {
  if (error instanceof Problem) return error;
  return new Problem(error instanceof Error ? error.message : String(error));
}

// Reports the failure of work that belongs to no view.
export function report(error: unknown): void {
  session.set({ problem: asProblem(error) });
}

const themeKey = 'borvanusb-theme';

export function setTheme(theme: Theme): void {
  session.set({ theme });
  if (theme === 'system') delete document.documentElement.dataset.theme;
  else document.documentElement.dataset.theme = theme;
  try {
    localStorage.setItem(themeKey, theme);
  } catch {
    // If the browser has no storage, the theme is not remembered.
  }
}

export function loadTheme(): void {
  let theme: string | null = null;
  try {
    theme = localStorage.getItem(themeKey);
  } catch {
    // Without storage, the theme of the system is used.
  }
  setTheme(theme === 'light' || theme === 'dark' ? theme : 'system');
}
