using System;
using System.Diagnostics;
using System.IO;
using System.Threading;
using System.Threading.Tasks;

namespace BorvanUsb
{
    // The checked options for waiting.
    internal sealed class Waiting
    {
        private static readonly TimeSpan Usual = TimeSpan.FromMinutes(10);

        internal Waiting(string what, TimeSpan? limit, CancellationToken cancellation, IProgress<int> progress)
        {
            Limit = limit ?? Usual;
            if (Limit < TimeSpan.Zero || Limit.TotalMilliseconds > int.MaxValue)
            {
                throw Arguments.NotAllowed(
                    what, $"timeLimit {Limit.TotalMilliseconds} ms", $"0 to {int.MaxValue} ms");
            }
            cancellation.ThrowIfCancellationRequested();
            Cancellation = cancellation;
            Progress = progress;
        }

        internal TimeSpan Limit { get; }
        internal CancellationToken Cancellation { get; }
        internal IProgress<int> Progress { get; }
    }

    // A job of the library with a time limit, waited for as borvan_wait_for_job.h does. It is watched until its end,
    // also when the program has stopped waiting for it. The Camera starts jobs.
    internal sealed class Job
    {
        private const int PollMilliseconds = 20;
        private const int DoneMilliseconds = 3000; // maximum time for which a job's 100 is visible
        private const int ClearMilliseconds = 3500; // time after which it is cleared, even on a slow machine

        private readonly string file; // what the job writes; null when it writes none
        private readonly long size;
        private readonly bool isRegisterList;
        private readonly object listening = new object();
        private Action<int> percentRose;
        private ulong before;

        internal Job(string what, string file = null, long size = 0, bool isRegisterList = false)
        {
            What = what;
            this.file = file;
            this.size = size;
            this.isRegisterList = isRegisterList;
        }

        // State that exists once per process, like the library's instance: the job whose result was not received
        // yet. Used by the owner thread.
        internal static Job Pending { get; set; }

        internal string What { get; }

        // The job's final status; null before its start.
        internal Task<uint> End { get; private set; }

        internal bool HasEnded => End != null && End.IsCompleted;

        // Prepares for a job: waits until the 100 of a former one is cleared, and replaces a failure that a former one
        // left. Returns what GetProgressInfo shows until the job reports something.
        internal static async Task<ulong> BeforeAsync()
        {
            var watch = Stopwatch.StartNew();
            while (Look().State == ProgressState.Done && watch.ElapsedMilliseconds < ClearMilliseconds)
            {
                await PauseAsync().ConfigureAwait(false);
                if (Functions.GetProgressInfo() == 0)
                {
                    await PauseAsync().ConfigureAwait(false); // a dump of less than eight bytes is cleared twice
                }
            }
            if (Functions.GetProgressInfo() != 0)
            {
                Owner.Run(() => Functions.UsbFlashWriteFile("", 0)); // fails at once and without a transfer
            }
            return Functions.GetProgressInfo();
        }

        // Starts the job directly after BeforeAsync returned `shown`, on the owner thread.
        internal void Start(ulong shown, Func<bool> begin)
        {
            before = shown;
            if (!begin())
            {
                throw BorvanException.OfStatus(What, BorvanStatus.FileError);
            }
            Pending = this;
            End = Task.Run(WatchAsync);
        }

        // Waits for the end. Throws if the job failed. The job stays pending when its end was not
        // seen.
        internal async Task WaitAsync(Waiting waiting)
        {
            uint status = await StatusWithinAsync(waiting).ConfigureAwait(false);
            if (status != BorvanStatus.WaitTimeLimit)
            {
                Owner.Run(() => Pending = Pending == this ? null : Pending);
            }
            if (isRegisterList && status == BorvanStatus.NothingWritten)
            {
                throw new BorvanException(
                    ErrorKind.NothingWritten, $"{What}: nothing was written: the list does not begin with 0xfffd",
                    status);
            }
            if (status >= 0x80000000)
            {
                throw BorvanException.OfStatus(What, status);
            }
        }

        private static JobProgress Look() => new JobProgress(Functions.GetProgressInfo());

        private static Task PauseAsync() => Task.Delay(PollMilliseconds);

        private async Task<uint> StatusWithinAsync(Waiting waiting)
        {
            var result = new TaskCompletionSource<uint>(TaskCreationOptions.RunContinuationsAsynchronously);
            void Listener(int percent)
            {
                try
                {
                    waiting.Progress?.Report(percent);
                }
                catch (Exception error)
                {
                    result.TrySetException(error);
                }
            }
            lock (listening)
            {
                percentRose += Listener;
            }
            using (var timer = new CancellationTokenSource())
            using (waiting.Cancellation.Register(() => result.TrySetCanceled(waiting.Cancellation)))
            {
                try
                {
                    Task time = Task.Delay(waiting.Limit, timer.Token);
                    if (await Task.WhenAny(End, result.Task, time).ConfigureAwait(false) == time && !End.IsCompleted)
                    {
                        return IsFileComplete() ? 0 : BorvanStatus.WaitTimeLimit;
                    }
                    // The reason why the waiting ended has priority over the job's result.
                    return await (result.Task.IsCompleted ? result.Task : End).ConfigureAwait(false);
                }
                finally
                {
                    timer.Cancel();
                    lock (listening)
                    {
                        percentRose -= Listener;
                    }
                }
            }
        }

        // Whether the file has exactly its size and nobody has it open.
        private bool IsFileComplete()
        {
            if (file == null)
            {
                return false;
            }
            try
            {
                using (var stream = new FileStream(file, FileMode.Open, FileAccess.Read, FileShare.None))
                {
                    return stream.Length == size;
                }
            }
            catch (IOException)
            {
                return false;
            }
            catch (UnauthorizedAccessException)
            {
                return false;
            }
        }

        private async Task<uint> WatchAsync()
        {
            bool reported = false; // by this job
            int shown = 0;
            var watch = Stopwatch.StartNew();
            long lastLook = 0;
            for (;;)
            {
                long look = watch.ElapsedMilliseconds;
                ulong value = Functions.GetProgressInfo();
                if (new JobProgress(value).State == ProgressState.Done && value != before)
                {
                    // A dump of less than eight bytes reports 100 whether it fails or not, and a job that can't write
                    // its file fails after its 100.
                    await PauseAsync().ConfigureAwait(false);
                    ulong next = Functions.GetProgressInfo();
                    value = new JobProgress(next).State == ProgressState.Failed ? next : value;
                    reported = true;
                }
                var progress = new JobProgress(value);
                if (value == 0)
                {
                    // The value was cleared. If this process polled often enough to see a 100, it was not from this
                    // job.
                    if ((reported || before != 0) && watch.ElapsedMilliseconds - lastLook >= DoneMilliseconds)
                    {
                        return IsFileComplete() ? 0 : BorvanStatus.WaitEndMissed;
                    }
                }
                else if (value != before || reported)
                {
                    reported = true;
                    if (progress.Percent > shown)
                    {
                        shown = progress.Percent;
                        Rose(shown);
                    }
                    if (progress.State == ProgressState.Done)
                    {
                        return await WatchFileAsync().ConfigureAwait(false);
                    }
                    if (progress.State == ProgressState.Failed ||
                        (progress.State == ProgressState.Notice && isRegisterList))
                    {
                        return progress.Status;
                    }
                }
                lastLook = look;
                await PauseAsync().ConfigureAwait(false);
            }
        }

        private void Rose(int percent)
        {
            Action<int> listeners;
            lock (listening)
            {
                listeners = percentRose;
            }
            listeners?.Invoke(percent);
        }

        // A job reports its 100 before it writes its file. If it can't, it reports a failure then.
        private async Task<uint> WatchFileAsync()
        {
            while (file != null && !IsFileComplete())
            {
                JobProgress progress = Look();
                if (progress.State == ProgressState.Failed)
                {
                    return progress.Status;
                }
                await PauseAsync().ConfigureAwait(false);
            }
            return 0;
        }
    }
}
