// A uPlot chart of curves over time, in the page's colours.
import { useEffect, useRef } from 'preact/hooks';
import uPlot from 'uplot';
import type { Slice } from '../model/ring';
import { colourOf } from './colour';

export interface ChartCurve {
  id: string;
  label: string;
  style: number;
}

export interface ChartHandle {
  draw: (slice: Slice, from: number, to: number) => void;
  moveCursor: (steps: number) => void;
}

export const palette = 10;

export function curveColour(style: number): string {
  return colourOf(`--curve-${style % palette}`);
}

// When all colours of the palette are used, further curves are dashed.
function dash(style: number): number[] | undefined {
  const round = Math.floor(style / palette);
  return round === 0 ? undefined : round === 1 ? [7, 4] : [2, 3];
}

function clock(seconds: number, step: number): string {
  const time = new Date(seconds * 1000);
  const two = (part: number) => String(part).padStart(2, '0');
  const text = `${two(time.getHours())}:${two(time.getMinutes())}:${two(time.getSeconds())}`;
  return step < 1 ? `${text}.${Math.round(time.getMilliseconds() / 100) % 10}` : text;
}

function axes(unit: string): uPlot.Axis[] {
  const style = getComputedStyle(document.documentElement);
  const stroke = colourOf('--muted');
  const grid = { stroke: colourOf('--grid'), width: 1 };
  const ticks = { ...grid, size: 5 };
  const font = `11px ${style.getPropertyValue('--number-font').trim() || 'monospace'}`;
  const times = (_: uPlot, splits: number[]) => splits.map((split, at) => clock(split, (splits[at + 1] ?? split + 1) - split));
  const values = (_: uPlot, splits: number[]) => splits.map((split) => `${Number(split.toPrecision(12))}${unit}`);
  return [
    { stroke, grid, ticks, font, values: times, space: 80, size: 34 },
    { stroke, grid, ticks, font, values, size: 76, space: 40 },
  ];
}

export function Chart({ curves, bridge, colours, unit, label, onZoom, onCursor, handle }: {
  curves: ChartCurve[]; bridge: boolean; colours: string; unit: string; label: string;
  onZoom: (from: number, to: number) => void; onCursor: (index: number | null) => void;
  handle: { current: ChartHandle | null };
}) {
  const box = useRef<HTMLDivElement>(null);
  const key = curves.map((curve) => curve.id).join('|');
  const zoom = useRef(onZoom);
  zoom.current = onZoom;
  const cursor = useRef(onCursor);
  cursor.current = onCursor;

  useEffect(() => {
    const element = box.current;
    if (!element) return undefined;
    const chart = new uPlot({
      width: element.clientWidth, height: element.clientHeight,
      legend: { show: false },
      cursor: { drag: { x: true, y: false, setScale: false }, points: { size: 6 } },
      scales: { x: { time: true, auto: false }, y: unit === '' ? { auto: true } : { range: [-3, 103] } },
      axes: axes(unit),
      series: [
        {},
        ...curves.map((curve): uPlot.Series => ({
          label: curve.label, stroke: curveColour(curve.style), width: 1.5, dash: dash(curve.style), spanGaps: bridge,
          points: { show: false },
        })),
      ],
      hooks: {
        setSelect: [(self) => {
          if (self.select.width > 4) {
            zoom.current(self.posToVal(self.select.left, 'x'), self.posToVal(self.select.left + self.select.width, 'x'));
          }
          self.setSelect({ left: 0, width: 0, top: 0, height: 0 }, false);
        }],
        setCursor: [(self) => cursor.current(self.cursor.idx ?? null)],
      },
    }, [[], ...curves.map(() => [])], element);
    handle.current = {
      draw(slice, from, to) {
        chart.setData([slice.times, ...slice.series] as uPlot.AlignedData, false);
        chart.setScale('x', { min: from, max: to });
      },
      moveCursor(steps) {
        const times = chart.data[0];
        const at = Math.max(0, Math.min(times.length - 1, (chart.cursor.idx ?? times.length) + steps));
        const time = times[at];
        if (time !== undefined) chart.setCursor({ left: chart.valToPos(time, 'x'), top: chart.bbox.height / devicePixelRatio / 2 });
      },
    };
    const observer = new ResizeObserver(() => {
      chart.setSize({ width: element.clientWidth, height: element.clientHeight });
    });
    observer.observe(element);
    return () => {
      observer.disconnect();
      handle.current = null;
      chart.destroy();
    };
  }, [key, bridge, colours, unit]);

  return <div ref={box} class="chart" role="img" aria-label={label} />;
}
