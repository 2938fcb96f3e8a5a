"""The client of hosts that call and dispatch events on threads of their own."""

import ctypes
import warnings
import weakref
from collections import deque
from dataclasses import dataclass
from types import TracebackType
from typing import Callable, Deque, List, Optional, Tuple, Type

from . import _library
from ._declarations import (MEANINGS, BooleanKey, Environment, LoginMode, LogoutFlags, Server, StatusCode, talix_buffer,
                            talix_proxy_info, talix_user_info, talix_versions)
from ._errors import StatusError
from ._session import Event, Session, text_buffer, text_of

#: Receives events, on the thread that calls Client.dispatch_events.
Handler = Callable[[Event], None]

# The library passes at most 4095 and 2047 UTF-16 units, each of at most three bytes in UTF-8, and a zero.
_TOKEN_SIZE = 4095 * 3 + 1
_ADDRESS_SIZE = 2047 * 3 + 1
_FIRST_SIZE = 1024
_LARGEST_SIZE = 16 * 1024 * 1024


@dataclass(frozen=True)
class UserInfo:
    """Attributes of the signed-in user. Empty if the plugin does not know them."""

    user_id: str
    user_name: str
    first_name: str
    last_name: str
    email: str
    display_name: str


@dataclass(frozen=True)
class Proxy:
    """Settings of one proxy server."""

    host: str
    port: int
    user_name: str = ""
    password: str = ""


@dataclass(frozen=True)
class Versions:
    """Version texts."""

    #: Of the installed server application; empty if none is found.
    server: str
    #: Of the library.
    library: str


def _utf8(text: Optional[str]) -> Optional[bytes]:
    if text is None:
        return None
    if "\0" in text:
        raise ValueError("embedded null character")
    return text.encode("utf-8")


class Client:
    """The library, started for one product. One client can be open in a process.

    The functions may be called on several threads at the same time. They wait as long as the library waits, a sign-in for
    minutes. Each raises StatusError if the library returns another code than IdSuccess, and ValueError after close().
    Events wait until dispatch_events() is called; always call it on the same thread.
    """

    def __init__(self, client_id: str, scope: str, *, server: Optional[int] = None, login_mode: Optional[int] = None,
                 product_line_name: Optional[str] = None, product_release_id: Optional[str] = None,
                 product_build_id: Optional[str] = None, window: Optional[int] = None,
                 library: Optional[str] = None) -> None:
        """Loads the library and starts it.

        client_id, scope: the OAuth2 client ID of the product, and the scope of its tokens. server: an identity server of
        the plugin; default: the one in use. login_mode: see LoginMode. product_...: identity of the product. window: the
        handle of the window that owns the plugin's dialogs. library: the path of Orlindex.dll; default: beside the program.

        LibraryError if the library cannot be used; StatusError if it does not start; RuntimeError if a client is open.
        """
        texts = [_utf8(text) for text in (product_line_name, product_release_id, product_build_id)]
        identity = (_utf8(client_id), _utf8(scope))
        self._session = session = Session(_library.load(library))
        self._handlers: List[Handler] = []
        self._deliveries: Deque[Tuple[Handler, Event]] = deque()
        session.start()
        # Without a call of close(), the session ends when the client is collected or when the interpreter ends.
        self._finalizer = weakref.finalize(self, session.stop)
        try:
            if window is not None:
                session.check("talix_set_host", window)
            if server is not None:
                session.check("talix_set_server", server)
            self._set_product(identity, texts)
            if login_mode is not None:
                session.check("talix_set_login_mode", login_mode)
        except BaseException:
            self.close()
            raise

    def _set_product(self, identity: Tuple[Optional[bytes], Optional[bytes]], texts: List[Optional[bytes]]) -> None:
        with self._session.process_state:
            handle = self._session.invoke("talix_create_product_config", *identity)
            if not handle:
                raise StatusError("talix_create_product_config", StatusCode.IdFailed)
            for part, text in zip(("line_name", "release_id", "build_id"), texts):
                self._session.invoke(f"talix_set_product_{part}", handle, text)
            self._session.check("talix_set_product_config", self._session.invoke("talix_get_server"), handle)

    # --- Lifetime ------------------------------------------------------------------------------------------------

    def close(self) -> None:
        """Ends a running sign-in, waits for calls of other threads, and stops the library. The login itself stays."""
        self._finalizer()

    @property
    def closed(self) -> bool:
        """Whether the client is closed."""
        return self._session.closed

    def __enter__(self) -> "Client":
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()

    def __del__(self) -> None:
        finalizer = getattr(self, "_finalizer", None)
        if finalizer is not None and finalizer.alive:
            warnings.warn(f"unclosed {self!r}", ResourceWarning, source=self)

    # --- Login ---------------------------------------------------------------------------------------------------

    def sign_in(self) -> None:
        """Signs the user in. SignInCancelled if cancel_sign_in() or close() ended it."""
        self._session.sign_in()

    def cancel_sign_in(self) -> None:
        """Ends a sign-in that runs on another thread, and waits until it has ended. Does nothing if none runs."""
        self._session.cancel_sign_in()

    def sign_out(self, *, force: bool = False) -> None:
        """Signs the user out. force: observers are not asked and cannot refuse."""
        self._session.check("talix_logout", LogoutFlags.FORCE if force else LogoutFlags.DEFAULT)

    def _boolean(self, key: BooleanKey) -> bool:
        return bool(self._session.invoke("talix_get_boolean", key))

    @property
    def is_signed_in(self) -> bool:
        """Whether a user is signed in."""
        return self._boolean(BooleanKey.LOGGED_IN)

    @property
    def is_login_valid(self) -> bool:
        """Whether the login is valid."""
        return self._boolean(BooleanKey.LOGIN_VALID)

    @property
    def is_token_expired(self) -> bool:
        """Whether the access token has expired."""
        return self._boolean(BooleanKey.TOKEN_EXPIRED)

    # --- Tokens and user -----------------------------------------------------------------------------------------

    def _text(self, function: str, size: int, *arguments: object) -> str:
        buffer = text_buffer(size)
        record = talix_buffer(ctypes.addressof(buffer), size)
        self._session.check(function, *arguments, ctypes.byref(record))
        return text_of(buffer)

    def access_token(self, *, wait: bool = False) -> str:
        """The OAuth2 access token. wait: for a token that is being obtained."""
        return self._text("talix_get_token_blocking" if wait else "talix_get_token", _TOKEN_SIZE)

    def id_token(self) -> str:
        """The OAuth2 ID token."""
        return self._text("talix_get_id_token", _TOKEN_SIZE)

    def refresh_token(self) -> None:
        """Requests a new access token."""
        self._session.check("talix_refresh_token")

    def session_uri(self, uri: str, flag: int = 0) -> str:
        """An address that opens uri in the user's session. The plugin defines the meaning of flag (16 bits)."""
        return self._text("talix_get_session_uri", _ADDRESS_SIZE, _utf8(uri), flag)

    def user_info(self) -> UserInfo:
        """Attributes of the signed-in user."""
        names = tuple(UserInfo.__dataclass_fields__)
        size = _FIRST_SIZE
        while True:
            buffers = {name: text_buffer(size) for name in names}
            record = talix_user_info()
            for name, buffer in buffers.items():
                setattr(record, name, ctypes.addressof(buffer))
                setattr(record, f"{name}_size", size)
            code = self._session.invoke("talix_get_user_info", ctypes.byref(record))
            if code == StatusCode.IdSuccess:
                return UserInfo(**{name: text_of(buffer) for name, buffer in buffers.items()})
            size *= 2
            if code != StatusCode.IdBufferTooSmall or size > _LARGEST_SIZE:
                raise StatusError("talix_get_user_info", code)

    def profile(self) -> str:
        """The user's profile, as the plugin words it."""
        size = _FIRST_SIZE
        while True:
            buffer = text_buffer(size)
            record = talix_buffer(ctypes.addressof(buffer), size)
            code = self._session.invoke("talix_get_profile_info", ctypes.byref(record))
            if code == StatusCode.IdSuccess:
                return text_of(buffer)
            # The plugin sets the size to what it needs.
            size = max(size * 2, record.size + 1)
            if code != StatusCode.IdBufferTooSmall or size > _LARGEST_SIZE:
                raise StatusError("talix_get_profile_info", code)

    # --- Environment ---------------------------------------------------------------------------------------------

    @property
    def server(self) -> int:
        """The identity server in use, see Server."""
        return int(self._session.invoke("talix_get_server"))

    @server.setter
    def server(self, server: int) -> None:
        self._session.check("talix_set_server", server)

    @property
    def environment(self) -> int:
        """The kind of environment behind the server, see Environment."""
        return int(self._session.invoke("talix_get_environment"))

    def set_window(self, window: int) -> None:
        """Sets the window that owns the plugin's dialogs."""
        self._session.check("talix_set_host", window)

    def versions(self) -> Versions:
        """The versions of the installed server application and of the library."""
        server, library = text_buffer(_FIRST_SIZE), text_buffer(_FIRST_SIZE)
        record = talix_versions(ctypes.addressof(server), len(server), ctypes.addressof(library), len(library))
        self._session.check("talix_get_versions", ctypes.byref(record))
        return Versions(text_of(server), text_of(library))

    def quit_server_process(self, milliseconds: int) -> None:
        """Asks all server processes to quit, and waits at most this time for them."""
        self._session.check("talix_quit_server_process", milliseconds)

    # --- Proxies -------------------------------------------------------------------------------------------------

    def has_proxy(self, host: Optional[str] = None, port: int = 0) -> bool:
        """Whether the plugin has settings for a proxy: false for a code that only the plugin knows."""
        code = self._session.invoke("talix_has_proxy_info", _utf8(host), port)
        if code != StatusCode.IdSuccess and code in MEANINGS:
            raise StatusError("talix_has_proxy_info", code)
        return bool(code == StatusCode.IdSuccess)

    def proxy(self, host: Optional[str] = None, port: int = 0) -> Proxy:
        """The settings of a proxy."""
        size = _FIRST_SIZE
        while True:
            buffers = {name: text_buffer(size) for name in ("host", "user_name", "password")}
            record = talix_proxy_info()
            for name, buffer in buffers.items():
                setattr(record, name, ctypes.addressof(buffer))
                setattr(record, f"{name}_size", size)
            code = self._session.invoke("talix_get_proxy_info", ctypes.byref(record), _utf8(host), port)
            if code == StatusCode.IdSuccess:
                texts = {name: text_of(buffer) for name, buffer in buffers.items()}
                return Proxy(port=record.port, **texts)
            size *= 2
            if code != StatusCode.IdBufferTooSmall or size > _LARGEST_SIZE:
                raise StatusError("talix_get_proxy_info", code)

    def set_proxy(self, proxy: Proxy) -> None:
        """Stores the settings of a proxy."""
        record = talix_proxy_info(port=proxy.port)
        buffers = []  # alive during the call
        for name in ("host", "user_name", "password"):
            buffer = ctypes.create_string_buffer(_utf8(getattr(proxy, name)) or b"")
            buffers.append(buffer)
            setattr(record, name, ctypes.addressof(buffer))
            setattr(record, f"{name}_size", len(buffer))
        self._session.check("talix_set_proxy_info", ctypes.byref(record))

    def clear_proxies(self) -> None:
        """Deletes all proxy settings."""
        self._session.check("talix_clear_proxy_info")

    # --- Events --------------------------------------------------------------------------------------------------

    def add_handler(self, handler: Handler) -> None:
        """Adds a function that dispatch_events() calls with each event."""
        self._handlers.append(handler)

    def remove_handler(self, handler: Handler) -> None:
        """Removes a function. ValueError if it was not added."""
        self._handlers.remove(handler)

    def take_events(self) -> List[Event]:
        """The events that wait, for hosts without handlers. Each is returned once, here or by dispatch_events()."""
        with self._session.process_state:
            self._session.check("talix_dispatch_events")
            found = []
            while self._session.events:
                found.append(self._session.events.popleft())
            return found

    def dispatch_events(self) -> None:
        """Calls the handlers with the events that wait, on this thread.

        An exception of a handler leaves this function, not the library. The deliveries that are left follow at the next
        call.
        """
        for event in self.take_events():
            self._deliveries.extend((handler, event) for handler in self._handlers)
        while self._deliveries and not self.closed:
            handler, event = self._deliveries.popleft()
            handler(event)


__all__ = ["Client", "Environment", "Handler", "LoginMode", "Proxy", "Server", "UserInfo", "Versions"]
