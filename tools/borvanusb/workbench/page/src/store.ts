// Observable values for views.
import { useEffect, useReducer, useRef } from 'preact/hooks';

export class Store<T extends object> {
  private readonly followers = new Set<() => void>();

  constructor(private value: T) {}

  get(): T {
    return this.value;
  }

  set(change: Partial<T>): void {
    this.value = { ...this.value, ...change };
    for (const follower of [...this.followers]) follower();
  }

  follow(follower: () => void): () => void {
    this.followers.add(follower);
    return () => this.followers.delete(follower);
  }
}

// Returns the selected part of a store. The view is redrawn when that part changes.
export function useStore<T extends object, S>(store: Store<T>, select: (value: T) => S): S {
  const [, redraw] = useReducer((count: number) => count + 1, 0);
  const selected = select(store.get());
  const shown = useRef(selected);
  shown.current = selected;
  const selector = useRef(select);
  selector.current = select;
  useEffect(() => {
    const look = () => {
      if (!Object.is(selector.current(store.get()), shown.current)) redraw(undefined);
    };
    look();
    return store.follow(look);
  }, [store]);
  return selected;
}

// An object with many parts that change often. Views follow its version and are redrawn at most once a frame.
export class Versioned {
  private readonly followers = new Set<() => void>();
  private waiting = false;
  version = 0;

  touch(): void {
    this.version++;
    if (this.waiting) return;
    this.waiting = true;
    // A hidden page gets no animation frames.
    const later = document.hidden ? (call: () => void) => setTimeout(call, 200) : requestAnimationFrame;
    later(() => {
      this.waiting = false;
      for (const follower of [...this.followers]) follower();
    });
  }

  follow(follower: () => void): () => void {
    this.followers.add(follower);
    return () => this.followers.delete(follower);
  }
}

export function useVersion(thing: Versioned | null): void {
  const [, redraw] = useReducer((count: number) => count + 1, 0);
  useEffect(() => thing?.follow(() => redraw(undefined)), [thing]);
}
