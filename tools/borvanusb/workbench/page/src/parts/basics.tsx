// Small components that all views use.
import type { ComponentChildren, JSX } from 'preact';
import { useEffect, useId, useRef, useState } from 'preact/hooks';
import type { Problem } from '../session';
import { Icon, type IconName } from './icon';

interface ButtonProps {
  icon?: IconName;
  kind?: 'primary' | 'plain' | 'danger' | 'quiet';
  disabled?: boolean;
  title?: string;
  pressed?: boolean;
  expanded?: boolean;
  onClick: (event: MouseEvent) => void;
  children?: ComponentChildren;
  label?: string; // for a button that has only an icon
  id?: string;
}

export function Button({ icon, kind = 'plain', children, label, pressed, expanded, ...rest }: ButtonProps) {
  return (
    <button type="button" class={`button ${kind}${children ? '' : ' only-icon'}`} aria-label={label}
      aria-pressed={pressed} aria-expanded={expanded} {...rest} title={rest.title ?? (children ? undefined : label)}>
      {icon && <Icon name={icon} />}
      {children}
    </button>
  );
}

export async function copyText(text: string): Promise<boolean> {
  try {
    await navigator.clipboard.writeText(text);
    return true;
  } catch {
    // Without the clipboard permission, use the older method. It works only inside a click handler.
    const area = document.createElement('textarea');
    area.value = text;
    area.className = 'out-of-sight';
    document.body.append(area);
    area.select();
    const done = document.execCommand('copy');
    area.remove();
    return done;
  }
}

export function CopyButton({ text, label = 'Copy', short = false }: { text: string; label?: string; short?: boolean }) {
  const [copied, setCopied] = useState(false);
  useEffect(() => {
    if (!copied) return undefined;
    const timer = setTimeout(() => setCopied(false), 1500);
    return () => clearTimeout(timer);
  }, [copied]);
  return (
    <button type="button" class={`button quiet${short ? ' only-icon' : ''}`} aria-label={copied ? 'Copied' : label}
      title={label} onClick={() => void copyText(text).then(setCopied)}>
      <Icon name={copied ? 'check' : 'copy'} />
      {!short && <span>{copied ? 'Copied' : label}</span>}
    </button>
  );
}

// A command line with a copy button.
export function CommandLine({ line }: { line: string }) {
  return (
    <div class="command-line">
      <code tabIndex={0} role="group" aria-label="Command line">{line}</code>
      <CopyButton text={line} label="Copy command line" short />
    </div>
  );
}

// A hint. Its lines may contain a command line after "To continue: " or similar.
function Hint({ text }: { text: string }) {
  return (
    <>
      {text.split('\n').filter((line) => line !== '').map((line) => {
        const at = line.search(/\bborvanusb /);
        // A sentence that mentions a command is not a command line.
        if (at < 0 || line.endsWith('.')) return <p key={line}>{line}</p>;
        return <div key={line} class="hint-line"><span>{line.slice(0, at)}</span><CommandLine line={line.slice(at)} /></div>;
      })}
    </>
  );
}

export function ProblemNote({ problem, onClose, children }: {
  problem: Problem | null; onClose?: () => void; children?: ComponentChildren;
}) {
  if (problem === null) return null;
  return (
    <div class="note bad" role="alert">
      <Icon name="warning" />
      <div class="grow">
        <p class="strong">{problem.message}</p>
        <Hint text={problem.hint} />
        {children}
      </div>
      {onClose && <Button icon="close" kind="quiet" label="Dismiss" onClick={onClose} />}
    </div>
  );
}

export function Note({ kind = 'plain', icon, children }: {
  kind?: 'plain' | 'good' | 'warn'; icon?: IconName; children: ComponentChildren;
}) {
  return (
    <div class={`note ${kind}`} role="status">
      {icon && <Icon name={icon} />}
      <div class="grow">{children}</div>
    </div>
  );
}

export function Badge({ kind = '', children, title }: { kind?: string; children: ComponentChildren; title?: string }) {
  return <span class={`badge ${kind}`} title={title}>{children}</span>;
}

export function Bar({ percent, label }: { percent: number; label: string }) {
  return (
    <div class="bar" role="progressbar" aria-label={label} aria-valuemin={0} aria-valuemax={100} aria-valuenow={percent}>
      <div class="bar-fill" style={{ width: `${percent}%` }} />
    </div>
  );
}

export function Choice<T extends string>({ label, value, options, onChange }: {
  label: string; value: T; options: { value: T; text: string }[]; onChange: (value: T) => void;
}) {
  const name = useId();
  return (
    <div class="choice" role="radiogroup" aria-label={label}>
      {options.map((option) => (
        <label key={option.value} class={option.value === value ? 'chosen' : ''}>
          <input type="radio" name={name} checked={option.value === value} onChange={() => onChange(option.value)} />
          <span>{option.text}</span>
        </label>
      ))}
    </div>
  );
}

export function Select({ label, value, onChange, children, hidden = false, disabled, title }: {
  label: string; value: string; onChange: (value: string) => void; children: ComponentChildren; hidden?: boolean;
  disabled?: boolean; title?: string;
}) {
  return (
    <label class="select" title={title}>
      <span class={hidden ? 'out-of-sight' : 'label'}>{label}</span>
      <select value={value} disabled={disabled} onChange={(event) => onChange(event.currentTarget.value)}>{children}</select>
    </label>
  );
}

export function Toggle({ label, checked, onChange, title, disabled }: {
  label: string; checked: boolean; onChange: (checked: boolean) => void; title?: string; disabled?: boolean;
}) {
  return (
    <label class="toggle" title={title}>
      <input type="checkbox" role="switch" checked={checked} disabled={disabled}
        onChange={(event) => onChange(event.currentTarget.checked)} />
      <span>{label}</span>
    </label>
  );
}

// A confirmation dialog before an action that can't be undone.
export function Confirm({ title, action, onYes, onNo, children }: {
  title: string; action: string; onYes: () => void; onNo: () => void; children: ComponentChildren;
}) {
  const dialog = useRef<HTMLDialogElement>(null);
  const heading = useId();
  useEffect(() => dialog.current?.showModal(), []);
  const close: JSX.GenericEventHandler<HTMLDialogElement> = () => onNo();
  return (
    <dialog ref={dialog} class="dialog" aria-labelledby={heading} onClose={close}>
      <h2 id={heading}>{title}</h2>
      <div>{children}</div>
      <div class="buttons end">
        <Button onClick={onNo}>Cancel</Button>
        <Button kind="danger" onClick={onYes}>{action}</Button>
      </div>
    </dialog>
  );
}

export function save(name: string, content: BlobPart, type = 'application/octet-stream'): void {
  const address = URL.createObjectURL(new Blob([content], { type }));
  const link = document.createElement('a');
  link.href = address;
  link.download = name;
  link.click();
  setTimeout(() => URL.revokeObjectURL(address), 10_000);
}

export function Empty({ icon, title, children }: { icon: IconName; title: string; children: ComponentChildren }) {
  return (
    <div class="empty">
      <Icon name={icon} size={36} />
      <h2>{title}</h2>
      {children}
    </div>
  );
}
