// The registers of a camera: descriptions, known values, edits and undo.
import { editField, editWhole, settingsOf, undoOf, withoutEdit, type Edits, type Undo } from './model/edits';
import { exactValue, isReadByLooking } from './model/fields';
import { nextKnown, noReferences, type Known, type References } from './model/marks';
import * as words from './model/words';
import { asProblem, onValues, run, session, type Problem } from './session';
import { Versioned } from './store';
import type {
  FieldDescription, NamedWrite, Profile, RegisterDescription, RegisterDiff, RegisterRead, RegisterValue,
} from './types';

const mostUndos = 50;

export class RegisterStore extends Versioned {
  registers: RegisterDescription[] = [];
  profile: Profile | null = null;
  loaded: 'no' | 'loading' | 'yes' = 'no';
  problem: Problem | null = null;
  readonly known = new Map<string, Known>();
  readonly numbers = new Map<string, Known>(); // without a name, by device and address
  edits: Edits = new Map();
  undos: Undo[] = [];
  references: References = noReferences;
  busy = false;
  writing = false; // a read that is under way keeps nobody from writing
  private byName = new Map<string, RegisterDescription>();

  constructor(readonly path: string) {
    super();
  }

  describe = (name: string): RegisterDescription | undefined => this.byName.get(name);

  async load(): Promise<void> {
    if (this.loaded !== 'no') return;
    this.loaded = 'loading';
    this.touch();
    try {
      const camera = { camera: this.path };
      const found = await run<{ registers: RegisterDescription[] }>(words.findRegisters(), camera);
      this.registers = found.result.registers;
      this.byName = new Map(this.registers.map((register) => [register.name, register]));
      this.problem = null;
      this.loaded = 'yes';
      this.touch();
      // If this fails, registers still work; only presets and regions are missing.
      await this.loadProfile();
    } catch (error) {
      this.problem = asProblem(error);
      if (this.registers.length === 0) this.loaded = 'no';
    }
    this.touch();
  }

  async loadProfile(): Promise<void> {
    this.profile = (await run<Profile>(words.showProfile(), { camera: this.path })).result;
    this.touch();
  }

  private async guarded<T>(work: () => Promise<T>): Promise<T | undefined> {
    this.busy = true;
    this.touch();
    try {
      const result = await work();
      this.problem = null;
      return result;
    } catch (error) {
      this.problem = asProblem(error);
      return undefined;
    } finally {
      this.busy = false;
      this.touch();
    }
  }

  accept(registers: RegisterValue[]): void {
    const now = Date.now();
    for (const read of registers) {
      if (read.name === undefined) continue;
      this.known.set(read.name, nextKnown(this.known.get(read.name), exactValue(read), now));
    }
    this.touch();
  }

  // Reads registers. Those with side effects are skipped unless `anyway` is set.
  read(names: string[], anyway = false): Promise<unknown> {
    const wanted = names.filter((name) => {
      const register = this.describe(name);
      return register !== undefined && (anyway || isReadByLooking(register));
    });
    if (wanted.length === 0) return Promise.resolve();
    return this.guarded(async () => {
      // Limits the length of the command line.
      for (let at = 0; at < wanted.length; at += 200) {
        const part = words.readRegisters(wanted.slice(at, at + 200));
        this.accept((await run<RegisterRead>(part, { camera: this.path })).result.registers);
      }
    });
  }

  edit(register: RegisterDescription, value: bigint): void {
    const same = this.known.get(register.name)?.value === value;
    this.edits = same ? withoutEdit(this.edits, register.name) : editWhole(this.edits, register, value);
    this.touch();
  }

  editField(register: RegisterDescription, field: FieldDescription, value: bigint): void {
    this.edits = editField(this.edits, register, field, value);
    this.touch();
  }

  discard(name?: string): void {
    this.edits = name === undefined ? new Map() : withoutEdit(this.edits, name);
    this.touch();
  }

  async writeEdits(): Promise<void> {
    const edits = this.edits;
    const done = await this.write(settingsOf(edits), true);
    // Edits made during the write remain.
    if (done) {
      for (const [name, edit] of edits) {
        if (this.edits.get(name) === edit) this.edits = withoutEdit(this.edits, name);
      }
      this.touch();
    }
  }

  async write(settings: words.Setting[], withUndo: boolean): Promise<boolean> {
    const before = (name: string) => this.known.get(name)?.value;
    this.writing = true;
    const done = await this.guarded(async () => {
      const { result } = await run<{ writes?: NamedWrite[] }>(words.writeRegisters(settings), { camera: this.path });
      const undo = undoOf(result.writes ?? [], settings, before, this.describe);
      if (withUndo && undo) this.undos = [...this.undos.slice(1 - mostUndos), undo];
      return true;
    });
    this.writing = false;
    const names = new Set(settings.map((setting) => (
      this.describe(setting.name) ? setting.name : setting.name.slice(0, setting.name.lastIndexOf('.')))));
    if (done) await this.read([...names]);
    return done === true;
  }

  async undo(): Promise<void> {
    const undo = this.undos.at(-1);
    if (undo && (await this.write(undo.settings, false))) {
      this.undos = this.undos.slice(0, -1);
      this.touch();
    }
  }

  // Marks registers that differ from a preset or a file. null removes the marks.
  async compareWith(kind: 'preset' | 'file', word: string | null): Promise<void> {
    if (word === null) {
      this.references = { ...this.references, [kind]: null };
      this.touch();
      return;
    }
    await this.guarded(async () => {
      const { result } = await run<RegisterDiff>(words.compare(word, 'camera'), { camera: this.path });
      const differing = new Map<string, bigint | null>();
      for (const difference of result.differences) {
        if (difference.name !== undefined) {
          differing.set(difference.name, difference.left === null ? null : BigInt(difference.left));
        }
      }
      this.references = { ...this.references, [kind]: differing };
    });
  }
}

const stores = new Map<string, RegisterStore>();

export function registersOf(path: string): RegisterStore {
  let store = stores.get(path);
  if (!store) {
    store = new RegisterStore(path);
    stores.set(path, store);
  }
  return store;
}

onValues((event) => registersOf(event.camera).accept(event.registers));

// If the profile of a camera path changes, another camera was connected there, so the store is renewed.
let profiles = new Map<string, string | null>();
session.follow(() => {
  const now = new Map(session.get().cameras.map((camera) => [camera.path, camera.profile?.file ?? null]));
  for (const [path, file] of now) {
    if (profiles.has(path) && profiles.get(path) !== file) stores.delete(path);
  }
  profiles = new Map([...profiles, ...now]);
});
