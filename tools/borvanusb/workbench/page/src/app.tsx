// The frame of all views: camera, running work, navigation, the last command line.
import { useEffect } from 'preact/hooks';
import type { FunctionComponent } from 'preact';
import { api } from './api';
import { formatSeconds } from './model/number';
import { Bar, Button, CopyButton, ProblemNote } from './parts/basics';
import { Icon, type IconName } from './parts/icon';
import { chooseCamera, isPlugged, session, setTheme, type Theme } from './session';
import { useStore } from './store';
import type { Job } from './types';
import { Cameras } from './views/cameras';
import { Compare } from './views/compare';
import { Flash } from './views/flash';
import { Line } from './views/line';
import { Log } from './views/log';
import { PictureView } from './views/picture';
import { Plots } from './views/plots';
import { Registers } from './views/registers';

interface View {
  name: string;
  title: string;
  icon: IconName;
  content: FunctionComponent;
}

const views: View[] = [
  { name: 'cameras', title: 'Cameras', icon: 'cameras', content: Cameras },
  { name: 'registers', title: 'Registers', icon: 'registers', content: Registers },
  { name: 'plots', title: 'Plots', icon: 'plots', content: Plots },
  { name: 'compare', title: 'Compare', icon: 'compare', content: Compare },
  { name: 'flash', title: 'Flash', icon: 'flash', content: Flash },
  { name: 'line', title: 'Line', icon: 'line', content: Line },
  { name: 'picture', title: 'Picture', icon: 'picture', content: PictureView },
  { name: 'log', title: 'Log', icon: 'log', content: Log },
];

function viewOfAddress(): string {
  const name = location.hash.replace(/^#/, '');
  return views.some((view) => view.name === name) ? name : 'cameras';
}

function CameraChoice() {
  const cameras = useStore(session, (state) => state.cameras);
  const camera = useStore(session, (state) => state.camera);
  const plugged = useStore(session, (state) => isPlugged(state, state.camera));
  if (camera === null) return <span class="muted">No camera</span>;
  return (
    <div class="camera-choice">
      <span class={`dot ${plugged ? 'on' : 'off'}`} aria-hidden="true" />
      <label>
        <span class="out-of-sight">Camera</span>
        <select value={camera.path} onChange={(event) => chooseCamera(event.currentTarget.value)}>
          {!plugged && <option value={camera.path}>{camera.name} (unplugged)</option>}
          {cameras.map((each) => (
            <option key={each.path} value={each.path}>{`${each.index}  ${each.name}  ${each.vid}:${each.pid}`}</option>
          ))}
        </select>
      </label>
      <span class="muted profile-name">{camera.profile ? camera.profile.name : 'no profile'}</span>
    </div>
  );
}

// Long work of the chosen camera, otherwise of any other camera.
function WorkNow() {
  const jobs = useStore(session, (state) => state.jobs);
  const camera = useStore(session, (state) => state.camera);
  const shown: Job[] = [...jobs.values()].filter((job) => job.progress !== null && job.progress.total > 0);
  const job = shown.find((each) => each.camera === camera?.path) ?? shown[0];
  if (!job?.progress) return null;
  const { stage, percent, seconds_left: left } = job.progress;
  return (
    <div class="work-now">
      <span class="stage">{stage}</span>
      <Bar percent={percent} label={`${stage}: ${job.words.slice(0, 2).join(' ')}`} />
      <span class="number">{percent} %{left !== null && left > 0 ? `, ${formatSeconds(left)} left` : ''}</span>
      <Button icon="stop" kind="quiet" label="Stop at the next safe place" onClick={() => void api.stop(job.id)} />
    </div>
  );
}

const themes: { theme: Theme; icon: IconName; text: string }[] = [
  { theme: 'system', icon: 'auto', text: 'Colours: as the system' },
  { theme: 'light', icon: 'sun', text: 'Colours: light' },
  { theme: 'dark', icon: 'moon', text: 'Colours: dark' },
];

function ThemeSwitch() {
  const theme = useStore(session, (state) => state.theme);
  const index = themes.findIndex((each) => each.theme === theme);
  const now = themes[index] ?? themes[0]!;
  const next = themes[(index + 1) % themes.length] ?? themes[0]!;
  return <Button icon={now.icon} kind="quiet" label={now.text} onClick={() => setTheme(next.theme)} />;
}

function LastCommand() {
  const entry = useStore(session, (state) => state.log.findLast((each) => each.line !== '' && !each.background));
  return (
    <footer class="last-command">
      <a href="#log" class="log-link"><Icon name="log" /><span class="out-of-sight">Command log</span></a>
      <code class="grow" title={entry?.line}>{entry?.line ?? 'borvanusb workbench'}</code>
      {entry && entry.exit !== null && entry.exit !== 0
        && <span class="badge bad">{entry.exit < 0 ? 'refused' : `exit ${entry.exit}`}</span>}
      {entry?.seconds != null && <span class="number muted">{formatSeconds(entry.seconds)}</span>}
      {entry && <CopyButton text={entry.line} label="Copy the last command line" short />}
    </footer>
  );
}

function ConnectionNote() {
  const connected = useStore(session, (state) => state.connected);
  const ever = useStore(session, (state) => state.everConnected);
  if (connected || !ever) return null;
  return (
    <div class="note bad connection" role="alert">
      <Icon name="warning" />
      <p>
        <span class="strong">The connection to the workbench is lost.</span> Work in progress goes on. The page connects
        again by itself while <code>borvanusb workbench</code> runs.
      </p>
    </div>
  );
}

function UnpluggedNote() {
  const camera = useStore(session, (state) => (isPlugged(state, state.camera) ? null : state.camera));
  const connected = useStore(session, (state) => state.connected);
  if (camera === null || !connected) return null;
  return (
    <div class="note warn connection" role="alert">
      <Icon name="warning" />
      <p>
        <span class="strong">{camera.name} is unplugged.</span> Its last values stay on the page. Plug it in again, or
        choose another camera.
      </p>
    </div>
  );
}

export function App() {
  const view = useStore(session, (state) => state.view);
  const readOnly = useStore(session, (state) => state.readOnly);
  const problem = useStore(session, (state) => state.problem);
  const ready = useStore(session, (state) => state.known);
  useEffect(() => {
    const look = () => {
      session.set({ view: viewOfAddress(), problem: null });
      document.title = `${views.find((each) => each.name === viewOfAddress())?.title ?? ''} - BorvanUSB workbench`;
    };
    look();
    window.addEventListener('hashchange', look);
    return () => window.removeEventListener('hashchange', look);
  }, []);
  const shown = views.find((each) => each.name === view) ?? views[0]!;
  const Content = shown.content;
  return (
    <div class="frame">
      <a class="skip" href="#content" onClick={(event) => {
        event.preventDefault();
        document.getElementById('content')?.focus();
      }}>Skip to the content</a>
      <header class="top">
        <div class="product"><span class="product-sign" aria-hidden="true" />BorvanUSB <span class="muted">workbench</span></div>
        <CameraChoice />
        <div class="grow" />
        <WorkNow />
        {readOnly && <span class="badge warn"><Icon name="lock" size={12} /> read-only</span>}
        <ThemeSwitch />
      </header>
      <nav class="side" aria-label="Views">
        {views.map((each) => (
          <a key={each.name} href={`#${each.name}`} aria-current={each.name === shown.name ? 'page' : undefined}>
            <Icon name={each.icon} size={18} />
            <span>{each.title}</span>
          </a>
        ))}
      </nav>
      <main id="content" tabIndex={-1} aria-label={shown.title}>
        <ConnectionNote />
        {view !== 'cameras' && view !== 'log' && <UnpluggedNote />}
        <ProblemNote problem={problem} onClose={() => session.set({ problem: null })} />
        {ready ? <Content /> : <p class="loading" role="status">Connecting</p>}
      </main>
      <LastCommand />
    </div>
  );
}
