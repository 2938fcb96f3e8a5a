"""Single sign-on for hosts in Python, on 64-bit Windows: see Client and AsyncClient."""

from ._aio import AsyncClient
from ._client import Client, Handler, Proxy, UserInfo, Versions
from ._declarations import (LIBRARY_VERSION, BooleanKey, Environment, EventCode, LoginMode, LogoutFlags, Server,
                            StatusCode)
from ._errors import LibraryError, OrlindexError, SignInCancelled, StatusError
from ._session import Event

__all__ = [
    "LIBRARY_VERSION", "AsyncClient", "BooleanKey", "Client", "Environment", "Event", "EventCode", "Handler",
    "LibraryError", "LoginMode", "LogoutFlags", "OrlindexError", "Proxy", "Server", "SignInCancelled", "StatusCode",
    "StatusError", "UserInfo", "Versions",
]
