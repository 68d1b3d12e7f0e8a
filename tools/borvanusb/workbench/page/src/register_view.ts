// What the view of registers shows: search, filters, the chosen register, live reading. It stays while other views are open.
import type { Mark } from './model/marks';
import type { NumberForm } from './model/number';
import { Store } from './store';

export interface RegisterView {
  way: 'names' | 'numbers';
  search: string;
  open: ReadonlySet<string> | null; // null: as initially
  filter: ReadonlySet<Mark>;
  selected: string | null; // row key
  form: NumberForm;
  live: boolean;
  rate: number;
  atOnce: boolean;
  picture: boolean;
}

export const registerView = new Store<RegisterView>({
  way: 'names', search: '', open: null, filter: new Set(), selected: null, form: 'hex', live: false, rate: 5,
  atOnce: false, picture: false,
});
