// Values that views follow.
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

// The selected part of a store; the view is drawn again when it changes.
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

// Something with many parts that changes often: views follow its version, drawn once a frame at most.
export class Versioned {
  private readonly followers = new Set<() => void>();
  private waiting = false;
  version = 0;

  touch(): void {
    this.version++;
    if (this.waiting) return;
    this.waiting = true;
    // A hidden page gets no frames.
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
