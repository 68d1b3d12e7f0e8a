// Live reading. The server reads what the views of this page show, and what other pages show.
import { api } from './api';
import { readsOf, type LiveWish } from './model/live';
import { onConnect, report, session } from './session';

const wishes = new Map<string, LiveWish>();
const sent = new Map<string, string>();
let waiting: ReturnType<typeof setTimeout> | null = null;

// Registers that a view, given by its name, wants to read live; null: none.
export function wantLive(view: string, wish: LiveWish | null): void {
  if (wish === null || (wish.names.length === 0 && !wish.lines?.length)) wishes.delete(view);
  else wishes.set(view, wish);
  // Waits a moment, because scrolling changes the set at every step.
  waiting ??= setTimeout(() => {
    waiting = null;
    void sendAll();
  }, 80);
}

async function sendAll(): Promise<void> {
  const byCamera = readsOf(wishes.values());
  for (const camera of sent.keys()) {
    if (!byCamera.has(camera)) byCamera.set(camera, []);
  }
  for (const [camera, reads] of byCamera) {
    const key = JSON.stringify(reads);
    if (sent.get(camera) === key) continue;
    if (reads.length === 0) sent.delete(camera);
    else sent.set(camera, key);
    try {
      await api.live(camera, reads);
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
