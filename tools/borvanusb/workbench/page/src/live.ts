// Live reading: the union of what the views show is read by the server, at the highest rate asked for.
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

// What a view (by its name) wants to be read; null ends it.
export function wantLive(view: string, wish: Wish | null): void {
  if (wish === null || wish.words.length === 0) wishes.delete(view);
  else wishes.set(view, wish);
  // Scrolling changes the set at each step.
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

// Live reading is bound to the stream of events, so a new one begins without any.
onConnect(() => {
  sent.clear();
  void sendAll();
});
