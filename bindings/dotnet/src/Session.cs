using System;
using System.Collections.Concurrent;
using System.Threading;

namespace Orlindex
{
    /// <summary>The library between start and stop: its process-wide state, and the calls that run in it.</summary>
    internal sealed class Session
    {
        // How long a cancellation waits for the sign-in to end before it asks again: the first request may come before the
        // plugin's sign-in has begun to wait.
        private const int CancelAgainMilliseconds = 200;

        // The library has one product configuration and one list of callbacks for the process. The reference also keeps the
        // callback alive until the library has removed it.
        private static Session open;
        private static readonly object openGate = new object();

        private readonly object gate = new object();
        private readonly object dispatchGate = new object();
        private readonly ConcurrentQueue<OrlindexEventArgs> events = new ConcurrentQueue<OrlindexEventArgs>();
        private readonly talix_event_callback callback;
        private int running;
        private int login; // the number of the sign-in that runs; 0: none
        private int logins;
        private bool cancelled;
        private bool closed;

        internal Session()
        {
            // It only stores: nothing that it does can throw into the library.
            callback = (code, status, value) =>
                events.Enqueue(new OrlindexEventArgs((talix_event_code)code, (talix_status_code)status));
        }

        internal bool IsClosed
        {
            get
            {
                lock (gate)
                    return closed;
            }
        }

        internal void Start(string libraryPath)
        {
            Library.Load(libraryPath);
            lock (openGate)
            {
                if (open != null)
                    throw new InvalidOperationException(
                        "Another client of this process is open; the library has one state for the process.");
                open = this;
            }
            try
            {
                Check("talix_init", Talix.talix_init);
            }
            catch
            {
                Leave();
                throw;
            }
            try
            {
                Check("talix_add_event_callback", () => Talix.talix_add_event_callback(callback, IntPtr.Zero));
            }
            catch
            {
                Stop();
                throw;
            }
        }

        /// <summary>Ends a running sign-in, waits until the library runs no call, and stops it.</summary>
        internal void Stop()
        {
            lock (gate)
            {
                if (closed)
                    return;
                closed = true;
            }
            CancelSignIn();
            lock (gate)
            {
                while (running > 0)
                    Monitor.Wait(gate);
            }
            Talix.talix_remove_event_callback(callback);
            Talix.talix_deinit();
            Leave();
        }

        private void Leave()
        {
            lock (gate)
                closed = true;
            lock (openGate)
                open = null;
        }

        /// <summary>Calls a function. The library must not stop while a thread is inside it.</summary>
        internal T Invoke<T>(Func<T> function)
        {
            lock (gate)
            {
                if (closed)
                    throw new ObjectDisposedException(nameof(OrlindexClient));
                ++running;
            }
            try
            {
                return function();
            }
            finally
            {
                Leave(ref running);
            }
        }

        private void Leave(ref int count)
        {
            lock (gate)
            {
                --count;
                Monitor.PulseAll(gate);
            }
        }

        internal void Check(string name, Func<talix_status_code> function)
        {
            talix_status_code code = Invoke(function);
            if (code != talix_status_code.IdSuccess)
                throw new OrlindexException(name, code);
        }

        /// <summary>OperationCanceledException if the sign-in fails after CancelSignIn.</summary>
        internal void SignIn(CancellationToken token)
        {
            bool wasCancelled = false;
            talix_status_code code = Invoke(() => {
                lock (gate)
                {
                    if (login != 0)
                        throw new InvalidOperationException("Another sign-in runs.");
                    login = ++logins;
                    cancelled = false;
                }
                try
                {
                    using (token.Register(() => ThreadPool.QueueUserWorkItem(_ => CancelSignIn())))
                        return Talix.talix_login();
                }
                finally
                {
                    lock (gate)
                    {
                        login = 0;
                        wasCancelled = cancelled || token.IsCancellationRequested;
                        Monitor.PulseAll(gate);
                    }
                }
            });
            if (code == talix_status_code.IdSuccess)
                return;
            var cause = new OrlindexException("talix_login", code);
            throw wasCancelled ? new OperationCanceledException("The sign-in was cancelled.", cause, token) : (Exception)cause;
        }

        /// <summary>Asks until the sign-in has ended: a logout ends a sign-in that waits for the user.</summary>
        private void CancelSignIn()
        {
            int number;
            lock (gate)
                number = login;
            while (true)
            {
                lock (gate)
                {
                    if (login == 0 || login != number)
                        return;
                    cancelled = true;
                    ++running;
                }
                try
                {
                    if (!Talix.talix_get_boolean(talix_boolean_key.TALIX_KEY_LOGGED_IN))
                        Talix.talix_logout(talix_logout_flags.TALIX_LOGOUT_DEFAULT);
                }
                finally
                {
                    Leave(ref running);
                }
                lock (gate)
                {
                    if (login == number)
                        Monitor.Wait(gate, CancelAgainMilliseconds);
                }
            }
        }

        /// <summary>Asks the plugin for the events that wait, and returns them one by one. The library does not allow that two
        /// threads dispatch.</summary>
        internal talix_status_code Dispatch(Action<OrlindexEventArgs> found)
        {
            lock (dispatchGate)
            {
                talix_status_code code = Invoke(Talix.talix_dispatch_events);
                OrlindexEventArgs next;
                while (events.TryDequeue(out next))
                    found(next);
                return code;
            }
        }
    }
}
