// The camera's video: one stream for all views, off until the user starts it.
import { deviceForCamera } from './model/histogram';
import { Store } from './store';

export interface Picture {
  state: 'off' | 'asking' | 'on';
  stream: MediaStream | null;
  devices: { id: string; label: string }[];
  device: string | null;
  automatic: boolean; // the device was chosen by the camera's name
  problem: string | null;
}

export const picture = new Store<Picture>({
  state: 'off', stream: null, devices: [], device: null, automatic: false, problem: null,
});

function end(stream: MediaStream | null): void {
  stream?.getTracks().forEach((track) => track.stop());
}

function textOf(error: unknown): string {
  const name = error instanceof DOMException ? error.name : '';
  if (name === 'NotAllowedError') return 'The browser was not allowed to use the camera. Allow it beside the address, then try again.';
  if (name === 'NotFoundError') return 'The browser finds no camera that delivers pictures.';
  if (name === 'NotReadableError') return 'Another program uses the picture of this camera. Close it, then try again.';
  return error instanceof Error ? error.message : String(error);
}

async function open(device: string | null): Promise<MediaStream> {
  const video = device === null ? true : { deviceId: { exact: device } };
  return navigator.mediaDevices.getUserMedia({ video, audio: false });
}

// Opens the video device with the camera's name. Browsers reveal the names only after the user gave permission.
export async function startPicture(cameraName: string): Promise<void> {
  if (!navigator.mediaDevices) {
    picture.set({ problem: 'This browser does not allow camera access for this address.' });
    return;
  }
  picture.set({ state: 'asking', problem: null });
  try {
    let stream = await open(null);
    const devices = (await navigator.mediaDevices.enumerateDevices())
      .filter((device) => device.kind === 'videoinput').map((device) => ({ id: device.deviceId, label: device.label }));
    const named = deviceForCamera(devices, cameraName);
    const opened = stream.getVideoTracks()[0]?.getSettings().deviceId ?? null;
    if (named && named.id !== opened) {
      end(stream);
      stream = await open(named.id);
    }
    picture.set({ state: 'on', stream, devices, device: named?.id ?? opened, automatic: named !== null });
    stream.getVideoTracks()[0]?.addEventListener('ended', () => stopPicture('The picture ended: the camera was removed or is used elsewhere.'));
  } catch (error) {
    picture.set({ state: 'off', stream: null, problem: textOf(error) });
  }
}

export async function chooseDevice(id: string): Promise<void> {
  end(picture.get().stream);
  try {
    picture.set({ stream: await open(id), device: id, automatic: false, problem: null, state: 'on' });
  } catch (error) {
    picture.set({ state: 'off', stream: null, problem: textOf(error) });
  }
}

export function stopPicture(problem: string | null = null): void {
  end(picture.get().stream);
  picture.set({ state: 'off', stream: null, problem });
}
