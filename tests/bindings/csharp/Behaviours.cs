using System;
using System.Collections.Generic;
using System.Diagnostics;
using System.IO;
using System.Linq;
using System.Reflection;
using System.Text;
using System.Threading;
using System.Threading.Tasks;
using BorvanUsb;

// What the table of cases does not cover, on the cameras that promises.py plugs in.
internal static class Behaviours
{
    private const int Good = 0;
    private const int Slow = 1;

    internal static Task<int> RunAsync(string texts) => Checks.RunAsync(new (string, Func<Task>)[]
    {
        ("each function of the library has its name", () => Do(Names)),
        ("status codes have the texts of the header", () => Do(() => Texts(texts))),
        ("values of GetProgressInfo", () => Do(Progress)),
        ("the functions as they are", () => Do(AsTheyAre)),
        ("names of other languages, and one that fills its field", () => Do(OtherNames)),
        ("one Camera in a process", OneCameraAsync),
        ("file names beyond ASCII", FileNamesAsync),
        ("arguments that the library would use in part", ArgumentsAsync),
        ("progress rises to 100", ProgressRisesAsync),
        ("a job after one whose 100 is still shown, and after one that failed alike", JobAfterJobAsync),
        ("a call that writes a file returns when nobody has the file open", HeldFileAsync),
        ("a cancelled wait leaves the job to WaitAsync", CancelAsync),
        ("an error of the progress object ends the wait", ProgressErrorAsync),
        ("accesses from several threads come one after another", ThreadsAsync),
        ("a job outlives its Camera, and blocks the next one", OutlivesAsync),
    });

    internal static Task<int> RunUnopenedAsync() => Checks.RunAsync(new (string, Func<Task>)[]
    {
        ("a camera that can not be opened", async () =>
        {
            using (var camera = new Camera())
            {
                var error = await Checks.ThrowsAsync<BorvanException>(() => Do(() => camera.Select(0)));
                Checks.Same(ErrorKind.CannotOpen, error.Kind);
                Checks.True(error.Message.StartsWith("Select: ERROR: "), error.Message);
            }
        }),
    });

    private static Task Do(Action check)
    {
        check();
        return Task.CompletedTask;
    }

    private static TimeSpan Seconds(double seconds) => TimeSpan.FromSeconds(seconds);

    private static async Task WithCameraAsync(int index, Func<Camera, Task> use)
    {
        using (var camera = new Camera())
        {
            camera.Select(index);
            await use(camera);
        }
    }

    private static void Names() => Checks.SameAll(
        new[]
        {
            "BorvanSelectDevice", "GetProgressInfo", "UsbDestroyUSB", "UsbFlashErase", "UsbFlashQuickReadFile",
            "UsbFlashRead", "UsbFlashWrite", "UsbFlashWriteFile", "UsbGetAllDeviceInfo", "UsbGetDeviceNum",
            "UsbGetSelectDeviceInfo", "UsbI2CReadFile", "UsbI2CWriteFile", "UsbI2cRead", "UsbI2cWrite",
            "UsbIniDevice", "UsbRegisterRead", "UsbRegisterReadFile", "UsbRegisterWrite", "UsbRegisterWriteFile",
            "UsbSelectDevice", "UsbUpdateDevice",
        },
        typeof(Functions).GetMethods(BindingFlags.Public | BindingFlags.Static | BindingFlags.DeclaredOnly)
            .Select(method => method.Name).OrderBy(name => name, StringComparer.Ordinal));

    // Each line of the file: a code, a tab, the text.
    private static void Texts(string file)
    {
        string[] lines = File.ReadAllLines(file);
        Checks.True(lines.Length > 30);
        foreach (string[] parts in lines.Select(line => line.Split('\t')))
        {
            Checks.Same(parts[1], BorvanStatus.Text(uint.Parse(parts[0])));
        }
        Checks.Same("error code of the system or of the camera's driver", BorvanStatus.Text(0x80001234));
        Checks.Same("no failure: a positive status", BorvanStatus.Text(5));
    }

    private static void Progress()
    {
        void Check(ulong value, ProgressState state, int percent, uint status)
        {
            var found = new JobProgress(value);
            Checks.Same((state, percent, status), (found.State, found.Percent, found.Status));
        }
        Check(0, ProgressState.Running, 0, 0);
        Check(99, ProgressState.Running, 99, 0);
        Check(100, ProgressState.Done, 100, 0);
        Check(0xe000000a00000000, ProgressState.Failed, 0, 0xe000000a);
        Check(0x0000000b00000000, ProgressState.Notice, 0, 11);
        Check(0xe000000a00000064, ProgressState.Running, 0, 0xe000000a);
    }

    private static void AsTheyAre()
    {
        uint value = 7;
        Checks.True(!Functions.UsbRegisterRead(0x100, ref value, 0)); // no instance
        Checks.Same(0ul, Functions.GetProgressInfo());
        Checks.True(Functions.UsbIniDevice() >= 0);
        Checks.True(Functions.UsbUpdateDevice());
        Checks.Same(2, Functions.UsbGetDeviceNum());
        Checks.True(!Functions.UsbSelectDevice(9));
        Checks.True(!Functions.BorvanSelectDevice(9, out string message));
        Checks.True(message == null);
        Checks.True(Functions.UsbSelectDevice(Good));
        UsbDeviceInfo selected = Functions.UsbGetSelectDeviceInfo();
        Checks.Same("1234", selected.VendorId);
        Checks.Same("0000", selected.ProductId);
        Checks.Same(Functions.UsbGetAllDeviceInfo()[0].Path, selected.Path);
        Checks.True(Functions.UsbRegisterRead(0x100, ref value, 0));
        Checks.Same(0x11u, value);
        Checks.True(Functions.UsbRegisterWrite(0x8000, 0xdeadbeef, 1));
        Checks.True(Functions.UsbRegisterRead(0x8000, ref value, 1));
        Checks.Same(0xdeadbeef, value);
        Checks.True(Functions.UsbI2cRead(0x6c, 0x300a, ref value, 1, 0));
        Checks.Same(0x56u, value);
        Checks.True(Functions.UsbI2cWrite(0x6c, 0x300a, 0x57, 1, 0));
        Checks.True(Functions.UsbFlashErase(0x1000));
        Checks.True(Functions.UsbFlashWrite(0x1000, 0xcafef00d));
        Checks.True(Functions.UsbFlashRead(0x1000, ref value));
        Checks.Same(0xcafef00d, value);
        foreach (string name in new[] { null, "", "missing.bin" })
        {
            Checks.True(!Functions.UsbFlashWriteFile(name, 0));
        }
        Checks.True(!Functions.UsbFlashQuickReadFile("", 0, 3));
        Checks.True(!Functions.UsbRegisterReadFile("", 0, 3));
        Checks.True(!Functions.UsbRegisterWriteFile("missing.txt"));
        Checks.True(!Functions.UsbI2CReadFile(0, 3, "", 0x6c, 1));
        Checks.True(!Functions.UsbI2CWriteFile("missing.txt", 0));
        Checks.Same(0xe000000a00000000, Functions.GetProgressInfo());
        Checks.True(Functions.UsbDestroyUSB());
    }

    private static void OtherNames()
    {
        using (var camera = new Camera())
        {
            CameraInfo[] cameras = camera.List();
            Checks.Same("Kamera f\u00fcr Pr\u00fcfung", cameras[0].Name);
            Checks.Same(new string('n', 120), cameras[1].Name);
        }
    }

    private static async Task OneCameraAsync()
    {
        var camera = new Camera();
        await Checks.FailsAsync(ErrorKind.Busy, () => new Camera().Dispose());
        camera.Dispose();
        camera.Dispose();
        // As a camera object of another binding in this process leaves it.
        using (new Mutex(false, $@"Local\BorvanUSB-binding-{Process.GetCurrentProcess().Id}"))
        {
            await Checks.FailsAsync(ErrorKind.Busy, () => new Camera().Dispose());
        }
        new Camera().Dispose();
    }

    private static Task FileNamesAsync() => WithCameraAsync(Good, async camera =>
    {
        await camera.ReadFlashFileAsync("pr\u00fcfung.bin", 0x1000, 0x10ff);
        Checks.SameAll(new byte[] { 0xca, 0xfe, 0xf0, 0x0d }, File.ReadAllBytes("pr\u00fcfung.bin").Take(4));
        // Code page 1252 could make "Lódz.bin" of the second.
        foreach (string name in new[] { "\u65e5\u672c.bin", "\u0141\u00f3d\u017a.bin", "a\0b.bin", null })
        {
            await Checks.FailsAsync(ErrorKind.Argument, () => camera.ReadFlashFileAsync(name, 0, 255, Seconds(5)));
        }
        Checks.True(!Directory.GetFiles(".", "L*").Any());
        Checks.Same(0x11u, camera.ReadRegister(0x100)); // nothing was started
    });

    private static Task ArgumentsAsync() => WithCameraAsync(Good, async camera =>
    {
        async Task Refused(Func<Task> call) => await Checks.FailsAsync(ErrorKind.Argument, call);
        await Refused(() => Do(() => camera.ReadI2c(0x6c, 0x100, I2cMode.Address8Data8)));
        await Refused(() => Do(() => camera.ReadI2c(0x6c, 0, (I2cMode)(-1))));
        await Refused(() => Do(() => camera.WriteI2c(0x6c, 0, 0x100, I2cMode.Address16Data8)));
        await Refused(() => camera.ReadFlashAsync(0xffffffff, 2));
        await Refused(() => camera.ReadFlashAsync(0, 0));
        await Refused(() => camera.ReadFlashWordAsync(0xfffffffd));
        await Refused(() => camera.ReadFlashAsync(0, 1, Seconds(-1)));
        await Refused(() => camera.ReadFlashAsync(0, 1, TimeSpan.MaxValue));
        await Refused(() => camera.ReadRegistersFileAsync("run.bin", 0xffff, 0x10000));
        await Refused(() => camera.WriteI2cListAsync("list.txt", 16));
    });

    private static Task ProgressRisesAsync() => WithCameraAsync(Good, async camera =>
    {
        var percents = new List<int>();
        await camera.ReadFlashAsync(0, 0x10000, progress: new Receiver<int>(percents.Add));
        Checks.Same(100, percents.Last());
        Checks.SameAll(percents.Distinct().OrderBy(percent => percent), percents);
    });

    private static Task JobAfterJobAsync() => WithCameraAsync(Good, async camera =>
    {
        File.WriteAllText("list.txt", "0xfffd,0x00,\n0xfffe,0x00,\n0x0200,0x5a,\n");
        await camera.WriteRegisterListAsync("list.txt", Seconds(20));
        File.WriteAllText("list.txt", "0xfffd,0x00,\n0xfffe,0x00,\n0x0200,0xa5,\n");
        var watch = Stopwatch.StartNew();
        await camera.WriteRegisterListAsync("list.txt", Seconds(20));
        Checks.Same(0xa5u, camera.ReadRegister(0x200));
        // The library clears a 100 after three seconds, and would clear the end of the second job with it.
        Checks.True(watch.Elapsed > Seconds(2));
        for (int i = 0; i < 2; ++i)
        {
            var error = await Checks.ThrowsAsync<BorvanException>(
                () => camera.ReadFlashFileAsync("none.bin", 16, 15, Seconds(20)));
            Checks.Same((ErrorKind.Status, 0xe0000004), (error.Kind, error.Status));
        }
    });

    private static Task HeldFileAsync() => WithCameraAsync(Good, async camera =>
    {
        Task dump;
        using (var held = new FileStream("held.bin", FileMode.Create, FileAccess.Read | FileAccess.Write,
                                         FileShare.ReadWrite))
        {
            dump = camera.ReadFlashFileAsync("held.bin", 0x1000, 0x10ff, Seconds(40));
            Checks.True(await Task.WhenAny(dump, Task.Delay(3000)) != dump, "it returned early");
            Checks.Same(256L, new FileInfo("held.bin").Length);
        }
        await dump;
    });

    private static Task CancelAsync() => WithCameraAsync(Slow, async camera =>
    {
        var stop = new CancellationTokenSource(60);
        Task dump = camera.ReadFlashAsync(0, 50, cancellation: stop.Token);
        await Checks.FailsAsync(ErrorKind.Busy, () => { camera.ReadRegister(0x100); });
        await Checks.ThrowsAsync<OperationCanceledException>(() => dump);
        await Checks.FailsAsync(ErrorKind.Busy, () => { camera.ReadRegister(0x100); });
        await Checks.FailsAsync(ErrorKind.TimeLimit, () => camera.WaitAsync(TimeSpan.FromMilliseconds(1)));
        Checks.Same(2, camera.List().Length);
        await camera.WaitAsync();
        Checks.Same(0x11u, camera.ReadRegister(0x100));
        await Checks.ThrowsAsync<OperationCanceledException>(
            () => camera.ReadFlashAsync(0, 50, cancellation: stop.Token));
    });

    private static Task ProgressErrorAsync() => WithCameraAsync(Slow, async camera =>
    {
        var progress = new Receiver<int>(percent => throw new InvalidDataException("of the caller"));
        await Checks.ThrowsAsync<InvalidDataException>(() => camera.ReadFlashAsync(0, 50, progress: progress));
        await camera.WaitAsync();
    });

    private static Task ThreadsAsync() => WithCameraAsync(Good, async camera =>
    {
        await Task.WhenAll(Enumerable.Range(0, 8).Select(number => Task.Run(() =>
        {
            uint address = 0x8000 + 0x10 * (uint)number;
            for (uint i = 0; i < 20; ++i)
            {
                camera.WriteRegister(address, i, true);
                Checks.Same(i, camera.ReadRegister(address, true));
            }
        })));
    });

    private static async Task OutlivesAsync()
    {
        var first = new Camera();
        first.Select(Slow);
        Task<byte[]> dump = first.ReadFlashAsync(0, 50);
        await Task.Delay(60);
        first.Dispose();
        await Checks.FailsAsync(ErrorKind.Closed, () => { first.List(); });
        using (var second = new Camera())
        {
            await Checks.FailsAsync(ErrorKind.Busy, () => second.Select(Good));
            await second.WaitAsync();
            Checks.Same(50, (await dump).Length);
            second.Select(Good);
        }
    }
}
