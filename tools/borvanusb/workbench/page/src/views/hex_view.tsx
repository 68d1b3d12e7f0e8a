// The bytes of the flash. Visible rows are read automatically.
import { useCallback, useEffect, useRef, useState } from 'preact/hooks';
import { isInRanges, nextRange, parsePattern, printable, regionAt, sectorSize } from '../model/flash';
import { formatAddress, parseAddress } from '../model/number';
import type { FlashStore } from '../flash_store';
import { Button, ProblemNote } from '../parts/basics';
import { ScrollList } from '../parts/scroll_list';
import { asProblem, type Problem } from '../session';
import type { Region } from '../types';

const width = 16;
const rowHeight = 20;

function Row({ store, row, mark, regions }: { store: FlashStore; row: number; mark: { first: number; last: number } | null; regions: Region[] }) {
  const address = row * width;
  const block = store.blockAt(address);
  const offset = address % sectorSize;
  const region = address % sectorSize === 0 || regions.some((each) => each.first === address) ? regionAt(address, regions) : null;
  const starts = region !== null && region.first === address;
  const cells = [];
  let text = '';
  for (let column = 0; column < width; column++) {
    const at = address + column;
    const byte = block instanceof Uint8Array ? block[offset + column] : undefined;
    const differs = isInRanges(at, store.differences);
    const marked = mark !== null && at >= mark.first && at <= mark.last;
    text += byte === undefined ? ' ' : printable(byte);
    const plain = byte === undefined ? (block === 'failed' ? '??' : '..') : byte.toString(16).padStart(2, '0');
    const kind = `${differs ? ' differs' : ''}${marked ? ' found' : ''}${byte === 0xff || byte === undefined ? ' blank' : ''}${column === 8 ? ' middle' : ''}`;
    cells.push(<span key={column} class={`byte${kind}`}>{plain}</span>);
  }
  return (
    <div key={row} class={`hex-row${offset === 0 ? ' sector' : ''}`} role="row" aria-rowindex={row + 2} data-address={address}>
      <span role="rowheader" class="hex-address">{formatAddress(address, 8).slice(2)}</span>
      <span role="cell" class="hex-bytes">{cells}</span>
      <span role="cell" class="hex-text">{text}{starts && <span class="region-tag">{region.name}</span>}</span>
    </div>
  );
}

export function HexView({ store, size, regions, idle }: { store: FlashStore; size: number; regions: Region[]; idle: boolean }) {
  const [address, setAddress] = useState('');
  const [search, setSearch] = useState('');
  const [found, setFound] = useState<{ first: number; last: number } | null>(null);
  const [message, setMessage] = useState('');
  const [searching, setSearching] = useState(false);
  const [problem, setProblem] = useState<Problem | null>(null);
  const [view, setView] = useState<[number, number]>([0, 0]);
  const stop = useRef(false);
  const timer = useRef<ReturnType<typeof setTimeout> | null>(null);

  const onWindow = useCallback((first: number, last: number) => setView([first, last]), []);
  // Waits a moment, so that rows that are only scrolled past are not read.
  useEffect(() => {
    if (!idle || store.work === 'program') return undefined;
    timer.current = setTimeout(() => store.want(view[0] * width, Math.min(size, (view[1] + 1) * width) - 1), 90);
    return () => {
      if (timer.current !== null) clearTimeout(timer.current);
    };
  }, [view, idle, size, store, store.work, store.map]);

  const jump = () => {
    const target = parseAddress(address);
    if (target === null || target >= size) {
      setMessage(`An address is a number below ${formatAddress(size, 5)}.`);
      return;
    }
    setMessage('');
    store.goTo(target);
  };
  const find = async () => {
    const pattern = parsePattern(search);
    if (pattern === null) {
      setMessage('Search for bytes (de ad be ef) or for a text ("boot").');
      return;
    }
    setSearching(true);
    setProblem(null);
    setMessage('Searching');
    stop.current = false;
    try {
      const at = await store.search(pattern, found ? found.first + 1 : store.jump.address, () => stop.current);
      setFound(at === null ? null : { first: at, last: at + pattern.length - 1 });
      setMessage(at === null ? (stop.current ? 'Stopped.' : 'Not found.') : `Found at ${formatAddress(at, 5)}.`);
      if (at !== null) store.goTo(at);
    } catch (error) {
      setProblem(asProblem(error));
      setMessage('');
    }
    setSearching(false);
  };
  const difference = (forward: boolean) => {
    const range = nextRange(store.jump.address, store.differences, forward);
    if (range) store.goTo(range.first);
  };
  const rows = Math.ceil(size / width);
  return (
    <section class="panel flush hex-panel" aria-label="Bytes">
      <div class="hex-tools">
        <form class="inline" onSubmit={(event) => {
          event.preventDefault();
          jump();
        }}>
          <label class="text-input"><span class="out-of-sight">Go to address</span>
            <input class="short" placeholder="0x20800" value={address} spellcheck={false} onInput={(event) => setAddress(event.currentTarget.value)} /></label>
          <button type="submit" class="button plain">Go</button>
        </form>
        <form class="inline grow" onSubmit={(event) => {
          event.preventDefault();
          void find();
        }}>
          <label class="text-input grow"><span class="out-of-sight">Search bytes or text</span>
            <input placeholder={'de ad be ef or "text"'} value={search} spellcheck={false} onInput={(event) => {
              setSearch(event.currentTarget.value);
              setFound(null);
            }} /></label>
          {searching ? <Button icon="stop" onClick={() => {
            stop.current = true;
          }}>Stop</Button>
            : <button type="submit" class="button plain" disabled={!idle}>Find</button>}
        </form>
        {store.differences.length > 0 && (
          <div class="button-group" role="group" aria-label="Differences">
            <Button icon="left" label="Previous difference" onClick={() => difference(false)} />
            <Button icon="right" label="Next difference" onClick={() => difference(true)} />
          </div>
        )}
      </div>
      <p class="hex-message small muted" role="status">{message}</p>
      <ProblemNote problem={problem} onClose={() => setProblem(null)} />
      <ScrollList rows={rows} rowHeight={rowHeight} onWindow={onWindow} class="hex" current={Math.floor(store.jump.address / width)}
        currentKey={store.jump.count} lead={6}
        header={(
          <div class="hex-row hex-head" role="row">
            <span role="columnheader" class="hex-address">address </span>
            <span role="columnheader" class="hex-bytes" aria-label="Bytes">
              {Array.from({ length: width }, (_, column) => (
                <span key={column} class={`byte${column === 8 ? ' middle' : ''}`}>{column.toString(16)}</span>
              ))}
            </span>
            <span role="columnheader" class="hex-text">text</span>
          </div>
        )}
        render={(row) => <Row key={row} store={store} row={row} mark={found} regions={regions} />}
        attributes={{ role: 'table', 'aria-label': 'Bytes of the flash', 'aria-rowcount': rows + 1, tabIndex: 0 }} />
    </section>
  );
}
