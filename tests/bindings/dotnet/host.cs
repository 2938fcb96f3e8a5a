// The package with the real library, plugin module and agent: sign-in, events, tokens, errors, lifetime.

using System;
using System.Collections.Generic;
using System.Diagnostics;
using System.Linq;
using System.Text;
using System.Threading;
using System.Threading.Tasks;
using Orlindex;
using static Tests;

internal static class HostTests
{
    private static OrlindexClient client;
    private static readonly List<string> heard = new List<string>();

    // A context as that of a window: one thread that runs what is posted, and reports what is thrown.
    private sealed class WindowContext : SynchronizationContext
    {
        private readonly System.Collections.Concurrent.BlockingCollection<Tuple<SendOrPostCallback, object>> queue =
            new System.Collections.Concurrent.BlockingCollection<Tuple<SendOrPostCallback, object>>();
        internal readonly List<Exception> Reported = new List<Exception>();
        internal readonly Thread Thread;

        internal WindowContext()
        {
            Thread = new Thread(Loop) { IsBackground = true };
            Thread.Start();
        }

        public override void Post(SendOrPostCallback call, object state)
        {
            queue.Add(Tuple.Create(call, state));
        }

        private void Loop()
        {
            SetSynchronizationContext(this);
            foreach (Tuple<SendOrPostCallback, object> each in queue.GetConsumingEnumerable())
            {
                try
                {
                    each.Item1(each.Item2);
                }
                catch (Exception error)
                {
                    lock (Reported)
                        Reported.Add(error);
                }
            }
        }
    }

    private static readonly WindowContext window = new WindowContext();

    private static Task<OrlindexClient> Open(OrlindexOptions options)
    {
        var opened = new TaskCompletionSource<OrlindexClient>();
        window.Post(async _ => {
            try
            {
                opened.SetResult(await OrlindexClient.OpenAsync(options));
            }
            catch (Exception error)
            {
                opened.SetException(error);
            }
        }, null);
        return opened.Task;
    }

    private static void Hear(object sender, OrlindexEventArgs found)
    {
        Check(sender == client, "the sender is the client");
        lock (heard)
            heard.Add(found.Code + " " + (int)found.Status + (Thread.CurrentThread == window.Thread ? "" : " elsewhere"));
    }

    private static bool Heard(string text)
    {
        lock (heard)
            return heard.Contains(text);
    }

    private static void Forget()
    {
        lock (heard)
            heard.Clear();
    }

    private static string Claims(string token)
    {
        string part = token.Split('.')[1].Replace('-', '+').Replace('_', '/');
        return Encoding.UTF8.GetString(Convert.FromBase64String(part + new string('=', (4 - part.Length % 4) % 4)));
    }

    private static async Task Opens()
    {
        OrlindexOptions options = Options();
        options.ProductLineName = "J\u00fcrgen \u4e2d\u6587";
        client = await Open(options);
        client.EventReceived += Hear;
        Equal(await client.IsSignedInAsync(), false);
        OrlindexException error = await Throws<OrlindexException>(() => client.GetAccessTokenAsync());
        Equal((int)error.Code, 4001);
        Equal(error.Operation, "talix_get_token");
        Check(error.Meaning.Contains("plugin module"), error.Meaning);
        error = await Throws<OrlindexException>(() => client.SetProxyAsync(new OrlindexProxy { Port = 1 }));
        Equal(error.Code, talix_status_code.IdInvalidProxyHost);
        Check(error.Message.Contains("3050 (IdInvalidProxyHost): " + error.Meaning), error.Message);
        Check(error.Meaning.Contains("proxy host"), error.Meaning);
    }

    private static async Task SignsIn()
    {
        int signedIn = 0;
        client.SignedIn += (sender, found) => ++signedIn;
        await client.SignInAsync();
        Equal(await client.IsSignedInAsync(), true);
        Equal(await client.IsLoginValidAsync(), true);
        Equal(await client.IsTokenExpiredAsync(), false);
        await Until(() => Heard("TALIX_EVENT_LOGGED_IN 1000") && Heard("TALIX_EVENT_TOKEN_AVAILABLE 1000"));
        Equal(signedIn, 1);
    }

    private static async Task Tokens()
    {
        string first = Claims(await client.GetAccessTokenAsync());
        Check(first.Contains("\"my-client-id\""), first);
        Check(Claims(await client.GetAccessTokenAsync(true)).Contains("\"openid profile\""), "the scope is in the token");
        Check(Claims(await client.GetIdTokenAsync()).Contains("Sam Example (simulator)"), "the name is in the ID token");
        await client.RefreshTokenAsync();
        await Until(() => Heard("TALIX_EVENT_TOKEN_REFRESHED 1000"));
        Check(Claims(await client.GetAccessTokenAsync()) != first, "the token is another one");
    }

    private static async Task User()
    {
        OrlindexUser user = await client.GetUserAsync();
        Equal(string.Join("|", user.UserId, user.UserName, user.FirstName, user.LastName, user.Email, user.DisplayName),
              "simulator-0001|sam.example@simulator|Sam|Example|sam.example@simulator.invalid|Sam Example (simulator)");
        Check((await client.GetProfileAsync()).Contains("Example Works"), "the profile has the company");
        Check((await client.GetSessionUriAsync("https://example.invalid/\u00fc")).StartsWith("https://"), "an address");
        Equal((int)(await Throws<OrlindexException>(() => client.GetSessionUriAsync("no address"))).Code, 4011);
        await Throws<ArgumentException>(() => client.GetSessionUriAsync("one\0two"));
    }

    private static async Task Environment()
    {
        Equal(await client.GetServerAsync(), Server.TALIX_SERVER_PRODUCTION);
        Equal(await client.GetEnvironmentAsync(), TALIXEnvironment.TALIX_ENVIRONMENT_PRODUCTION);
        Equal((await client.GetVersionsAsync()).Library, Talix.LibraryVersion);
        await client.SetWindowAsync(new IntPtr(1));
        await Throws<OrlindexException>(() => client.SetServerAsync((Server)77));
        await Throws<InvalidOperationException>(() => Open(Options()));
    }

    private static async Task Proxies()
    {
        Equal(await client.HasProxyAsync("proxy.example", 3128), false);
        await client.SetProxyAsync(
            new OrlindexProxy { Host = "proxy.example", Port = 3128, UserName = "J\u00fcrgen", Password = "\u4e2d" });
        Equal(await client.HasProxyAsync("proxy.example", 3128), true);
        OrlindexProxy proxy = await client.GetProxyAsync("proxy.example", 3128);
        Equal(string.Join("|", proxy.Host, proxy.Port, proxy.UserName, proxy.Password), "proxy.example|3128|J\u00fcrgen|\u4e2d");
        await client.ClearProxiesAsync();
        Equal(await client.HasProxyAsync("proxy.example", 3128), false);
        Equal((await Throws<OrlindexException>(() => client.HasProxyAsync("proxy.example", 0))).Code,
              talix_status_code.IdInvalidProxyPort);
    }

    private static async Task CancelledToken()
    {
        var source = new CancellationTokenSource();
        source.Cancel();
        await Throws<OperationCanceledException>(() => client.GetUserAsync(source.Token));
        await Throws<OperationCanceledException>(() => client.SignInAsync(source.Token));
        Equal(await client.IsSignedInAsync(new CancellationTokenSource().Token), true);
    }

    private static async Task ManyCalls()
    {
        OrlindexUser[] users = await Task.WhenAll(Enumerable.Range(0, 100).Select(_ => client.GetUserAsync()));
        Check(users.All(user => user.FirstName == "Sam"), "each call gets the user");
    }

    private static async Task Collections()
    {
        int count = 0;
        EventHandler<OrlindexEventArgs> collect = (sender, found) => {
            GC.Collect();
            GC.WaitForPendingFinalizers();
            Interlocked.Increment(ref count);
        };
        client.TokenRefreshed += collect;
        // Also while the library is inside the callback of the client.
        bool done = false;
        Task collecting = Task.Run(() => {
            while (!Volatile.Read(ref done))
                GC.Collect();
        });
        for (int i = 0; i < 20; ++i)
            await client.RefreshTokenAsync();
        await Until(() => count >= 20);
        Volatile.Write(ref done, true);
        await collecting;
        client.TokenRefreshed -= collect;
    }

    private static async Task HandlerThrows()
    {
        EventHandler<OrlindexEventArgs> throws = (sender, found) => { throw new InvalidCastException("from a handler"); };
        client.TokenRefreshed += throws;
        await client.RefreshTokenAsync();
        await Until(() => window.Reported.Count > 0);
        Equal(window.Reported[0].Message, "from a handler");
        client.TokenRefreshed -= throws;
        Forget();
        await client.RefreshTokenAsync();
        await Until(() => Heard("TALIX_EVENT_TOKEN_REFRESHED 1000"));
    }

    private static async Task Rounds(int count)
    {
        for (int i = 0; i < count; ++i)
        {
            await client.SignInAsync();
            await client.GetAccessTokenAsync();
            await client.GetUserAsync();
            await client.SignOutAsync(i % 2 == 0);
            Forget();
        }
        GC.Collect();
        GC.WaitForPendingFinalizers();
        GC.Collect();
    }

    private static async Task DoesNotGrow()
    {
        await Rounds(300); // until the heaps have their size
        long managed = GC.GetTotalMemory(true);
        Process process = Process.GetCurrentProcess();
        long resident = process.WorkingSet64;
        int threads = process.Threads.Count;
        await Rounds(1000);
        process = Process.GetCurrentProcess();
        long more = GC.GetTotalMemory(true) - managed;
        Check(more < 1024 * 1024, "managed memory grows by " + more);
        more = process.WorkingSet64 - resident;
        Check(more < 16 * 1024 * 1024, "resident memory grows by " + more);
        Check(process.Threads.Count < threads + 50, "threads: " + threads + " to " + process.Threads.Count);
        Console.WriteLine("count: rounds of the .NET client = 1300");
    }

    private static async Task Disposed()
    {
        await client.SignInAsync();
        client.Dispose();
        client.Dispose();
        Forget();
        foreach (Func<Task> call in new Func<Task>[] {
                     () => client.SignInAsync(), () => client.GetUserAsync(), () => client.GetAccessTokenAsync(),
                     () => client.IsSignedInAsync(), () => client.SignOutAsync(), () => client.GetVersionsAsync() })
            await Throws<ObjectDisposedException>(call);
        for (int i = 0; i < 5; ++i)
        {
            using (client = new OrlindexClient(Options()))
                Equal(await client.IsSignedInAsync(), true);
        }
        Equal(heard.Count, 0);
    }

    private static async Task WithoutContext()
    {
        // On a thread of the client, in order.
        var found = new List<talix_event_code>();
        using (client = await OrlindexClient.OpenAsync(Options()))
        {
            client.EventReceived += (sender, each) => {
                lock (found)
                    found.Add(each.Code);
            };
            await client.SignOutAsync();
            await client.SignInAsync();
            await Until(() => {
                lock (found)
                    return found.Contains(talix_event_code.TALIX_EVENT_LOGGED_IN);
            });
            int signedOut = found.IndexOf(talix_event_code.TALIX_EVENT_LOGGED_OUT);
            Check(signedOut >= 0 && signedOut < found.IndexOf(talix_event_code.TALIX_EVENT_LOGGED_IN), "they come in order");
            await client.QuitServerProcessAsync(Patience);
        }
    }

    public static int Main()
    {
        Run("nobody is signed in at first", Opens);
        Run("signs in, and the event comes on the context", SignsIn);
        Run("tokens", Tokens);
        Run("the user", User);
        Run("server, environment and versions", Environment);
        Run("proxies", Proxies);
        Run("a cancelled token ends no call that has not begun", CancelledToken);
        Run("many calls at the same time", ManyCalls);
        Run("garbage collection during a callback", Collections);
        Run("an exception of a handler goes to the context", HandlerThrows);
        Run("a thousand rounds do not grow", DoesNotGrow);
        Run("use after Dispose, and a new start", Disposed);
        Run("without a context", WithoutContext);
        return Finish();
    }
}
