using System;
using System.Collections.Generic;
using System.ComponentModel;
using System.Diagnostics;
using System.IO;
using System.Linq;
using System.Text;
using System.Threading;
using System.Threading.Tasks;

namespace BorvanUsb
{
    // A run of the tool with its own hidden console.
    internal sealed class ToolProcess : IDisposable
    {
        // A Ctrl-C can get lost while the process starts, so it is repeated if nothing happens.
        private const int AnswerMilliseconds = 5000;
        private const string Stopping = "stopping at the next safe place";

        private readonly Process process;
        private readonly CancellationTokenSource answered = new CancellationTokenSource();

        internal ToolProcess(string program, IEnumerable<string> words)
        {
            process = new Process { StartInfo = Hidden(program, words), EnableRaisingEvents = true };
            process.StartInfo.RedirectStandardInput = true;
            process.StartInfo.RedirectStandardOutput = true;
            process.StartInfo.RedirectStandardError = true;
            process.StartInfo.StandardOutputEncoding = Encoding.UTF8;
            process.StartInfo.StandardErrorEncoding = Encoding.UTF8;
        }

        // A program of the package: beside the assembly or the program, or where a package manager puts it.
        internal static string Find(string name)
        {
            string assembly = typeof(ToolProcess).Assembly.Location; // empty in a program of a single file
            string[] folders = { assembly == "" ? "" : Path.GetDirectoryName(assembly), AppContext.BaseDirectory };
            string[] places = { "", "runtimes/win-x64/native", "../../runtimes/win-x64/native" };
            string[] found = folders.Where(folder => !string.IsNullOrEmpty(folder))
                                    .SelectMany(folder => places.Select(place => Path.Combine(folder, place, name)))
                                    .Select(Path.GetFullPath)
                                    .ToArray();
            return found.FirstOrDefault(File.Exists) ?? found.First();
        }

        public void Dispose()
        {
            answered.Dispose();
            process.Dispose();
        }

        // Runs it to its end and returns its exit code and output; `take` receives each line of standard error.
        internal async Task<(int Code, string Output)> RunAsync(Action<string> take, CancellationToken cancellation)
        {
            var ended = new TaskCompletionSource<bool>(TaskCreationOptions.RunContinuationsAsynchronously);
            process.Exited += (sender, arguments) => ended.TrySetResult(true);
            process.Start();
            process.StandardInput.Close();
            Task<string> output = process.StandardOutput.ReadToEndAsync();
            Task lines = TakeLinesAsync(take);
            Task stopping = Task.CompletedTask;
            using (cancellation.Register(() => stopping = StopAsync(ended.Task)))
            {
                await Task.WhenAll(output, lines, ended.Task).ConfigureAwait(false);
            }
            await stopping.ConfigureAwait(false);
            return (process.ExitCode, output.Result.Trim());
        }

        private async Task TakeLinesAsync(Action<string> take)
        {
            string line;
            while ((line = await process.StandardError.ReadLineAsync().ConfigureAwait(false)) != null)
            {
                if (line.StartsWith(Stopping, StringComparison.Ordinal))
                {
                    answered.Cancel();
                }
                if (line != "")
                {
                    take(line);
                }
            }
        }

        // Stops the process, as Ctrl-C does.
        private async Task StopAsync(Task ended)
        {
            while (!ended.IsCompleted && !answered.IsCancellationRequested)
            {
                SendCtrlC();
                Task answer = Task.Delay(AnswerMilliseconds, answered.Token);
                await Task.WhenAny(ended, answer).ConfigureAwait(false);
            }
        }

        // It must be sent by another program, because a process can have only one console.
        private void SendCtrlC()
        {
            try
            {
                string[] words = { process.Id.ToString(System.Globalization.CultureInfo.InvariantCulture) };
                Process.Start(Hidden(Find("borvanusb-stop.exe"), words)).Dispose();
            }
            catch (Exception error) when (error is Win32Exception || error is InvalidOperationException)
            {
                // Ignored: the process has ended, or the Ctrl-C is repeated.
            }
        }

        private static ProcessStartInfo Hidden(string program, IEnumerable<string> words) =>
            new ProcessStartInfo
            {
                FileName = program,
                Arguments = string.Join(" ", words.Select(Quoted)),
                UseShellExecute = false,
                CreateNoWindow = true,
            };

        // Quotes a word for a command line, so that the program receives it unchanged.
        private static string Quoted(string word)
        {
            var result = new StringBuilder("\"");
            int backslashes = 0;
            foreach (char letter in word)
            {
                if (letter == '"')
                {
                    result.Append('\\', backslashes + 1); // doubled, and one for the quotation mark
                }
                backslashes = letter == '\\' ? backslashes + 1 : 0;
                result.Append(letter);
            }
            return result.Append('\\', backslashes).Append('"').ToString();
        }
    }
}
