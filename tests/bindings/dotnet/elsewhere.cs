// A library whose path the host gives: the runtime binds the declarations to it, although it is not beside the program.

using System;
using System.IO;
using System.Threading.Tasks;
using Orlindex;
using static Tests;

internal static class ElsewhereTests
{
    private static async Task SignsIn()
    {
        Directory.CreateDirectory("elsewhere");
        foreach (string file in new[] { "Orlindex.dll", "Pellwick.exe", "PellwickClient.dll",
                                        "TALIXVersionCompatibility.config" })
            File.Move(file, Path.Combine("elsewhere", file));
        OrlindexOptions options = Options();
        options.LibraryPath = Path.Combine("elsewhere", "Orlindex.dll");
        using (var client = new OrlindexClient(options))
        {
            await client.SignInAsync();
            Equal((await client.GetUserAsync()).FirstName, "Sam");
            await client.QuitServerProcessAsync(Patience);
        }
    }

    public static int Main()
    {
        Run("signs in with a library elsewhere", SignsIn);
        return Finish();
    }
}
