using System;
using System.Collections.Generic;
using System.ComponentModel;
using System.Globalization;
using System.IO;
using System.Runtime.Serialization;
using System.Runtime.Serialization.Json;
using System.Text;
using System.Threading;
using System.Threading.Tasks;

namespace BorvanUsb
{
    /// <summary>The safe programming of borvanusb, run as a process of its own.</summary>
    public static class ProgramFlash
    {
        // The exit code if Ctrl-C ends the process before it can handle it.
        private const int EndedByCtrlC = unchecked((int)0xc000013a);
        private const int Stopped = 9;

        /// <summary>
        /// Programs an image as `borvanusb flash program` does: only the image's bytes change, the old bytes are saved
        /// first, the new ones are read back, and interrupted work continues when the call is repeated. Dispose a
        /// Camera first: one process at a time uses a camera.
        /// </summary>
        /// <param name="image">file with the image</param>
        /// <param name="options">default: address 0, backup and reading back</param>
        /// <param name="progress">receives the progress</param>
        /// <param name="remarks">receives each other line that the tool writes, such as the backup's name</param>
        /// <param name="cancellation">
        /// stops as Ctrl-C does: at the next safe place. The task then fails with a ProgramException with exit code 9.
        /// </param>
        public static async Task<ProgramResult> RunAsync(
            string image, ProgramOptions options = null, IProgress<ProgramProgress> progress = null,
            IProgress<string> remarks = null, CancellationToken cancellation = default)
        {
            if (string.IsNullOrEmpty(image) || image.IndexOf('\0') >= 0)
            {
                throw Arguments.NotAllowed("ProgramFlash", $"image \"{image}\"", "the name of a file");
            }
            cancellation.ThrowIfCancellationRequested();
            string program = ToolProcess.Find("borvanusb.exe");
            Exception failure = null; // thrown by a callback; the work continues, and the error is thrown at its end
            void Take(string line)
            {
                try
                {
                    ProgramProgress one = Parse<ProgressLine>(line)?.Progress;
                    if (one != null)
                    {
                        progress?.Report(one);
                    }
                    else
                    {
                        remarks?.Report(line);
                    }
                }
                catch (Exception error)
                {
                    failure = failure ?? error;
                }
            }
            int code;
            string output;
            try
            {
                using (var process = new ToolProcess(program, CommandLine(image, options ?? new ProgramOptions())))
                {
                    (code, output) = await process.RunAsync(Take, cancellation).ConfigureAwait(false);
                }
            }
            catch (Win32Exception error)
            {
                throw new BorvanException(
                    ErrorKind.Process, $"ProgramFlash: {program} can't be started: {error.Message}", 0, error);
            }
            ProgramResult result = Outcome(program, code, output);
            if (failure != null)
            {
                System.Runtime.ExceptionServices.ExceptionDispatchInfo.Capture(failure).Throw();
            }
            return result;
        }

        // The result of the process as a value or an error.
        private static ProgramResult Outcome(string program, int code, string output)
        {
            ProgramResult result = Parse<ProgramResult>(output);
            if (code == 0 && result?.Result == "done")
            {
                return result;
            }
            Failure failure = Parse<FailureReply>(output)?.Error;
            if (failure != null && failure.Code == code)
            {
                throw new ProgramException(code, failure.Kind, failure.Message, failure.Hint);
            }
            if (code == EndedByCtrlC)
            {
                throw new ProgramException(Stopped, "stopped", "stopped by the user before it began", "");
            }
            throw new BorvanException(
                ErrorKind.Process, $"ProgramFlash: {program} ended with {code} and without a result");
        }

        // The arguments of the command line.
        private static List<string> CommandLine(string image, ProgramOptions options)
        {
            var words = new List<string> { "flash", "program", "--json", "--progress", "json" };
            void Add(string name, string value)
            {
                if (value != null)
                {
                    words.Add(name);
                    words.Add(value);
                }
            }
            void AddIf(string name, bool condition)
            {
                if (condition)
                {
                    words.Add(name);
                }
            }
            Add("--address", options.Address.ToString(CultureInfo.InvariantCulture));
            Add("--camera", options.Camera);
            Add("--flash-size", options.FlashSize);
            Add("--backup", options.Backup);
            AddIf("--no-backup", options.NoBackup);
            AddIf("--no-verify", options.NoVerify);
            AddIf("--dry-run", options.DryRun);
            AddIf("--restore-on-failure", options.RestoreOnFailure);
            AddIf("--force", options.Force);
            Add("--journal", options.Journal);
            Add("--report", options.Report);
            Add("--timeout", options.TimeoutSeconds?.ToString(CultureInfo.InvariantCulture));
            words.Add("--");
            words.Add(image);
            return words;
        }

        // A JSON text as a value; null if it is invalid.
        private static T Parse<T>(string text)
            where T : class
        {
            if (!text.StartsWith("{", StringComparison.Ordinal))
            {
                return null;
            }
            try
            {
                using (var stream = new MemoryStream(Encoding.UTF8.GetBytes(text)))
                {
                    return (T)new DataContractJsonSerializer(typeof(T)).ReadObject(stream);
                }
            }
            catch (SerializationException)
            {
                return null;
            }
        }
    }
}
