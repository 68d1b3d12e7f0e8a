using System;
using System.Runtime.InteropServices;
using System.Text;

namespace BorvanUsb
{
    // Texts in the ANSI code page of the system.
    internal static unsafe class AnsiText
    {
        private const uint Ansi = 0;
        private const uint Utf8 = 65001;
        private const uint NoBestFit = 0x400;

        [DllImport("kernel32.dll", ExactSpelling = true)]
        private static extern uint GetACP();

        [DllImport("kernel32.dll", ExactSpelling = true)]
        private static extern int MultiByteToWideChar(
            uint page, uint flags, byte* text, int size, char* wide, int wideSize);

        [DllImport("kernel32.dll", ExactSpelling = true, CharSet = CharSet.Unicode)]
        private static extern int WideCharToMultiByte(
            uint page, uint flags, string wide, int wideSize, byte[] text, int size, IntPtr replacement,
            out int replaced);

        // A text in the library's encoding, with its terminating zero; null for null. A name that the code page can't
        // express would become another name.
        internal static byte[] Encode(string what, string text)
        {
            if (text == null)
            {
                return null;
            }
            if (text.IndexOf('\0') >= 0)
            {
                throw Refuse(what, text, "a name without a zero character");
            }
            if (GetACP() == Utf8)
            {
                return Encoding.UTF8.GetBytes(text + "\0");
            }
            var bytes = new byte[4 * text.Length + 1];
            int size = WideCharToMultiByte(
                Ansi, NoBestFit, text + "\0", text.Length + 1, bytes, bytes.Length, IntPtr.Zero, out int replaced);
            if (size == 0 || replaced != 0)
            {
                throw Refuse(what, text, "characters of the system's ANSI code page");
            }
            Array.Resize(ref bytes, size);
            return bytes;
        }

        // The text of a field of the library, up to its terminating zero if it has one.
        internal static string Decode(byte* field, int size)
        {
            int length = 0;
            while (length < size && field[length] != 0)
            {
                ++length;
            }
            if (length == 0)
            {
                return "";
            }
            char* wide = stackalloc char[length];
            int count = MultiByteToWideChar(Ansi, 0, field, length, wide, length);
            return new string(wide, 0, count);
        }

        private static BorvanException Refuse(string what, string text, string allowed) =>
            Arguments.NotAllowed(what, $"file \"{text}\"", allowed);
    }
}
