// A list of rows of equal height. Only the visible rows exist in the document.
import type { ComponentChildren, JSX } from 'preact';
import { useCallback, useEffect, useLayoutEffect, useRef, useState } from 'preact/hooks';
import { scrollHeight, scrollTopFor, scrollTopWith, windowAt } from '../model/scroll';

interface ListProps {
  rows: number;
  rowHeight: number;
  render: (row: number) => ComponentChildren;
  onWindow?: (first: number, last: number) => void;
  current?: number | null; // scrolled into view when it changes
  lead?: number; // number of rows above it after scrolling to it
  currentKey?: unknown; // when it changes, scrolls to `current` again
  class?: string;
  attributes?: JSX.HTMLAttributes<HTMLDivElement>;
  header?: ComponentChildren;
}

export function ScrollList({ rows, rowHeight, render, onWindow, current = null, currentKey, lead = 0, attributes, header, ...rest }: ListProps) {
  const box = useRef<HTMLDivElement>(null);
  const [top, setTop] = useState(0);
  const [height, setHeight] = useState(400);
  const view = windowAt(top, height, rows, rowHeight);
  const visible = windowAt(top, height, rows, rowHeight, 0);

  useLayoutEffect(() => {
    const element = box.current;
    if (!element) return undefined;
    const measure = () => setHeight(element.clientHeight);
    measure();
    const observer = new ResizeObserver(measure);
    observer.observe(element);
    return () => observer.disconnect();
  }, []);

  const last = Math.min(rows, visible.first + visible.count) - 1;
  useEffect(() => onWindow?.(visible.first, last), [visible.first, last, onWindow]);

  useLayoutEffect(() => {
    const element = box.current;
    if (!element || current === null) return;
    const inView = element.clientHeight - (header ? rowHeight : 0);
    const target = scrollTopFor(current, element.scrollTop, inView, rows, rowHeight);
    if (target !== null) {
      element.scrollTop = lead === 0 ? target : scrollTopWith(Math.max(0, current - lead), inView, rows, rowHeight);
      setTop(element.scrollTop);
    }
  }, [current, currentKey, rows]);

  const scrolled = useCallback(() => setTop(box.current?.scrollTop ?? 0), []);
  const indices = Array.from({ length: view.count }, (_, index) => view.first + index);
  return (
    <div ref={box} class={`scroll-list ${rest.class ?? ''}`} onScroll={scrolled} {...attributes}>
      {header}
      <div class="scroll-space" role="presentation" style={{ height: `${scrollHeight(rows, rowHeight)}px` }}>
        <div class="scroll-view" role="presentation" style={{ transform: `translateY(${view.offset}px)` }}>
          {indices.map(render)}
        </div>
      </div>
    </div>
  );
}
