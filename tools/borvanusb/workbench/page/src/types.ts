// Types of the data that the commands print with --json, and of what the server adds.

export interface CameraIdentity {
  index: number;
  path: string;
  name: string;
  vid: string;
  pid: string;
}

export interface Camera extends CameraIdentity {
  profile: { file: string; name: string } | null;
  job: string | null;
}

export interface Progress {
  stage: string;
  done: number;
  total: number;
  unit: string;
  percent: number;
  rate: number | null;
  seconds_left: number | null;
}

export interface Job {
  id: string;
  camera: string | null;
  words: string[];
  line: string;
  started: string;
  progress: Progress | null;
}

export interface State {
  version: string;
  read_only: boolean;
  library: string | null;
  cameras: Camera[];
  jobs: Job[];
}

export interface ToolError {
  code: number;
  kind: string;
  message: string;
  hint: string;
}

export interface RunAnswer<T> {
  exit: number;
  result: T | null;
  error: ToolError | null;
  messages: string[];
  line: string;
  job: string;
}

export type Device =
  | { kind: 'chip'; wide: boolean }
  | { kind: 'i2c'; slave: number; mode: string; option: number };

export interface FieldValue {
  name: string;
  value: number;
  meaning: string | null;
}

export interface RegisterValue {
  address: number;
  value: number;
  name?: string;
  hex?: string;
  device?: Device;
  fields?: FieldValue[];
}

export interface RegisterRead {
  wide?: boolean;
  checked?: boolean;
  registers: RegisterValue[];
}

export type Constraint =
  | { kind: 'range'; minimum: number; maximum: number }
  | { kind: 'write-as-read' }
  | { kind: 'enumerated' };

export interface EnumeratedValue {
  name: string;
  value: number;
  description: string;
}

export interface FieldDescription {
  name: string;
  offset: number;
  bits: number;
  access: string;
  read_action: string | null;
  modified_write: string | null;
  description: string;
  constraint: Constraint | null;
  values: EnumeratedValue[];
}

export interface RegisterDescription {
  name: string;
  peripheral: string;
  map: string;
  device: Device;
  address: number;
  bits: number;
  access: string;
  reset: { value: number; mask: number } | null;
  read_action: string | null;
  modified_write: string | null;
  description: string;
  constraint: Constraint | null;
  fields: FieldDescription[];
}

export interface NamedWrite {
  name?: string | null;
  address: number;
  device?: Device;
  before: number | null;
  value: number;
  verified: boolean;
}

export interface FieldDifference {
  name: string;
  left: number | null;
  right: number | null;
  left_meaning: string | null;
  right_meaning: string | null;
}

export interface Difference {
  address: number;
  left: number | null;
  right: number | null;
  name?: string;
  device?: Device;
  fields?: FieldDifference[];
}

export interface RegisterDiff {
  left: string;
  right: string;
  equal: boolean;
  differences: Difference[];
}

export interface Range {
  first: number;
  last: number;
}

export interface Region extends Range {
  name: string;
  size: number;
  read_only: boolean;
  description: string;
}

export interface Preset {
  name: string;
  description: string;
  file: string | null; // a list file; null: `settings` is used
  settings: string[]; // "NAME=VALUE"
}

export interface Profile {
  file: string;
  name: string;
  description: string;
  flash: { size: number | null; regions: Region[]; image_region: string | null };
  presets: Preset[];
}

export interface FlashMap {
  camera: CameraIdentity;
  first: number;
  last: number;
  sector_size: number;
  used: Range[];
  blank: Range[];
  used_bytes: number;
  blank_bytes: number;
  regions?: Region[];
}

export interface ProgramResult {
  camera: CameraIdentity | null;
  image: { file: string; size: number; sha256: string };
  address: number;
  flash_size: number | null;
  dry_run: boolean;
  sectors: number;
  changed: Range[];
  changed_bytes: number;
  transfers: number;
  expected_seconds: number;
  backup: string | null;
  verified: boolean | null;
  state: 'unchanged' | 'partial' | 'written' | 'done' | 'restoring' | 'restored';
  written: Range[];
  unfinished: Range[];
  remaining: Range[];
  wrong: Range[];
  seconds: { read: number; program: number; verify: number; total: number };
  result: string;
  exit_code: number;
  message: string;
  hint: string;
}

export interface VerifyResult {
  image: { file: string; size: number; sha256: string };
  address: number;
  equal: boolean;
  different_bytes: number;
  first_difference: number | null;
  different: Range[];
}

export interface StoredFile {
  name: string;
  size: number;
  sha256: string;
}

export interface DoctorReport {
  system: {
    program: string;
    program_version: string;
    system: string;
    library: string | null;
    library_version: string | null;
    library_problem: string | null;
    com_problem: string | null;
  };
  devices: { name: string; path: string; reason: string | null }[];
  cameras: { camera: CameraIdentity; problem: string | null }[];
  list_problem: string | null;
  cause: string;
  advice: string;
}
