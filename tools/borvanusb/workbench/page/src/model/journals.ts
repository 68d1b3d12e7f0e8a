// Journals of unfinished changes, as the commands that plan and change the flash name them.

export interface Journal {
  file: string; // full name
  command: string; // flash program
  image: string | null; // a plain name if it is a file of this run
  places: string;
  started: string;
  // used: this work takes the lost bytes from it. waits: this work does not touch its sector. asks: the tool does not
  // know whether it belongs to this camera.
  state: 'used' | 'waits' | 'asks';
  why: string; // it is unknown
}

const path = String.raw`((?:[A-Za-z]:[\\/]|[\\/])[^:"]*?\.journal)`;
const work = String.raw`the unfinished (flash \w+)(?: of (.+?))? at (0x.+?), started (\S+?),`;
const usedNote = new RegExp(`${work} was interrupted; the bytes beside it in .+ come from ${path}$`);
const waitingNote = new RegExp(`${work} stays unfinished; ${path} holds the bytes beside it in `);
const question = new RegExp(`${path} belongs to ${work} and it is unknown whether that was this camera: (.+)$`);
const rival = new RegExp(`^${path} may be this camera's as well$`);

function journal(file: string, found: (string | undefined)[], state: Journal['state'], why = ''): Journal {
  const [command, image, places, started] = found;
  return { file, command: command ?? '', image: image ?? null, places: places ?? '', started: started ?? '', state, why };
}

function journalsInLine(line: string): Journal[] {
  const used = usedNote.exec(line);
  if (used) return [journal(used[5] ?? '', used.slice(1, 5), 'used')];
  const waits = waitingNote.exec(line);
  if (waits) return [journal(waits[5] ?? '', waits.slice(1, 5), 'waits')];
  const asks = question.exec(line);
  if (!asks) return [];
  const why = asks[6] ?? '';
  const asked = journal(asks[1] ?? '', asks.slice(2, 6), 'asks', why);
  const other = rival.exec(why)?.[1];
  return other === undefined ? [asked] : [{ ...asked, why: '' }, journal(other, [], 'asks')];
}

// Of what a command wrote beside its result, and of its failure; each journal once, questions first.
export function journalsIn(lines: string[]): Journal[] {
  const found = new Map<string, Journal>();
  for (const each of lines.flatMap((line) => line.split('\n')).flatMap(journalsInLine)) {
    if (!found.has(each.file) || each.state === 'asks') found.set(each.file, each);
  }
  const isAsked = (each: Journal) => (each.state === 'asks' ? 0 : 1);
  return [...found.values()].sort((one, other) => isAsked(one) - isAsked(other));
}

export function baseName(file: string): string {
  return file.split(/[\\/]/).pop() ?? file;
}

// Whether the image is a file that this page can plan with at once.
export function isAtHand(each: Journal): boolean {
  return each.state === 'waits' && each.command === 'flash program' && each.image !== null && !/[\\/,]/.test(each.image);
}
