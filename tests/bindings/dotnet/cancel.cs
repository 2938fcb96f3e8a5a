// Sign-ins that wait for the user can be ended.

using System;
using System.Threading;
using System.Threading.Tasks;
using Orlindex;
using static Tests;

internal static class CancelTests
{
    private static async Task OtherCalls()
    {
        using (var client = new OrlindexClient(Options()))
        {
            var source = new CancellationTokenSource();
            Task login = client.SignInAsync(source.Token);
            for (int i = 0; i < 50; ++i)
                Equal(await client.IsSignedInAsync(), false);
            await Throws<InvalidOperationException>(() => client.SignInAsync());
            Equal(login.IsCompleted, false);
            source.Cancel();
            OperationCanceledException error = await Throws<OperationCanceledException>(() => login);
            Equal(error.CancellationToken, source.Token);
            Check(login.IsCanceled, "the task is cancelled");
        }
    }

    private static async Task AnyMoment()
    {
        using (var client = new OrlindexClient(Options()))
        {
            foreach (int moment in new[] { 0, 1, 5, 20 })
            {
                var source = new CancellationTokenSource();
                Task login = client.SignInAsync(source.Token);
                await Task.Delay(moment);
                source.Cancel();
                await Throws<OperationCanceledException>(() => login);
            }
            await Throws<OperationCanceledException>(
                () => client.SignInAsync(new CancellationTokenSource(TimeSpan.FromMilliseconds(50)).Token));
        }
    }

    private static async Task DisposeEndsIt()
    {
        var client = new OrlindexClient(Options());
        Task login = client.SignInAsync();
        for (int i = 0; i < 10; ++i)
            await client.IsSignedInAsync();
        client.Dispose();
        await Throws<OperationCanceledException>(() => login);
    }

    public static int Main()
    {
        Run("other calls work during a sign-in", OtherCalls);
        Run("a cancelled token ends the sign-in, at any moment", AnyMoment);
        Run("Dispose ends a sign-in", DisposeEndsIt);
        return Finish();
    }
}
