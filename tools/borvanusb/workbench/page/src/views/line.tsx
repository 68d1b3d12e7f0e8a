// Programs several cameras at the same time.
import { useState } from 'preact/hooks';
import { api, newId } from '../api';
import { formatSeconds, formatSize, plural } from '../model/number';
import { commandLine, planImages, programImages, type Image } from '../model/words';
import { Badge, Bar, Button, CommandLine, Empty, save } from '../parts/basics';
import { ImageList } from '../parts/image_list';
import { registersOf } from '../register_store';
import { asProblem, run, session, type Problem } from '../session';
import { Store, useStore } from '../store';
import type { Camera, ProgramResult } from '../types';

interface LineRow {
  state: 'idle' | 'planning' | 'planned' | 'programming' | 'done' | 'failed';
  job: string | null;
  result: ProgramResult | null;
  problem: Problem | null;
}

interface LineState {
  images: Image[];
  sizes: ReadonlyMap<string, number>;
  left: ReadonlySet<string>; // cameras to skip
  rows: ReadonlyMap<string, LineRow>;
}

const idle: LineRow = { state: 'idle', job: null, result: null, problem: null };
// Stored outside the view, because the work continues while another view is open.
const line = new Store<LineState>({ images: [], sizes: new Map(), left: new Set(), rows: new Map() });

function setRow(path: string, change: Partial<LineRow>): void {
  const rows = new Map(line.get().rows);
  rows.set(path, { ...(rows.get(path) ?? idle), ...change });
  line.set({ rows });
}

async function plan(camera: Camera): Promise<void> {
  setRow(camera.path, { ...idle, state: 'planning' });
  try {
    const { result } = await run<ProgramResult>(planImages(line.get().images), { camera: camera.path, long: true });
    setRow(camera.path, { state: 'planned', result });
  } catch (error) {
    setRow(camera.path, { state: 'failed', problem: asProblem(error) });
  }
}

async function program(camera: Camera): Promise<void> {
  const job = newId();
  const report = `report-${job}.json`;
  setRow(camera.path, { state: 'programming', job, problem: null });
  try {
    const { result } = await run<ProgramResult>(programImages(line.get().images, report), { camera: camera.path, job, long: true });
    setRow(camera.path, { state: 'done', result, job: null });
  } catch (error) {
    const result = await api.json<ProgramResult>(report).catch(() => null);
    setRow(camera.path, { state: 'failed', problem: asProblem(error), job: null, result });
  }
}

function stateText(row: LineRow): string {
  const { result } = row;
  const sectors = result ? Math.round(result.changed_bytes / 4096) : 0;
  switch (row.state) {
    case 'idle': return 'not planned';
    case 'planning': return 'reading and comparing';
    case 'planned': return sectors === 0 ? 'holds the image already'
      : `${plural(sectors, 'sector')} to write, about ${formatSeconds(result?.expected_seconds ?? 0)}`;
    case 'programming': return 'programming';
    case 'done': return sectors === 0 ? 'held the image already'
      : `${plural(sectors, 'sector')} in ${formatSeconds(result?.seconds.total ?? 0)}${result?.verified ? ', reads back equal' : ''}`;
    case 'failed': return row.problem?.message ?? 'failed';
  }
}

function Row({ camera, row, chosen, busy }: { camera: Camera; row: LineRow; chosen: boolean; busy: boolean }) {
  const job = useStore(session, (state) => (row.job ? state.jobs.get(row.job) : undefined));
  const progress = job?.progress;
  const toggle = (on: boolean) => {
    const left = new Set(line.get().left);
    if (on) left.delete(camera.path);
    else left.add(camera.path);
    line.set({ left });
  };
  const percent = row.state === 'done' ? 100 : (progress?.percent ?? 0);
  return (
    <tr class={chosen ? '' : 'left-out'}>
      <td class="narrow"><input type="checkbox" aria-label={`Program ${camera.name}`} checked={chosen} disabled={busy} onChange={(event) => toggle(event.currentTarget.checked)} /></td>
      <th scope="row"><span class="strong">{camera.name}</span><div class="small muted number">{camera.index}  {camera.vid}:{camera.pid}  {camera.profile?.name ?? 'no profile'}</div></th>
      <td class="line-progress">
        {(row.state === 'programming' || row.state === 'done') && <Bar percent={percent} label={`${camera.name}: ${progress?.stage ?? row.state}`} />}
        <div class={`small${row.state === 'programming' ? ' number' : ''}`}>
          {row.state === 'programming' && progress ? `${progress.stage} ${progress.percent} %${progress.rate ? `  ${formatSize(progress.rate)}/s` : ''}${progress.seconds_left !== null ? `  ${formatSeconds(progress.seconds_left)} left` : ''}` : stateText(row)}
        </div>
        {row.problem?.hint && <div class="small muted">{row.problem.hint.split('\n')[0]}</div>}
      </td>
      <td>{row.state === 'done' && <Badge kind="good">done</Badge>}{row.state === 'failed' && <Badge kind="bad">{row.problem?.kind ?? 'failed'}</Badge>}</td>
      <td class="actions">
        {row.state === 'programming' && row.job && <Button icon="stop" label={`Stop ${camera.name}`} onClick={() => void api.stop(row.job ?? '')} />}
        {row.state === 'failed' && !busy && <Button onClick={() => void program(camera)}>Repeat</Button>}
      </td>
    </tr>
  );
}

export function Line() {
  const cameras = useStore(session, (state) => state.cameras);
  const readOnly = useStore(session, (state) => state.readOnly);
  const state = useStore(line, (each) => each);
  const [asking, setAsking] = useState(false);
  const chosen = cameras.filter((camera) => !state.left.has(camera.path));
  const rowOf = (camera: Camera) => state.rows.get(camera.path) ?? idle;
  const busy = asking || chosen.some((camera) => ['planning', 'programming'].includes(rowOf(camera).state));
  const running = chosen.filter((camera) => rowOf(camera).state === 'programming');
  const planned = chosen.filter((camera) => rowOf(camera).state === 'planned');
  const finished = chosen.filter((camera) => ['done', 'failed'].includes(rowOf(camera).state));
  const withProfile = cameras.find((camera) => camera.profile !== null);
  const profile = withProfile ? registersOf(withProfile.path).profile : null;

  const planAll = async () => {
    setAsking(true);
    if (withProfile) await registersOf(withProfile.path).load();
    await Promise.all(chosen.map(plan));
    setAsking(false);
  };
  const report = () => {
    const rows = [...state.rows].map(([path, row]) => ({
      camera: cameras.find((camera) => camera.path === path) ?? { path }, state: row.state, result: row.result,
      error: row.problem && { kind: row.problem.kind, message: row.problem.message, hint: row.problem.hint },
    }));
    save('line-report.json', JSON.stringify({ images: state.images, cameras: rows }, null, 2), 'application/json');
  };
  const cameraWords = chosen.length === cameras.length ? ['--all'] : chosen.flatMap((camera) => ['--camera', camera.path]);
  return (
    <div class="view">
      <div class="view-head">
        <h1>Line</h1>
        <span class="muted">the same image for several cameras, side by side, each by its own process</span>
      </div>
      <section class="panel" aria-label="Image">
        <ImageList images={state.images} sizes={state.sizes} regions={profile?.flash.regions ?? []} region={profile?.flash.image_region ?? null} disabled={busy}
          onImages={(images, sizes) => line.set({ images, sizes, rows: new Map() })} />
      </section>
      {cameras.length === 0 ? <Empty icon="line" title="No camera is attached"><p>Plug in the cameras to program.</p></Empty> : (
        <div class="panel flush">
          <table class="table line-table">
            <caption class="out-of-sight">Cameras to program</caption>
            <thead>
              <tr>
                <th scope="col" class="narrow"><span class="out-of-sight">Chosen</span></th><th scope="col">Camera</th>
                <th scope="col">Progress</th><th scope="col">Result</th><th scope="col"><span class="out-of-sight">Actions</span></th>
              </tr>
            </thead>
            <tbody>
              {cameras.map((camera) => <Row key={camera.path} camera={camera} row={rowOf(camera)} chosen={!state.left.has(camera.path)} busy={busy} />)}
            </tbody>
          </table>
        </div>
      )}
      {state.images.length > 0 && <CommandLine line={commandLine([...programImages(state.images, 'report.json'), ...cameraWords])} />}
      <div class="buttons">
        <Button kind={planned.length > 0 ? 'plain' : 'primary'} disabled={busy || state.images.length === 0 || chosen.length === 0} onClick={() => void planAll()}>Plan all</Button>
        <Button kind={planned.length > 0 ? 'primary' : 'plain'} icon="flash" disabled={busy || planned.length === 0 || readOnly}
          title={readOnly ? 'The workbench is read-only' : planned.length === 0 ? 'Make the plans first' : undefined}
          onClick={() => planned.forEach((camera) => void program(camera))}>{planned.length === 0 ? 'Program' : `Program ${plural(planned.length, 'camera')}`}</Button>
        <Button icon="stop" disabled={running.length === 0} onClick={() => running.forEach((camera) => void api.stop(rowOf(camera).job ?? ''))}>Stop all</Button>
        <div class="grow" />
        <span class="muted number" role="status">{finished.length > 0 ? `${finished.length} of ${chosen.length} finished` : ''}</span>
        <Button icon="download" disabled={finished.length === 0} onClick={report}>Report</Button>
      </div>
    </div>
  );
}
