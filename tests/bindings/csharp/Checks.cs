using System;
using System.Collections.Generic;
using System.Diagnostics;
using System.Linq;
using System.Threading.Tasks;
using BorvanUsb;

// Runs checks one after another and prints a line for each.
internal static class Checks
{
    internal static async Task<int> RunAsync(IEnumerable<(string Name, Func<Task> Check)> checks)
    {
        int failed = 0;
        int count = 0;
        foreach ((string name, Func<Task> check) in checks)
        {
            ++count;
            var watch = Stopwatch.StartNew();
            try
            {
                await check();
                Console.WriteLine($"ok {name} ({watch.ElapsedMilliseconds} ms)");
            }
            catch (Exception error)
            {
                ++failed;
                Console.WriteLine($"FAILED {name}\n{error}");
            }
        }
        Console.WriteLine($"{count} checks, {failed} failed");
        return failed == 0 && count > 0 ? 0 : 1;
    }

    internal static void Same<T>(T expected, T found)
    {
        if (!EqualityComparer<T>.Default.Equals(expected, found))
        {
            throw new Exception($"expected {expected}, found {found}");
        }
    }

    internal static void SameAll<T>(IEnumerable<T> expected, IEnumerable<T> found)
    {
        if (!expected.SequenceEqual(found))
        {
            throw new Exception($"expected {string.Join(" ", expected)}, found {string.Join(" ", found)}");
        }
    }

    internal static void True(bool condition, string text = "")
    {
        if (!condition)
        {
            throw new Exception($"not true {text}");
        }
    }

    // The error that a call throws, which must be of this type.
    internal static async Task<T> ThrowsAsync<T>(Func<Task> call)
        where T : Exception
    {
        try
        {
            await call();
        }
        catch (T error)
        {
            return error;
        }
        throw new Exception($"no {typeof(T).Name} was thrown");
    }

    internal static async Task FailsAsync(ErrorKind kind, Func<Task> call) =>
        Same(kind, (await ThrowsAsync<BorvanException>(call)).Kind);

    internal static Task FailsAsync(ErrorKind kind, Action call) => FailsAsync(kind, () =>
    {
        call();
        return Task.CompletedTask;
    });
}

// Calls a function with each report, at once.
internal sealed class Receiver<T> : IProgress<T>
{
    private readonly Action<T> take;

    internal Receiver(Action<T> take) => this.take = take;

    public void Report(T value) => take(value);
}
