// An input for a number in hexadecimal, decimal or binary. Enter, or leaving the field, accepts the number.
import { useEffect, useId, useState } from 'preact/hooks';
import { formatNumber, parseNumber, type NumberForm } from '../model/number';

export function NumberInput({ label, value, bits, form, onValue, disabled, check, id }: {
  label: string; value: bigint | undefined; bits: number; form: NumberForm; onValue: (value: bigint) => void;
  disabled?: boolean; check?: (value: bigint) => string | null; id?: string;
}) {
  const shown = value === undefined ? '' : formatNumber(value, bits, form);
  const [text, setText] = useState(shown);
  const [typing, setTyping] = useState(false);
  const [problem, setProblem] = useState<string | null>(null);
  const problemId = useId();
  useEffect(() => {
    if (!typing) setText(shown);
  }, [shown, typing]);

  const take = () => {
    if (!typing) return;
    if (text.trim() === '' || text === shown) {
      cancel();
      return;
    }
    const parsed = parseNumber(text, bits);
    const wrong = parsed.ok ? (check?.(parsed.value) ?? null) : parsed.problem;
    setProblem(wrong);
    if (wrong !== null || !parsed.ok) return;
    setTyping(false);
    onValue(parsed.value);
  };
  const cancel = () => {
    setTyping(false);
    setProblem(null);
    setText(shown);
  };

  return (
    <label class={`number-input form-${form}`}>
      <span class="label">{label}</span>
      <input type="text" id={id} value={text} disabled={disabled} spellcheck={false} autocomplete="off"
        aria-invalid={problem !== null} aria-describedby={problem === null ? undefined : problemId}
        onInput={(event) => {
          setTyping(true);
          setText(event.currentTarget.value);
        }}
        onBlur={take}
        onKeyDown={(event) => {
          if (event.key === 'Enter') take();
          if (event.key === 'Escape') cancel();
        }} />
      {problem !== null && <span class="field-problem" id={problemId} role="alert">{problem}</span>}
    </label>
  );
}
