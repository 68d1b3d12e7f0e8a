// Icons, drawn as lines on a grid of 16 × 16.
const paths = {
  cameras: 'M2.5 4.5h11v8h-11z M5.5 4.5l1-2h3l1 2 M8 6.4a2.1 2.1 0 1 0 0 4.2a2.1 2.1 0 0 0 0-4.2',
  registers: 'M2 3.5h3 M2 8h3 M2 12.5h3 M7 3.5h7 M7 8h7 M7 12.5h7',
  plots: 'M2 2v12h12 M4 10.5l3-4 2.5 2.5L13.5 4',
  compare: 'M2.5 3h4.5v10H2.5z M9 3h4.5v10H9z M4 6h1.5 M10.5 6H12 M4 9h1.5',
  flash: 'M4.5 4.5h7v7h-7z M6 2v2.5 M10 2v2.5 M6 11.5V14 M10 11.5V14 M2 6h2.5 M2 10h2.5 M11.5 6H14 M11.5 10H14',
  line: 'M2 4h12 M2 8h12 M2 12h12 M2 3v2 M9 7v2 M6 11v2',
  picture: 'M2 3h12v10H2z M2 11l3.5-4 3 3 2-2L14 11 M11 5.2v.1',
  log: 'M3 4l3 3-3 3 M8 11h5',
  copy: 'M5.5 5.5h8v8h-8z M10.5 5.5v-3h-8v8h3',
  search: 'M7 2.5a4.5 4.5 0 1 0 0 9a4.5 4.5 0 0 0 0-9 M10.3 10.3L14 14',
  close: 'M3.5 3.5l9 9 M12.5 3.5l-9 9',
  play: 'M4.5 3v10l8-5z',
  pause: 'M5 3v10 M11 3v10',
  stop: 'M4 4h8v8H4z',
  undo: 'M5.5 3L2.5 6l3 3 M2.5 6H10a3.5 3.5 0 0 1 0 7H6',
  download: 'M8 2v8 M4.5 7L8 10.5 11.5 7 M2.5 13.5h11',
  upload: 'M8 10.5v-8 M4.5 6L8 2.5 11.5 6 M2.5 13.5h11',
  plus: 'M8 3v10 M3 8h10',
  right: 'M6 3.5L10.5 8 6 12.5',
  down: 'M3.5 6L8 10.5 12.5 6',
  left: 'M10 3.5L5.5 8l4.5 4.5',
  warning: 'M8 2.2L14.5 13.5h-13z M8 6.5v3.4 M8 11.6v.1',
  check: 'M3 8.5l3.2 3.2L13 4.8',
  refresh: 'M13 8a5 5 0 1 1-1.5-3.5 M13.5 2v3h-3',
  write: 'M3 13l.7-3L10.5 3.2l2.3 2.3L6 12.3z',
  sun: 'M8 5a3 3 0 1 0 0 6a3 3 0 0 0 0-6 M8 1v1.6 M8 13.4V15 M1 8h1.6 M13.4 8H15 M3.1 3.1l1.1 1.1 M11.8 11.8l1.1 1.1 M3.1 12.9l1.1-1.1 M11.8 4.2l1.1-1.1',
  moon: 'M13 9.5A5.5 5.5 0 1 1 6.5 3a4.4 4.4 0 0 0 6.5 6.5z',
  auto: 'M8 2.5a5.5 5.5 0 1 0 0 11z M8 2.5a5.5 5.5 0 0 1 0 11',
  lock: 'M3.5 7h9v6.5h-9z M5.5 7V5a2.5 2.5 0 0 1 5 0v2',
  zoom: 'M2.5 6v-3.5h3.5 M10 2.5h3.5v3.5 M13.5 10v3.5h-3.5 M6 13.5h-3.5v-3.5',
  erase: 'M6 13.5h8 M9.8 2.8l3.6 3.6-6.2 6.6H4.4L2.6 11.2z M6.2 6.4l3.6 3.6',
  eye: 'M1.5 8c2-3.3 4.2-4.7 6.5-4.7s4.5 1.4 6.5 4.7c-2 3.3-4.2 4.7-6.5 4.7s-4.5-1.4-6.5-4.7 M8 6.2a1.8 1.8 0 1 0 0 3.600a1.8 1.8 0 0 0 0-3.600',
} as const;

export type IconName = keyof typeof paths;

export function Icon({ name, size = 16 }: { name: IconName; size?: number }) {
  return (
    <svg class="icon" width={size} height={size} viewBox="0 0 16 16" aria-hidden="true" focusable="false">
      <path d={paths[name]} />
    </svg>
  );
}
