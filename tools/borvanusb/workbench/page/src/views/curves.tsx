// The list of plotted curves, with their values at the cursor.
import { useEffect, useId, useState } from 'preact/hooks';
import { isReadByLooking, isReadable } from '../model/fields';
import { matchesSearch } from '../model/tree';
import { Button } from '../parts/basics';
import { Icon } from '../parts/icon';
import { curveColour, palette } from '../parts/chart';
import { addCurve, curveTitle, mostCurves, plotting, removeCurve, showCurve, type Curve } from '../plot_data';
import { registersOf } from '../register_store';
import { isPlugged, session } from '../session';
import { useStore, useVersion } from '../store';
import type { FieldDescription, RegisterDescription } from '../types';

interface Candidate {
  name: string;
  register: RegisterDescription;
  field: FieldDescription | null;
}

function candidates(registers: RegisterDescription[], search: string): Candidate[] {
  const found: Candidate[] = [];
  for (const register of registers) {
    if (!isReadByLooking(register) || !matchesSearch(register, search)) continue;
    found.push({ name: register.name, register, field: null });
    for (const field of register.fields) {
      if (isReadable(field.access)) found.push({ name: `${register.name}.${field.name}`, register, field });
    }
    if (found.length > 60) break;
  }
  return found;
}

export function CurveChoice() {
  const camera = useStore(session, (state) => state.camera);
  const plugged = useStore(session, (state) => isPlugged(state, state.camera));
  const curves = useStore(plotting, (state) => state.curves);
  const [search, setSearch] = useState('');
  const heading = useId();
  const store = camera?.profile ? registersOf(camera.path) : null;
  useVersion(store);
  useEffect(() => {
    if (plugged) void store?.load();
  }, [store, plugged]);
  if (camera === null || store === null) {
    return (
      <section class="panel" aria-labelledby={heading}>
        <h2 id={heading}>Add a curve</h2>
        <p class="muted">Curves need a camera with a profile, which names its registers.</p>
      </section>
    );
  }
  const found = candidates(store.registers, search);
  const taken = new Set(curves.map((curve) => curve.id));
  return (
    <section class="panel add-curve" aria-labelledby={heading}>
      <h2 id={heading}>Add a curve</h2>
      <label class="search">
        <Icon name="search" />
        <span class="out-of-sight">Register or field to plot</span>
        <input type="search" placeholder="Register or field" value={search} onInput={(event) => setSearch(event.currentTarget.value)} />
      </label>
      <ul class="candidates" tabIndex={0} aria-label="Registers and fields">
        {found.map(({ name, register, field }) => (
          <li key={name} class={field ? 'of-field' : ''}>
            <button type="button" class="candidate" disabled={taken.has(`${camera.path} ${name}`) || curves.length >= mostCurves}
              title={field?.description ?? register.description} onClick={() => addCurve(camera.path, register, field)}>
              <Icon name={taken.has(`${camera.path} ${name}`) ? 'check' : 'plus'} size={12} /><code>{name}</code>
            </button>
          </li>
        ))}
        {found.length === 0 && <li class="muted">{store.loaded === 'yes' ? 'No register matches.' : 'Reading the profile'}</li>}
      </ul>
    </section>
  );
}

function text(value: number | null | undefined): string {
  return value === null || value === undefined ? '' : value.toLocaleString('en', { maximumFractionDigits: 3, useGrouping: false });
}

function Swatch({ style }: { style: number }) {
  const round = Math.floor(style / palette);
  return (
    <svg class="swatch" width="22" height="10" aria-hidden="true">
      <line x1="0" y1="5" x2="22" y2="5" stroke={curveColour(style)} stroke-width="2.5"
        stroke-dasharray={round === 0 ? undefined : round === 1 ? '6 3' : '2 2'} />
    </svg>
  );
}

export function CurveTable({ curves, values, cursor, cursorTime }: {
  curves: Curve[]; values: ReadonlyMap<string, (number | null)[]>; cursor: number | null; cursorTime: number | undefined;
}) {
  if (curves.length === 0) return null;
  const at = cursorTime === undefined ? 'now' : new Date(cursorTime * 1000).toISOString().slice(11, 23);
  return (
    <section class="panel flush curve-panel" aria-label="Values">
      <table class="table curve-table">
        <caption class="out-of-sight">Values of the curves</caption>
        <thead>
          <tr>
            <th scope="col">Curve</th>
            <th scope="col" class="right number">{at}</th>
            <th scope="col" class="right">Min</th>
            <th scope="col" class="right">Max</th>
            <th scope="col"><span class="out-of-sight">Remove</span></th>
          </tr>
        </thead>
        <tbody>
          {curves.map((curve) => {
            const list = values.get(curve.id) ?? [];
            let smallest: number | null = null;
            let largest: number | null = null;
            for (const value of list) {
              if (value === null) continue;
              smallest = smallest === null ? value : Math.min(smallest, value);
              largest = largest === null ? value : Math.max(largest, value);
            }
            const now = cursor === null ? list.findLast((value) => value !== null) : list[cursor];
            return (
              <tr key={curve.id}>
                <th scope="row">
                  <label class="curve-name" title={curve.field?.description ?? curve.register.description}>
                    <input type="checkbox" checked={curve.shown} onChange={(event) => showCurve(curve.id, event.currentTarget.checked)} />
                    <Swatch style={curve.style} /><code>{curveTitle(curve, curves)}</code>
                  </label>
                </th>
                <td class="number right strong" data-curve={curve.label}>{text(now)}</td>
                <td class="number right muted">{text(smallest)}</td>
                <td class="number right muted">{text(largest)}</td>
                <td><Button icon="close" kind="quiet" label={`Remove ${curve.label}`} onClick={() => removeCurve(curve.id)} /></td>
              </tr>
            );
          })}
        </tbody>
      </table>
    </section>
  );
}
