// A list of rows of one height, of which only those in view exist.
import type { ComponentChildren, JSX } from 'preact';
import { useCallback, useEffect, useLayoutEffect, useRef, useState } from 'preact/hooks';
import { scrollHeight, scrollTopFor, windowAt } from '../model/scroll';

interface ListProps {
  rows: number;
  rowHeight: number;
  render: (row: number) => ComponentChildren;
  onWindow?: (first: number, last: number) => void;
  current?: number | null; // kept in view when it changes
  currentKey?: unknown; // scrolls there again although the row is the same
  class?: string;
  attributes?: JSX.HTMLAttributes<HTMLDivElement>;
  header?: ComponentChildren;
}

export function ScrollList({ rows, rowHeight, render, onWindow, current = null, currentKey, attributes, header, ...rest }: ListProps) {
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
    const target = scrollTopFor(current, element.scrollTop, element.clientHeight - (header ? rowHeight : 0), rows, rowHeight);
    if (target !== null) {
      element.scrollTop = target;
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
