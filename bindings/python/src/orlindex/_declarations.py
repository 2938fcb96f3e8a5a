"""The flat interface of Orlindex.dll. Made from talix.h by bindings/generate.py. Do not edit."""

# fmt: off
import ctypes
import enum
from typing import Any, Dict, Sequence, Tuple

LIBRARY_FILE = "Orlindex.dll"
LIBRARY_VERSION = "1.11.13.3"


class StatusCode(enum.IntEnum):
    """Result of an operation, a signed 32-bit number. The library returns the values named here. The client plugin module may return other values of 1000 and above, which pass through unchanged."""

    #: The call succeeded.
    IdSuccess = 1000
    #: The library is not initialized.
    IdNotInitialized = 2000
    #: A required argument or the client interface is missing, the plugin returned a value below 1000 or threw, or the system is out of memory.
    IdFailed = 3004
    #: The client plugin module or its client interface could not be obtained.
    IdClientUnavailable = 3005
    #: A null OAuth2 client ID.
    IdInvalidClientId = 3006
    #: The caller's buffer cannot hold the text and its terminating zero.
    IdBufferTooSmall = 3017
    #: A null window handle.
    IdInvalidHostWindow = 3018
    #: The operation is not supported.
    IdNotSupported = 3021
    #: The process runs under the local system account.
    IdRunningAsLocalSystem = 3025
    #: A version record in which neither text buffer is usable.
    IdInvalidVersionRecord = 3041
    #: A null proxy record.
    IdInvalidProxyRecord = 3047
    #: A proxy host that is null, of size 0 or empty.
    IdInvalidProxyHost = 3050
    #: A proxy port outside 1..65535 with a non-empty host.
    IdInvalidProxyPort = 3052
    #: A null profile record.
    IdInvalidProfileRecord = 3064
    #: The plugin does not support the feature, or has no client interface.
    IdApiUnavailable = 3071
    #: No server-process interface, or not all server processes quit in time.
    IdServerQuitFailed = 3080


class Server(enum.IntEnum):
    """Identity server (environment) that the client uses. The client plugin module defines the values; the names here must agree with the plugin in use."""

    #: No server: the library is not initialized, or a name is unknown.
    UNAVAILABLE = -1
    #: The service for users.
    PRODUCTION = 0
    #: The service for testing releases.
    STAGING = 1
    #: The service for development.
    DEVELOPMENT = 2


class Environment(enum.IntEnum):
    """Kind of environment behind the server in use. The plugin defines the values."""

    #: The library is not initialized.
    UNAVAILABLE = -1
    #: The plugin has no client interface.
    NONE = 0
    #: A service for users.
    PRODUCTION = 1
    #: A service for testing releases.
    STAGING = 2
    #: A service for development.
    DEVELOPMENT = 3


class LoginMode(enum.IntEnum):
    """How a login is carried out. Passed to the plugin unchanged."""

    #: The plugin chooses.
    DEFAULT = 0
    #: In a window of the server application.
    EMBEDDED = 1
    #: In the user's browser.
    BROWSER = 2


class LogoutFlags(enum.IntEnum):
    """How a logout is carried out. Passed to the plugin unchanged."""

    #: Observers are asked first and may refuse.
    DEFAULT = 0
    #: Observers are not asked.
    FORCE = 1


class BooleanKey(enum.IntEnum):
    """Keys of talix_get_boolean."""

    #: The library is initialized.
    INITIALIZED = 1
    #: A user is signed in.
    LOGGED_IN = 2
    #: The login is valid.
    LOGIN_VALID = 3
    #: The OAuth2 access token has expired.
    TOKEN_EXPIRED = 4


class EventCode(enum.IntEnum):
    """Event codes that callbacks receive."""

    #: The user signed in.
    LOGGED_IN = 0
    #: The user signed out.
    LOGGED_OUT = 1
    #: An account was created during a login.
    ACCOUNT_CREATED = 2
    #: The access token was refreshed.
    TOKEN_REFRESHED = 3
    #: An access token became available.
    TOKEN_AVAILABLE = 4
    #: A login from an earlier run was restored. Always comes with the status IdSuccess.
    LOGIN_RESTORED = 5


#: The meaning of each status code.
MEANINGS: Dict[int, str] = {
    1000: "The call succeeded.",
    2000: "The library is not initialized.",
    3004: "A required argument or the client interface is missing, the plugin returned a value below 1000 or threw, or the system is out of memory.",
    3005: "The client plugin module or its client interface could not be obtained.",
    3006: "A null OAuth2 client ID.",
    3017: "The caller's buffer cannot hold the text and its terminating zero.",
    3018: "A null window handle.",
    3021: "The operation is not supported.",
    3025: "The process runs under the local system account.",
    3041: "A version record in which neither text buffer is usable.",
    3047: "A null proxy record.",
    3050: "A proxy host that is null, of size 0 or empty.",
    3052: "A proxy port outside 1..65535 with a non-empty host.",
    3064: "A null profile record.",
    3071: "The plugin does not support the feature, or has no client interface.",
    3080: "No server-process interface, or not all server processes quit in time.",
}


class talix_user_info(ctypes.Structure):
    """Attributes of the signed-in user, filled by the plugin. Each attribute is a caller-owned buffer and its capacity in bytes; a null pointer or a capacity of 0 means that the attribute is not wanted. If a buffer is too small, the plugin leaves it unchanged and returns IdBufferTooSmall."""

    _fields_ = [
        ("reserved", ctypes.c_int64),
        ("user_id", ctypes.c_void_p),
        ("user_id_size", ctypes.c_int32),
        ("user_name", ctypes.c_void_p),
        ("user_name_size", ctypes.c_int32),
        ("first_name", ctypes.c_void_p),
        ("first_name_size", ctypes.c_int32),
        ("last_name", ctypes.c_void_p),
        ("last_name_size", ctypes.c_int32),
        ("email", ctypes.c_void_p),
        ("email_size", ctypes.c_int32),
        ("display_name", ctypes.c_void_p),
        ("display_name_size", ctypes.c_int32),
    ]


class talix_proxy_info(ctypes.Structure):
    """Settings of one proxy server. Capacities in bytes."""

    _fields_ = [
        ("host", ctypes.c_void_p),
        ("host_size", ctypes.c_int32),
        ("user_name", ctypes.c_void_p),
        ("user_name_size", ctypes.c_int32),
        ("password", ctypes.c_void_p),
        ("password_size", ctypes.c_int32),
        ("reserved", ctypes.c_int32),
        ("port", ctypes.c_int32),
    ]


class talix_buffer(ctypes.Structure):
    """A buffer that the library writes a text into."""

    _fields_ = [
        ("buffer", ctypes.c_void_p),
        ("size", ctypes.c_int32),
    ]


class talix_versions(ctypes.Structure):
    """Buffers that the library writes version texts into."""

    _fields_ = [
        ("server_version", ctypes.c_void_p),
        ("server_version_size", ctypes.c_int32),
        ("sdk_version", ctypes.c_void_p),
        ("sdk_version_size", ctypes.c_int32),
    ]


talix_event_callback = ctypes.CFUNCTYPE(None, ctypes.c_int32, ctypes.c_int32, ctypes.c_void_p)

#: The type of the result and those of the arguments.
FUNCTIONS: Dict[str, Tuple[Any, Sequence[Any]]] = {
    "talix_init": (ctypes.c_int32, []),
    "talix_deinit": (ctypes.c_int32, []),
    "talix_get_boolean": (ctypes.c_uint8, [ctypes.c_int32]),
    "talix_create_product_config": (ctypes.c_void_p, [ctypes.c_char_p, ctypes.c_char_p]),
    "talix_set_product_line_name": (None, [ctypes.c_void_p, ctypes.c_char_p]),
    "talix_set_product_release_id": (None, [ctypes.c_void_p, ctypes.c_char_p]),
    "talix_set_product_build_id": (None, [ctypes.c_void_p, ctypes.c_char_p]),
    "talix_set_product_config": (ctypes.c_int32, [ctypes.c_int32, ctypes.c_void_p]),
    "talix_set_login_mode": (ctypes.c_int32, [ctypes.c_int32]),
    "talix_login": (ctypes.c_int32, []),
    "talix_logout": (ctypes.c_int32, [ctypes.c_int32]),
    "talix_get_token": (ctypes.c_int32, [ctypes.POINTER(talix_buffer)]),
    "talix_get_token_blocking": (ctypes.c_int32, [ctypes.POINTER(talix_buffer)]),
    "talix_get_id_token": (ctypes.c_int32, [ctypes.POINTER(talix_buffer)]),
    "talix_set_server": (ctypes.c_int32, [ctypes.c_int32]),
    "talix_get_environment": (ctypes.c_int32, []),
    "talix_get_server": (ctypes.c_int32, []),
    "talix_get_user_info": (ctypes.c_int32, [ctypes.POINTER(talix_user_info)]),
    "talix_get_session_uri": (ctypes.c_int32, [ctypes.c_char_p, ctypes.c_uint16, ctypes.POINTER(talix_buffer)]),
    "talix_set_host": (ctypes.c_int32, [ctypes.c_void_p]),
    "talix_set_process_id": (ctypes.c_int32, [ctypes.c_int32]),
    "talix_add_event_callback": (ctypes.c_int32, [talix_event_callback, ctypes.c_void_p]),
    "talix_remove_event_callback": (ctypes.c_int32, [talix_event_callback]),
    "talix_dispatch_events": (ctypes.c_int32, []),
    "talix_has_proxy_info": (ctypes.c_int32, [ctypes.c_char_p, ctypes.c_int32]),
    "talix_get_proxy_info": (ctypes.c_int32, [ctypes.POINTER(talix_proxy_info), ctypes.c_char_p, ctypes.c_int32]),
    "talix_set_proxy_info": (ctypes.c_int32, [ctypes.POINTER(talix_proxy_info)]),
    "talix_clear_proxy_info": (ctypes.c_int32, []),
    "talix_get_profile_info": (ctypes.c_int32, [ctypes.POINTER(talix_buffer)]),
    "talix_get_versions": (ctypes.c_int32, [ctypes.POINTER(talix_versions)]),
    "talix_refresh_token": (ctypes.c_int32, []),
    "talix_quit_server_process": (ctypes.c_int32, [ctypes.c_int32]),
}
