// Counts how often each brightness occurs in a picture.

export interface Histogram {
  red: Uint32Array;
  green: Uint32Array;
  blue: Uint32Array;
  luma: Uint32Array;
  mean: number; // of luma
  clipped: number; // proportion of pixels with the maximum value
}

export function histogramOf(rgba: Uint8ClampedArray): Histogram {
  const red = new Uint32Array(256);
  const green = new Uint32Array(256);
  const blue = new Uint32Array(256);
  const luma = new Uint32Array(256);
  let sum = 0;
  let clipped = 0;
  for (let at = 0; at + 3 < rgba.length; at += 4) {
    const r = rgba[at] ?? 0;
    const g = rgba[at + 1] ?? 0;
    const b = rgba[at + 2] ?? 0;
    // Luma according to Rec. 601, in 1/256.
    const y = (77 * r + 150 * g + 29 * b) >> 8;
    red[r]!++;
    green[g]!++;
    blue[b]!++;
    luma[y]!++;
    sum += y;
    if (y >= 254) clipped++;
  }
  const pixels = Math.max(1, rgba.length / 4);
  return { red, green, blue, luma, mean: sum / pixels, clipped: clipped / pixels };
}

// The video device whose label contains the camera's name. Browsers append "(1234:0001)" to the label.
export function deviceForCamera<T extends { label: string }>(devices: T[], name: string): T | null {
  const wanted = name.trim().toLowerCase();
  if (wanted === '') return null;
  return devices.find((device) => device.label.toLowerCase() === wanted)
    ?? devices.find((device) => device.label.toLowerCase().startsWith(wanted))
    ?? devices.find((device) => device.label.toLowerCase().includes(wanted))
    ?? null;
}
