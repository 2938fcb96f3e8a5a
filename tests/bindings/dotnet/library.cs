// Bad input: every library that cannot be used is one exception with the path, the reason and what to do. ORLINDEX_STANDIN names
// the folder with such libraries. Tests of given paths come first: after that, the process has loaded its library.

using System;
using System.IO;
using System.Threading.Tasks;
using Orlindex;
using static Tests;

internal static class LibraryTests
{
    private static readonly string folder = Environment.GetEnvironmentVariable("ORLINDEX_STANDIN");
    private static readonly string beside = Path.Combine(AppDomain.CurrentDomain.BaseDirectory, "Orlindex.dll");
    private static readonly string away = beside + ".away";

    private static async Task Refused(string path, string reason, string remedy)
    {
        OrlindexOptions options = Options();
        options.LibraryPath = path;
        OrlindexLibraryException error = await Throws<OrlindexLibraryException>(() => OrlindexClient.OpenAsync(options));
        Equal(error.Path, path == null ? beside : Path.GetFullPath(path));
        Check(error.Reason.Contains(reason), error.Reason);
        Check(error.Remedy.Contains(remedy), error.Remedy);
        foreach (string part in new[] { error.Path, error.Reason, error.Remedy })
            Check(error.Message.Contains(part), error.Message);
    }

    private static async Task NoModule()
    {
        foreach (byte[] content in new[] { new byte[0], new byte[] { (byte)'M', (byte)'Z' }, new byte[200] })
        {
            File.WriteAllBytes("text.dll", content);
            await Refused("text.dll", "the system cannot load it", "Copy the 64-bit Orlindex.dll");
        }
    }

    private static async Task BesideTheProgram()
    {
        Directory.CreateDirectory("elsewhere");
        File.Copy(away, Path.Combine("elsewhere", "Orlindex.dll"));
        Environment.SetEnvironmentVariable(
            "PATH", Path.GetFullPath("elsewhere") + ";" + Environment.GetEnvironmentVariable("PATH"));
        Directory.SetCurrentDirectory("elsewhere");
        await Refused(null, "no such file", "Copy the 64-bit Orlindex.dll");
    }

    private static async Task Other()
    {
        File.Copy(away, beside);
        string other = Path.Combine(folder, @"windows\version-2.0.0.0\Orlindex.dll");
        await Refused(other, "the runtime would load " + beside + " instead", "Remove one of the two");
        (await OrlindexClient.OpenAsync(Options())).Dispose();
        await Refused(other, "this process has loaded " + beside + " already", "Use one library");
    }

    public static int Main()
    {
        File.Move(beside, away);
        string copy = "Copy the 64-bit Orlindex.dll", same = "of the same major version";
        Run("no library", () => Refused(@"missing\Orlindex.dll", "no such file", copy));
        Run("a folder", () => Refused(folder, "it cannot be read", copy));
        Run("other bitness", () => Refused(Path.Combine(folder, @"bits32\Orlindex.dll"),
                                           "it is built for 32-bit x86, and this process is 64-bit x64", "build the program for x64"));
        Run("no module", NoModule);
        Run("another version", () => Refused(Path.Combine(folder, @"windows\version-2.0.0.0\Orlindex.dll"),
            "it has the version 2.0.0.0, and this package needs 1.11.13.3 or a later version 1.x", same));
        Run("a function is missing", () => Refused(Path.Combine(folder, @"windows\without-login\Orlindex.dll"),
                                                   "it does not export talix_login,", same));
        Run("it is looked for beside the program only", BesideTheProgram);
        Run("one library in a process", Other);
        return Finish();
    }
}
