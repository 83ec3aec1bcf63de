using System;

namespace Morvenhal.RF.KST.QORNWrapper
{
    /// <summary>
    /// Tells the garbage collector how much native memory hangs on a small managed object, so that it looks for
    /// unreachable ones before that memory runs out.
    /// </summary>
    internal sealed class NativeMemory
    {
        private long m_bytes;

        /// <summary>The object holds count elements of the given number of bytes, or more.</summary>
        internal void HoldAtLeast(int count, int elementSize)
        {
            long more = (long)count * elementSize - m_bytes;
            if (more <= 0) return;
            GC.AddMemoryPressure(more);
            m_bytes += more;
        }

        /// <summary>The object's memory is freed.</summary>
        internal void HoldNothing()
        {
            if (m_bytes > 0) GC.RemoveMemoryPressure(m_bytes);
            m_bytes = 0;
        }
    }
}
