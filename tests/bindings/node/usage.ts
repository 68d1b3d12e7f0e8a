// Every kind of call with its types; tsc checks it with --strict.
import {BorvanError, Camera, functions, I2cMode, ProgramError, programFlash} from 'borvanusb';

async function useCamera(camera: Camera, signal: AbortSignal): Promise<number> {
  const names: string[] = camera.list().map(({name}) => name);
  camera.select(names.length - 1);
  camera.writeRegister(0x100, camera.readRegister(0x100), {wide: true});
  camera.writeI2c(0x6c, 0x300a, camera.readI2c(0x6c, 0x300a, I2cMode.address16Data8), 1, {option: 0});
  await camera.writeFlashFile('a.bin', 0, {signal, timeLimitMs: 1, onProgress: (percent: number) => percent});
  await camera.writeI2cList('a.txt', {option: 1, timeLimitMs: 1});
  const bytes: Uint8Array = await camera.readFlash(0, 4);
  return (await camera.readFlashWord(0)) + bytes.length;
}

async function program(): Promise<string | null> {
  try {
    const result = await programFlash('a.bin', {
      address: 0, backup: false, camera: '1234:0002',
      onProgress: ({stage, percent}) => `${stage} ${percent}`,
    });
    const first: number | undefined = result.changed[0]?.first;
    return first === undefined ? null : result.backup;
  } catch (error) {
    if (error instanceof ProgramError) {
      return `${error.exitCode} ${error.exitKind} ${error.hint}`;
    }
    return error instanceof BorvanError ? `${error.kind} ${error.status}` : null;
  }
}

const value: [number] = [0];
const read: boolean = functions.UsbRegisterRead(0x100, value, 0);
const progress: bigint = functions.GetProgressInfo();

// @ts-expect-error: no mode has this number
new Camera().readI2c(0x6c, 0, 6);
// @ts-expect-error: an address is a number
new Camera().readRegister('0x100');
// @ts-expect-error: no such option
programFlash('a.bin', {adress: 0});
// @ts-expect-error: a value is stored in an array
functions.UsbRegisterRead(0x100, 0, 0);

export {program, progress, read, useCamera};
