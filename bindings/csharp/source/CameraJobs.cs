using System;
using System.IO;
using System.Threading;
using System.Threading.Tasks;

namespace BorvanUsb
{
    // The calls that run a job.
    //
    // timeLimit: ten minutes if not given. cancellation ends the waiting, not the job: nothing can stop a job. Call
    // WaitAsync afterwards. progress receives percentages that rise; only WriteFlashFileAsync and reads of flash report
    // some below 100.
    public sealed partial class Camera
    {
        /// <summary>Four bytes of flash, the one at `address` in bits 24 to 31.</summary>
        public async Task<uint> ReadFlashWordAsync(
            uint address, TimeSpan? timeLimit = null, CancellationToken cancellation = default,
            IProgress<int> progress = null)
        {
            string what = $"ReadFlashWordAsync({Arguments.Hex(address)})";
            Owner.Run(() => Refuse(what));
            Arguments.CheckNumber(what, "address", address, uint.MaxValue - 3);
            var waiting = new Waiting(what, timeLimit, cancellation, progress);
            uint word = Owner.Run(() =>
            {
                Refuse(what);
                uint value = 0;
                Check(what, Functions.UsbFlashRead(address, ref value));
                return value;
            });
            if (word != 0)
            {
                return word;
            }
            // The library reports a failed read as the value 0. So a 0 is confirmed by a dump of the four bytes.
            byte[] bytes = await DumpAsync(what, address, 4, waiting).ConfigureAwait(false);
            return (uint)bytes[0] << 24 | (uint)bytes[1] << 16 | (uint)bytes[2] << 8 | bytes[3];
        }

        /// <summary>Bytes of flash.</summary>
        public async Task<byte[]> ReadFlashAsync(
            uint first, int count, TimeSpan? timeLimit = null, CancellationToken cancellation = default,
            IProgress<int> progress = null)
        {
            string what = $"ReadFlashAsync({Arguments.Hex(first)})";
            Owner.Run(() => Refuse(what));
            long most = Math.Min(int.MaxValue, (long)uint.MaxValue + 1 - first);
            if (count < 1 || count > most)
            {
                throw Arguments.NotAllowed(what, $"count {count}", $"1 to {most}");
            }
            var waiting = new Waiting(what, timeLimit, cancellation, progress);
            return await DumpAsync(what, first, count, waiting).ConfigureAwait(false);
        }

        /// <summary>Dumps flash into a file of raw bytes; `last` is included.</summary>
        public async Task ReadFlashFileAsync(
            string file, uint first, uint last, TimeSpan? timeLimit = null, CancellationToken cancellation = default,
            IProgress<int> progress = null)
        {
            string what = $"ReadFlashFileAsync({file})";
            Owner.Run(() => Refuse(what));
            Arguments.CheckRawFile(what, file);
            var waiting = new Waiting(what, timeLimit, cancellation, progress);
            await RunAsync(FileJob(what, file, (long)last - first + 1), waiting,
                           () => Functions.UsbFlashQuickReadFile(file, first, last)).ConfigureAwait(false);
        }

        /// <summary>
        /// Programs a file without a backup and without reading back: see ProgramFlash for the safe way. It erases
        /// sectors of 4096 bytes counted from `address`, and up to 59 bytes after the image become 0.
        /// </summary>
        public async Task WriteFlashFileAsync(
            string file, uint address, TimeSpan? timeLimit = null, CancellationToken cancellation = default,
            IProgress<int> progress = null)
        {
            string what = $"WriteFlashFileAsync({file})";
            Owner.Run(() => Refuse(what));
            Arguments.CheckFile(what, file);
            var waiting = new Waiting(what, timeLimit, cancellation, progress);
            await RunAsync(new Job(what), waiting, () => Functions.UsbFlashWriteFile(file, address))
                .ConfigureAwait(false);
        }

        /// <summary>Reads 1 to 56 registers of 8 bits into a file, one byte for each; `last` is included.</summary>
        public async Task ReadRegistersFileAsync(
            string file, uint first, uint last, TimeSpan? timeLimit = null, CancellationToken cancellation = default,
            IProgress<int> progress = null)
        {
            string what = $"ReadRegistersFileAsync({file})";
            Owner.Run(() => Refuse(what));
            Arguments.CheckRawFile(what, file);
            Arguments.CheckRun(what, first, last);
            if (first >> 16 != last >> 16)
            {
                throw Arguments.NotAllowed(
                    what, $"last {Arguments.Hex(last)}", "a register with the bits 16 to 31 of the first");
            }
            var waiting = new Waiting(what, timeLimit, cancellation, progress);
            await RunAsync(FileJob(what, file, last - first + 1), waiting,
                           () => Functions.UsbRegisterReadFile(file, first, last)).ConfigureAwait(false);
        }

        /// <summary>Writes the registers of a list file, which begins with 0xfffd.</summary>
        public async Task WriteRegisterListAsync(
            string file, TimeSpan? timeLimit = null, CancellationToken cancellation = default,
            IProgress<int> progress = null)
        {
            string what = $"WriteRegisterListAsync({file})";
            Owner.Run(() => Refuse(what));
            Arguments.CheckFile(what, file);
            var waiting = new Waiting(what, timeLimit, cancellation, progress);
            await RunAsync(new Job(what, isRegisterList: true), waiting, () => Functions.UsbRegisterWriteFile(file))
                .ConfigureAwait(false);
        }

        /// <summary>
        /// Reads 1 to 56 registers into a file, one byte for each: of wider values the low 8 bits.
        /// </summary>
        public async Task ReadI2cFileAsync(
            string file, byte slave, I2cMode mode, uint first, uint last, TimeSpan? timeLimit = null,
            CancellationToken cancellation = default, IProgress<int> progress = null)
        {
            string what = $"ReadI2cFileAsync({file})";
            Owner.Run(() => Refuse(what));
            Arguments.CheckRawFile(what, file);
            Arguments.CheckI2c(what, last, mode);
            Arguments.CheckRun(what, first, last);
            var waiting = new Waiting(what, timeLimit, cancellation, progress);
            await RunAsync(FileJob(what, file, last - first + 1), waiting,
                           () => Functions.UsbI2CReadFile(first, last, file, slave, (uint)mode)).ConfigureAwait(false);
        }

        /// <summary>Writes the registers of a list file, which names slave and width. `option` is 0 to 15.</summary>
        public async Task WriteI2cListAsync(
            string file, byte option = 0, TimeSpan? timeLimit = null, CancellationToken cancellation = default,
            IProgress<int> progress = null)
        {
            string what = $"WriteI2cListAsync({file})";
            Owner.Run(() => Refuse(what));
            Arguments.CheckFile(what, file);
            Arguments.CheckNumber(what, "option", option, 0xf);
            var waiting = new Waiting(what, timeLimit, cancellation, progress);
            await RunAsync(new Job(what), waiting, () => Functions.UsbI2CWriteFile(file, option))
                .ConfigureAwait(false);
        }

        /// <summary>Waits again for a job that went on after a time limit or a cancellation.</summary>
        public async Task WaitAsync(
            TimeSpan? timeLimit = null, CancellationToken cancellation = default, IProgress<int> progress = null)
        {
            Job job = Owner.Run(() =>
            {
                Refuse("WaitAsync", true);
                return Job.Pending;
            });
            var waiting = new Waiting("WaitAsync", timeLimit, cancellation, progress);
            if (job != null)
            {
                await job.WaitAsync(waiting).ConfigureAwait(false);
            }
        }

        private static Job FileJob(string what, string file, long size)
        {
            try
            {
                return new Job(what, file == "" ? null : Path.GetFullPath(file), size);
            }
            catch (Exception error) when (error is ArgumentException || error is NotSupportedException)
            {
                throw Arguments.NotAllowed(what, $"file \"{file}\"", error.Message);
            }
        }

        private async Task RunAsync(Job job, Waiting waiting, Func<bool> begin)
        {
            Owner.Run(() =>
            {
                Refuse(job.What);
                starting = true;
            });
            try
            {
                ulong before = await Job.BeforeAsync().ConfigureAwait(false);
                waiting.Cancellation.ThrowIfCancellationRequested();
                Owner.Run(() =>
                {
                    Refuse(job.What, true);
                    job.Start(before, begin);
                });
            }
            finally
            {
                Owner.Run(() => starting = false);
            }
            await job.WaitAsync(waiting).ConfigureAwait(false);
        }

        // Flash through a temporary file, which is removed when the job has closed it.
        private async Task<byte[]> DumpAsync(string what, uint first, int count, Waiting waiting)
        {
            string folder = Path.Combine(Path.GetTempPath(), $"borvanusb-{Guid.NewGuid():N}");
            string file = Path.Combine(folder, "dump.bin");
            Arguments.CheckFile(what, file);
            Job job = FileJob(what, file, count);
            Directory.CreateDirectory(folder);
            try
            {
                await RunAsync(job, waiting,
                               () => Functions.UsbFlashQuickReadFile(file, first, first + (uint)(count - 1)))
                    .ConfigureAwait(false);
                return File.ReadAllBytes(file);
            }
            finally
            {
                if (job.End == null || job.HasEnded)
                {
                    Remove(folder);
                }
                else
                {
                    Task removed = job.End.ContinueWith(_ => Remove(folder), TaskScheduler.Default);
                }
            }
        }

        private static void Remove(string folder)
        {
            try
            {
                Directory.Delete(folder, true);
            }
            catch (IOException)
            {
                // Another program looks at it: it stays in the folder of temporary files.
            }
            catch (UnauthorizedAccessException)
            {
            }
        }
    }
}
