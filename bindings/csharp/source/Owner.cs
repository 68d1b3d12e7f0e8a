using System;
using System.Collections.Concurrent;
using System.Threading;
using System.Threading.Tasks;

namespace BorvanUsb
{
    // The thread that makes all calls of the library but GetProgressInfo, which any thread may make. It lives as long
    // as the process, as a job may outlive its Camera.
    internal static class Owner
    {
        private static readonly BlockingCollection<Action> Work = Start();

        // Makes a call on that thread and waits for it.
        internal static T Run<T>(Func<T> call)
        {
            var result = new TaskCompletionSource<T>();
            Work.Add(() =>
            {
                try
                {
                    result.SetResult(call());
                }
                catch (Exception error)
                {
                    result.SetException(error);
                }
            });
            return result.Task.GetAwaiter().GetResult();
        }

        internal static void Run(Action call) => Run(() =>
        {
            call();
            return true;
        });

        private static BlockingCollection<Action> Start()
        {
            var work = new BlockingCollection<Action>();
            var thread = new Thread(() =>
            {
                foreach (Action action in work.GetConsumingEnumerable())
                {
                    action();
                }
            });
            thread.Name = "BorvanUSB";
            thread.IsBackground = true;
            thread.SetApartmentState(ApartmentState.STA); // the library makes it one in any case
            thread.Start();
            return work;
        }
    }
}
