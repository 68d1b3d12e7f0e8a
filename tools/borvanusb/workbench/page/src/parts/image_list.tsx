// The images to program, dropped or chosen by the user, with the position of each.
import { useId, useRef, useState } from 'preact/hooks';
import { api } from '../api';
import { addressInName, holdsAddresses } from '../model/flash';
import { formatAddress, formatSize, parseAddress } from '../model/number';
import type { Image } from '../model/words';
import { report } from '../session';
import type { Region } from '../types';
import { Button } from './basics';
import { Icon } from './icon';

// The default position of an image.
function firstPlace(name: string, regions: Region[], region: string | null): Image['place'] {
  if (holdsAddresses(name)) return { kind: 'file' };
  const address = addressInName(name);
  if (address !== null) return { kind: 'address', address };
  if (region !== null && regions.some((each) => each.name === region)) return { kind: 'region', region };
  return { kind: 'address', address: 0 };
}

function PlaceChoice({ image, regions, onPlace }: { image: Image; regions: Region[]; onPlace: (place: Image['place']) => void }) {
  const { place } = image;
  const [text, setText] = useState(place.kind === 'address' ? formatAddress(place.address, 5) : '0x0');
  const value = place.kind === 'region' ? `region:${place.region}` : place.kind;
  const wrong = place.kind === 'address' && parseAddress(text) === null;
  const problemId = useId();
  return (
    <>
      <label class="select">
        <span class="out-of-sight">Where {image.file} goes</span>
        <select value={value} onChange={(event) => {
          const chosen = event.currentTarget.value;
          if (chosen === 'file') onPlace({ kind: 'file' });
          else if (chosen === 'address') onPlace({ kind: 'address', address: parseAddress(text) ?? 0 });
          else onPlace({ kind: 'region', region: chosen.slice(7) });
        }}>
          <option value="file">addresses of the file</option>
          <option value="address">at an address</option>
          {regions.map((region) => (
            <option key={region.name} value={`region:${region.name}`} disabled={region.read_only}>region {region.name}{region.read_only ? ' (read-only)' : ''}</option>
          ))}
        </select>
      </label>
      {place.kind === 'address' && (
        <label class="text-input">
          <span class="out-of-sight">Address of {image.file}</span>
          <input class="short" value={text} spellcheck={false} aria-invalid={wrong} aria-describedby={wrong ? problemId : undefined}
            onInput={(event) => {
              setText(event.currentTarget.value);
              const address = parseAddress(event.currentTarget.value);
              if (address !== null) onPlace({ kind: 'address', address });
            }} />
          {wrong && <span class="field-problem" id={problemId}>no address</span>}
        </label>
      )}
    </>
  );
}

export function ImageList({ images, sizes, regions, region, disabled, onImages }: {
  images: Image[]; sizes: ReadonlyMap<string, number>; regions: Region[]; region: string | null; disabled: boolean;
  onImages: (images: Image[], sizes: ReadonlyMap<string, number>) => void;
}) {
  const input = useRef<HTMLInputElement>(null);
  const [over, setOver] = useState(false);
  const [taking, setTaking] = useState(0);
  // While a file is uploaded, another may be dropped, and both must stay.
  const latest = useRef({ images, sizes });
  latest.current = { images, sizes };
  const add = (name: string, size: number) => {
    const list = [...latest.current.images];
    const known = new Map(latest.current.sizes).set(name, size);
    const at = list.findIndex((each) => each.file === name);
    if (at < 0) list.push({ file: name, place: firstPlace(name, regions, region) });
    else list[at] = { ...list[at]! };
    latest.current = { images: list, sizes: known };
    onImages(list, known);
  };
  const take = async (files: File[]) => {
    if (files.length === 0 || disabled) return;
    setTaking((count) => count + 1);
    try {
      for (const file of files) {
        const stored = await api.upload(file);
        add(stored.name, stored.size);
      }
    } catch (error) {
      report(error);
    }
    setTaking((count) => count - 1);
  };
  return (
    <div class="images">
      <div class={`drop${over ? ' over' : ''}${images.length > 0 ? ' filled' : ''}`}
        onDragOver={(event) => {
          event.preventDefault();
          setOver(true);
        }}
        onDragLeave={() => setOver(false)}
        onDrop={(event) => {
          event.preventDefault();
          setOver(false);
          void take([...(event.dataTransfer?.files ?? [])]);
        }}>
        <Icon name="upload" size={20} />
        <div class="grow">
          <p class={images.length > 0 ? 'muted' : 'strong'}>{taking > 0 ? 'Taking the file' : images.length > 0 ? 'Drop another image here' : 'Drop an image here'}</p>
          {images.length === 0 && <p class="small muted">Intel HEX, Motorola S-record, ELF or raw bytes; several images are one piece of work</p>}
        </div>
        <input ref={input} type="file" multiple class="out-of-sight" tabIndex={-1} aria-label="Image files" data-role="images"
          onChange={(event) => {
            void take([...(event.currentTarget.files ?? [])]);
            event.currentTarget.value = '';
          }} />
        <Button disabled={disabled} onClick={() => input.current?.click()}>Choose a file</Button>
      </div>
      {images.length > 0 && (
        <ul class="image-list">
          {images.map((image, index) => (
            <li key={image.file}>
              <code class="strong">{image.file}</code>
              <span class="muted number small">{formatSize(sizes.get(image.file) ?? 0)}</span>
              <div class="grow" />
              <PlaceChoice image={image} regions={regions}
                onPlace={(place) => onImages(images.map((each, at) => (at === index ? { ...each, place } : each)), sizes)} />
              <Button icon="close" kind="quiet" label={`Remove ${image.file}`} disabled={disabled}
                onClick={() => onImages(images.filter((_, at) => at !== index), sizes)} />
            </li>
          ))}
        </ul>
      )}
    </div>
  );
}
