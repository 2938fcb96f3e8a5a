// A small test runner: each test is a name and a function; the last line counts them.

using System;
using System.Diagnostics;
using System.Threading.Tasks;
using Orlindex;

internal static class Tests
{
    // Nothing here depends on the speed of the machine: this only ends a test that would wait for ever.
    internal static readonly TimeSpan Patience = TimeSpan.FromMinutes(10);

    private static int passed;
    private static int failed;

    internal static OrlindexOptions Options()
    {
        return new OrlindexOptions("my-client-id", "openid profile") { DispatchInterval = TimeSpan.FromMilliseconds(10) };
    }

    internal static void Check(bool good, string what)
    {
        if (!good)
            throw new Exception("not so: " + what);
    }

    internal static void Equal<T>(T found, T wanted)
    {
        Check(Equals(found, wanted), "'" + found + "' is '" + wanted + "'");
    }

    internal static async Task<T> Throws<T>(Func<Task> call) where T : Exception
    {
        try
        {
            await call();
        }
        catch (T error)
        {
            return error;
        }
        throw new Exception("no " + typeof(T).Name);
    }

    internal static async Task Until(Func<bool> condition)
    {
        Stopwatch watch = Stopwatch.StartNew();
        while (!condition())
        {
            Check(watch.Elapsed < Patience, "it happens in time");
            await Task.Delay(1);
        }
    }

    internal static void Run(string name, Func<Task> test)
    {
        Stopwatch watch = Stopwatch.StartNew();
        try
        {
            Check(test().Wait(Patience), "it ends in time");
            ++passed;
            Console.WriteLine("ok     " + name + ", " + watch.ElapsedMilliseconds + " ms");
        }
        catch (Exception error)
        {
            ++failed;
            Console.WriteLine("FAILED " + name + ": " + error);
        }
    }

    internal static int Finish()
    {
        Console.WriteLine(passed + " passed, " + failed + " failed");
        return passed > 0 && failed == 0 ? 0 : 1;
    }
}
