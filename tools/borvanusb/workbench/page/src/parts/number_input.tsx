// A number in hexadecimal, decimal or binary digits. Enter or leaving the field takes it over.
import { useId, useState } from 'preact/hooks';
import { formatNumber, parseNumber, type NumberForm } from '../model/number';

export function NumberInput({ label, value, bits, form, onValue, disabled, check, id }: {
  label: string; value: bigint | undefined; bits: number; form: NumberForm; onValue: (value: bigint) => void;
  disabled?: boolean; check?: (value: bigint) => string | null; id?: string;
}) {
  const shown = value === undefined ? '' : formatNumber(value, bits, form);
  // What is typed and not taken over yet; null shows the value. A value that arrives meanwhile must not replace it.
  const [typed, setTyped] = useState<string | null>(null);
  const [problem, setProblem] = useState<string | null>(null);
  const problemId = useId();

  const take = () => {
    if (typed === null) return;
    if (typed.trim() === '' || typed === shown) {
      cancel();
      return;
    }
    const parsed = parseNumber(typed, bits);
    const wrong = parsed.ok ? (check?.(parsed.value) ?? null) : parsed.problem;
    setProblem(wrong);
    if (wrong !== null || !parsed.ok) return;
    setTyped(null);
    onValue(parsed.value);
  };
  const cancel = () => {
    setTyped(null);
    setProblem(null);
  };

  return (
    <label class={`number-input form-${form}`}>
      <span class="label">{label}</span>
      <input type="text" id={id} value={typed ?? shown} disabled={disabled} spellcheck={false} autocomplete="off"
        aria-invalid={problem !== null} aria-describedby={problem === null ? undefined : problemId}
        onInput={(event) => setTyped(event.currentTarget.value)}
        onBlur={take}
        onKeyDown={(event) => {
          if (event.key === 'Enter') take();
          if (event.key === 'Escape') cancel();
        }} />
      {problem !== null && <span class="field-problem" id={problemId} role="alert">{problem}</span>}
    </label>
  );
}
