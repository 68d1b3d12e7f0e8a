// A picture of the flash: one square for each sector, and a strip of regions above.
import { useEffect, useLayoutEffect, useRef, useState } from 'preact/hooks';
import { regionAt, sectorSize, sectorStates, type SectorState } from '../model/flash';
import { formatAddress, formatSize } from '../model/number';
import type { FlashStore } from '../flash_store';
import { colourOf } from '../parts/colour';
import { session } from '../session';
import { useStore } from '../store';
import type { FlashMap, Region } from '../types';

const stateTexts: Record<SectorState, string> = { unknown: 'not read', blank: 'blank', used: 'used', differs: 'differs from the image' };

function columnsFor(sectors: number): number {
  return sectors <= 256 ? 32 : sectors <= 1024 ? 64 : 128;
}

function Regions({ regions, size, onChoose }: { regions: Region[]; size: number; onChoose: (address: number) => void }) {
  return (
    <div class="region-strip" role="presentation">
      {regions.map((region) => (
        <button key={region.name} type="button" class={`region${region.read_only ? ' read-only' : ''}`} tabIndex={-1}
          style={{ left: `${(region.first / size) * 100}%`, width: `${(region.size / size) * 100}%` }}
          title={`${region.name}: ${region.description}`} aria-label={`Show ${region.name}`} onClick={() => onChoose(region.first)}>
          {region.size / size > 0.05 ? region.name : ''}
        </button>
      ))}
    </div>
  );
}

export function SectorMap({ store, map, regions }: { store: FlashStore; map: FlashMap; regions: Region[] }) {
  const canvas = useRef<HTMLCanvasElement>(null);
  const theme = useStore(session, (state) => state.theme);
  const [width, setWidth] = useState(0);
  const [hover, setHover] = useState<number | null>(null);
  const [focused, setFocused] = useState(false);
  const [dark, setDark] = useState(0);
  const size = map.last + 1;
  const states = sectorStates(size, map.used, map.blank, store.differences);
  const columns = columnsFor(states.length);
  const pitch = width / columns;
  const rows = Math.ceil(states.length / columns);
  const height = Math.ceil(rows * pitch);
  const cursor = Math.floor(store.jump.address / sectorSize);

  useLayoutEffect(() => {
    const element = canvas.current?.parentElement;
    if (!element) return undefined;
    const observer = new ResizeObserver(() => setWidth(element.clientWidth));
    observer.observe(element);
    return () => observer.disconnect();
  }, []);
  useEffect(() => {
    const media = matchMedia('(prefers-color-scheme: dark)');
    const change = () => setDark((count) => count + 1);
    media.addEventListener('change', change);
    return () => media.removeEventListener('change', change);
  }, []);

  useEffect(() => {
    const element = canvas.current;
    const context = element?.getContext('2d');
    if (!element || !context || width === 0) return;
    const ratio = devicePixelRatio;
    element.width = Math.round(width * ratio);
    element.height = Math.round(height * ratio);
    context.scale(ratio, ratio);
    const fills: Record<SectorState, string> = {
      unknown: colourOf('--sector-unknown'), blank: colourOf('--sector-blank'), used: colourOf('--sector-used'),
      differs: colourOf('--sector-differs'),
    };
    const surface = colourOf('--surface');
    const gap = pitch > 6 ? 1.5 : 0.5;
    states.forEach((state, sector) => {
      const x = (sector % columns) * pitch;
      const y = Math.floor(sector / columns) * pitch;
      context.fillStyle = fills[state];
      context.fillRect(x, y, pitch - gap, pitch - gap);
      if (state === 'differs' && pitch > 6) {
        // Marks the state by a shape too, not only by colour.
        context.strokeStyle = surface;
        context.beginPath();
        context.moveTo(x + 2, y + pitch - gap - 2);
        context.lineTo(x + pitch - gap - 2, y + 2);
        context.stroke();
      }
    });
    context.lineWidth = 2;
    context.strokeStyle = colourOf('--text');
    context.strokeRect((cursor % columns) * pitch, Math.floor(cursor / columns) * pitch, pitch - gap, pitch - gap);
  });

  const sectorAt = (event: MouseEvent): number | null => {
    const box = canvas.current?.getBoundingClientRect();
    if (!box || pitch === 0) return null;
    const column = Math.floor((event.clientX - box.left) / pitch);
    const sector = Math.floor((event.clientY - box.top) / pitch) * columns + column;
    return column >= 0 && column < columns && sector >= 0 && sector < states.length ? sector : null;
  };
  const describe = (sector: number) => {
    const region = regionAt(sector * sectorSize, regions);
    return `${formatAddress(sector * sectorSize, 5)}: ${stateTexts[states[sector] ?? 'unknown']}${region ? `, ${region.name}` : ''}`;
  };
  const onKeyDown = (event: KeyboardEvent) => {
    const steps: Record<string, number> = { ArrowRight: 1, ArrowLeft: -1, ArrowDown: columns, ArrowUp: -columns, Home: -cursor, End: states.length - 1 - cursor };
    const step = steps[event.key];
    if (step === undefined) return;
    const next = Math.max(0, Math.min(states.length - 1, cursor + step));
    store.goTo(next * sectorSize);
    event.preventDefault();
  };
  const counts = states.reduce<Record<string, number>>((all, state) => ({ ...all, [state]: (all[state] ?? 0) + 1 }), {});
  const shown = hover ?? (focused ? cursor : null);
  return (
    <div class="sector-map">
      {regions.length > 0 && <Regions regions={regions} size={size} onChoose={(address) => store.goTo(address)} />}
      <div class="sectors" role="slider" tabIndex={0} aria-label="Sectors of the flash" aria-valuemin={0} aria-valuemax={states.length - 1}
        aria-valuenow={cursor} aria-valuetext={describe(cursor)} onKeyDown={onKeyDown} onFocus={() => setFocused(true)} onBlur={() => setFocused(false)}
        onMouseMove={(event) => setHover(sectorAt(event))} onMouseLeave={() => setHover(null)}
        onClick={(event) => {
          const sector = sectorAt(event);
          if (sector !== null) store.goTo(sector * sectorSize);
        }}>
        <canvas ref={canvas} style={{ width: `${width}px`, height: `${height}px` }} data-theme-now={`${theme}${dark}`} />
      </div>
      <div class="map-legend small">
        <span class="key"><i class="sample used" />used {counts.used ?? 0}</span>
        <span class="key"><i class="sample blank" />blank {counts.blank ?? 0}</span>
        <span class="key"><i class="sample differs" />differs {counts.differs ?? 0}</span>
        <span class="grow" />
        <span class="number muted">{shown === null ? `a square is a sector of ${formatSize(sectorSize)}` : describe(shown)}</span>
      </div>
    </div>
  );
}
