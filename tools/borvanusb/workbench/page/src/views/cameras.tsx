// All cameras, their details and who uses them. Explains what to do if there is none.
import { useState } from 'preact/hooks';
import { formatSize } from '../model/number';
import { Badge, Bar, Button, CommandLine, Empty, Note, ProblemNote } from '../parts/basics';
import { Icon } from '../parts/icon';
import { asProblem, chooseCamera, run, session, type Problem } from '../session';
import { useStore } from '../store';
import type { Camera, DoctorReport, Job } from '../types';

interface Info {
  feature_register: number;
  fast_i2c: boolean;
  flash: { size: number | null; how: string };
}

function State({ job }: { job: Job | undefined }) {
  if (!job) return <span class="state"><span class="dot on" aria-hidden="true" />ready</span>;
  return (
    <div class="state-work">
      <code title={job.line}>{job.words.slice(0, 3).join(' ')}</code>
      {job.progress && <Bar percent={job.progress.percent} label={`${job.progress.stage} of ${job.words[0]}`} />}
    </div>
  );
}

function CameraRow({ camera, job, chosen }: { camera: Camera; job: Job | undefined; chosen: boolean }) {
  const [info, setInfo] = useState<Info | null>(null);
  const [problem, setProblem] = useState<Problem | null>(null);
  const ask = async () => {
    setProblem(null);
    try {
      setInfo((await run<Info>(['info'], { camera: camera.path })).result);
    } catch (error) {
      setProblem(asProblem(error));
    }
  };
  const go = (view: string) => {
    chooseCamera(camera.path);
    location.hash = view;
  };
  return (
    <li class={`camera-card${chosen ? ' chosen' : ''}`} aria-current={chosen ? 'true' : undefined}>
      <div class="camera-head">
        <Icon name="cameras" size={22} />
        <div class="grow">
          <h2>{camera.name}</h2>
          <div class="muted small number">{camera.vid}:{camera.pid}, index {camera.index}</div>
        </div>
        {chosen && <Badge kind="accent">chosen</Badge>}
      </div>
      <dl class="facts">
        <dt>Profile</dt>
        <dd>{camera.profile ? camera.profile.name : <span class="muted">none: registers by number only</span>}</dd>
        <dt>State</dt>
        <dd><State job={job} /></dd>
        <dt>Path</dt>
        <dd><code class="path">{camera.path}</code></dd>
        {info && (
          <>
            <dt>Flash</dt>
            <dd>{info.flash.size !== null && formatSize(info.flash.size)} <span class="muted">{info.flash.how}</span></dd>
            <dt>I2C lists</dt>
            <dd>{info.fast_i2c ? 'in packets' : 'register by register'}</dd>
          </>
        )}
      </dl>
      <ProblemNote problem={problem} onClose={() => setProblem(null)} />
      <div class="buttons">
        <Button kind={chosen ? 'primary' : 'plain'} onClick={() => go('registers')}>Registers</Button>
        <Button onClick={() => go('flash')}>Flash</Button>
        {!chosen && <Button onClick={() => chooseCamera(camera.path)}>Choose</Button>}
        <Button kind="quiet" onClick={() => void ask()}>Read its facts</Button>
      </div>
    </li>
  );
}

function Doctor() {
  const [report, setReport] = useState<DoctorReport | null>(null);
  const [problem, setProblem] = useState<Problem | null>(null);
  const [busy, setBusy] = useState(false);
  const examine = async () => {
    setBusy(true);
    setProblem(null);
    try {
      setReport((await run<DoctorReport>(['doctor'], { camera: null })).result);
    } catch (error) {
      setProblem(asProblem(error));
    }
    setBusy(false);
  };
  return (
    <section class="panel" aria-label="Doctor">
      <div class="panel-head">
        <h2>A camera is missing?</h2>
        <Button icon="search" disabled={busy} onClick={() => void examine()}>{busy ? 'Looking' : 'Run doctor'}</Button>
      </div>
      <p class="muted">
        <code>borvanusb doctor</code> lists every video device of the system and states why one of them is no camera of
        this kind, which library is in use, and whether each camera answers.
      </p>
      <ProblemNote problem={problem} onClose={() => setProblem(null)} />
      {report && (
        <>
          <Note kind={report.advice === '' ? 'good' : 'warn'} icon={report.advice === '' ? 'check' : 'warning'}>
            <p class="strong">{report.cause}</p>
            {report.advice !== '' && <p>{report.advice}</p>}
          </Note>
          <dl class="facts">
            <dt>Program</dt>
            <dd>{report.system.program}, version {report.system.program_version}</dd>
            <dt>System</dt>
            <dd>{report.system.system}</dd>
            <dt>Library</dt>
            <dd>{report.system.library_problem ?? `${report.system.library ?? 'none'}, version ${report.system.library_version ?? 'unknown'}`}</dd>
          </dl>
          <table class="table">
            <caption class="out-of-sight">Video devices of the system</caption>
            <thead><tr><th scope="col">Video device</th><th scope="col">Result</th></tr></thead>
            <tbody>
              {report.devices.map((device) => (
                <tr key={device.path + device.name}>
                  <td>{device.name || 'without a name'}</td>
                  <td>{device.reason ?? 'listed as a camera'}</td>
                </tr>
              ))}
            </tbody>
          </table>
        </>
      )}
    </section>
  );
}

function VirtualCamera() {
  return (
    <section class="panel" aria-label="Virtual camera">
      <div class="panel-head"><h2>Try it with a virtual camera</h2></div>
      <p>
        A virtual camera has the chip, the sensors and the flash of a real one and needs no hardware. In PowerShell, as
        administrator, in the folder of the program:
      </p>
      <CommandLine line="Copy-Item .\share\virtual-camera\demo.json $HOME" />
      <CommandLine line={'$env:BORVAN_VIRTUAL_CAMERA = "$HOME\\demo.json"'} />
      <CommandLine line=".\bin\virtual-camera.exe register" />
      <p class="muted">
        Start <code>borvanusb workbench</code> in the same PowerShell afterwards: it needs the variable.
      </p>
    </section>
  );
}

export function Cameras() {
  const cameras = useStore(session, (state) => state.cameras);
  const chosen = useStore(session, (state) => state.camera);
  const jobs = useStore(session, (state) => state.jobs);
  const version = useStore(session, (state) => state.version);
  const library = useStore(session, (state) => state.library);
  return (
    <div class="view view-cameras">
      <div class="view-head">
        <h1>Cameras</h1>
        <span class="muted" role="status">
          {cameras.length === 0 ? 'none attached' : `${cameras.length} attached`}; the list follows plugging and unplugging
        </span>
      </div>
      {cameras.length === 0 ? (
        <Empty icon="cameras" title="No camera is attached">
          <ol class="steps">
            <li>Plug the camera in. It appears here within a second.</li>
            <li>If it does not, try another cable or another port, without a hub.</li>
            <li>Run the doctor below: it states why a device is not listed.</li>
          </ol>
        </Empty>
      ) : (
        <ul class="camera-list">
          {cameras.map((camera) => (
            <CameraRow key={camera.path} camera={camera} chosen={chosen?.path === camera.path}
              job={[...jobs.values()].find((job) => job.camera === camera.path)} />
          ))}
        </ul>
      )}
      <div class="two-columns">
        <Doctor />
        <VirtualCamera />
      </div>
      <p class="muted small">borvanusb {version}, library {library ?? 'not found'}</p>
    </div>
  );
}
