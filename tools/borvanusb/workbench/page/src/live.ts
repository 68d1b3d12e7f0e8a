// Live reading. The server reads all registers that the views show, at the highest requested rate.
import { api } from './api';
import { onConnect, report, session } from './session';

interface Wish {
  camera: string;
  words: string[];
  rate: number;
}

const wishes = new Map<string, Wish>();
const sent = new Map<string, string>();
let waiting: ReturnType<typeof setTimeout> | null = null;

// Registers that a view, given by its name, wants to read live; null: none.
export function wantLive(view: string, wish: Wish | null): void {
  if (wish === null || wish.words.length === 0) wishes.delete(view);
  else wishes.set(view, wish);
  // Waits a moment, because scrolling changes the set at every step.
  waiting ??= setTimeout(() => {
    waiting = null;
    void sendAll();
  }, 80);
}

async function sendAll(): Promise<void> {
  const byCamera = new Map<string, { words: Set<string>; rate: number }>();
  for (const wish of wishes.values()) {
    const set = byCamera.get(wish.camera) ?? { words: new Set<string>(), rate: 0 };
    wish.words.forEach((word) => set.words.add(word));
    byCamera.set(wish.camera, { words: set.words, rate: Math.max(set.rate, wish.rate) });
  }
  for (const camera of sent.keys()) {
    if (!byCamera.has(camera)) byCamera.set(camera, { words: new Set(), rate: 1 });
  }
  for (const [camera, { words, rate }] of byCamera) {
    const list = [...words];
    const key = JSON.stringify([list, rate]);
    if (sent.get(camera) === key) continue;
    if (list.length === 0) sent.delete(camera);
    else sent.set(camera, key);
    try {
      await api.live(camera, list, rate);
    } catch (error) {
      sent.delete(camera);
      if (session.get().connected && session.get().cameras.some((each) => each.path === camera)) report(error);
    }
  }
}

// The server ends live reading with the event stream, so after reconnecting it must be requested again.
onConnect(() => {
  sent.clear();
  void sendAll();
});
