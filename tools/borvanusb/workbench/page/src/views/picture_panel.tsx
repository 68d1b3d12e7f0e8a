// The picture with its histogram, and a still picture for comparison.
import { useEffect, useRef, useState } from 'preact/hooks';
import { histogramOf, type Histogram } from '../model/histogram';
import { Button, Note, save, Select, Toggle } from '../parts/basics';
import { colourOf } from '../parts/colour';
import { Icon } from '../parts/icon';
import { chooseDevice, picture, startPicture, stopPicture } from '../picture';
import { session } from '../session';
import { useStore } from '../store';

const sampleWidth = 320;

function drawHistogram(canvas: HTMLCanvasElement, histogram: Histogram): void {
  const context = canvas.getContext('2d');
  if (!context) return;
  canvas.width = Math.round(canvas.clientWidth * devicePixelRatio);
  canvas.height = Math.round(canvas.clientHeight * devicePixelRatio);
  const { width, height } = canvas;
  context.clearRect(0, 0, width, height);
  let largest = 1;
  for (let level = 1; level < 255; level++) {
    largest = Math.max(largest, histogram.luma[level] ?? 0, histogram.red[level] ?? 0, histogram.green[level] ?? 0, histogram.blue[level] ?? 0);
  }
  const line = (values: Uint32Array, colour: string, filled: boolean) => {
    context.beginPath();
    context.moveTo(0, height);
    values.forEach((count, level) => {
      context.lineTo((level / 255) * width, height - Math.min(1, Math.sqrt(count / largest)) * (height - 2));
    });
    context.lineTo(width, height);
    context.strokeStyle = colour;
    context.fillStyle = colour;
    context.lineWidth = 1.25 * devicePixelRatio;
    if (filled) context.fill();
    else context.stroke();
  };
  line(histogram.luma, colourOf('--luma'), true);
  line(histogram.red, colourOf('--red'), false);
  line(histogram.green, colourOf('--green'), false);
  line(histogram.blue, colourOf('--blue-line'), false);
}

function HistogramView({ video }: { video: { current: HTMLVideoElement | null } }) {
  const canvas = useRef<HTMLCanvasElement>(null);
  const [numbers, setNumbers] = useState({ mean: 0, clipped: 0, size: '' });
  useEffect(() => {
    const small = document.createElement('canvas');
    const context = small.getContext('2d', { willReadFrequently: true });
    const timer = setInterval(() => {
      const source = video.current;
      if (!source || !context || !canvas.current || source.videoWidth === 0) return;
      small.width = sampleWidth;
      small.height = Math.round((sampleWidth * source.videoHeight) / source.videoWidth);
      context.drawImage(source, 0, 0, small.width, small.height);
      const histogram = histogramOf(context.getImageData(0, 0, small.width, small.height).data);
      drawHistogram(canvas.current, histogram);
      setNumbers({ mean: histogram.mean, clipped: histogram.clipped, size: `${source.videoWidth} x ${source.videoHeight}` });
    }, 200);
    return () => clearInterval(timer);
  }, []);
  return (
    <div class="histogram">
      <canvas ref={canvas} role="img"
        aria-label={`Histogram of the picture, mean brightness ${numbers.mean.toFixed(0)} of 255`} />
      <p class="small muted number">
        {numbers.size}  mean <span data-role="mean">{numbers.mean.toFixed(1)}</span>  clipped {(numbers.clipped * 100).toFixed(1)} %
      </p>
    </div>
  );
}

export function PicturePanel({ small = false }: { small?: boolean }) {
  const state = useStore(picture, (each) => each);
  const camera = useStore(session, (each) => each.camera);
  const [histogram, setHistogram] = useState(true);
  const [still, setStill] = useState<string | null>(null);
  const video = useRef<HTMLVideoElement>(null);
  const stillCanvas = useRef<HTMLCanvasElement | null>(null);

  useEffect(() => {
    if (video.current) video.current.srcObject = state.stream;
  }, [state.stream, state.state]);
  useEffect(() => () => {
    if (still) URL.revokeObjectURL(still);
  }, [still]);

  const hold = () => {
    const source = video.current;
    if (!source || source.videoWidth === 0) return;
    const canvas = document.createElement('canvas');
    canvas.width = source.videoWidth;
    canvas.height = source.videoHeight;
    canvas.getContext('2d')?.drawImage(source, 0, 0);
    stillCanvas.current = canvas;
    canvas.toBlob((blob) => setStill(blob && URL.createObjectURL(blob)));
  };
  const saveStill = () => {
    stillCanvas.current?.toBlob((blob) => {
      if (blob) save(`still-${new Date().toISOString().replace(/[:.]/g, '-')}.png`, blob, 'image/png');
    });
  };

  if (state.state !== 'on') {
    return (
      <section class={`panel picture-off${small ? ' small' : ''}`} aria-label="Picture">
        <Icon name="picture" size={small ? 24 : 36} />
        <p>The picture is off. The browser asks for permission, and the picture stays in this page.</p>
        {state.problem && <Note kind="warn" icon="warning"><p>{state.problem}</p></Note>}
        <Button kind="primary" icon="play" disabled={state.state === 'asking'} onClick={() => void startPicture(camera?.name ?? '')}>
          {state.state === 'asking' ? 'Waiting for the browser' : 'Show the picture'}
        </Button>
      </section>
    );
  }
  return (
    <section class={`panel picture-panel${small ? ' small' : ''}`} aria-label="Picture">
      <div class="picture-tools">
        <Select label="Device" hidden={small} value={state.device ?? ''} onChange={(id) => void chooseDevice(id)}>
          {state.devices.map((device, index) => <option key={device.id} value={device.id}>{device.label || `Camera ${index + 1}`}</option>)}
        </Select>
        {!small && !state.automatic && camera && <span class="small muted">No device is called {camera.name}: choose one.</span>}
        <div class="grow" />
        <Toggle label="Histogram" checked={histogram} onChange={setHistogram} />
        <Button icon="picture" onClick={hold}>Still</Button>
        <Button icon="stop" onClick={() => stopPicture()}>Off</Button>
      </div>
      <div class={`pictures${still ? ' with-still' : ''}`}>
        <figure>
          <video ref={video} autoplay muted playsInline aria-label="Picture of the camera" />
          <figcaption class="small muted">now</figcaption>
        </figure>
        {still && (
          <figure>
            <img src={still} alt="The still that was held" />
            <figcaption class="small muted">
              still
              <Button kind="quiet" icon="download" label="Save the still" onClick={saveStill} />
              <Button kind="quiet" icon="close" label="Remove the still" onClick={() => setStill(null)} />
            </figcaption>
          </figure>
        )}
      </div>
      {histogram && <HistogramView video={video} />}
    </section>
  );
}
