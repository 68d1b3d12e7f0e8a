// The presets of the profile: apply, compare, save, export.
import { useState } from 'preact/hooks';
import { Button, Confirm, save } from '../parts/basics';
import type { RegisterStore } from '../register_store';
import type { Camera } from '../types';

export function Presets({ camera, store, disabled, readOnly, onApply, onCompare, onSave, onExport }: {
  camera: Camera; store: RegisterStore; disabled: boolean; readOnly: boolean; onApply: (name: string) => void;
  onCompare: (name: string) => void; onSave: (name: string, registers: string[]) => void; onExport: () => void;
}) {
  const [registers, setRegisters] = useState<string | null>(null);
  const [asked, setAsked] = useState<string | null>(null);
  const [name, setName] = useState('');
  const presets = store.profile?.presets ?? [];
  const all = [...new Set(store.registers.map((register) => `${register.peripheral}.*`))].join(' ');
  const good = /^[\w.-]+$/.test(name);
  return (
    <aside class="panel presets" aria-labelledby="presets-heading">
      <h2 id="presets-heading">Presets</h2>
      {presets.length === 0 && <p class="muted">The profile has no presets.</p>}
      <ul class="preset-list">
        {presets.map((preset) => (
          <li key={preset.name}>
            <div><code class="strong">{preset.name}</code><p class="small muted">{preset.description}</p></div>
            <div class="buttons">
              <Button disabled={disabled || readOnly} onClick={() => setAsked(preset.name)}>Apply</Button>
              <Button disabled={disabled} kind="quiet" onClick={() => onCompare(preset.name)}>Compare</Button>
              {preset.settings.length > 0 && (
                <Button kind="quiet" icon="download" label={`Export ${preset.name} as a list file`}
                  onClick={() => save(`${preset.name}.txt`, preset.settings.join('\n') + '\n', 'text/plain')} />
              )}
            </div>
          </li>
        ))}
      </ul>
      <h3>Keep the camera's values</h3>
      <form class="stack" onSubmit={(event) => {
        event.preventDefault();
        if (good) onSave(name, (registers ?? all).split(/[\s,]+/).filter((word) => word !== ''));
      }}>
        <label class="text-input"><span class="label">Name of the preset</span>
          <input value={name} spellcheck={false} onInput={(event) => setName(event.currentTarget.value.trim())} /></label>
        <label class="text-input"><span class="label">Registers, fields or patterns</span>
          <input value={registers ?? all} spellcheck={false} onInput={(event) => setRegisters(event.currentTarget.value)} /></label>
        <div class="buttons">
          <button type="submit" class="button plain" disabled={disabled || !good}>Save as preset</button>
          <Button kind="quiet" icon="download" disabled={disabled} onClick={onExport}>Export all registers</Button>
        </div>
      </form>
      {asked !== null && (
        <Confirm title={`Apply the preset ${asked}?`} action="Apply" onNo={() => setAsked(null)} onYes={() => {
          setAsked(null);
          onApply(asked);
        }}>
          <p>It writes its registers to {camera.name}. Compare first to see what changes.</p>
        </Confirm>
      )}
    </aside>
  );
}
