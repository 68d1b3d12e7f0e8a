// Computes which rows of a long list are visible. Browsers limit the height of an element, so a list beyond that height
// scrolls proportionally.

export const highest = 8_000_000;

export interface ScrollWindow {
  first: number; // row
  count: number;
  offset: number; // of the first row, in pixels in the scrolled element
}

export function scrollHeight(rows: number, rowHeight: number): number {
  return Math.min(rows * rowHeight, highest);
}

export function windowAt(
  scrollTop: number, viewHeight: number, rows: number, rowHeight: number, overscan = 4,
): ScrollWindow {
  const height = scrollHeight(rows, rowHeight);
  const inView = Math.ceil(viewHeight / rowHeight) + 1;
  if (height === rows * rowHeight) {
    const first = Math.max(0, Math.floor(scrollTop / rowHeight) - overscan);
    return { first, count: Math.max(0, Math.min(rows - first, inView + 2 * overscan)), offset: first * rowHeight };
  }
  const way = Math.max(1, height - viewHeight);
  const topRow = Math.round((scrollTop / way) * Math.max(0, rows - inView + 1));
  const first = Math.max(0, topRow - overscan);
  return {
    first,
    count: Math.max(0, Math.min(rows - first, inView + 2 * overscan)),
    offset: scrollTop - (topRow - first) * rowHeight,
  };
}

// The scroll position that puts a row at the top.
export function scrollTopWith(row: number, viewHeight: number, rows: number, rowHeight: number): number {
  const height = scrollHeight(rows, rowHeight);
  if (height === rows * rowHeight) return row * rowHeight;
  const inView = Math.ceil(viewHeight / rowHeight) + 1;
  return (row / Math.max(1, rows - inView + 1)) * (height - viewHeight);
}

// The scroll position that makes a row visible; null if it is visible already.
export function scrollTopFor(
  row: number, scrollTop: number, viewHeight: number, rows: number, rowHeight: number,
): number | null {
  const height = scrollHeight(rows, rowHeight);
  if (height === rows * rowHeight) {
    const top = row * rowHeight;
    if (top < scrollTop) return top;
    if (top + rowHeight > scrollTop + viewHeight) return top + rowHeight - viewHeight;
    return null;
  }
  const view = windowAt(scrollTop, viewHeight, rows, rowHeight, 0);
  if (row >= view.first && row < view.first + view.count - 2) return null;
  return scrollTopWith(row, viewHeight, rows, rowHeight);
}
