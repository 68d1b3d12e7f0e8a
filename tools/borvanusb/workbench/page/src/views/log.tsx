// All commands that the page ran, with copy buttons.
import { useState } from 'preact/hooks';
import { formatSeconds } from '../model/number';
import { clockText } from '../model/time';
import { Badge, Button, Choice, CopyButton, save, Toggle } from '../parts/basics';
import { session, type LogEntry } from '../session';
import { useStore } from '../store';

type Which = 'all' | 'writes' | 'failures';

function Outcome({ entry }: { entry: LogEntry }) {
  if (entry.exit === null) return <span class="muted">runs</span>;
  if (entry.exit === 0) return <span class="muted">done</span>;
  return <Badge kind="bad">{entry.exit < 0 ? 'refused' : `exit ${entry.exit}`}</Badge>;
}

function passes(entry: LogEntry, which: Which, background: boolean): boolean {
  if (entry.background && !background) return false;
  if (which === 'writes') return entry.write;
  return which === 'all' || (entry.exit !== null && entry.exit !== 0);
}

export function LogTable({ entries }: { entries: LogEntry[] }) {
  return (
    <table class="table log-table">
      <caption class="out-of-sight">Commands</caption>
      <thead>
        <tr>
          <th scope="col">Time</th><th scope="col">Command line</th><th scope="col">Result</th>
          <th scope="col" class="right">Took</th><th scope="col"><span class="out-of-sight">Copy</span></th>
        </tr>
      </thead>
      <tbody>
        {[...entries].reverse().map((entry) => (
          <tr key={entry.id} class={entry.write ? 'write' : ''}>
            <td class="number">{clockText(entry.time)}</td>
            <td>
              {entry.write && <Badge>write</Badge>}{' '}
              <code>{entry.line}</code>
              {entry.message !== '' && <div class="small muted">{entry.message}</div>}
            </td>
            <td><Outcome entry={entry} /></td>
            <td class="number right">{entry.seconds === null ? '' : formatSeconds(entry.seconds)}</td>
            <td><CopyButton text={entry.line} label="Copy this command line" short /></td>
          </tr>
        ))}
      </tbody>
    </table>
  );
}

export function Log() {
  const log = useStore(session, (state) => state.log);
  const [which, setWhich] = useState<Which>('all');
  const [background, setBackground] = useState(false);
  const shown = log.filter((entry) => passes(entry, which, background));
  const script = shown.filter((entry) => entry.line !== '').map((entry) => entry.line).join('\n') + '\n';
  return (
    <div class="view">
      <div class="view-head">
        <h1>Command log</h1>
        <span class="muted">each action of the page is a command line of the tool</span>
      </div>
      <div class="toolbar">
        <Choice label="Which commands" value={which} onChange={setWhich}
          options={[{ value: 'all', text: 'All' }, { value: 'writes', text: 'Writes' }, { value: 'failures', text: 'Failures' }]} />
        <Toggle label="Reads made by scrolling" checked={background} onChange={setBackground} />
        <div class="grow" />
        <CopyButton text={script} label="Copy all lines" />
        <Button icon="download" onClick={() => save('commands.txt', script, 'text/plain')}>Download</Button>
      </div>
      {shown.length === 0 ? <p class="muted pad">No command yet.</p> : <div class="panel flush"><LogTable entries={shown} /></div>}
    </div>
  );
}
