// Edits to be written, undo, and the log of writes.
import { useState } from 'preact/hooks';
import { settingsOf } from '../model/edits';
import { formatHex, plural } from '../model/number';
import { commandLine, writeRegisters } from '../model/words';
import { Button, CommandLine } from '../parts/basics';
import type { RegisterStore } from '../register_store';
import { session } from '../session';
import { useStore } from '../store';
import { LogTable } from './log';

export function PendingEdits({ store, plugged }: { store: RegisterStore; plugged: boolean }) {
  const readOnly = useStore(session, (state) => state.readOnly);
  const log = useStore(session, (state) => state.log);
  const [shown, setShown] = useState(false);
  const settings = settingsOf(store.edits);
  const undo = store.undos.at(-1);
  const writes = log.filter((entry) => entry.write && entry.camera === store.path);
  return (
    <section class="pending" aria-label="Changes">
      {shown && <div class="panel flush write-log">{writes.length === 0 ? <p class="muted pad">Nothing was written yet.</p> : <LogTable entries={writes} />}</div>}
      {settings.length > 0 && <CommandLine line={commandLine(writeRegisters(settings))} />}
      <div class="pending-bar">
        <span class={settings.length > 0 ? 'strong' : 'muted'} role="status">
          {settings.length === 0 ? 'No changes wait.' : `${plural(settings.length, 'change')} not written`}
        </span>
        <ul class="pending-list">
          {settings.slice(0, 4).map((setting) => (
            <li key={setting.name}><code>{setting.name} = {formatHex(setting.value, setting.bits)}</code></li>
          ))}
          {settings.length > 4 && <li class="muted">and {settings.length - 4} more</li>}
        </ul>
        <div class="grow" />
        <Button kind="quiet" expanded={shown} onClick={() => setShown(!shown)}>Writes ({writes.length})</Button>
        <Button icon="undo" disabled={!undo || store.writing || !plugged || readOnly} title={undo ? `Restores: ${undo.text}` : 'Nothing to take back'}
          onClick={() => void store.undo()}>Undo last write</Button>
        <Button disabled={settings.length === 0} onClick={() => store.discard()}>Discard</Button>
        <Button kind="primary" icon="write" disabled={settings.length === 0 || store.writing || !plugged || readOnly}
          title={readOnly ? 'The workbench is read-only' : undefined} onClick={() => void store.writeEdits()}>Write all</Button>
      </div>
    </section>
  );
}
