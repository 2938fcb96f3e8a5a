"""The client of hosts with an asyncio event loop."""

import asyncio
import functools
from concurrent.futures import ThreadPoolExecutor
from types import TracebackType
from typing import Any, AsyncIterator, Callable, List, Optional, Set, Type, TypeVar

from ._client import Client, Handler, Proxy, UserInfo, Versions
from ._errors import StatusError
from ._session import Event

T = TypeVar("T")

# A sign-in, its cancellation, the events and two more calls at the same time.
_THREADS = 5


class AsyncClient:
    """A Client whose calls do not block the event loop. Open it with "async with" or AsyncClient.open().

    Handlers and iterators get events on the event loop. An exception of a handler goes to the loop's exception handler.
    """

    def __init__(self, client_id: str, scope: str, *, dispatch_interval: float = 0.1, **options: Any) -> None:
        """dispatch_interval: seconds between two deliveries of events. options: those of Client."""
        self._make = functools.partial(Client, client_id, scope, **options)
        self._interval = dispatch_interval
        self._client: Optional[Client] = None
        self._threads: Optional[ThreadPoolExecutor] = None
        self._pump: Optional["asyncio.Task[None]"] = None
        self._handlers: List[Handler] = []
        self._queues: Set["asyncio.Queue[Optional[Event]]"] = set()
        self._closed = False

    async def _run(self, function: Callable[..., T], *arguments: Any, **options: Any) -> T:
        if self._threads is None:
            raise ValueError("operation on a closed client" if self._closed else "the client is not open")
        loop = asyncio.get_running_loop()
        return await loop.run_in_executor(self._threads, functools.partial(function, *arguments, **options))

    @property
    def _opened(self) -> Client:
        if self._client is None:
            raise ValueError("operation on a closed client" if self._closed else "the client is not open")
        return self._client

    # --- Lifetime ------------------------------------------------------------------------------------------------

    async def open(self) -> "AsyncClient":
        """Loads the library and starts it, see Client."""
        if self._closed or self._client is not None:
            raise ValueError("a client is opened once")
        self._threads = ThreadPoolExecutor(_THREADS, "orlindex")
        opening = asyncio.ensure_future(self._run(self._make))
        try:
            self._client = await asyncio.shield(opening)
        except BaseException:
            # If the task was cancelled, the library starts all the same: wait, and stop it.
            for opened in await asyncio.gather(opening, return_exceptions=True):
                if isinstance(opened, Client):
                    await self._run(opened.close)
            self._threads.shutdown(wait=False)
            self._threads = None
            raise
        self._pump = asyncio.get_running_loop().create_task(self._dispatch())
        return self

    async def close(self) -> None:
        """Ends a running sign-in, waits for running calls, and stops the library. Ends the iterators of events."""
        self._closed = True
        if self._client is None:
            return
        client, self._client = self._client, None
        threads, self._threads = self._threads, None
        assert threads is not None and self._pump is not None
        self._pump.cancel()
        await asyncio.gather(self._pump, return_exceptions=True)
        await asyncio.get_running_loop().run_in_executor(None, client.close)
        threads.shutdown(wait=False)
        for queue in self._queues:
            queue.put_nowait(None)

    async def __aenter__(self) -> "AsyncClient":
        return await self.open()

    async def __aexit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                        trace: Optional[TracebackType]) -> None:
        await self.close()

    # --- Login ---------------------------------------------------------------------------------------------------

    async def sign_in(self) -> None:
        """Signs the user in. If the task is cancelled, the sign-in ends before CancelledError is raised."""
        client = self._opened
        running = asyncio.ensure_future(self._run(client.sign_in))
        try:
            await asyncio.shield(running)
        except asyncio.CancelledError:
            # Not in the threads of this client, which close() may have taken away.
            await asyncio.get_running_loop().run_in_executor(None, client.cancel_sign_in)
            await asyncio.gather(running, return_exceptions=True)
            raise

    async def cancel_sign_in(self) -> None:
        """Ends a sign-in of another task, which gets SignInCancelled."""
        await self._run(self._opened.cancel_sign_in)

    async def sign_out(self, *, force: bool = False) -> None:
        """See Client.sign_out."""
        await self._run(self._opened.sign_out, force=force)

    async def is_signed_in(self) -> bool:
        """Whether a user is signed in."""
        client = self._opened
        return await self._run(lambda: client.is_signed_in)

    async def is_login_valid(self) -> bool:
        """Whether the login is valid."""
        client = self._opened
        return await self._run(lambda: client.is_login_valid)

    async def is_token_expired(self) -> bool:
        """Whether the access token has expired."""
        client = self._opened
        return await self._run(lambda: client.is_token_expired)

    # --- Tokens, user, environment -------------------------------------------------------------------------------

    async def access_token(self, *, wait: bool = False) -> str:
        """See Client.access_token."""
        return await self._run(self._opened.access_token, wait=wait)

    async def id_token(self) -> str:
        """See Client.id_token."""
        return await self._run(self._opened.id_token)

    async def refresh_token(self) -> None:
        """See Client.refresh_token."""
        await self._run(self._opened.refresh_token)

    async def session_uri(self, uri: str, flag: int = 0) -> str:
        """See Client.session_uri."""
        return await self._run(self._opened.session_uri, uri, flag)

    async def user_info(self) -> UserInfo:
        """See Client.user_info."""
        return await self._run(self._opened.user_info)

    async def profile(self) -> str:
        """See Client.profile."""
        return await self._run(self._opened.profile)

    async def versions(self) -> Versions:
        """See Client.versions."""
        return await self._run(self._opened.versions)

    async def proxy(self, host: Optional[str] = None, port: int = 0) -> Proxy:
        """See Client.proxy."""
        return await self._run(self._opened.proxy, host, port)

    async def set_proxy(self, proxy: Proxy) -> None:
        """See Client.set_proxy."""
        await self._run(self._opened.set_proxy, proxy)

    async def quit_server_process(self, milliseconds: int) -> None:
        """See Client.quit_server_process."""
        await self._run(self._opened.quit_server_process, milliseconds)

    # --- Events --------------------------------------------------------------------------------------------------

    def add_handler(self, handler: Handler) -> None:
        """Adds a function that the event loop calls with each event."""
        self._handlers.append(handler)

    def remove_handler(self, handler: Handler) -> None:
        """Removes a function. ValueError if it was not added."""
        self._handlers.remove(handler)

    async def events(self) -> AsyncIterator[Event]:
        """The events from now on, until the client is closed."""
        queue: "asyncio.Queue[Optional[Event]]" = asyncio.Queue()
        self._queues.add(queue)
        try:
            while not self._closed or not queue.empty():
                event = await queue.get()
                if event is None:
                    return
                yield event
        finally:
            self._queues.discard(queue)

    async def _dispatch(self) -> None:
        loop = asyncio.get_running_loop()
        reported = None
        while True:
            try:
                for event in await self._run(self._opened.take_events):
                    for queue in self._queues:
                        queue.put_nowait(event)
                    for handler in self._handlers:
                        loop.call_soon(handler, event)
                reported = None
            except StatusError as error:
                # Once, not ten times in each second.
                if error.code != reported:
                    loop.call_exception_handler({"message": "events cannot be dispatched", "exception": error})
                reported = error.code
            await asyncio.sleep(self._interval)


__all__ = ["AsyncClient"]
