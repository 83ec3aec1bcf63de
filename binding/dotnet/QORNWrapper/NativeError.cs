using System;
using System.Runtime.InteropServices;

namespace Morvenhal.RF.KST.QORNWrapper
{
    /// <summary>A failure as the native library records it; its texts are static there.</summary>
    [StructLayout(LayoutKind.Sequential)]
    internal readonly struct NativeError
    {
        private readonly int m_code;
        private readonly int m_line;
        private readonly IntPtr m_message;
        private readonly IntPtr m_file;

        internal void ThrowIfFailed()
        {
            if (m_code != 0)
            {
                throw QORNExceptionCatcher.NewException(new QORNException(m_code, Text(m_message), Text(m_file), m_line));
            }
        }

        private static string Text(IntPtr text) => Marshal.PtrToStringAnsi(text) ?? string.Empty;
    }
}
