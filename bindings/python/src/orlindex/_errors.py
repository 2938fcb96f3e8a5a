"""The exceptions of this package."""

from ._declarations import MEANINGS, StatusCode

_DOCTOR = ('Run orlindex-doctor --host "<folder of the program>" --load: it takes the steps of a start-up and names the one '
           'that fails.')


class OrlindexError(Exception):
    """Base of the exceptions below."""


class LibraryError(OrlindexError):
    """Orlindex.dll could not be loaded, or is not the library that this package needs."""

    def __init__(self, path: str, reason: str, remedy: str) -> None:
        super().__init__(f"cannot use {path}: {reason}. {remedy}")
        #: The file that was tried.
        self.path = path
        #: Why it cannot be used.
        self.reason = reason
        #: What to do.
        self.remedy = remedy


class StatusError(OrlindexError):
    """A function of the library returned another code than IdSuccess."""

    def __init__(self, operation: str, code: int) -> None:
        #: The function, such as talix_login.
        self.operation = operation
        #: The status code.
        self.code = code
        #: Its name; empty for a code of the client plugin module.
        self.name = StatusCode(code).name if code in MEANINGS else ""
        #: What it means.
        self.meaning = MEANINGS.get(code, "The client plugin module returned this code; its documentation has the meaning.")
        text = f"{operation} returned {code}{f' ({self.name})' if self.name else ''}: {self.meaning}"
        super().__init__(f"{text} {_DOCTOR}" if code == StatusCode.IdClientUnavailable else text)


class SignInCancelled(OrlindexError):
    """Client.cancel_sign_in ended the sign-in."""
