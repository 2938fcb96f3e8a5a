"""The library between start and stop: its process-wide state, and the calls that run in it."""

import collections
import contextlib
import ctypes
import threading
from typing import Any, Deque, Iterator, NamedTuple, Optional

from ._declarations import EventCode, LogoutFlags, BooleanKey, StatusCode, talix_event_callback
from ._errors import SignInCancelled, StatusError
from ._library import Functions

# The library has one product configuration and one list of callbacks for the process.
_process_lock = threading.RLock()  # recursive: a collected client may be closed inside
_open_session: Optional["Session"] = None

# How long a cancellation waits for the sign-in to end before it asks again: the first request may come before the plugin's
# sign-in has begun to wait.
_CANCEL_AGAIN_SECONDS = 0.2


class Event(NamedTuple):
    """An identity event."""

    #: The event. A number if the library is newer than this package and reports one without a name here.
    code: int
    #: The status that belongs to it.
    status: int

    @property
    def name(self) -> str:
        """The name of the event, such as LOGGED_IN."""
        return EventCode(self.code).name if self.code in EventCode.__members__.values() else str(self.code)


class Session:
    """From talix_init to talix_deinit. Never refers to the client that owns it, so that the client can be collected."""

    def __init__(self, functions: Functions) -> None:
        self._functions = functions
        self._state = threading.Condition()
        self._running = 0  # calls inside the library
        self._login_running = False
        self._logins = 0
        self._cancelled = False
        self._closed = False
        #: Calls of functions that change state of the process.
        self.process_state = threading.RLock()
        self.events: Deque[Event] = collections.deque()
        # Kept as long as the library may call it. It only stores: nothing that it does can raise into the library.
        self._callback = talix_event_callback(lambda code, status, _: self.events.append(Event(code, status)))

    # --- Calls ---------------------------------------------------------------------------------------------------

    @contextlib.contextmanager
    def _call(self) -> Iterator[None]:
        """The library must not stop while a thread is inside it."""
        with self._state:
            if self._closed:
                raise ValueError("operation on a closed client")
            self._running += 1
        try:
            yield
        finally:
            with self._state:
                self._running -= 1
                self._state.notify_all()

    def invoke(self, name: str, *arguments: Any) -> Any:
        """Calls a function and returns its result."""
        with self._call():
            return self._functions[name](*arguments)

    def check(self, name: str, *arguments: Any) -> None:
        """Calls a function that returns a status code."""
        code = self.invoke(name, *arguments)
        if code != StatusCode.IdSuccess:
            raise StatusError(name, code)

    # --- Start and stop ------------------------------------------------------------------------------------------

    def start(self) -> None:
        global _open_session
        with _process_lock:
            if _open_session is not None:
                raise RuntimeError("another client of this process is open; the library has one state for the process")
            _open_session = self
        try:
            self.check("talix_init")
        except BaseException:
            self._leave()
            raise
        try:
            self.check("talix_add_event_callback", self._callback, None)
        except BaseException:
            self.stop()
            raise

    def stop(self) -> None:
        """Ends a running sign-in, waits until the library runs no call, and stops it. Does nothing the second time."""
        with self._state:
            if self._closed:
                return
            self._closed = True
        self.cancel_sign_in()
        with self._state:
            self._state.wait_for(lambda: self._running == 0)
        self._functions["talix_remove_event_callback"](self._callback)
        self._functions["talix_deinit"]()
        self._leave()

    def _leave(self) -> None:
        global _open_session
        with self._state:
            self._closed = True
        with _process_lock:
            _open_session = None

    @property
    def closed(self) -> bool:
        return self._closed

    # --- Sign-in -------------------------------------------------------------------------------------------------

    def sign_in(self) -> None:
        with self._call():
            with self._state:
                if self._login_running:
                    raise RuntimeError("another sign-in runs")
                self._login_running = True
                self._logins += 1
                self._cancelled = False
            code = StatusCode.IdFailed.value
            try:
                code = self._functions["talix_login"]()
            finally:
                with self._state:
                    self._login_running = False
                    cancelled = self._cancelled
                    self._state.notify_all()
        if code == StatusCode.IdSuccess:
            return
        if cancelled:
            raise SignInCancelled("the sign-in was cancelled") from StatusError("talix_login", code)
        raise StatusError("talix_login", code)

    def cancel_sign_in(self) -> None:
        """Asks until the sign-in has ended: a logout ends a sign-in that waits for the user."""
        with self._state:
            login = self._logins
        while True:
            with self._state:
                if not self._login_running or self._logins != login:
                    return
                self._cancelled = True
                self._running += 1
            try:
                if not self._functions["talix_get_boolean"](BooleanKey.LOGGED_IN):
                    self._functions["talix_logout"](LogoutFlags.DEFAULT)
            finally:
                with self._state:
                    self._running -= 1
                    self._state.notify_all()
                    self._state.wait_for(lambda: not self._login_running or self._logins != login, _CANCEL_AGAIN_SECONDS)


def text_buffer(size: int) -> "ctypes.Array[ctypes.c_char]":
    return ctypes.create_string_buffer(size)


def text_of(buffer: "ctypes.Array[ctypes.c_char]") -> str:
    return buffer.value.decode("utf-8", "replace")
