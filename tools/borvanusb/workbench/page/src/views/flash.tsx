// The flash view: regions and sectors, bytes, programming.
import { useEffect, useRef, useState } from 'preact/hooks';
import { api } from '../api';
import { overlap } from '../model/flash';
import { journalsIn } from '../model/journals';
import { formatAddress, formatSize, plural } from '../model/number';
import { eraseRegion, isWrite, readFlash, readRegion } from '../model/words';
import { flashOf, type FlashStore } from '../flash_store';
import { Badge, Button, Confirm, Empty, ProblemNote, save, Select } from '../parts/basics';
import { registersOf } from '../register_store';
import { isPlugged, run, session } from '../session';
import { useStore, useVersion } from '../store';
import type { Camera, Region } from '../types';
import { HexView } from './hex_view';
import { ProgramPanel } from './program_panel';
import { SectorMap } from './sector_map';

function backup(store: FlashStore, region: Region | null): Promise<void> {
  const file = region ? `${region.name}-${formatAddress(region.first, 8)}.bin` : 'flash-0x00000000.bin';
  return store.guarded('backup', async () => {
    await run(store.withSize(region ? readRegion(region.name, file) : readFlash('all', file)), { camera: store.path });
    save(file, (await api.bytes(file)) as BlobPart);
  });
}

function RegionTable({ store, regions, disabled, readOnly }: {
  store: FlashStore; regions: Region[]; disabled: boolean; readOnly: boolean;
}) {
  const [asked, setAsked] = useState<Region | null>(null);
  return (
    <>
      <table class="table region-table">
        <caption class="out-of-sight">Regions of the flash</caption>
        <thead>
          <tr>
            <th scope="col">Region</th><th scope="col">Addresses</th><th scope="col" class="right">Size</th>
            <th scope="col" class="right">Used</th><th scope="col"><span class="out-of-sight">Actions</span></th>
          </tr>
        </thead>
        <tbody>
          {regions.map((region) => (
            <tr key={region.name}>
              <th scope="row" title={region.description}>
                <button type="button" class="link" onClick={() => store.goTo(region.first)}>{region.name}</button>{' '}
                {region.read_only && <Badge title="This region is never programmed or erased">read-only</Badge>}
              </th>
              <td class="number">{formatAddress(region.first, 5)}-<wbr />{formatAddress(region.last, 5)}</td>
              <td class="number right">{formatSize(region.size)}</td>
              <td class="number right">{store.map ? `${Math.round((overlap(region, store.map.used) / region.size) * 100)} %` : ''}</td>
              <td class="actions">
                <Button kind="quiet" icon="download" label={`Download ${region.name}`} disabled={disabled} onClick={() => void backup(store, region)} />
                {!region.read_only && (
                  <Button kind="quiet" icon="erase" label={`Erase ${region.name}`} disabled={disabled || readOnly} onClick={() => setAsked(region)} />
                )}
              </td>
            </tr>
          ))}
        </tbody>
      </table>
      {asked && (
        <Confirm title={`Erase the region ${asked.name}?`} action={`Erase ${formatSize(asked.size)}`} onNo={() => setAsked(null)} onYes={() => {
          setAsked(null);
          void store.guarded('erase', async () => {
            const { messages } = await run(store.withSize(eraseRegion(asked.name)), { camera: store.path });
            store.journals = journalsIn(messages);
            store.forget();
          }).then(() => (store.problem === null ? store.readMap() : undefined));
        }}>
          <p>{formatAddress(asked.first, 5)} to {formatAddress(asked.last, 5)} will read 0xff. The tool makes a backup first.</p>
        </Confirm>
      )}
    </>
  );
}

const workTexts: Record<string, string> = {
  map: 'Reading the map', plan: 'Making the plan', program: 'Programming', verify: 'Verifying', backup: 'Reading the flash',
  erase: 'Erasing',
};

function OfCamera({ camera }: { camera: Camera }) {
  const store = flashOf(camera.path);
  useVersion(store);
  const registers = camera.profile ? registersOf(camera.path) : null;
  useVersion(registers);
  const plugged = useStore(session, (state) => isPlugged(state, camera));
  const readOnly = useStore(session, (state) => state.readOnly);
  const foreign = useStore(session, (state) => [...state.jobs.values()]
    .find((job) => job.camera === camera.path && job.words[1] === 'program' && isWrite(job.words) && !store.own.has(job.id)) ?? null);
  useEffect(() => {
    if (plugged) void registers?.load();
    // Does not read the map while another page programs the flash.
    if (plugged && store.map === null && store.work === null && foreign === null && store.problem === null) void store.readMap();
  }, [store, plugged, foreign === null]);
  // Waits for the end of programming that another page started, and shows its result.
  const followed = useRef<string | null>(null);
  useEffect(() => {
    if (foreign !== null) followed.current = foreign.id;
    else if (followed.current !== null) {
      void store.takeOutcome(followed.current);
      followed.current = null;
    }
  }, [foreign?.id]);
  const regions = store.map?.regions ?? registers?.profile?.flash.regions ?? [];
  const disabled = !plugged || store.work !== null || foreign !== null;
  return (
    <>
      <div class="toolbar">
        <Button icon="refresh" disabled={disabled} onClick={() => {
          store.forget();
          void store.readMap();
        }}>Read the map</Button>
        <Button icon="download" disabled={disabled} onClick={() => void backup(store, null)}>Backup of the whole flash</Button>
        <Select label="Size" value={store.givenSize ?? ''} disabled={disabled} title="The size of a blank flash can't be detected"
          onChange={(size) => {
            store.givenSize = size === '' ? null : size;
            store.forget();
            void store.readMap();
          }}>
          <option value="">as found</option>
          {['256K', '512K', '1M', '2M', '4M', '8M', '16M', '32M', '64M'].map((size) => <option key={size} value={size}>{size.replace('K', ' KiB').replace('M', ' MiB')}</option>)}
        </Select>
        <span class="muted" role="status">{store.work ? workTexts[store.work] : ''}</span>
        <div class="grow" />
        {store.map && (
          <span class="muted number">
            {formatSize(store.map.last + 1)}, used {formatSize(store.map.used_bytes)}
            {store.differences.length > 0 && `, ${plural(store.differences.length, 'range')} ${store.differences.length === 1 ? 'differs' : 'differ'}`}
          </span>
        )}
      </div>
      <ProblemNote problem={store.problem} onClose={() => {
        store.problem = null;
        store.touch();
      }} />
      <div class="flash-columns">
        <div class="flash-left">
          <section class="panel" aria-label="Map">
            {store.map ? <SectorMap store={store} map={store.map} regions={regions} />
              : <p class="muted">{store.work === 'map' ? 'Every sector is read to see which are blank.' : 'The map was not read yet.'}</p>}
            {regions.length > 0 && (
              <details class="regions" open={store.images.length === 0}>
                <summary>{plural(regions.length, 'region')}</summary>
                <RegionTable store={store} regions={regions} disabled={disabled} readOnly={readOnly} />
              </details>
            )}
          </section>
          <ProgramPanel store={store} camera={camera} regions={regions} foreign={foreign} plugged={plugged} readOnly={readOnly} />
        </div>
        {store.size !== null && <HexView store={store} size={store.size} regions={regions} idle={plugged && foreign === null} />}
      </div>
    </>
  );
}

export function Flash() {
  const camera = useStore(session, (state) => state.camera);
  return (
    <div class="view view-fill">
      <div class="view-head">
        <h1>Flash</h1>
        <span class="muted">nothing is erased or written before you confirm the plan</span>
      </div>
      {camera ? <OfCamera camera={camera} key={camera.path} /> : (
        <Empty icon="flash" title="No camera is chosen"><p><a href="#cameras">Cameras</a> states what to do.</p></Empty>
      )}
    </div>
  );
}
