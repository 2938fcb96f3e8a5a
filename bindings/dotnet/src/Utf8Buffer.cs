using System;
using System.Runtime.InteropServices;
using System.Text;

namespace Orlindex
{
    /// <summary>Unmanaged memory that the library writes a UTF-8 text into, or reads one from.</summary>
    public sealed class Utf8Buffer : IDisposable
    {
        /// <summary>Memory of this many bytes, with an empty text.</summary>
        public Utf8Buffer(int size)
        {
            Size = size;
            Pointer = Marshal.AllocHGlobal(size);
            Marshal.WriteByte(Pointer, 0);
        }

        /// <summary>Memory with a text that the library reads.</summary>
        public Utf8Buffer(string text) : this(Encoding.UTF8.GetByteCount(text) + 1)
        {
            byte[] bytes = Encoding.UTF8.GetBytes(text);
            Marshal.Copy(bytes, 0, Pointer, bytes.Length);
            Marshal.WriteByte(Pointer, bytes.Length, 0);
        }

        /// <summary>The address of the memory.</summary>
        public IntPtr Pointer { get; private set; }

        /// <summary>Its size in bytes.</summary>
        public int Size { get; private set; }

        /// <summary>The text up to its zero.</summary>
        public string Text
        {
            get
            {
                int length = 0;
                while (length < Size && Marshal.ReadByte(Pointer, length) != 0)
                    ++length;
                byte[] bytes = new byte[length];
                Marshal.Copy(Pointer, bytes, 0, length);
                return Encoding.UTF8.GetString(bytes);
            }
        }

        /// <summary>Frees the memory.</summary>
        public void Dispose()
        {
            Marshal.FreeHGlobal(Pointer);
            Pointer = IntPtr.Zero;
        }
    }
}
