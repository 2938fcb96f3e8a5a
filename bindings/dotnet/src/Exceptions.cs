using System;

namespace Orlindex
{
    /// <summary>A function of the library returned another code than IdSuccess.</summary>
    public sealed class OrlindexException : Exception
    {
        private const string Doctor = " Run orlindex-doctor --host \"<folder of the program>\" --load: it takes the steps of a " +
                                      "start-up and names the one that fails.";

        /// <summary>For the result of a function.</summary>
        public OrlindexException(string operation, talix_status_code code) : base(Word(operation, code))
        {
            Operation = operation;
            Code = code;
            HResult = (int)code;
        }

        /// <summary>The function, such as talix_login.</summary>
        public string Operation { get; private set; }

        /// <summary>The status code. A code of the client plugin module has no name.</summary>
        public talix_status_code Code { get; private set; }

        /// <summary>What the code means.</summary>
        public string Meaning
        {
            get { return MeaningOf(Code); }
        }

        private static string MeaningOf(talix_status_code code)
        {
            return StatusMeanings.Of((int)code) ??
                   "The client plugin module returned this code; its documentation has the meaning.";
        }

        private static string Word(string operation, talix_status_code code)
        {
            string name = StatusMeanings.Of((int)code) == null ? "" : " (" + code + ")";
            return operation + " returned " + (int)code + name + ": " + MeaningOf(code) +
                   (code == talix_status_code.IdClientUnavailable ? Doctor : "");
        }
    }

    /// <summary>Orlindex.dll could not be loaded, or is not the library that this package needs.</summary>
    public sealed class OrlindexLibraryException : Exception
    {
        /// <summary>For a file that cannot be used.</summary>
        public OrlindexLibraryException(string path, string reason, string remedy, Exception inner = null)
            : base("cannot use " + path + ": " + reason + ". " + remedy, inner)
        {
            Path = path;
            Reason = reason;
            Remedy = remedy;
        }

        /// <summary>The file that was tried.</summary>
        public string Path { get; private set; }

        /// <summary>Why it cannot be used.</summary>
        public string Reason { get; private set; }

        /// <summary>What to do.</summary>
        public string Remedy { get; private set; }
    }
}
