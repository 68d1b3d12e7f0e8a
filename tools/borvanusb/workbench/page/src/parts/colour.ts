// The page's colours for canvases, which know no custom properties: colours.css names them.

let probe: HTMLElement | null = null;

// The colour that a name such as --accent has now, light or dark.
export function colourOf(name: string): string {
  if (probe === null) {
    probe = document.createElement('span');
    probe.hidden = true;
    document.body.append(probe);
  }
  probe.style.color = `var(${name})`;
  return getComputedStyle(probe).color;
}
