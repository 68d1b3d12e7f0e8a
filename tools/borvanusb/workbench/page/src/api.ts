// The typed interface of the server. All requests go to the page's own origin.
import type { LiveRead } from './model/live';
import type { Camera, Job, Progress, RegisterValue, RunAnswer, State, StoredFile } from './types';

export interface Events {
  cameras: { cameras: Camera[] };
  job: { job: Job; state: 'started' | 'ended'; exit: number | null };
  progress: Progress & { job: string };
  output: { job: string; line: unknown };
  values: { camera: string; pages: string[]; words: string[]; time?: string | number; registers: RegisterValue[] };
  log: { time: string; text: string; line: string | null; pages?: string[]; ended?: boolean };
}

export function newId(): string {
  return Array.from(crypto.getRandomValues(new Uint8Array(8)), (byte) => byte.toString(16).padStart(2, '0')).join('');
}

// The name of this page: its live reading belongs to it.
export const pageName = newId();

const eventNames: (keyof Events)[] = ['cameras', 'job', 'progress', 'output', 'values', 'log'];

// A request that was refused by the server or did not reach it.
export class RequestFailed extends Error {
  constructor(
    readonly status: number, readonly kind: string, message: string, readonly job: Job | null = null, readonly hint = '',
  ) {
    super(message);
  }
}

async function request(path: string, options: RequestInit = {}): Promise<Response> {
  let response: Response;
  try {
    response = await fetch(path, { credentials: 'same-origin', cache: 'no-store', ...options });
  } catch {
    throw new RequestFailed(0, 'gone', 'The workbench does not answer. Is borvanusb workbench still running?');
  }
  if (response.ok) return response;
  let body: { error?: string; message?: string; hint?: string; job?: Job } = {};
  try {
    body = await response.json();
  } catch {
    // The refusal has no body.
  }
  const busy = response.status === 409 ? `Another command is using this camera: ${body.job?.line ?? 'unknown'}` : null;
  const text = busy ?? body.message ?? body.error ?? `The workbench refused the request (${response.status}).`;
  throw new RequestFailed(response.status, body.error ?? 'refused', text, body.job ?? null, body.hint);
}

async function post<T>(path: string, body: object): Promise<T> {
  const response = await request(path, {
    method: 'POST', headers: { 'Content-Type': 'application/json' }, body: JSON.stringify(body),
  });
  return (await response.json()) as T;
}

export const api = {
  async state(): Promise<State> {
    return (await (await request('/api/state')).json()) as State;
  },

  run<T>(words: string[], camera: string | null, job: string): Promise<RunAnswer<T>> {
    return post('/api/run', { words, camera, job });
  },

  // Resolves when the work has started. Browsers open only a few connections to a server, so long work must not keep
  // one.
  begin(words: string[], camera: string | null, job: string): Promise<unknown> {
    return post('/api/run', { words, camera, job, wait: false });
  },

  // The answer of a job that has ended, or its state while it runs. The server keeps only the last answers.
  async job<T>(id: string): Promise<RunAnswer<T> | { running: Job }> {
    return (await (await request(`/api/jobs/${encodeURIComponent(id)}`)).json()) as RunAnswer<T> | { running: Job };
  },

  stop(job: string): Promise<unknown> {
    return post('/api/stop', { job });
  },

  live(camera: string, reads: LiveRead[]): Promise<unknown> {
    return post('/api/live', { camera, page: pageName, reads });
  },

  async upload(file: File): Promise<StoredFile> {
    const response = await request(`/api/files?name=${encodeURIComponent(file.name)}`, { method: 'POST', body: file });
    return (await response.json()) as StoredFile;
  },

  async files(): Promise<StoredFile[]> {
    const answer = (await (await request('/api/files')).json()) as StoredFile[] | { files: StoredFile[] };
    return Array.isArray(answer) ? answer : answer.files;
  },

  fileAddress(name: string): string {
    return `/api/files/${encodeURIComponent(name)}`;
  },

  async bytes(name: string): Promise<Uint8Array> {
    return new Uint8Array(await (await request(this.fileAddress(name))).arrayBuffer());
  },

  async json<T>(name: string): Promise<T> {
    return (await (await request(this.fileAddress(name))).json()) as T;
  },

  // Receives events until the returned function is called. The browser reconnects automatically.
  events(handle: <K extends keyof Events>(name: K, data: Events[K]) => void, state: (open: boolean) => void): () => void {
    const source = new EventSource(`/api/events?page=${pageName}`);
    for (const name of eventNames) {
      source.addEventListener(name, (event) => handle(name, JSON.parse((event as MessageEvent<string>).data)));
    }
    source.onmessage = (event: MessageEvent<string>) => {
      const data = JSON.parse(event.data) as { event?: keyof Events };
      if (data.event && eventNames.includes(data.event)) handle(data.event, data as never);
    };
    source.onopen = () => state(true);
    source.onerror = () => state(false);
    return () => source.close();
  },
};
