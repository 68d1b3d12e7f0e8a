// Registers by name: tree, marks, live reading, edits. Without a profile: registers by number.
import { useCallback, useEffect, useMemo, useState } from 'preact/hooks';
import { wantLive } from '../live';
import { isReadByLooking } from '../model/fields';
import { marksOf, markTexts, passesFilter, type Mark } from '../model/marks';
import type { NumberForm } from '../model/number';
import { firstOpen, treeRows, type TreeRow } from '../model/tree';
import { Button, Choice, Empty, ProblemNote, Select, Toggle } from '../parts/basics';
import { Icon } from '../parts/icon';
import { registersOf, type RegisterStore } from '../register_store';
import { registerView } from '../register_view';
import { isPlugged, session } from '../session';
import { useStore, useVersion } from '../store';
import type { Camera, RegisterDescription } from '../types';
import { PicturePanel } from './picture_panel';
import { PendingEdits } from './pending_edits';
import { RegisterDetail } from './register_detail';
import { RegisterGrid } from './register_grid';
import { ReferenceChoice } from './register_references';
import { RegisterTree } from './register_tree';

const filterMarks: Mark[] = ['changed', 'reset', 'preset', 'file', 'edited'];

function FilterChips({ counts }: { counts: ReadonlyMap<Mark, number> }) {
  const filter = useStore(registerView, (view) => view.filter);
  const toggle = (mark: Mark) => {
    const next = new Set(filter);
    if (!next.delete(mark)) next.add(mark);
    registerView.set({ filter: next });
  };
  return (
    <div class="chips" role="group" aria-label="Show only registers that">
      {filterMarks.map((mark) => (
        <button key={mark} type="button" class={`chip mark-${mark}`} aria-pressed={filter.has(mark)} onClick={() => toggle(mark)}>
          {markTexts[mark]} <span class="number">{counts.get(mark) ?? 0}</span>
        </button>
      ))}
    </div>
  );
}

function registerOf(row: TreeRow): RegisterDescription | null {
  return row.kind === 'register' || row.kind === 'field' ? row.register : null;
}

function ByName({ store, camera }: { store: RegisterStore; camera: Camera }) {
  useVersion(store);
  const view = useStore(registerView, (state) => state);
  const plugged = useStore(session, (state) => isPlugged(state, camera));
  const [visible, setVisible] = useState<[number, number]>([0, -1]);

  useEffect(() => {
    if (plugged) void store.load();
  }, [store, plugged]);

  const open = view.open ?? firstOpen(store.registers);
  const counts = new Map<Mark, number>();
  const marks = new Map<string, Mark[]>();
  for (const register of store.registers) {
    const list = marksOf(register, store.known.get(register.name), store.references, store.edits.has(register.name));
    if (list.length > 0) marks.set(register.name, list);
    for (const mark of list) counts.set(mark, (counts.get(mark) ?? 0) + 1);
  }
  const rows = useMemo(
    () => treeRows(store.registers, {
      open, search: view.search, accepts: (register) => passesFilter(marks.get(register.name) ?? [], view.filter),
    }),
    [store, store.version, view.open, view.search, view.filter],
  );
  const [first, last] = visible;
  const inView = new Set(rows.slice(first, last + 1).map(registerOf).filter((register) => register !== null)
    .filter(isReadByLooking).map((register) => register.name));
  const visibleNames = [...inView];
  const visibleKey = visibleNames.join(' ');

  useEffect(() => {
    wantLive('registers', view.live && plugged ? { camera: camera.path, names: visibleNames, rate: view.rate } : null);
  }, [visibleKey, view.live, view.rate, camera.path, plugged]);
  useEffect(() => () => wantLive('registers', null), []);

  // Reads registers once, when they first become visible.
  useEffect(() => {
    if (!plugged || store.loaded !== 'yes' || view.live) return undefined;
    const missing = visibleNames.filter((name) => !store.known.has(name));
    if (missing.length === 0) return undefined;
    const timer = setTimeout(() => void store.read(missing), 120);
    return () => clearTimeout(timer);
  }, [visibleKey, plugged, store.loaded, view.live]);

  const onWindow = useCallback((from: number, to: number) => setVisible([from, to]), []);
  const toggleOpen = (key: string, wanted?: boolean) => {
    const next = new Set(open);
    const has = next.has(key);
    if (wanted === undefined ? has : !wanted) next.delete(key);
    else next.add(key);
    registerView.set({ open: next });
  };

  if (store.loaded !== 'yes') {
    if (store.problem) {
      return <ProblemNote problem={store.problem}><Button onClick={() => void store.load()}>Try again</Button></ProblemNote>;
    }
    return <p class="loading" role="status">Reading the register maps of the profile</p>;
  }
  const selectedName = view.selected?.replace(/^(register|field):/, '') ?? '';
  const selectedRow = rows.find((row) => row.key === view.selected);
  const selected = (selectedRow && registerOf(selectedRow)) ?? store.describe(selectedName)
    ?? store.describe(selectedName.slice(0, selectedName.lastIndexOf('.'))) ?? null;
  const readable = rows.map(registerOf).filter((register) => register !== null).filter(isReadByLooking);
  return (
    <>
      <div class="toolbar">
        <label class="search">
          <Icon name="search" />
          <span class="out-of-sight">Search by name, number or documentation</span>
          <input type="search" placeholder="Name, number, documentation" value={view.search}
            onInput={(event) => registerView.set({ search: event.currentTarget.value })} />
        </label>
        <Button icon="refresh" disabled={!plugged || store.busy} title="Read all registers of the list, without those that reading changes"
          onClick={() => void store.read([...new Set(readable.map((register) => register.name))])}>Read once</Button>
        <Toggle label="Live" checked={view.live} onChange={(live) => registerView.set({ live })}
          title="Reads what is visible, again and again" />
        <Select label="Rate" hidden value={String(view.rate)} onChange={(rate) => registerView.set({ rate: Number(rate) })}>
          {[1, 2, 5, 10, 20].map((rate) => <option key={rate} value={rate}>{rate} per second</option>)}
        </Select>
        <Select label="Values" hidden value={view.form} onChange={(form) => registerView.set({ form: form as NumberForm })}>
          <option value="hex">Hexadecimal</option>
          <option value="decimal">Decimal</option>
          <option value="binary">Binary</option>
        </Select>
        <div class="grow" />
        <ReferenceChoice store={store} />
      </div>
      <FilterChips counts={counts} />
      <ProblemNote problem={plugged || store.problem?.kind !== 'no-camera' ? store.problem : null} onClose={() => {
        store.problem = null;
        store.touch();
      }} />
      <div class={`register-columns${view.picture ? ' with-picture' : ''}`}>
        <RegisterTree rows={rows} store={store} marks={marks} form={view.form} selected={view.selected}
          onSelect={(key) => registerView.set({ selected: key })} onToggle={toggleOpen} onWindow={onWindow} />
        <div class="register-side">
          {view.picture && <PicturePanel small />}
          <RegisterDetail store={store} register={selected} camera={camera} plugged={plugged} />
        </div>
      </div>
      <PendingEdits store={store} plugged={plugged} />
    </>
  );
}

export function Registers() {
  const camera = useStore(session, (state) => state.camera);
  const view = useStore(registerView, (state) => state);
  if (camera === null) {
    return (
      <Empty icon="registers" title="No camera is chosen">
        <p>Plug in a camera. <a href="#cameras">Cameras</a> states what to do when it does not appear.</p>
      </Empty>
    );
  }
  const byNumber = view.way === 'numbers' || camera.profile === null;
  return (
    <div class="view view-fill">
      <div class="view-head">
        <h1>Registers</h1>
        <Choice label="Registers by" value={byNumber ? 'numbers' : 'names'} onChange={(way) => registerView.set({ way })}
          options={camera.profile === null ? [{ value: 'numbers', text: 'By number' }]
            : [{ value: 'names', text: 'By name' }, { value: 'numbers', text: 'By number' }]} />
        {camera.profile === null && <span class="muted">This camera has no profile, so its registers have no names.</span>}
        <div class="grow" />
        {!byNumber && <Toggle label="Write each change at once" checked={view.atOnce} onChange={(atOnce) => registerView.set({ atOnce })}
          title="Without it, changes wait for Write all" />}
        <Toggle label="Picture" checked={view.picture} onChange={(picture) => registerView.set({ picture })}
          title="The camera's picture beside the registers" />
      </div>
      {byNumber ? <RegisterGrid camera={camera} picture={view.picture} key={camera.path} />
        : <ByName store={registersOf(camera.path)} camera={camera} key={camera.path} />}
    </div>
  );
}
