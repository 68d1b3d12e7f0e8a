// Registers by number, sixteen in a row, for devices without a register map.
import { useEffect, useRef, useState } from 'preact/hooks';
import { wantLive } from '../live';
import { formatAddress, formatHex, parseAddress, parseNumber } from '../model/number';
import { readNumbers, writeNumber } from '../model/words';
import { Button, ProblemNote, Select, Toggle } from '../parts/basics';
import { registersOf } from '../register_store';
import { asProblem, isPlugged, onValues, run, session, type Problem } from '../session';
import { useStore, useVersion } from '../store';
import type { Camera, Device, RegisterRead } from '../types';
import { PicturePanel } from './picture_panel';

const columns = 16;
const liveRate = 2;

type Where = 'chip' | 'wide' | 'i2c';

interface Undo {
  address: number;
  value: bigint;
}

export function RegisterGrid({ camera, picture }: { camera: Camera; picture: boolean }) {
  const store = registersOf(camera.path);
  useVersion(store);
  const plugged = useStore(session, (state) => isPlugged(state, camera));
  const readOnly = useStore(session, (state) => state.readOnly);
  const [where, setWhere] = useState<Where>('chip');
  const [slave, setSlave] = useState('0x6c');
  const [mode, setMode] = useState('16/8');
  const [start, setStart] = useState('0x0100');
  const [count, setCount] = useState(256);
  const [live, setLive] = useState(false);
  const [problem, setProblem] = useState<Problem | null>(null);
  const [cell, setCell] = useState(0);
  const [typed, setTyped] = useState<string | null>(null);
  const [undos, setUndos] = useState<Undo[]>([]);
  const [busy, setBusy] = useState(false);
  const table = useRef<HTMLTableElement>(null);

  const from = (parseAddress(start) ?? 0) & ~(columns - 1);
  const bits = where === 'wide' ? 32 : where === 'i2c' ? Number(mode.split('/')[1]) : 8;
  const device: Device = where === 'i2c'
    ? { kind: 'i2c', slave: parseAddress(slave) ?? 0, mode, option: 0 } : { kind: 'chip', wide: where === 'wide' };
  const keyOf = (address: number) => (where === 'chip' ? `chip:${address}` : `${where}:${slave}:${mode}:${address}`);

  const words = readNumbers(device, from, from + count - 1);
  const line = words.join(' ');

  const guarded = async (work: () => Promise<void>) => {
    setBusy(true);
    setProblem(null);
    try {
      await work();
    } catch (error) {
      setProblem(asProblem(error));
    }
    setBusy(false);
  };
  const take = (registers: RegisterRead['registers']) => {
    for (const read of registers) {
      const before = store.numbers.get(keyOf(read.address));
      const value = BigInt(read.value);
      const previous = before && before.value !== value ? before.value : null;
      store.numbers.set(keyOf(read.address), { value, previous, time: Date.now() });
    }
    store.touch();
  };
  const read = () => guarded(async () => {
    take((await run<RegisterRead>(words, { camera: camera.path })).result.registers);
  });
  const write = (address: number, value: bigint, withUndo: boolean) => guarded(async () => {
    const before = store.numbers.get(keyOf(address))?.value;
    await run(writeNumber(device, address, value), { camera: camera.path });
    if (withUndo && before !== undefined) setUndos([...undos.slice(-49), { address, value: before }]);
    take((await run<RegisterRead>(readNumbers(device, address, address), { camera: camera.path })).result.registers);
  });

  useEffect(() => {
    const lines = [{ words, rate: liveRate }];
    wantLive('grid', live && plugged ? { camera: camera.path, names: [], lines, rate: liveRate } : null);
  }, [live, plugged, line, camera.path]);
  useEffect(() => onValues((event) => {
    if (event.camera === camera.path && event.words.join(' ') === line) take(event.registers);
  }), [line, camera.path]);
  useEffect(() => () => wantLive('grid', null), []);

  const focusCell = (index: number) => {
    const next = Math.max(0, Math.min(count - 1, index));
    setCell(next);
    setTyped(null);
    table.current?.querySelector<HTMLElement>(`[data-cell="${next}"]`)?.focus();
  };
  const onKey = (event: KeyboardEvent, address: number, index: number) => {
    const steps: Record<string, number> = { ArrowRight: 1, ArrowLeft: -1, ArrowDown: columns, ArrowUp: -columns };
    if (typed === null && event.key in steps) {
      focusCell(index + (steps[event.key] ?? 0));
      event.preventDefault();
    } else if (event.key === 'Escape') {
      setTyped(null);
    } else if (event.key === 'Enter' && typed !== null) {
      const parsed = parseNumber(/^[0-9a-f]+$/i.test(typed) ? `0x${typed}` : typed, bits);
      if (parsed.ok) {
        setTyped(null);
        void write(address, parsed.value, true);
      } else {
        setProblem(asProblem(new Error(parsed.problem)));
      }
    }
  };
  const undo = undos.at(-1);
  const rows = Array.from({ length: Math.ceil(count / columns) }, (_, row) => from + row * columns);
  return (
    <>
      <div class="toolbar">
        <Select label="Device" value={where} onChange={(value) => setWhere(value as Where)}>
          <option value="chip">Chip, 8 bits</option>
          <option value="wide">Chip, 32 bits</option>
          <option value="i2c">I2C device</option>
        </Select>
        {where === 'i2c' && (
          <>
            <label class="text-input"><span class="label">Slave</span>
              <input class="short" value={slave} onInput={(event) => setSlave(event.currentTarget.value)} /></label>
            <Select label="Mode" value={mode} onChange={setMode}>
              {['8/8', '16/8', '16/16', '32/8', '32/16', '32/32'].map((each) => <option key={each}>{each}</option>)}
            </Select>
          </>
        )}
        <label class="text-input"><span class="label">From</span>
          <input class="short" value={start} onInput={(event) => setStart(event.currentTarget.value)} /></label>
        <Select label="Registers" value={String(count)} onChange={(value) => setCount(Number(value))}>
          {[64, 256, 512].map((each) => <option key={each}>{each}</option>)}
        </Select>
        <Button icon="refresh" disabled={!plugged || busy} onClick={() => void read()}>Read once</Button>
        <Toggle label="Live" checked={live} onChange={setLive} title="Reads these registers twice a second" />
        <div class="grow" />
        <Button icon="undo" disabled={!undo || !plugged || readOnly || busy} onClick={() => {
          if (!undo) return;
          setUndos(undos.slice(0, -1));
          void write(undo.address, undo.value, false);
        }}>Undo last write</Button>
      </div>
      <ProblemNote problem={problem} onClose={() => setProblem(null)} />
      <p class="muted small">
        Choose a value, type a hexadecimal number and press Enter to write it. Values that changed since the last read are
        marked. Some registers change when they are read: read by number what you know.
      </p>
      <div class="grid-columns">
        <div class="panel flush grid-box" tabIndex={0} role="region" aria-label="Registers by number">
          <table class="number-grid" ref={table}>
            <caption class="out-of-sight">Registers by number</caption>
            <thead>
              <tr><th scope="col"><span class="out-of-sight">Address</span></th>
                {Array.from({ length: columns }, (_, column) => <th scope="col" key={column}>{column.toString(16)}</th>)}</tr>
            </thead>
            <tbody>
              {rows.map((row) => (
                <tr key={row}>
                  <th scope="row">{formatAddress(row)}</th>
                  {Array.from({ length: Math.min(columns, count - (row - from)) }, (_, column) => {
                    const address = row + column;
                    const index = address - from;
                    const known = store.numbers.get(keyOf(address));
                    const text = known ? formatHex(known.value, bits).slice(2) : '';
                    const isCell = index === cell;
                    return (
                      <td key={column} class={known?.previous != null ? 'changed' : ''}>
                        <input data-cell={index} tabIndex={isCell ? 0 : -1} aria-label={formatAddress(address)} class={`bits-${bits}`}
                          placeholder="--" readOnly={readOnly || !plugged} spellcheck={false} autocomplete="off"
                          title={known?.previous != null ? `before: ${formatHex(known.previous, bits)}` : formatAddress(address)}
                          value={isCell && typed !== null ? typed : text} onFocus={() => {
                            if (!isCell) {
                              setCell(index);
                              setTyped(null);
                            }
                          }}
                          onInput={(event) => setTyped(event.currentTarget.value)} onBlur={() => setTyped(null)}
                          onKeyDown={(event) => onKey(event, address, index)} />
                      </td>
                    );
                  })}
                </tr>
              ))}
            </tbody>
          </table>
        </div>
        {picture && <PicturePanel small />}
      </div>
    </>
  );
}
