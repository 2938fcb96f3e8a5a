using System;
using System.Threading;
using System.Threading.Tasks;

namespace Orlindex
{
    /// <summary>
    /// The library, started for one product. One client can be open in a process.
    ///
    /// The calls run on other threads. A task fails with an OrlindexException if the library returns another code than IdSuccess,
    /// and with an ObjectDisposedException after Dispose. Events are raised on the SynchronizationContext of the thread that
    /// opened the client, or else on a thread of the client; an exception of a handler is an unhandled exception there.
    /// </summary>
    public sealed class OrlindexClient : IDisposable
    {
        // The library passes at most 4095 and 2047 UTF-16 units, each of at most three bytes in UTF-8, and a zero.
        private const int TokenSize = 4095 * 3 + 1;
        private const int AddressSize = 2047 * 3 + 1;
        private const int FirstSize = 1024;
        private const int LargestSize = 16 * 1024 * 1024;

        private readonly Session session = new Session();
        private readonly SynchronizationContext context;
        private readonly ManualResetEvent stopping = new ManualResetEvent(false);
        private readonly Thread pump;
        private readonly TimeSpan interval;

        /// <summary>Loads the library and starts it, on this thread. OrlindexLibraryException if the library cannot be used;
        /// OrlindexException if it does not start; InvalidOperationException if a client is open.</summary>
        public OrlindexClient(OrlindexOptions options) : this(options, SynchronizationContext.Current)
        {
        }

        private OrlindexClient(OrlindexOptions options, SynchronizationContext context)
        {
            if (options == null)
                throw new ArgumentNullException(nameof(options));
            foreach (string text in new[] { options.ClientId, options.Scope, options.ProductLineName, options.ProductReleaseId,
                                            options.ProductBuildId })
                RequireText(text);
            this.context = context;
            interval = options.DispatchInterval;
            session.Start(options.LibraryPath);
            try
            {
                SetUp(options);
            }
            catch
            {
                session.Stop();
                throw;
            }
            pump = new Thread(Pump) { IsBackground = true, Name = "Orlindex events" };
            pump.Start();
        }

        /// <summary>As the constructor, on another thread.</summary>
        public static Task<OrlindexClient> OpenAsync(OrlindexOptions options)
        {
            SynchronizationContext current = SynchronizationContext.Current;
            return Task.Run(() => new OrlindexClient(options, current));
        }

        private void SetUp(OrlindexOptions options)
        {
            if (options.Window != IntPtr.Zero)
                session.Check("talix_set_host", () => Talix.talix_set_host(options.Window));
            if (options.Server.HasValue)
                session.Check("talix_set_server", () => Talix.talix_set_server(options.Server.Value));
            IntPtr product = session.Invoke(() => Talix.talix_create_product_config(options.ClientId, options.Scope));
            if (product == IntPtr.Zero)
                throw new OrlindexException("talix_create_product_config", talix_status_code.IdFailed);
            session.Check("talix_set_product_config", () => {
                Talix.talix_set_product_line_name(product, options.ProductLineName);
                Talix.talix_set_product_release_id(product, options.ProductReleaseId);
                Talix.talix_set_product_build_id(product, options.ProductBuildId);
                return Talix.talix_set_product_config(Talix.talix_get_server(), product);
            });
            if (options.LoginMode.HasValue)
                session.Check("talix_set_login_mode", () => Talix.talix_set_login_mode(options.LoginMode.Value));
        }

        // --- Lifetime -----------------------------------------------------------------------------------------------

        /// <summary>Ends a running sign-in, waits for running calls, and stops the library. The login itself stays.</summary>
        public void Dispose()
        {
            stopping.Set();
            session.Stop();
            if (pump != Thread.CurrentThread)
                pump.Join();
        }

        /// <summary>Runs a call of the library on another thread. The call itself cannot be cancelled: the task is, and the
        /// result is dropped.</summary>
        private async Task<T> Run<T>(Func<T> call, CancellationToken token)
        {
            token.ThrowIfCancellationRequested();
            Task<T> running = Task.Run(call);
            if (!token.CanBeCanceled)
                return await running.ConfigureAwait(false);
            var cancelled = new TaskCompletionSource<bool>();
            using (token.Register(() => cancelled.TrySetResult(true)))
                await Task.WhenAny(running, cancelled.Task).ConfigureAwait(false);
            if (running.IsCompleted)
                return await running.ConfigureAwait(false);
            Ignore(running);
            throw new OperationCanceledException(token);
        }

        /// <summary>Nobody waits for the task any more: its exception counts as seen.</summary>
        private static void Ignore(Task task)
        {
            task.ContinueWith(ended => ended.Exception, TaskContinuationOptions.OnlyOnFaulted);
        }

        private Task Check(string name, Func<talix_status_code> function, CancellationToken token)
        {
            return Run(() => {
                session.Check(name, function);
                return true;
            }, token);
        }

        private static string RequireText(string text)
        {
            if (text != null && text.IndexOf('\0') >= 0)
                throw new ArgumentException("The text contains a null character.");
            return text;
        }

        // --- Login --------------------------------------------------------------------------------------------------

        /// <summary>Signs the user in. If the token is cancelled, the sign-in ends, and then the task with an
        /// OperationCanceledException.</summary>
        public async Task SignInAsync(CancellationToken cancellationToken = default(CancellationToken))
        {
            cancellationToken.ThrowIfCancellationRequested();
            // A thread of its own: it may wait for minutes.
            await Task.Factory.StartNew(() => session.SignIn(cancellationToken), CancellationToken.None,
                                        TaskCreationOptions.LongRunning, TaskScheduler.Default).ConfigureAwait(false);
        }

        /// <summary>Signs the user out. force: observers are not asked and cannot refuse.</summary>
        public Task SignOutAsync(bool force = false, CancellationToken cancellationToken = default(CancellationToken))
        {
            talix_logout_flags flags = force ? talix_logout_flags.TALIX_LOGOUT_FORCE : talix_logout_flags.TALIX_LOGOUT_DEFAULT;
            return Check("talix_logout", () => Talix.talix_logout(flags), cancellationToken);
        }

        private Task<bool> GetBoolean(talix_boolean_key key, CancellationToken token)
        {
            return Run(() => session.Invoke(() => Talix.talix_get_boolean(key)), token);
        }

        /// <summary>Whether a user is signed in.</summary>
        public Task<bool> IsSignedInAsync(CancellationToken cancellationToken = default(CancellationToken))
        {
            return GetBoolean(talix_boolean_key.TALIX_KEY_LOGGED_IN, cancellationToken);
        }

        /// <summary>Whether the login is valid.</summary>
        public Task<bool> IsLoginValidAsync(CancellationToken cancellationToken = default(CancellationToken))
        {
            return GetBoolean(talix_boolean_key.TALIX_KEY_LOGIN_VALID, cancellationToken);
        }

        /// <summary>Whether the access token has expired.</summary>
        public Task<bool> IsTokenExpiredAsync(CancellationToken cancellationToken = default(CancellationToken))
        {
            return GetBoolean(talix_boolean_key.TALIX_KEY_TOKEN_EXPIRED, cancellationToken);
        }

        // --- Tokens and user ----------------------------------------------------------------------------------------

        private delegate talix_status_code BufferCall(ref talix_buffer buffer);

        private Task<string> GetText(string name, int size, BufferCall call, CancellationToken token)
        {
            return Run(() => {
                using (var buffer = new Utf8Buffer(size))
                {
                    session.Check(name, () => {
                        var record = new talix_buffer { buffer = buffer.Pointer, size = buffer.Size };
                        return call(ref record);
                    });
                    return buffer.Text;
                }
            }, token);
        }

        /// <summary>The OAuth2 access token. wait: for a token that is being obtained.</summary>
        public Task<string> GetAccessTokenAsync(bool wait = false,
                                                CancellationToken cancellationToken = default(CancellationToken))
        {
            return wait ? GetText("talix_get_token_blocking", TokenSize, Talix.talix_get_token_blocking, cancellationToken)
                        : GetText("talix_get_token", TokenSize, Talix.talix_get_token, cancellationToken);
        }

        /// <summary>The OAuth2 ID token.</summary>
        public Task<string> GetIdTokenAsync(CancellationToken cancellationToken = default(CancellationToken))
        {
            return GetText("talix_get_id_token", TokenSize, Talix.talix_get_id_token, cancellationToken);
        }

        /// <summary>Requests a new access token.</summary>
        public Task RefreshTokenAsync(CancellationToken cancellationToken = default(CancellationToken))
        {
            return Check("talix_refresh_token", Talix.talix_refresh_token, cancellationToken);
        }

        /// <summary>An address that opens uri in the user's session. The plugin defines the meaning of flag.</summary>
        public Task<string> GetSessionUriAsync(string uri, ushort flag = 0,
                                               CancellationToken cancellationToken = default(CancellationToken))
        {
            RequireText(uri);
            return GetText("talix_get_session_uri", AddressSize,
                           (ref talix_buffer record) => Talix.talix_get_session_uri(uri, flag, ref record), cancellationToken);
        }

        /// <summary>Calls with larger and larger buffers.</summary>
        private T Grow<T>(string name, int buffers, Func<Utf8Buffer[], Tuple<talix_status_code, int>> call,
                          Func<Utf8Buffer[], T> result)
        {
            for (int size = FirstSize;;)
            {
                var memory = new Utf8Buffer[buffers];
                try
                {
                    for (int i = 0; i < buffers; ++i)
                        memory[i] = new Utf8Buffer(size);
                    Tuple<talix_status_code, int> done = session.Invoke(() => call(memory));
                    if (done.Item1 == talix_status_code.IdSuccess)
                        return result(memory);
                    size = Math.Max(size * 2, done.Item2);
                    if (done.Item1 != talix_status_code.IdBufferTooSmall || size > LargestSize)
                        throw new OrlindexException(name, done.Item1);
                }
                finally
                {
                    foreach (Utf8Buffer each in memory)
                        each?.Dispose();
                }
            }
        }

        /// <summary>Attributes of the signed-in user.</summary>
        public Task<OrlindexUser> GetUserAsync(CancellationToken cancellationToken = default(CancellationToken))
        {
            return Run(() => Grow("talix_get_user_info", 6, texts => {
                var record = new talix_user_info {
                    user_id = texts[0].Pointer, user_id_size = texts[0].Size,
                    user_name = texts[1].Pointer, user_name_size = texts[1].Size,
                    first_name = texts[2].Pointer, first_name_size = texts[2].Size,
                    last_name = texts[3].Pointer, last_name_size = texts[3].Size,
                    email = texts[4].Pointer, email_size = texts[4].Size,
                    display_name = texts[5].Pointer, display_name_size = texts[5].Size
                };
                return Tuple.Create(Talix.talix_get_user_info(ref record), 0);
            }, texts => new OrlindexUser {
                UserId = texts[0].Text, UserName = texts[1].Text, FirstName = texts[2].Text, LastName = texts[3].Text,
                Email = texts[4].Text, DisplayName = texts[5].Text
            }), cancellationToken);
        }

        /// <summary>The user's profile, as the plugin words it.</summary>
        public Task<string> GetProfileAsync(CancellationToken cancellationToken = default(CancellationToken))
        {
            return Run(() => Grow("talix_get_profile_info", 1, texts => {
                var record = new talix_buffer { buffer = texts[0].Pointer, size = texts[0].Size };
                talix_status_code code = Talix.talix_get_profile_info(ref record);
                return Tuple.Create(code, record.size + 1); // The plugin sets the size to what it needs.
            }, texts => texts[0].Text), cancellationToken);
        }

        // --- Environment --------------------------------------------------------------------------------------------

        /// <summary>The identity server in use.</summary>
        public Task<Server> GetServerAsync(CancellationToken cancellationToken = default(CancellationToken))
        {
            return Run(() => session.Invoke(Talix.talix_get_server), cancellationToken);
        }

        /// <summary>Sets the identity server.</summary>
        public Task SetServerAsync(Server server, CancellationToken cancellationToken = default(CancellationToken))
        {
            return Check("talix_set_server", () => Talix.talix_set_server(server), cancellationToken);
        }

        /// <summary>The kind of environment behind the server.</summary>
        public Task<TALIXEnvironment> GetEnvironmentAsync(CancellationToken cancellationToken = default(CancellationToken))
        {
            return Run(() => session.Invoke(Talix.talix_get_environment), cancellationToken);
        }

        /// <summary>Sets the window that owns the plugin's dialogs.</summary>
        public Task SetWindowAsync(IntPtr window, CancellationToken cancellationToken = default(CancellationToken))
        {
            return Check("talix_set_host", () => Talix.talix_set_host(window), cancellationToken);
        }

        /// <summary>The versions of the installed server application and of the library.</summary>
        public Task<OrlindexVersions> GetVersionsAsync(CancellationToken cancellationToken = default(CancellationToken))
        {
            return Run(() => Grow("talix_get_versions", 2, texts => {
                var record = new talix_versions {
                    server_version = texts[0].Pointer, server_version_size = texts[0].Size,
                    sdk_version = texts[1].Pointer, sdk_version_size = texts[1].Size
                };
                return Tuple.Create(Talix.talix_get_versions(ref record), 0);
            }, texts => new OrlindexVersions { Server = texts[0].Text, Library = texts[1].Text }), cancellationToken);
        }

        /// <summary>Asks all server processes to quit, and waits at most this time for them.</summary>
        public Task QuitServerProcessAsync(TimeSpan time, CancellationToken cancellationToken = default(CancellationToken))
        {
            return Check("talix_quit_server_process",
                         () => Talix.talix_quit_server_process(checked((int)time.TotalMilliseconds)), cancellationToken);
        }

        // --- Proxies ------------------------------------------------------------------------------------------------

        /// <summary>Whether the plugin has settings for a proxy: false for a code that only the plugin knows.</summary>
        public Task<bool> HasProxyAsync(string host = null, int port = 0,
                                        CancellationToken cancellationToken = default(CancellationToken))
        {
            RequireText(host);
            return Run(() => {
                talix_status_code code = session.Invoke(() => Talix.talix_has_proxy_info(host, port));
                if (code != talix_status_code.IdSuccess && StatusMeanings.Of((int)code) != null)
                    throw new OrlindexException("talix_has_proxy_info", code);
                return code == talix_status_code.IdSuccess;
            }, cancellationToken);
        }

        /// <summary>The settings of a proxy.</summary>
        public Task<OrlindexProxy> GetProxyAsync(string host = null, int port = 0,
                                                 CancellationToken cancellationToken = default(CancellationToken))
        {
            RequireText(host);
            int found = 0;
            return Run(() => Grow("talix_get_proxy_info", 3, texts => {
                var record = new talix_proxy_info {
                    host = texts[0].Pointer, host_size = texts[0].Size,
                    user_name = texts[1].Pointer, user_name_size = texts[1].Size,
                    password = texts[2].Pointer, password_size = texts[2].Size
                };
                talix_status_code code = Talix.talix_get_proxy_info(ref record, host, port);
                found = record.port;
                return Tuple.Create(code, 0);
            }, texts => new OrlindexProxy {
                Host = texts[0].Text, Port = found, UserName = texts[1].Text, Password = texts[2].Text
            }), cancellationToken);
        }

        /// <summary>Stores the settings of a proxy.</summary>
        public Task SetProxyAsync(OrlindexProxy proxy, CancellationToken cancellationToken = default(CancellationToken))
        {
            return Run(() => {
                using (var host = new Utf8Buffer(RequireText(proxy.Host)))
                using (var user = new Utf8Buffer(RequireText(proxy.UserName)))
                using (var password = new Utf8Buffer(RequireText(proxy.Password)))
                {
                    var record = new talix_proxy_info {
                        host = host.Pointer, host_size = host.Size, user_name = user.Pointer, user_name_size = user.Size,
                        password = password.Pointer, password_size = password.Size, port = proxy.Port
                    };
                    session.Check("talix_set_proxy_info", () => Talix.talix_set_proxy_info(ref record));
                    return true;
                }
            }, cancellationToken);
        }

        /// <summary>Deletes all proxy settings.</summary>
        public Task ClearProxiesAsync(CancellationToken cancellationToken = default(CancellationToken))
        {
            return Check("talix_clear_proxy_info", Talix.talix_clear_proxy_info, cancellationToken);
        }

        // --- Events -------------------------------------------------------------------------------------------------

        /// <summary>Every event.</summary>
        public event EventHandler<OrlindexEventArgs> EventReceived;

        /// <summary>The user signed in.</summary>
        public event EventHandler<OrlindexEventArgs> SignedIn;

        /// <summary>The user signed out.</summary>
        public event EventHandler<OrlindexEventArgs> SignedOut;

        /// <summary>An account was created during a login.</summary>
        public event EventHandler<OrlindexEventArgs> AccountCreated;

        /// <summary>The access token was refreshed.</summary>
        public event EventHandler<OrlindexEventArgs> TokenRefreshed;

        /// <summary>An access token became available.</summary>
        public event EventHandler<OrlindexEventArgs> TokenAvailable;

        /// <summary>A login from an earlier run was restored.</summary>
        public event EventHandler<OrlindexEventArgs> LoginRestored;

        private void Raise(OrlindexEventArgs found)
        {
            if (session.IsClosed)
                return; // The host does not expect events after Dispose.
            EventReceived?.Invoke(this, found);
            switch (found.Code)
            {
                case talix_event_code.TALIX_EVENT_LOGGED_IN:
                    SignedIn?.Invoke(this, found);
                    break;
                case talix_event_code.TALIX_EVENT_LOGGED_OUT:
                    SignedOut?.Invoke(this, found);
                    break;
                case talix_event_code.TALIX_EVENT_ACCOUNT_CREATED:
                    AccountCreated?.Invoke(this, found);
                    break;
                case talix_event_code.TALIX_EVENT_TOKEN_REFRESHED:
                    TokenRefreshed?.Invoke(this, found);
                    break;
                case talix_event_code.TALIX_EVENT_TOKEN_AVAILABLE:
                    TokenAvailable?.Invoke(this, found);
                    break;
                case talix_event_code.TALIX_EVENT_LOGIN_RESTORED:
                    LoginRestored?.Invoke(this, found);
                    break;
            }
        }

        private void Pump()
        {
            var found = new System.Collections.Generic.List<OrlindexEventArgs>();
            while (!stopping.WaitOne(interval))
            {
                try
                {
                    // A failure of the plugin, such as a server process that ended, is not the end of the events.
                    session.Dispatch(found.Add);
                }
                catch (ObjectDisposedException)
                {
                    return;
                }
                // Outside the library, so that an exception of a handler does not pass through it.
                foreach (OrlindexEventArgs each in found)
                {
                    if (context == null)
                        Raise(each);
                    else
                        context.Post(_ => Raise(each), null);
                }
                found.Clear();
            }
        }
    }
}
