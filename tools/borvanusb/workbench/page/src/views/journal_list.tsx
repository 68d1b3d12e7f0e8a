// Unfinished changes of this camera: what continues, what still waits, what only the user knows.
import { holdsAddresses } from '../model/flash';
import { baseName, isAtHand, type Journal } from '../model/journals';
import { parseAddress } from '../model/number';
import type { FlashStore } from '../flash_store';
import { Button } from '../parts/basics';

const stateTexts: Record<Journal['state'], string> = {
  used: 'This work continues it: the bytes beside it come from its journal.',
  waits: 'It stays unfinished; its journal keeps the bytes beside it.',
  asks: 'The tool does not know whether that was this camera.',
};

function title(each: Journal): string {
  const image = each.image === null ? '' : ` of ${baseName(each.image)}`;
  return each.command === '' ? baseName(each.file) : `${each.command}${image}`;
}

// The bytes of a raw image go where they were on their way to.
function planAgain(store: FlashStore, each: Journal): void {
  const file = each.image ?? '';
  const address = parseAddress(/^0x[0-9a-f]+/i.exec(each.places)?.[0] ?? '') ?? 0;
  store.choose([{ file, place: holdsAddresses(file) ? { kind: 'file' } : { kind: 'address', address } }]);
  void store.makePlan();
}

export function JournalList({ store, disabled }: { store: FlashStore; disabled: boolean }) {
  const { journals } = store;
  if (journals.length === 0) return null;
  const asks = journals.some((each) => each.state === 'asks');
  return (
    <div role="region" aria-label="Unfinished work" class="journals">
      <h3>Unfinished work</h3>
      <ul>
        {journals.map((each) => (
          <li key={each.file} class="note warn">
            <div class="grow">
              <p class="strong">{title(each)}</p>
              {each.places !== '' && <p class="small number">{each.places}, started {each.started}</p>}
              <p class="small">{stateTexts[each.state]}{each.why !== '' && ` Reason: ${each.why}.`}</p>
              <p class="small muted"><code class="path" title={each.file}>{baseName(each.file)}</code></p>
              {each.state === 'asks' && (
                <div class="buttons">
                  <Button kind="primary" disabled={disabled} onClick={() => void store.answer(each.file)}>It was this camera: use the journal</Button>
                </div>
              )}
              {isAtHand(each) && <div class="buttons"><Button disabled={disabled} onClick={() => planAgain(store, each)}>Plan {each.image}</Button></div>}
              {each.state === 'waits' && !isAtHand(each) && <p class="small">To continue it, choose the same image again.</p>}
            </div>
          </li>
        ))}
      </ul>
      {asks && <div class="buttons"><Button disabled={disabled} onClick={() => void store.answer('none')}>It was another camera</Button></div>}
    </div>
  );
}
