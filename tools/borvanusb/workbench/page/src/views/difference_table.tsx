// Registers that differ, with the differing fields.
import { Fragment } from 'preact';
import { formatAddress, formatHex } from '../model/number';
import type { RegisterStore } from '../register_store';
import type { Difference, FieldDifference } from '../types';

function keyOf(difference: Difference): string {
  return difference.name ?? formatAddress(difference.address);
}

function FieldText({ value, meaning }: { value: number | null; meaning: string | null }) {
  if (value === null) return <span class="muted">none</span>;
  return <>{value}{meaning !== null && <span class="meaning"> {meaning}</span>}</>;
}

function FieldLine({ field }: { field: FieldDifference }) {
  return (
    <tr class="field-difference">
      <td />
      <th scope="row"><code>{field.name}</code></th>
      <td />
      <td class="number"><FieldText value={field.left} meaning={field.left_meaning} /></td>
      <td class="number"><FieldText value={field.right} meaning={field.right_meaning} /></td>
    </tr>
  );
}

export function DifferenceTable({ differences, left, right, store, chosen, onChosen }: {
  differences: Difference[]; left: string; right: string; store: RegisterStore; chosen: ReadonlySet<string>;
  onChosen: (chosen: ReadonlySet<string>) => void;
}) {
  const value = (number: number | null, difference: Difference) => {
    if (number === null) return <span class="muted">none</span>;
    const bits = (difference.name && store.describe(difference.name)?.bits) || 8;
    return formatHex(BigInt(number), bits);
  };
  const toggle = (key: string) => {
    const next = new Set(chosen);
    if (!next.delete(key)) next.add(key);
    onChosen(next);
  };
  const all = differences.every((difference) => chosen.has(keyOf(difference)));
  return (
    <div class="panel flush table-box" tabIndex={0} role="region" aria-label="Differences">
      <table class="table">
        <caption class="out-of-sight">Registers that differ</caption>
        <thead>
          <tr>
            <th scope="col" class="narrow">
              <input type="checkbox" aria-label="All registers" checked={all}
                onChange={() => onChosen(all ? new Set() : new Set(differences.map(keyOf)))} />
            </th>
            <th scope="col">Register</th>
            <th scope="col">Address</th>
            <th scope="col">{left}</th>
            <th scope="col">{right}</th>
          </tr>
        </thead>
        <tbody>
          {differences.map((difference) => (
            <Fragment key={keyOf(difference)}>
              <tr title={difference.name ? store.describe(difference.name)?.description : undefined}>
                <td class="narrow">
                  <input type="checkbox" aria-label={keyOf(difference)} checked={chosen.has(keyOf(difference))}
                    onChange={() => toggle(keyOf(difference))} />
                </td>
                <th scope="row"><code>{keyOf(difference)}</code></th>
                <td class="number muted">{formatAddress(difference.address)}</td>
                <td class="number left-value">{value(difference.left, difference)}</td>
                <td class="number right-value">{value(difference.right, difference)}</td>
              </tr>
              {difference.fields?.map((field) => <FieldLine key={field.name} field={field} />)}
            </Fragment>
          ))}
        </tbody>
      </table>
    </div>
  );
}
