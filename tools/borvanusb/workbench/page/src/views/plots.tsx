// Plots of registers and fields over time.
import { useEffect, useRef, useState } from 'preact/hooks';
import { csv } from '../model/csv';
import { formatSeconds, plural } from '../model/number';
import type { Slice } from '../model/ring';
import { Button, Choice, Empty, save, Select, Toggle } from '../parts/basics';
import { Chart, type ChartHandle } from '../parts/chart';
import { curveTitle, plotting, sampled, samples, type Curve } from '../plot_data';
import { session } from '../session';
import { useStore } from '../store';
import { CurveChoice, CurveTable } from './curves';

type Scale = 'shared' | 'own';

interface Shown {
  slice: Slice; // original values
  from: number;
  to: number;
}

// Scales each curve to percent of its own range, so that curves of different magnitude fit in one chart.
function inPercent(slice: Slice): Slice {
  const series = slice.series.map((values) => {
    let smallest = Infinity;
    let largest = -Infinity;
    for (const value of values) {
      if (value === null) continue;
      smallest = Math.min(smallest, value);
      largest = Math.max(largest, value);
    }
    const span = largest - smallest;
    return values.map((value) => (value === null ? null : span === 0 ? 50 : ((value - smallest) / span) * 100));
  });
  return { times: slice.times, series };
}

function saveCsv(curves: Curve[]): void {
  const all = samples.slice(-Infinity, Infinity, curves.map((curve) => curve.id), samples.capacity + 1);
  const rows = all.times.map((time, at) => [new Date(time * 1000).toISOString(), ...all.series.map((values) => values[at] ?? null)]);
  save('plot.csv', csv(['time', ...curves.map((curve) => curveTitle(curve, curves))], rows), 'text/csv');
}

// Redraws when there are new samples, at most ten times a second.
function useFrames(draw: () => void, active: boolean): void {
  const call = useRef(draw);
  call.current = draw;
  useEffect(() => {
    if (!active) return undefined;
    let last = 0;
    let timer: ReturnType<typeof setTimeout> | null = null;
    const soon = () => {
      timer ??= setTimeout(() => {
        timer = null;
        last = performance.now();
        call.current();
      }, Math.max(0, 100 - (performance.now() - last)));
    };
    const stop = sampled.follow(soon);
    soon();
    return () => {
      stop();
      if (timer !== null) clearTimeout(timer);
    };
  }, [active]);
}

export function Plots() {
  const curves = useStore(plotting, (state) => state.curves);
  const reading = useStore(plotting, (state) => state.reading);
  const rate = useStore(plotting, (state) => state.rate);
  const theme = useStore(session, (state) => state.theme);
  const [paused, setPaused] = useState(false);
  const [span, setSpan] = useState(30);
  const [zoom, setZoom] = useState<[number, number] | null>(null);
  const [scale, setScale] = useState<Scale>('shared');
  const [cursor, setCursor] = useState<number | null>(null);
  const [dark, setDark] = useState(() => matchMedia('(prefers-color-scheme: dark)').matches);
  const [, setTick] = useState(0);
  const handle = useRef<ChartHandle | null>(null);
  const shown = useRef<Shown>({ slice: { times: [], series: [] }, from: 0, to: 1 });
  const visible = curves.filter((curve) => curve.shown);

  useEffect(() => {
    const media = matchMedia('(prefers-color-scheme: dark)');
    const change = () => setDark(media.matches);
    media.addEventListener('change', change);
    return () => media.removeEventListener('change', change);
  }, []);

  const draw = () => {
    const end = samples.lastTime ?? Date.now() / 1000;
    const [from, to] = zoom ?? [end - span, end];
    const slice = samples.slice(from, to, visible.map((curve) => curve.id), 2400);
    shown.current = { slice, from, to };
    handle.current?.draw(scale === 'own' ? inPercent(slice) : slice, from, to);
    setTick((tick) => tick + 1);
  };
  useFrames(draw, !paused && visible.length > 0);
  useEffect(draw, [zoom, span, scale, theme, dark, curves]);

  const zoomBy = (factor: number) => {
    const { from, to } = shown.current;
    const middle = (from + to) / 2;
    const half = ((to - from) / 2) * factor;
    setPaused(true);
    setZoom([middle - half, middle + half]);
  };
  const move = (part: number) => {
    const { from, to } = shown.current;
    setPaused(true);
    setZoom([from + (to - from) * part, to + (to - from) * part]);
  };
  const goLive = () => {
    setZoom(null);
    setPaused(false);
  };
  const onKeyDown = (event: KeyboardEvent) => {
    const keys: Record<string, () => void> = {
      ArrowLeft: () => (event.shiftKey ? move(-0.25) : handle.current?.moveCursor(-1)),
      ArrowRight: () => (event.shiftKey ? move(0.25) : handle.current?.moveCursor(1)),
      '+': () => zoomBy(0.5), '-': () => zoomBy(2), Escape: goLive,
    };
    const action = keys[event.key];
    if (!action) return;
    action();
    event.preventDefault();
  };
  const { slice } = shown.current;
  const cursorTime = cursor === null ? undefined : slice.times[cursor];
  const values = new Map(visible.map((curve, at) => [curve.id, slice.series[at] ?? []]));
  const several = new Set(curves.map((curve) => curve.camera)).size > 1;
  return (
    <div class="view view-fill">
      <div class="view-head">
        <h1>Plots</h1>
        <span class="muted number">{curves.length === 0 ? 'registers and fields over time'
          : `${plural(curves.length, 'curve')}, ${plural(samples.length, 'sample')}`}</span>
      </div>
      <div class="toolbar">
        <Button kind={paused ? 'primary' : 'plain'} icon={paused ? 'play' : 'pause'} disabled={curves.length === 0}
          onClick={() => (paused ? goLive() : setPaused(true))}>{paused ? 'Resume' : 'Pause'}</Button>
        <Toggle label="Read" checked={reading} onChange={(on) => plotting.set({ reading: on })}
          title="Reads the registers of the curves, also while another view is open" />
        <Select label="Rate" hidden value={String(rate)} onChange={(value) => plotting.set({ rate: Number(value) })}>
          {[1, 2, 5, 10, 20].map((each) => <option key={each} value={each}>{each} per second</option>)}
        </Select>
        <Select label="Show" value={zoom ? 'zoom' : String(span)} onChange={(value) => {
          setSpan(Number(value));
          goLive();
        }}>
          {[10, 30, 60, 300, 1800, 3600].map((each) => <option key={each} value={each}>last {formatSeconds(each).replace('.0', '')}</option>)}
          {zoom && <option value="zoom">zoomed</option>}
        </Select>
        <Choice label="Scale of values" value={scale} onChange={setScale}
          options={[{ value: 'shared', text: 'One scale' }, { value: 'own', text: 'Own scales' }]} />
        <div class="button-group" role="group" aria-label="Zoom">
          <Button icon="left" label="Earlier" disabled={curves.length === 0} onClick={() => move(-0.5)} />
          <Button icon="plus" label="Zoom in" disabled={curves.length === 0} onClick={() => zoomBy(0.5)} />
          <Button icon="zoom" label="Whole window" disabled={curves.length === 0} onClick={goLive} />
          <Button icon="right" label="Later" disabled={curves.length === 0} onClick={() => move(0.5)} />
        </div>
        <div class="grow" />
        <Button icon="download" disabled={samples.length === 0} onClick={() => saveCsv(curves)}>CSV</Button>
      </div>
      <div class="plot-columns">
        <div class="panel flush plot-panel">
          {curves.length === 0 ? (
            <Empty icon="plots" title="No curve yet">
              <p>Add registers or fields on the right, or with the plot button beside a register.</p>
            </Empty>
          ) : (
            <div class="chart-box" tabIndex={0} role="group" onKeyDown={onKeyDown}
              aria-label="Chart. Left and right move the cursor, with Shift the window; plus and minus zoom; Escape follows again.">
              <Chart curves={visible} bridge={several} unit={scale === 'own' ? ' %' : ''} colours={`${theme}${dark}`} handle={handle} onCursor={setCursor}
                label={`Curves of ${visible.map((curve) => curve.label).join(', ')}`}
                onZoom={(from, to) => {
                  setPaused(true);
                  setZoom([from, to]);
                }} />
            </div>
          )}
          {curves.length > 0 && (
            <p class="keys muted small" aria-hidden="true">Drag to zoom. <kbd>Left</kbd> <kbd>Right</kbd> move the cursor, <kbd>+</kbd> <kbd>-</kbd> zoom, <kbd>Esc</kbd> follows again</p>
          )}
        </div>
        <aside class="plot-side" aria-label="Curves">
          <CurveChoice />
          <CurveTable curves={curves} values={values} cursor={cursor} cursorTime={cursorTime} />
        </aside>
      </div>
    </div>
  );
}
