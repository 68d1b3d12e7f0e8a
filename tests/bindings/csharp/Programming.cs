using System;
using System.Collections.Generic;
using System.IO;
using System.Linq;
using System.Threading;
using System.Threading.Tasks;
using BorvanUsb;

// ProgramFlash on the camera that csharp_test.py plugs in. The image differs from the flash in many sectors.
internal static class Programming
{
    internal static Task<int> RunAsync(string image)
    {
        ProgramOptions Options() => new ProgramOptions { Address = 0x810, FlashSize = "1M" };
        return Checks.RunAsync(new (string, Func<Task>)[]
        {
            ("a dry run changes nothing", async () =>
            {
                ProgramOptions options = Options();
                options.DryRun = true;
                ProgramResult result = await ProgramFlash.RunAsync(image, options);
                Checks.Same((true, "unchanged", 0x810L), (result.DryRun, result.State, result.Address));
                Checks.Same(1048576L, result.FlashSize);
                Checks.True(result.ChangedBytes >= 4096 * 100);
                Checks.Same(null, result.Backup);
            }),
            ("failures of the tool", async () =>
            {
                await FailsAsync(2, "no-camera", image, options => options.Camera = "9999:9999");
                await FailsAsync(5, "file", "missing.bin", options => { });
                await FailsAsync(1, "usage", image, options => options.TimeoutSeconds = 0);
                await FailsAsync(5, "file", image, options => options.Address = 0xff000);
                await FailsAsync(5, "file", "-a \"b\\\".bin", options => { });
            }),
            ("arguments that can not be meant", async () =>
            {
                foreach (string wrong in new[] { null, "", "a\0b" })
                {
                    await Checks.FailsAsync(ErrorKind.Argument, () => ProgramFlash.RunAsync(wrong));
                }
            }),
            ("a token that was cancelled before", () => Checks.ThrowsAsync<OperationCanceledException>(
                () => ProgramFlash.RunAsync(image, Options(), cancellation: new CancellationToken(true)))),
            ("cancelling stops the tool at a safe place", async () =>
            {
                var stop = new CancellationTokenSource();
                var remarks = new List<string>();
                var progress = new Receiver<ProgramProgress>(one =>
                {
                    if (one.Stage != "read" && one.Done > 0)
                    {
                        stop.Cancel();
                    }
                });
                var error = await Checks.ThrowsAsync<ProgramException>(() => ProgramFlash.RunAsync(
                    image, Options(), progress, new Receiver<string>(remarks.Add), stop.Token));
                Checks.Same((9, "stopped"), (error.ExitCode, error.ExitKind));
                Checks.True(error.Hint.Contains("borvanusb flash program"), error.Hint);
                Checks.True(remarks.Any(line => line.StartsWith("stopping at the next safe place")));
            }),
            ("the same call again continues, with progress", async () =>
            {
                var seen = new List<ProgramProgress>();
                ProgramResult result = await ProgramFlash.RunAsync(
                    image, Options(), new Receiver<ProgramProgress>(seen.Add));
                Checks.Same(("done", "done", (bool?)true, 0),
                            (result.Result, result.State, result.Verified, result.ExitCode));
                Checks.Same("1234", result.Camera.Vid);
                Checks.Same(new FileInfo(image).Length, result.Image.Size);
                Checks.Same(64, result.Image.Sha256.Length);
                Checks.True(File.Exists(result.Backup), result.Backup);
                Checks.True(result.Seconds.Total > 0);
                Checks.True(seen.Any(one => one.Stage == "program" && one.Unit == "bytes"));
                Checks.Same(("verify", 100), (seen.Last().Stage, seen.Last().Percent));
            }),
            ("nothing to change", async () =>
            {
                ProgramOptions options = Options();
                options.NoBackup = true;
                ProgramResult result = await ProgramFlash.RunAsync(image, options);
                Checks.Same((0, 0L), (result.Changed.Length, result.ChangedBytes));
            }),
            ("an error of a callback comes after the work", () => Checks.ThrowsAsync<InvalidDataException>(
                () => ProgramFlash.RunAsync(
                    image, Options(), new Receiver<ProgramProgress>(one => throw new InvalidDataException())))),
            ("a program that is missing", async () =>
            {
                string program = Path.Combine(AppContext.BaseDirectory, "borvanusb.exe");
                File.Move(program, program + ".elsewhere");
                try
                {
                    await Checks.FailsAsync(ErrorKind.Process, () => ProgramFlash.RunAsync(image, Options()));
                }
                finally
                {
                    File.Move(program + ".elsewhere", program);
                }
            }),
        });
    }

    private static async Task FailsAsync(int code, string kind, string image, Action<ProgramOptions> change)
    {
        var options = new ProgramOptions { Address = 0x810, FlashSize = "1M" };
        change(options);
        var error = await Checks.ThrowsAsync<ProgramException>(() => ProgramFlash.RunAsync(image, options));
        Checks.Same((ErrorKind.Program, code, kind), (error.Kind, error.ExitCode, error.ExitKind));
        Checks.True(error.Message.StartsWith("ProgramFlash: "), error.Message);
    }
}

internal static class CSharpTest
{
    private static Task<int> Main(string[] arguments)
    {
        switch (arguments[0])
        {
            case "cases": return Cases.RunAsync(arguments[1]);
            case "behaviours": return Behaviours.RunAsync(arguments[1]);
            case "unopened": return Behaviours.RunUnopenedAsync();
            default: return Programming.RunAsync(arguments[1]);
        }
    }
}
