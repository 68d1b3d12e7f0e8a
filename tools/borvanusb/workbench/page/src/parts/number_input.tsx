// An input for a number in hexadecimal, decimal or binary. Enter, or leaving the field, accepts the number.
import { useId, useState } from 'preact/hooks';
import { formatNumber, parseNumber, type NumberForm } from '../model/number';

export function NumberInput({ label, value, bits, form, onValue, disabled, check, id }: {
  label: string; value: bigint | undefined; bits: number; form: NumberForm; onValue: (value: bigint) => void;
  disabled?: boolean; check?: (value: bigint) => string | null; id?: string;
}) {
  const shown = value === undefined ? '' : formatNumber(value, bits, form);
  // The typed text that is not accepted yet; null shows the value. A new value must not replace typed text.
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
