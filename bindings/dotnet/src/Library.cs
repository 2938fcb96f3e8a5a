using System;
using System.Collections.Generic;
using System.ComponentModel;
using System.IO;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;

namespace Orlindex
{
    /// <summary>Finds Orlindex.dll, loads it and checks that it is the library that the declarations describe. The runtime then
    /// binds the declarations to the loaded library.</summary>
    internal static class Library
    {
        private const string FileName = "Orlindex.dll";
        private const string Kit = "Copy the 64-bit Orlindex.dll of the kit beside the program, and build the program for x64.";
        private const string Update =
            "Use the Orlindex.dll of the kit that this package came with, or a later one of the same major version.";

        // The library's own directory and the system's, but not the current directory and not PATH.
        private const uint SearchDllLoadDirectory = 0x100;
        private const uint SearchSystem32 = 0x800;

        private static readonly object gate = new object();
        private static string loaded;

        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        private delegate talix_status_code GetVersions(ref talix_versions versions);

        /// <summary>Loads the library once in a process.</summary>
        /// <param name="given">The path, or null for the one beside the program.</param>
        internal static void Load(string given)
        {
            lock (gate)
            {
                string path = given == null ? FindBesideTheProgram() : Path.GetFullPath(given);
                if (loaded == null)
                {
                    Check(path, given != null);
                    loaded = path;
                }
                else if (given != null && !string.Equals(path, loaded, StringComparison.OrdinalIgnoreCase))
                    throw new OrlindexLibraryException(path, "this process has loaded " + loaded + " already",
                                                       "Use one library in a process.");
            }
        }

        /// <summary>The folders in which the runtime looks for a library of this program.</summary>
        private static IEnumerable<string> ProgramFolders()
        {
            string folders = AppDomain.CurrentDomain.GetData("NATIVE_DLL_SEARCH_DIRECTORIES") as string ?? "";
            yield return AppDomain.CurrentDomain.BaseDirectory;
            foreach (string folder in folders.Split(new[] { ';' }, StringSplitOptions.RemoveEmptyEntries))
                yield return folder;
            string assembly = typeof(Library).Assembly.Location;
            if (!string.IsNullOrEmpty(assembly))
                yield return Path.GetDirectoryName(assembly);
        }

        private static string FindBesideTheProgram()
        {
            string[] candidates = ProgramFolders().Select(folder => Path.GetFullPath(Path.Combine(folder, FileName))).ToArray();
            return candidates.FirstOrDefault(File.Exists) ?? candidates[0];
        }

        private static void Check(string path, bool isGiven)
        {
            CheckFile(path);
            string other = FindBesideTheProgram();
            if (isGiven && File.Exists(other) && !string.Equals(path, other, StringComparison.OrdinalIgnoreCase))
                throw new OrlindexLibraryException(path, "the runtime would load " + other + " instead", "Remove one of the two.");
            IntPtr module = LoadLibraryEx(path, IntPtr.Zero, SearchDllLoadDirectory | SearchSystem32);
            if (module == IntPtr.Zero)
            {
                var cause = new Win32Exception(Marshal.GetLastWin32Error());
                throw new OrlindexLibraryException(
                    path, "the system cannot load it (error " + cause.NativeErrorCode + ", " + cause.Message + ")", Kit, cause);
            }
            try
            {
                CheckVersion(path, module);
                CheckFunctions(path, module);
            }
            catch (OrlindexLibraryException)
            {
                // The right library looks for itself by its name, and must not find this one. Nothing is bound to it yet.
                FreeLibrary(module);
                throw;
            }
        }

        private static void CheckFile(string path)
        {
            if (Path.DirectorySeparatorChar != '\\')
                throw new OrlindexLibraryException(path, "this system is not Windows", "Run the program on 64-bit Windows.");
            int machine;
            try
            {
                machine = MachineOf(path);
            }
            catch (Exception error) when (error is FileNotFoundException || error is DirectoryNotFoundException)
            {
                throw new OrlindexLibraryException(path, "there is no such file", Kit, error);
            }
            catch (Exception error) when (error is IOException || error is UnauthorizedAccessException)
            {
                throw new OrlindexLibraryException(path, "it cannot be read (" + error.Message + ")", Kit, error);
            }
            if (IntPtr.Size != 8)
                throw new OrlindexLibraryException(path, "this process is 32-bit, and the package supports 64-bit ones only", Kit);
            if (machine != 0 && machine != 0x8664)
                throw new OrlindexLibraryException(
                    path, "it is built for " + MachineName(machine) + ", and this process is 64-bit x64", Kit);
        }

        private static string MachineName(int machine)
        {
            return machine == 0x14c ? "32-bit x86" : machine == 0xaa64 ? "64-bit ARM" : "machine 0x" + machine.ToString("x");
        }

        /// <summary>The processor that a Windows module is built for; 0 if the file is no Windows module.</summary>
        private static int MachineOf(string path)
        {
            using (var file = new FileStream(path, FileMode.Open, FileAccess.Read, FileShare.ReadWrite | FileShare.Delete))
            {
                byte[] header = new byte[64];
                if (file.Read(header, 0, header.Length) != header.Length || header[0] != 'M' || header[1] != 'Z')
                    return 0;
                file.Position = BitConverter.ToUInt32(header, 60);
                byte[] signature = new byte[6];
                bool isModule = file.Read(signature, 0, signature.Length) == signature.Length && signature[0] == 'P' &&
                                signature[1] == 'E' && signature[2] == 0 && signature[3] == 0;
                return isModule ? BitConverter.ToUInt16(signature, 4) : 0;
            }
        }

        private static void CheckVersion(string path, IntPtr module)
        {
            IntPtr function = GetProcAddress(module, "talix_get_versions");
            if (function == IntPtr.Zero)
                return; // CheckFunctions names it.
            using (var server = new Utf8Buffer(1024))
            using (var own = new Utf8Buffer(1024))
            {
                var record = new talix_versions {
                    server_version = server.Pointer, server_version_size = server.Size,
                    sdk_version = own.Pointer, sdk_version_size = own.Size
                };
                Marshal.GetDelegateForFunctionPointer<GetVersions>(function)(ref record);
                Version found;
                Version needed = Version.Parse(Talix.LibraryVersion);
                if (Version.TryParse(own.Text, out found) && found.Major == needed.Major && found >= needed)
                    return;
                string text = own.Text.Length == 0 ? "unknown" : own.Text;
                throw new OrlindexLibraryException(path, "it has the version " + text + ", and this package needs " + needed +
                                                         " or a later version " + needed.Major + ".x", Update);
            }
        }

        private static void CheckFunctions(string path, IntPtr module)
        {
            string[] missing = typeof(Talix).GetMethods(BindingFlags.Public | BindingFlags.Static)
                                   .Select(method => method.Name)
                                   .Where(name => GetProcAddress(module, name) == IntPtr.Zero)
                                   .ToArray();
            if (missing.Length > 0)
                throw new OrlindexLibraryException(path, "it does not export " + string.Join(", ", missing) +
                                                         ", so it is another version or another library", Update);
        }

        [DllImport("kernel32.dll", EntryPoint = "LoadLibraryExW", CharSet = CharSet.Unicode, SetLastError = true,
                   ExactSpelling = true)]
        private static extern IntPtr LoadLibraryEx(string path, IntPtr reserved, uint flags);

        [DllImport("kernel32.dll", ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.Bool)]
        private static extern bool FreeLibrary(IntPtr module);

        [DllImport("kernel32.dll", CharSet = CharSet.Ansi, BestFitMapping = false, ThrowOnUnmappableChar = true,
                   ExactSpelling = true)]
        private static extern IntPtr GetProcAddress(IntPtr module, string name);
    }
}
