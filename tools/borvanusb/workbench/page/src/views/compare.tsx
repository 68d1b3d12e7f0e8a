// Compares two sides: cameras, presets, files, reset values. Also shows the presets of the profile.
import { useEffect, useRef, useState } from 'preact/hooks';
import { api } from '../api';
import { formatAddress, formatHex, plural } from '../model/number';
import { csv } from '../model/csv';
import { applyPreset, cameraWord, compare, dumpNamed, presetWord, savePreset, writeRegisters, type Setting } from '../model/words';
import { Button, CommandLine, Empty, Note, ProblemNote, save } from '../parts/basics';
import { registersOf, type RegisterStore } from '../register_store';
import { asProblem, isPlugged, run, session, type Problem } from '../session';
import { useStore, useVersion } from '../store';
import type { Camera, Difference, RegisterDiff } from '../types';
import { DifferenceTable } from './difference_table';
import { Presets } from './presets';

interface Side {
  word: string;
  text: string;
  camera: string | null; // set if the side can be written to
}

function sides(camera: Camera, cameras: Camera[], store: RegisterStore, files: string[]): { group: string; sides: Side[] }[] {
  const others = cameras.filter((each) => each.path !== camera.path);
  return [
    {
      group: 'Cameras',
      sides: [
        { word: 'camera', text: `${camera.name} (now)`, camera: camera.path },
        ...others.map((each) => ({ word: cameraWord(each.path), text: `${each.name} (now)`, camera: each.path })),
      ],
    },
    { group: 'Values of the profile', sides: [
      { word: 'reset', text: 'Reset values', camera: null },
      ...(store.profile?.presets ?? []).map((preset) => ({ word: presetWord(preset.name), text: `Preset ${preset.name}`, camera: null })),
    ] },
    { group: 'Files', sides: files.map((file) => ({ word: file, text: file, camera: null })) },
  ];
}

function SideChoice({ label, value, groups, onChange, onFile }: {
  label: string; value: string; groups: ReturnType<typeof sides>; onChange: (word: string) => void; onFile: (file: File) => void;
}) {
  const input = useRef<HTMLInputElement>(null);
  return (
    <div class="side-choice">
      <label class="select">
        <span class="label">{label}</span>
        <select value={value} onChange={(event) => onChange(event.currentTarget.value)}>
          {groups.filter((group) => group.sides.length > 0).map((group) => (
            <optgroup key={group.group} label={group.group}>
              {group.sides.map((side) => <option key={side.word} value={side.word}>{side.text}</option>)}
            </optgroup>
          ))}
        </select>
      </label>
      <input ref={input} type="file" class="out-of-sight" tabIndex={-1} aria-label={`List file for the ${label.toLowerCase()} side`}
        onChange={(event) => {
          const file = event.currentTarget.files?.[0];
          if (file) onFile(file);
        }} />
      <Button icon="upload" title="A list or dump file from this machine" onClick={() => input.current?.click()}>File</Button>
    </div>
  );
}

function settingsFor(differences: Difference[], side: 'left' | 'right', store: RegisterStore): Setting[] {
  const settings: Setting[] = [];
  for (const difference of differences) {
    const value = difference[side];
    if (value === null || difference.name === undefined) continue;
    settings.push({ name: difference.name, value: BigInt(value), bits: store.describe(difference.name)?.bits ?? 8 });
  }
  return settings;
}

function ByProfile({ camera }: { camera: Camera }) {
  const store = registersOf(camera.path);
  useVersion(store);
  const cameras = useStore(session, (state) => state.cameras);
  const readOnly = useStore(session, (state) => state.readOnly);
  const plugged = useStore(session, (state) => isPlugged(state, camera));
  const [left, setLeft] = useState('reset');
  const [right, setRight] = useState('camera');
  const [files, setFiles] = useState<string[]>([]);
  const [result, setResult] = useState<RegisterDiff | null>(null);
  const [chosen, setChosen] = useState<ReadonlySet<string>>(new Set());
  const [problem, setProblem] = useState<Problem | null>(null);
  const [busy, setBusy] = useState(false);
  const [done, setDone] = useState('');

  useEffect(() => {
    if (plugged) void store.load();
  }, [store, plugged]);
  const groups = sides(camera, cameras, store, files);
  const find = (word: string) => groups.flatMap((group) => group.sides).find((side) => side.word === word);

  const guarded = async (work: () => Promise<void>) => {
    setBusy(true);
    setProblem(null);
    setDone('');
    try {
      await work();
    } catch (error) {
      setProblem(asProblem(error));
    }
    setBusy(false);
  };
  const look = async (from = left, to = right) => {
    const answer = await run<RegisterDiff>(compare(from, to), { camera: camera.path });
    setResult(answer.result);
    setChosen(new Set(answer.result.differences.map((difference) => difference.name ?? formatAddress(difference.address))));
  };
  const takeFile = (file: File, set: (word: string) => void) => guarded(async () => {
    const stored = await api.upload(file);
    setFiles([...files.filter((name) => name !== stored.name), stored.name]);
    set(stored.name);
    setResult(null);
  });
  const apply = (from: 'left' | 'right') => guarded(async () => {
    const target = find(from === 'left' ? right : left);
    if (!result || !target?.camera) return;
    const differences = result.differences.filter((each) => each.name !== undefined && chosen.has(each.name));
    const settings = settingsFor(differences, from, store);
    await run(writeRegisters(settings), { camera: target.camera });
    await look();
    setDone(`${plural(settings.length, 'register')} written to ${target.text.replace(' (now)', '')}.`);
  });
  const exportList = () => guarded(async () => {
    const name = 'registers.txt';
    await run(dumpNamed(name), { camera: camera.path });
    save(name, (await api.bytes(name)) as BlobPart, 'text/plain');
  });
  const saveTable = () => {
    if (!result) return;
    const rows = result.differences.map((each) => [each.name ?? '', formatAddress(each.address),
      each.left === null ? null : formatHex(BigInt(each.left), 8), each.right === null ? null : formatHex(BigInt(each.right), 8)]);
    save('differences.csv', csv(['name', 'address', 'left', 'right'], rows), 'text/csv');
  };
  const leftSide = find(left);
  const rightSide = find(right);
  const canApply = (target: Side | undefined) => target?.camera != null && !readOnly && !busy && chosen.size > 0 && plugged;
  return (
    <div class="compare-columns">
      <section class="grow column" aria-label="Comparison">
        <div class="panel compare-head">
          <SideChoice label="Left" value={left} groups={groups} onFile={(file) => void takeFile(file, setLeft)} onChange={(word) => {
            setLeft(word);
            setResult(null);
          }} />
          <Button icon="compare" kind="quiet" label="Exchange the sides" onClick={() => {
            setLeft(right);
            setRight(left);
            setResult(null);
          }} />
          <SideChoice label="Right" value={right} groups={groups} onFile={(file) => void takeFile(file, setRight)} onChange={(word) => {
            setRight(word);
            setResult(null);
          }} />
          <div class="grow" />
          <Button kind="primary" disabled={busy || !plugged} onClick={() => void guarded(() => look())}>{busy ? 'Comparing' : 'Compare'}</Button>
        </div>
        <ProblemNote problem={problem} onClose={() => setProblem(null)} />
        {done !== '' && <Note kind="good" icon="check"><p>{done}</p></Note>}
        {result && (
          <>
            <div class="toolbar">
              <span class="strong" role="status">
                {result.equal ? 'Both sides are equal.' : `${plural(result.differences.length, 'register')} ${result.differences.length === 1 ? 'differs' : 'differ'}`}
              </span>
              <div class="grow" />
              {!result.equal && (
                <>
                  {rightSide?.camera && <Button icon="right" disabled={!canApply(rightSide)} onClick={() => void apply('left')}>Write left values to {rightSide.text.replace(' (now)', '')}</Button>}
                  {leftSide?.camera && <Button icon="left" disabled={!canApply(leftSide)} onClick={() => void apply('right')}>Write right values to {leftSide.text.replace(' (now)', '')}</Button>}
                  <Button icon="download" kind="quiet" onClick={saveTable}>CSV</Button>
                </>
              )}
            </div>
            {!result.equal && (
              <DifferenceTable differences={result.differences} left={leftSide?.text ?? left} right={rightSide?.text ?? right}
                store={store} chosen={chosen} onChosen={setChosen} />
            )}
          </>
        )}
        {!result && (
          <Empty icon="compare" title="Choose two sides and compare">
            <p>Cameras, presets, files and reset values, in any combination. Only differences are listed.</p>
          </Empty>
        )}
      </section>
      <Presets camera={camera} store={store} disabled={busy || !plugged} readOnly={readOnly}
        onApply={(name) => void guarded(async () => {
          await run(applyPreset(name), { camera: camera.path });
          await store.read([...store.known.keys()]);
          setDone(`The preset ${name} is applied to ${camera.name}.`);
          setResult(null);
        })}
        onCompare={(name) => {
          setLeft(presetWord(name));
          setRight('camera');
          void guarded(() => look(presetWord(name), 'camera'));
        }}
        onSave={(name, registers) => void guarded(async () => {
          await run(savePreset(name, registers), { camera: camera.path });
          await store.loadProfile();
          setDone(`The camera's values are saved as the preset ${name} of the profile.`);
        })}
        onExport={() => void exportList()} />
    </div>
  );
}

export function Compare() {
  const camera = useStore(session, (state) => state.camera);
  return (
    <div class="view view-fill">
      <div class="view-head">
        <h1>Compare</h1>
        <span class="muted">differences by name and by field, and presets</span>
      </div>
      {camera?.profile ? <ByProfile camera={camera} key={camera.path} /> : (
        <Empty icon="compare" title="No register names">
          <p>Comparing by name needs a camera with a profile. Lists without names are compared on the command line:</p>
          <CommandLine line="borvanusb reg diff registers.txt camera" />
        </Empty>
      )}
    </div>
  );
}
