// Calls every function of the flat interface once through the C# declarations of the package for .NET, against
// StandIn.c: each argument and each result must arrive unchanged.

using System;
using System.Runtime.InteropServices;
using Orlindex;

internal static class Calls
{
    private const string Text = "J\u00fcrgen \u4e2d\u6587";
    private static readonly talix_event_callback callback = OnEvent;
    private static int failures;
    private static string heard = "";

    private static void Check(string what, bool good)
    {
        if (good)
            return;
        ++failures;
        Console.WriteLine("error: " + what);
    }

    private static void Check(string what, talix_status_code code)
    {
        Check(what + " returned " + (int)code, code == talix_status_code.IdSuccess);
    }

    private static void OnEvent(int event_code, int status, IntPtr user_value)
    {
        heard += event_code + " " + status + " " + user_value.ToInt64();
    }

    private static void CheckText(string what, Func<Utf8Buffer, talix_status_code> call)
    {
        using (Utf8Buffer buffer = new Utf8Buffer(100))
        {
            Check(what, call(buffer));
            Check(what + " wrote " + buffer.Text, buffer.Text == Text);
        }
    }

    private delegate talix_status_code BufferCall(ref talix_buffer buffer);

    private static void CheckBuffer(string what, BufferCall call)
    {
        CheckText(what, memory => {
            talix_buffer buffer = new talix_buffer { buffer = memory.Pointer, size = memory.Size };
            return call(ref buffer);
        });
    }

    private static void CheckProduct()
    {
        IntPtr config = Talix.talix_create_product_config(Text, "openid");
        Check("the handle", config.ToInt64() == 4711);
        Talix.talix_set_product_line_name(config, Text);
        Talix.talix_set_product_release_id(config, Text);
        Talix.talix_set_product_build_id(config, Text);
        Check("set_product_config", Talix.talix_set_product_config(Server.TALIX_SERVER_DEVELOPMENT, config));
    }

    private static void CheckRecords()
    {
        CheckText("get_user_info", memory => {
            talix_user_info info = new talix_user_info { email = memory.Pointer, email_size = memory.Size };
            return Talix.talix_get_user_info(ref info);
        });
        CheckText("get_versions", memory => {
            talix_versions versions =
                new talix_versions { sdk_version = memory.Pointer, sdk_version_size = memory.Size };
            return Talix.talix_get_versions(ref versions);
        });
        using (Utf8Buffer host = new Utf8Buffer(Text))
        {
            talix_proxy_info stored = new talix_proxy_info { host = host.Pointer, host_size = host.Size, port = 3128 };
            Check("set_proxy_info", Talix.talix_set_proxy_info(ref stored));
        }
        talix_proxy_info found = new talix_proxy_info();
        Check("get_proxy_info", Talix.talix_get_proxy_info(ref found, Text, 3128));
        Check("the port that was found", found.port == 3128);
    }

    private static void CheckEvents()
    {
        Check("add_event_callback", Talix.talix_add_event_callback(callback, new IntPtr(42)));
        GC.Collect();
        Check("dispatch_events", Talix.talix_dispatch_events());
        Check("the event: " + heard, heard == "5 1000 42");
        Check("remove_event_callback", Talix.talix_remove_event_callback(callback));
    }

    public static int Main()
    {
        Check("init", Talix.talix_init());
        Check("get_boolean", Talix.talix_get_boolean(talix_boolean_key.TALIX_KEY_LOGGED_IN) &&
                                 !Talix.talix_get_boolean(talix_boolean_key.TALIX_KEY_TOKEN_EXPIRED));
        CheckProduct();
        Check("set_login_mode", Talix.talix_set_login_mode(talix_login_mode.TALIX_LOGIN_MODE_BROWSER));
        Check("login", Talix.talix_login());
        CheckBuffer("get_token", Talix.talix_get_token);
        CheckBuffer("get_token_blocking", Talix.talix_get_token_blocking);
        CheckBuffer("get_id_token", Talix.talix_get_id_token);
        CheckBuffer("get_profile_info", Talix.talix_get_profile_info);
        CheckBuffer("get_session_uri",
                    (ref talix_buffer buffer) => Talix.talix_get_session_uri(Text, 65535, ref buffer));
        Check("set_server", Talix.talix_set_server(Server.TALIX_SERVER_UNAVAILABLE));
        Check("get_server", Talix.talix_get_server() == Server.TALIX_SERVER_DEVELOPMENT);
        Check("get_environment",
              Talix.talix_get_environment() == TALIXEnvironment.TALIX_ENVIRONMENT_UNAVAILABLE);
        CheckRecords();
        Check("has_proxy_info", Talix.talix_has_proxy_info(Text, 3128));
        Check("clear_proxy_info", Talix.talix_clear_proxy_info());
        Check("set_host", Talix.talix_set_host(new IntPtr(0x123456789A)));
        Check("set_process_id", Talix.talix_set_process_id(-5));
        CheckEvents();
        Check("refresh_token", Talix.talix_refresh_token());
        Check("quit_server_process", Talix.talix_quit_server_process(-1000));
        Check("logout", Talix.talix_logout(talix_logout_flags.TALIX_LOGOUT_FORCE));
        Check("deinit", Talix.talix_deinit());
        Console.WriteLine(failures + " failures");
        return failures == 0 ? 0 : 1;
    }
}
