// The register tree as a grid. Only the visible rows exist in the document.
import { useRef } from 'preact/hooks';
import { accessText, bitsText, changesWhenRead, fieldOf, isReadable, meaningOf } from '../model/fields';
import { editedField, editedValue } from '../model/edits';
import { markLabels, markTexts, type Mark } from '../model/marks';
import { formatAddress, formatNumber, plural, type NumberForm } from '../model/number';
import { shortName, type TreeRow } from '../model/tree';
import { Icon } from '../parts/icon';
import { ScrollList } from '../parts/scroll_list';
import type { RegisterStore } from '../register_store';

interface TreeProps {
  rows: TreeRow[];
  store: RegisterStore;
  marks: ReadonlyMap<string, Mark[]>;
  form: NumberForm;
  selected: string | null;
  onSelect: (key: string) => void;
  onToggle: (key: string, open?: boolean) => void;
  onWindow: (first: number, last: number) => void;
}

const rowHeight = 28;

function isOpen(row: TreeRow): boolean | undefined {
  if (row.kind === 'field') return undefined;
  if (row.kind === 'register' && row.register.fields.length === 0) return undefined;
  return row.open;
}

function ValueCell({ row, store, form }: { row: TreeRow; store: RegisterStore; form: NumberForm }) {
  if (row.kind === 'map' || row.kind === 'group') return <span class="muted">{plural(row.count, 'register')}</span>;
  const { register } = row;
  const known = store.known.get(register.name);
  const edit = store.edits.get(register.name);
  if (row.kind === 'register') {
    const edited = edit && editedValue(edit, known?.value);
    if (edit) {
      return (
        <span class="value edited">
          {known && <s>{formatNumber(known.value, register.bits, form)}</s>}
          {edited === undefined ? 'edited' : formatNumber(edited, register.bits, form)}
        </span>
      );
    }
    if (known) return <span class={`value${known.previous === null ? '' : ' changed'}`}>{formatNumber(known.value, register.bits, form)}</span>;
    if (!isReadable(register.access)) return <span class="muted">write only</span>;
    return <span class="muted">{changesWhenRead(register) ? 'on request' : ''}</span>;
  }
  const { field } = row;
  const edited = editedField(edit, field);
  const value = edited ?? (known && fieldOf(known.value, field));
  if (value === undefined) return null;
  const meaning = meaningOf(value, field.values);
  return (
    <span class={`value${edited === undefined ? '' : ' edited'}`}>
      {formatNumber(value, field.bits, form)}{meaning && <span class="meaning"> {meaning.name}</span>}
    </span>
  );
}

function Name({ row }: { row: TreeRow }) {
  if (row.kind === 'map') return <span class="strong">{row.label}</span>;
  if (row.kind === 'group') return <span class="strong">{row.label}</span>;
  if (row.kind === 'register') return <code>{shortName(row.register)}</code>;
  return <><code>{row.field.name}</code> <span class="muted number small">{bitsText(row.field)}</span></>;
}

// Keys, as usual for trees: arrows move, open and close; Home and End; Enter goes to the editor.
function keyTarget(key: string, rows: TreeRow[], index: number): number | null {
  const row = rows[index];
  if (key === 'ArrowDown') return Math.min(index + 1, rows.length - 1);
  if (key === 'ArrowUp') return Math.max(index - 1, 0);
  if (key === 'PageDown') return Math.min(index + 15, rows.length - 1);
  if (key === 'PageUp') return Math.max(index - 15, 0);
  if (key === 'Home') return 0;
  if (key === 'End') return rows.length - 1;
  if (key === 'ArrowRight' && row && isOpen(row) === true) return Math.min(index + 1, rows.length - 1);
  if (key === 'ArrowLeft' && row && isOpen(row) !== true) {
    for (let at = index - 1; at >= 0; at--) {
      if ((rows[at]?.level ?? 0) < row.level) return at;
    }
  }
  return null;
}

export function RegisterTree(props: TreeProps) {
  const { rows, store, marks, form, selected, onSelect, onToggle, onWindow } = props;
  const box = useRef<HTMLDivElement>(null);
  const index = rows.findIndex((row) => row.key === selected);

  const onKeyDown = (event: KeyboardEvent) => {
    const at = Math.max(index, 0);
    const row = rows[at];
    if (!row || event.ctrlKey || event.metaKey || event.altKey) return;
    if (event.key === 'Enter') {
      document.querySelector<HTMLElement>('#register-editor input:not([disabled])')?.focus();
      event.preventDefault();
      return;
    }
    const open = isOpen(row);
    if (event.key === 'ArrowRight' && open === false) onToggle(row.key, true);
    else if (event.key === 'ArrowLeft' && open === true) onToggle(row.key, false);
    else if (event.key === ' ' && open !== undefined) onToggle(row.key);
    else {
      const target = keyTarget(event.key, rows, index < 0 ? -1 : at);
      if (target === null) return;
      const next = rows[target];
      if (next) onSelect(next.key);
    }
    event.preventDefault();
  };

  const renderRow = (at: number) => {
    const row = rows[at];
    if (!row) return null;
    const open = isOpen(row);
    const register = row.kind === 'register' ? row.register : null;
    const access = row.kind === 'field' ? row.field.access : register?.access;
    const text = row.kind === 'field' ? row.field.description : (register?.description ?? '');
    const rowMarks = register ? (marks.get(register.name) ?? []) : [];
    return (
      <div key={row.key} id={`row-${row.key}`} role="row" aria-level={row.level} aria-expanded={open} aria-rowindex={at + 2}
        aria-selected={row.key === selected} class={`tree-row ${row.kind}${row.key === selected ? ' selected' : ''}`}
        onClick={() => onSelect(row.key)} onDblClick={() => onToggle(row.key)}>
        <div role="gridcell" class={`name level-${row.level}`} title={text}>
          <span class="opener" onClick={(event) => {
            event.stopPropagation();
            if (open !== undefined) onToggle(row.key);
          }}>{open !== undefined && <Icon name={open ? 'down' : 'right'} size={12} />}</span>
          <Name row={row} />
        </div>
        <div role="gridcell" class="number muted">{register ? formatAddress(register.address) : ''}</div>
        <div role="gridcell" class="number"><ValueCell row={row} store={store} form={form} /></div>
        <div role="gridcell" class="marks">
          {rowMarks.map((mark) => <span key={mark} class={`mark mark-${mark}`} title={markTexts[mark]} data-letter={mark[0]}>{markLabels[mark]}</span>)}
        </div>
        <div role="gridcell" class="muted access">{access ? accessText(access) : ''}</div>
        <div role="gridcell" class="text muted" title={text}>{text}</div>
      </div>
    );
  };

  const header = (
    <div role="row" class="tree-row tree-header" aria-rowindex={1}>
      {['Name', 'Address', 'Value', 'Marks', 'Access', 'Documentation'].map((title) => (
        <div key={title} role="columnheader">{title}</div>
      ))}
    </div>
  );
  if (rows.length === 0) return <div class="panel flush register-tree"><p class="muted pad">No register matches.</p></div>;
  const active = index >= 0 ? `row-${selected}` : undefined;
  return (
    <div class="panel flush register-tree" ref={box}>
      <ScrollList rows={rows.length} rowHeight={rowHeight} render={renderRow} onWindow={onWindow} header={header}
        current={index < 0 ? null : index} currentKey={selected} class="tree"
        attributes={{
          role: 'treegrid', 'aria-label': 'Registers', 'aria-rowcount': rows.length + 1, tabIndex: 0,
          'aria-activedescendant': active, onKeyDown, 'aria-readonly': true,
        }} />
      <p class="keys muted small" aria-hidden="true">
        <kbd>Up</kbd> <kbd>Down</kbd> go, <kbd>Right</kbd> <kbd>Left</kbd> open and close, <kbd>Enter</kbd> edits
      </p>
    </div>
  );
}
