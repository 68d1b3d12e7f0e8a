// One register: documentation, value in all forms, editable fields.
import { useId } from 'preact/hooks';
import { editedField, editedValue } from '../model/edits';
import {
  accessText, bitsText, changesWhenRead, differsFromReset, fieldOf, isReadable, isWritable, meaningOf, problemOf,
} from '../model/fields';
import { formatAddress, formatHex, formatNumber, largest, type NumberForm } from '../model/number';
import { Badge, Button, Note } from '../parts/basics';
import { NumberInput } from '../parts/number_input';
import { addCurve } from '../plot_data';
import type { RegisterStore } from '../register_store';
import { session } from '../session';
import { useStore } from '../store';
import type { Camera, Device, FieldDescription, RegisterDescription } from '../types';
import { registerView } from '../register_view';

function deviceText(device: Device): string {
  if (device.kind === 'chip') return device.wide ? 'chip, 32 bits' : 'chip';
  return `I2C ${formatAddress(device.slave, 2)}, mode ${device.mode}`;
}

interface FieldProps {
  field: FieldDescription;
  value: bigint | undefined;
  edited: boolean;
  disabled: boolean;
  onValue: (value: bigint) => void;
  onPlot: () => void;
}

function range(field: FieldDescription): [bigint, bigint] {
  const { constraint } = field;
  if (constraint?.kind === 'range') return [BigInt(constraint.minimum), BigInt(constraint.maximum)];
  return [0n, largest(field.bits)];
}

function FieldControl({ field, value, disabled, onValue }: FieldProps) {
  const label = `${field.name} ${bitsText(field)}`;
  const off = disabled || !isWritable(field.access) || value === undefined;
  if (field.values.length > 0) {
    const isKnown = value !== undefined && meaningOf(value, field.values) !== null;
    return (
      <select aria-label={label} disabled={off} value={isKnown ? String(value) : 'other'}
        onChange={(event) => onValue(BigInt(event.currentTarget.value))}>
        {!isKnown && <option value="other">{value === undefined ? 'not read' : `${value} (no name)`}</option>}
        {field.values.map((entry) => (
          <option key={entry.name} value={String(entry.value)} title={entry.description}>
            {`${entry.value}  ${entry.name}${entry.description ? ` - ${entry.description}` : ''}`}
          </option>
        ))}
      </select>
    );
  }
  if (field.bits === 1) {
    return (
      <label class="check">
        <input type="checkbox" aria-label={label} checked={value === 1n} disabled={off}
          onChange={(event) => onValue(event.currentTarget.checked ? 1n : 0n)} />
        <span aria-hidden="true">{value === undefined ? 'not read' : value === 1n ? 'set' : 'clear'}</span>
      </label>
    );
  }
  const [minimum, maximum] = range(field);
  return (
    <div class="slider">
      {field.bits <= 24 && (
        <input type="range" aria-label={label} min={Number(minimum)} max={Number(maximum)} step={1} disabled={off}
          value={Number(value ?? minimum)} onInput={(event) => onValue(BigInt(event.currentTarget.value))} />
      )}
      <NumberInput label={`${label}, number`} value={value} bits={field.bits} form="decimal" disabled={off}
        onValue={onValue} check={(number) => problemOf(number, field)} />
    </div>
  );
}

function FieldRow(props: FieldProps) {
  const { field, edited, onPlot } = props;
  return (
    <li class={`field-row${edited ? ' edited' : ''}`}>
      <div class="field-head">
        <code class="strong">{field.name}</code>
        <span class="number muted small">{bitsText(field)}</span>
        {field.access !== 'read-write' && <Badge title={field.access}>{accessText(field.access)}</Badge>}
        {edited && <span class="mark mark-edited">edited</span>}
        <div class="grow" />
        <Button icon="plots" kind="quiet" label={`Plot ${field.name}`} onClick={onPlot} />
      </div>
      <FieldControl {...props} />
      <p class="small muted">{field.description}</p>
    </li>
  );
}

// The bits of a value. A click inverts a bit.
function Bits({ value, bits, disabled, onValue }: {
  value: bigint; bits: number; disabled: boolean; onValue: (value: bigint) => void;
}) {
  const renderBit = (bit: number) => {
    const isSet = ((value >> BigInt(bit)) & 1n) === 1n;
    return (
      <button key={bit} type="button" class={`bit${isSet ? ' set' : ''}`} disabled={disabled}
        aria-pressed={isSet} aria-label={`Bit ${bit}`} onClick={() => onValue(value ^ (1n << BigInt(bit)))}>
        <span class="bit-value">{isSet ? 1 : 0}</span>
        <span class="bit-number" aria-hidden="true">{bit}</span>
      </button>
    );
  };
  const nibbles = Array.from({ length: Math.ceil(bits / 4) }, (_, index) => Math.ceil(bits / 4) - 1 - index);
  return (
    <div class="bits" role="group" aria-label="Bits">
      {nibbles.map((nibble) => (
        <span key={nibble} class="nibble">
          {[3, 2, 1, 0].map((bit) => nibble * 4 + bit).filter((bit) => bit < bits).map(renderBit)}
        </span>
      ))}
    </div>
  );
}

const forms: { form: NumberForm; label: string }[] = [
  { form: 'hex', label: 'Hex' }, { form: 'decimal', label: 'Decimal' }, { form: 'binary', label: 'Binary' },
];

export function RegisterDetail({ store, register, camera, plugged }: {
  store: RegisterStore; register: RegisterDescription | null; camera: Camera; plugged: boolean;
}) {
  const readOnly = useStore(session, (state) => state.readOnly);
  const heading = useId();
  if (register === null) {
    return (
      <section class="panel register-detail" aria-label="Register">
        <p class="muted">Choose a register to see its documentation and to change it.</p>
      </section>
    );
  }
  const known = store.known.get(register.name);
  const edit = store.edits.get(register.name);
  const value = edit ? editedValue(edit, known?.value) : known?.value;
  const disabled = !plugged || readOnly || !isWritable(register.access);
  const special = changesWhenRead(register);
  const afterEdit = () => {
    if (registerView.get().atOnce) void store.writeEdits();
  };
  const change = (next: bigint) => {
    store.edit(register, next);
    afterEdit();
  };
  return (
    <section class="panel register-detail" aria-labelledby={heading}>
      <div class="panel-head">
        <h2 id={heading}><code>{register.name}</code></h2>
        <div class="grow" />
        <Button icon="plots" kind="quiet" label="Plot this register" onClick={() => addCurve(camera.path, register, null)} />
        {isReadable(register.access) && !special && (
          <Button icon="refresh" kind="quiet" label="Read this register" disabled={!plugged}
            onClick={() => void store.read([register.name])} />
        )}
      </div>
      <p>{register.description}</p>
      <p class="small muted number">
        {formatAddress(register.address)}, {deviceText(register.device)}, {register.bits} bits, {register.access}
        {register.reset && <>, reset {formatHex(BigInt(register.reset.value), register.bits)}</>}
        {register.constraint?.kind === 'range' && <>, allowed {register.constraint.minimum} to {register.constraint.maximum}</>}
        {register.modified_write && <>, writing: {register.modified_write}</>}
      </p>
      {special && (
        <Note kind="warn" icon="eye">
          <p>Reading changes this register ({register.read_action ?? 'a field of it'}), so the page does not read it by itself.</p>
          <Button disabled={!plugged} onClick={() => void store.read([register.name], true)}>Read it now</Button>
        </Note>
      )}
      <div id="register-editor" class="forms">
        {forms.map(({ form, label }) => (
          <NumberInput key={form} label={label} value={value} bits={register.bits} form={form} disabled={disabled}
            onValue={change} check={(number) => problemOf(number, register)} />
        ))}
      </div>
      {value !== undefined && <Bits value={value} bits={register.bits} disabled={disabled} onValue={change} />}
      {known && known.previous !== null && (
        <p class="small">Before the last reading: <code>{formatNumber(known.previous, register.bits, 'hex')}</code></p>
      )}
      <div class="buttons">
        {edit && <Button kind="primary" icon="write" disabled={disabled || store.writing} onClick={() => void store.writeEdits()}>Write</Button>}
        {edit && <Button onClick={() => store.discard(register.name)}>Discard</Button>}
        {register.reset && !disabled && value !== undefined && differsFromReset(value, register) && (
          <Button kind="quiet" onClick={() => change(BigInt(register.reset?.value ?? 0))}>Set the reset value</Button>
        )}
      </div>
      {register.fields.length > 0 && (
        <>
          <h3>Fields</h3>
          <ul class="fields">
            {[...register.fields].sort((a, b) => b.offset - a.offset).map((field) => {
              const part = editedField(edit, field) ?? (known && fieldOf(known.value, field));
              return (
                <FieldRow key={field.name} field={field} value={part} disabled={disabled}
                  edited={editedField(edit, field) !== undefined}
                  onValue={(number) => {
                    store.editField(register, field, number);
                    afterEdit();
                  }}
                  onPlot={() => addCurve(camera.path, register, field)} />
              );
            })}
          </ul>
        </>
      )}
    </section>
  );
}
