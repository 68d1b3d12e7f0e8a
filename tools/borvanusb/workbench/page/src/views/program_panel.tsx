// Programming: images, plan, progress, result, and resuming after an interruption.
import { useEffect, useRef, useState } from 'preact/hooks';
import { api } from '../api';
import { overlap } from '../model/flash';
import { journalsIn } from '../model/journals';
import { formatAddress, formatSeconds, formatSize, plural } from '../model/number';
import { commandLine } from '../model/words';
import type { FlashStore, Outcome } from '../flash_store';
import { Bar, Button, CommandLine, Note, ProblemNote, save } from '../parts/basics';
import { ImageList } from '../parts/image_list';
import { registersOf } from '../register_store';
import { session } from '../session';
import { useStore } from '../store';
import type { Camera, Job, ProgramResult, Range, Region } from '../types';
import { JournalList } from './journal_list';

function rangesText(ranges: Range[]): string {
  const shown = ranges.slice(0, 4).map((range) => `${formatAddress(range.first, 5)}-${formatAddress(range.last, 5)}`).join(', ');
  return ranges.length > 4 ? `${shown} and ${ranges.length - 4} more` : shown;
}

function touchedRegions(changed: Range[], regions: Region[]): string {
  return regions.filter((region) => overlap(region, changed) > 0).map((region) => region.name).join(', ');
}

function Plan({ plan, messages, regions }: { plan: ProgramResult; messages: string[]; regions: Region[] }) {
  const names = touchedRegions(plan.changed, regions);
  const sectors = Math.round(plan.changed_bytes / 4096);
  return (
    <div class="plan" role="region" aria-label="Plan">
      <h3>Plan</h3>
      <dl class="facts tight">
        <dt>Image</dt>
        <dd>{plan.image.file}, {formatSize(plan.image.size)}, from {formatAddress(plan.address, 5)}</dd>
        <dt>Sectors</dt>
        <dd>{plan.sectors}, of which <strong>{sectors}</strong> change{sectors === 1 ? 's' : ''}{plan.changed.length > 0 && <>: <span class="number">{rangesText(plan.changed)}</span></>}</dd>
        {names !== '' && <><dt>Regions</dt><dd>{names}</dd></>}
        <dt>Writes</dt>
        <dd>{formatSize(plan.changed_bytes)} in {plural(plan.transfers, 'transfer')}, about {formatSeconds(plan.expected_seconds)} and the time that the flash takes to erase</dd>
        <dt>Keeps</dt>
        <dd>all other bytes; a backup of what changes is made first</dd>
        <dt>SHA-256</dt>
        <dd><code class="path">{plan.image.sha256}</code></dd>
      </dl>
      {messages.map((message) => <Note key={message} kind="warn" icon="warning"><p>{message}</p></Note>)}
    </div>
  );
}

export function ProgressLine({ job, onStop }: { job: Job | undefined; onStop: () => void }) {
  const progress = job?.progress;
  return (
    <div class="progress" role="region" aria-label="Progress">
      <div class="progress-text">
        <span class="strong">{progress?.stage ?? 'starting'}</span>
        <span class="number">
          {progress ? `${progress.percent} %  ${formatSize(progress.done)} of ${formatSize(progress.total)}` : ''}
          {progress?.rate ? `  ${formatSize(progress.rate)}/s` : ''}
        </span>
        <div class="grow" />
        <span class="number">{progress?.seconds_left != null ? `${formatSeconds(progress.seconds_left)} left` : ''}</span>
        <Button icon="stop" title="Stops after the sectors that are being written; a second time stops at once" onClick={onStop}>Stop</Button>
      </div>
      <Bar percent={progress?.percent ?? 0} label={`Programming: ${progress?.stage ?? 'starting'}`} />
    </div>
  );
}

// Messages without those that the list of journals shows.
function otherThanJournals(messages: string[]): string[] {
  return messages.filter((message) => journalsIn([message]).length === 0);
}

function OutcomeNote({ outcome, store, disabled }: { outcome: Outcome; store: FlashStore; disabled: boolean }) {
  const { result, problem } = outcome;
  const download = async (name: string) => save(name, (await api.bytes(name)) as BlobPart);
  const files = (
    <>
      {outcome.report !== null && <Button icon="download" onClick={() => void download(outcome.report ?? '')}>Report</Button>}
      {result?.backup && <Button icon="download" onClick={() => void download(result.backup?.split(/[\\/]/).pop() ?? '')}>Backup</Button>}
    </>
  );
  if (problem === null && result) {
    const sectors = result.changed.reduce((sum, range) => sum + range.last - range.first + 1, 0) / 4096;
    return (
      <Note kind="good" icon="check">
        <p class="strong">
          {sectors === 0 ? 'The flash held the image already.' : `Programmed ${plural(sectors, 'sector')} in ${formatSeconds(result.seconds.total)}.`}
          {result.verified ? ' All of it reads back equal.' : ''}
        </p>
        {otherThanJournals(outcome.messages).map((message) => <p key={message} class="small">{message}</p>)}
        <div class="buttons">{files}</div>
      </Note>
    );
  }
  const asks = store.journals.some((each) => each.state === 'asks');
  return (
    <ProblemNote problem={problem}>
      {result && result.remaining.length > 0 && <p class="small">Still to write: <span class="number">{rangesText(result.remaining)}</span></p>}
      <div class="buttons">
        {!asks && (
          <Button kind="primary" icon="play" disabled={disabled || store.images.length === 0} title={store.images.length === 0 ? 'Choose the image again first' : undefined}
            onClick={() => void store.program()}>Continue</Button>
        )}
        {result && files}
      </div>
    </ProblemNote>
  );
}

function VerifyNote({ store }: { store: FlashStore }) {
  const verified = store.verified;
  if (verified === null) return null;
  if (verified.equal) return <Note kind="good" icon="check"><p class="strong">Equal: the flash holds {verified.image.file}.</p></Note>;
  return (
    <Note kind="warn" icon="warning">
      <p class="strong">{plural(verified.different_bytes, 'byte')} {verified.different_bytes === 1 ? 'differs' : 'differ'}, in {plural(verified.different.length, 'range')}.</p>
      <p class="number small">{rangesText(verified.different)}</p>
      <p class="small">The bytes are marked in the hex view; the arrows above it go from one to the next.</p>
    </Note>
  );
}

export function ProgramPanel({ store, camera, regions, foreign, plugged, readOnly }: {
  store: FlashStore; camera: Camera; regions: Region[]; foreign: Job | null; plugged: boolean; readOnly: boolean;
}) {
  const job = useStore(session, (state) => (store.job ? state.jobs.get(store.job) : undefined));
  const [sizes, setSizes] = useState<ReadonlyMap<string, number>>(new Map());
  const region = camera.profile ? (registersOf(camera.path).profile?.flash.image_region ?? null) : null;
  const disabled = !plugged || store.work !== null || foreign !== null;
  const { images, plan } = store;
  const actions = useRef<HTMLDivElement>(null);
  // The plan and the result are long, and end with buttons for the next step. Scrolls to them.
  useEffect(() => {
    if (plan !== null || store.outcome !== null || store.verified !== null) actions.current?.scrollIntoView({ block: 'nearest' });
  }, [plan, store.outcome, store.verified, store.work]);
  const changes = plan !== null && plan.result.changed.length > 0;
  return (
    <section class="panel program-panel" aria-label="Program">
      <h2>Program</h2>
      {foreign && (
        <>
          <Note icon="flash"><p>This camera is being programmed by Line, by another page, or by this page before it was reloaded.</p><CommandLine line={foreign.line} /></Note>
          <ProgressLine job={foreign} onStop={() => void api.stop(foreign.id)} />
        </>
      )}
      {store.work === 'program' && store.job ? <ProgressLine job={job} onStop={() => store.stop()} /> : (
        <>
          <ImageList images={images} sizes={sizes} regions={regions} region={region} disabled={foreign !== null} onImages={(list, known) => {
            setSizes(known);
            store.choose(list);
          }} />
          <JournalList store={store} disabled={disabled} />
          {plan && !store.outcome && <Plan plan={plan.result} messages={otherThanJournals(plan.messages)} regions={regions} />}
          {plan && !store.outcome && !changes && <Note kind="good" icon="check"><p>The flash already contains the image. Nothing has to be written.</p></Note>}
          {changes && !store.outcome && <CommandLine line={commandLine(store.programWords)} />}
          {store.outcome && <OutcomeNote outcome={store.outcome} store={store} disabled={disabled || readOnly} />}
          <VerifyNote store={store} />
          {images.length > 0 && (
            <div class="buttons" ref={actions}>
              <Button kind={plan ? 'plain' : 'primary'} disabled={disabled} onClick={() => void store.makePlan()}>{store.work === 'plan' ? 'Making the plan' : 'Plan'}</Button>
              <Button kind={changes ? 'primary' : 'plain'} icon="flash" disabled={disabled || !changes || readOnly || store.outcome !== null}
                title={readOnly ? 'The workbench is read-only' : plan ? undefined : 'Make the plan first'} onClick={() => void store.program()}>
                {changes ? `Program ${formatSize(plan.result.changed_bytes)}` : 'Program'}
              </Button>
              <div class="grow" />
              <Button icon="check" disabled={disabled} onClick={() => void store.verify()}>{store.work === 'verify' ? 'Verifying' : 'Verify'}</Button>
            </div>
          )}
        </>
      )}
    </section>
  );
}
