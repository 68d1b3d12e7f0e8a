// Chooses the preset and the file that registers are compared with, for the marks.
import { useRef, useState } from 'preact/hooks';
import { api } from '../api';
import { presetWord } from '../model/words';
import { Button, Select } from '../parts/basics';
import type { RegisterStore } from '../register_store';
import { report } from '../session';

export function ReferenceChoice({ store }: { store: RegisterStore }) {
  const [preset, setPreset] = useState('');
  const [file, setFile] = useState('');
  const input = useRef<HTMLInputElement>(null);
  const presets = store.profile?.presets ?? [];
  const takeFile = async (chosen: File | undefined) => {
    if (!chosen) return;
    try {
      const stored = await api.upload(chosen);
      setFile(stored.name);
      await store.compareWith('file', stored.name);
    } catch (error) {
      report(error);
    }
  };
  return (
    <>
      {presets.length > 0 && (
        <Select label="Preset" value={preset} title="Marks the registers that differ from this preset" onChange={(name) => {
          setPreset(name);
          void store.compareWith('preset', name === '' ? null : presetWord(name));
        }}>
          <option value="">none</option>
          {presets.map((each) => <option key={each.name} value={each.name}>{each.name}</option>)}
        </Select>
      )}
      <input ref={input} type="file" class="out-of-sight" tabIndex={-1} aria-label="File to compare with" data-role="reference-file"
        onChange={(event) => void takeFile(event.currentTarget.files?.[0])} />
      {file === '' ? <Button icon="upload" title="Marks the registers that differ from a list file" onClick={() => input.current?.click()}>File</Button>
        : (
          <Button icon="close" title="Stop comparing with the file" onClick={() => {
            setFile('');
            void store.compareWith('file', null);
          }}>{file}</Button>
        )}
    </>
  );
}
