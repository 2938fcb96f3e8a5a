using System;

namespace Orlindex
{
    /// <summary>How a client is opened.</summary>
    public sealed class OrlindexOptions
    {
        /// <summary>The product's OAuth2 client ID, and the scope of its tokens.</summary>
        public OrlindexOptions(string clientId, string scope)
        {
            ClientId = clientId ?? throw new ArgumentNullException(nameof(clientId));
            Scope = scope ?? throw new ArgumentNullException(nameof(scope));
        }

        /// <summary>OAuth2 client ID of the product.</summary>
        public string ClientId { get; private set; }

        /// <summary>Scope of its tokens.</summary>
        public string Scope { get; private set; }

        /// <summary>Identity server; null: the one in use.</summary>
        public Server? Server { get; set; }

        /// <summary>How a login is carried out; null: the plugin chooses.</summary>
        public talix_login_mode? LoginMode { get; set; }

        /// <summary>Name of the product line.</summary>
        public string ProductLineName { get; set; }

        /// <summary>Identifier of the product's release.</summary>
        public string ProductReleaseId { get; set; }

        /// <summary>Identifier of the product's build.</summary>
        public string ProductBuildId { get; set; }

        /// <summary>The window that owns the plugin's dialogs; zero: none.</summary>
        public IntPtr Window { get; set; }

        /// <summary>Path of Orlindex.dll; null: beside the program.</summary>
        public string LibraryPath { get; set; }

        /// <summary>Time between two deliveries of events.</summary>
        public TimeSpan DispatchInterval { get; set; } = TimeSpan.FromMilliseconds(100);
    }

    /// <summary>An identity event.</summary>
    public sealed class OrlindexEventArgs : EventArgs
    {
        internal OrlindexEventArgs(talix_event_code code, talix_status_code status)
        {
            Code = code;
            Status = status;
        }

        /// <summary>The event. A number without a name if the library is newer than this package.</summary>
        public talix_event_code Code { get; private set; }

        /// <summary>The status that belongs to it.</summary>
        public talix_status_code Status { get; private set; }
    }

    /// <summary>Attributes of the signed-in user. Empty if the plugin does not know them.</summary>
    public sealed class OrlindexUser
    {
        public string UserId { get; internal set; }
        public string UserName { get; internal set; }
        public string FirstName { get; internal set; }
        public string LastName { get; internal set; }
        public string Email { get; internal set; }
        public string DisplayName { get; internal set; }
    }

    /// <summary>Settings of one proxy server.</summary>
    public sealed class OrlindexProxy
    {
        /// <summary>Name or address.</summary>
        public string Host { get; set; } = "";

        /// <summary>1..65535.</summary>
        public int Port { get; set; }

        /// <summary>User name for the proxy.</summary>
        public string UserName { get; set; } = "";

        /// <summary>Password for the proxy.</summary>
        public string Password { get; set; } = "";
    }

    /// <summary>Version texts.</summary>
    public sealed class OrlindexVersions
    {
        /// <summary>Of the installed server application; empty if none is found.</summary>
        public string Server { get; internal set; }

        /// <summary>Of the library.</summary>
        public string Library { get; internal set; }
    }
}
