"""Finds Orlindex.dll, loads it and checks that it is the library that the declarations describe."""

import ctypes
import os
import struct
import sys
from typing import Any, Callable, Dict, Optional, Tuple

from ._declarations import FUNCTIONS, LIBRARY_FILE, LIBRARY_VERSION, talix_versions
from ._errors import LibraryError

#: The functions, by name.
Functions = Dict[str, Callable[..., Any]]

_KIT = f"Copy the 64-bit {LIBRARY_FILE} of the kit beside the program, and use a 64-bit Python."
_UPDATE = f"Use the {LIBRARY_FILE} of the kit that this package came with, or a later one of the same major version."

_MACHINES = {0x014C: "32-bit x86", 0x8664: "64-bit x64", 0xAA64: "64-bit ARM"}

# The library's own directory and the system's, but not the current directory and not PATH.
_SEARCH_DLL_LOAD_DIR = 0x100
_SEARCH_SYSTEM32 = 0x800


def beside_the_program() -> str:
    """The library's file in the folder of the program: of the main script, or of the executable that contains it."""
    script = getattr(sys.modules.get("__main__"), "__file__", None)
    program = sys.executable if getattr(sys, "frozen", False) or not script else script
    return os.path.join(os.path.dirname(os.path.abspath(program)), LIBRARY_FILE)


def _machine(path: str) -> Optional[int]:
    """The processor that a Windows module is built for; None if the file is no Windows module."""
    with open(path, "rb") as file:
        header = file.read(64)
        if len(header) < 64 or header[:2] != b"MZ":
            return None
        file.seek(struct.unpack_from("<I", header, 60)[0])
        signature = file.read(6)
    return struct.unpack_from("<H", signature, 4)[0] if len(signature) == 6 and signature[:4] == b"PE\0\0" else None


def _check_file(path: str) -> None:
    try:
        machine = _machine(path)
    except FileNotFoundError:
        raise LibraryError(path, "there is no such file", _KIT) from None
    except OSError as error:
        raise LibraryError(path, f"it cannot be read ({error.strerror})", _KIT) from error
    bits = struct.calcsize("P") * 8
    if bits != 64:
        raise LibraryError(path, f"this is a {bits}-bit Python, and the package supports 64-bit processes only", _KIT)
    if machine is not None and machine != 0x8664:
        kind = _MACHINES.get(machine, f"machine {machine:#06x}")
        raise LibraryError(path, f"it is built for {kind}, and this process is 64-bit x64", _KIT)


def _load(path: str) -> ctypes.CDLL:
    try:
        if sys.platform == "win32":
            return ctypes.CDLL(path, winmode=_SEARCH_DLL_LOAD_DIR | _SEARCH_SYSTEM32)
        return ctypes.CDLL(path)
    except OSError as error:
        raise LibraryError(path, f"the system cannot load it ({error})", _KIT) from error


def _numbers(version: str) -> Tuple[int, ...]:
    return tuple(int(part) for part in version.split("."))


def _check_version(path: str, functions: Functions) -> None:
    server, own = ctypes.create_string_buffer(1024), ctypes.create_string_buffer(1024)
    record = talix_versions(ctypes.addressof(server), len(server), ctypes.addressof(own), len(own))
    functions["talix_get_versions"](ctypes.byref(record))
    found = own.value.decode("utf-8", "replace")
    needed = _numbers(LIBRARY_VERSION)
    try:
        fits = _numbers(found) >= needed and _numbers(found)[0] == needed[0]
    except ValueError:
        fits = False
    if not fits:
        raise LibraryError(path, f"it has the version {found or 'unknown'}, and this package needs {LIBRARY_VERSION} or a "
                           f"later version {needed[0]}.x", _UPDATE)


def _unload(library: ctypes.CDLL) -> None:
    import _ctypes

    getattr(_ctypes, "FreeLibrary" if sys.platform == "win32" else "dlclose")(library._handle)


def _functions_of(library: ctypes.CDLL, path: str) -> Functions:
    functions: Functions = {}
    missing = []
    for name, (result, arguments) in FUNCTIONS.items():
        function = getattr(library, name, None)
        if function is None:
            missing.append(name)
            continue
        function.restype = result
        function.argtypes = arguments
        functions[name] = function
    if "talix_get_versions" in functions:
        _check_version(path, functions)
    if missing:
        raise LibraryError(path, f"it does not export {', '.join(missing)}, so it is another version or another library",
                           _UPDATE)
    return functions


def load(path: Optional[str] = None) -> Functions:
    """Loads the library from path, or from beside the program. LibraryError if it cannot be used."""
    path = os.path.abspath(path) if path else beside_the_program()
    _check_file(path)
    library = _load(path)
    try:
        return _functions_of(library, path)
    except BaseException:
        # The right library looks for itself by its name, and must not find this one.
        _unload(library)
        raise
