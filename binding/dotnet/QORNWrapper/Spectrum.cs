using System;
using System.Diagnostics;
using Microsoft.Win32.SafeHandles;
using Morvenhal.RF.KST.Shared;

namespace Morvenhal.RF.KST.QORNWrapper
{
    /// <summary>
    /// The centred magnitude spectrum of a block of samples: window, Fourier transform, magnitude, unit.
    /// </summary>
    /// <remarks>
    /// <para>A tone of amplitude A at bin k of N, A exp(j 2 pi k n / N), reads A at index k + N / 2. From the second block
    /// on nothing is allocated, if the destination has had the count before.</para>
    /// <para>What fails leaves as <see cref="QORNExceptionCatcher"/>, a lack of memory as
    /// <see cref="OutOfMemoryException"/>, a use after <see cref="Dispose"/> as <see cref="ObjectDisposedException"/>. An
    /// object serves one thread at a time.</para>
    /// </remarks>
    [DebuggerDisplay("{m_size} points")]
    public sealed class Spectrum : IDisposable
    {
        private readonly int m_size;
        private readonly SpectrumHandle m_pQorn;
        private readonly VecCplx32 m_vecCplx32In;
        private readonly VecReal32 m_vecReal32Out;
        private readonly VecReal32 m_vecReal32In;
        private bool m_disposed;

        /// <summary>Blocks of <paramref name="size"/> samples, the Blackman-Harris window, dBV.</summary>
        public Spectrum(int size) : this(size, QornWindowType.WindowBlackmanHarris)
        {
        }

        /// <summary>The same with another window, whose parameter is 0.</summary>
        public Spectrum(int size, QornWindowType window) : this(size, window, 0.0f)
        {
        }

        /// <summary>The same with the window's parameter: alpha for Gauss, beta for the Kaiser family.</summary>
        /// <exception cref="OutOfMemoryException">There is no memory, or the size is negative.</exception>
        public Spectrum(int size, QornWindowType window, float parameter)
        {
            m_vecCplx32In = new VecCplx32();
            m_vecReal32Out = new VecReal32();
            m_vecReal32In = new VecReal32();
            m_size = size;
            m_pQorn = new SpectrumHandle(size, GetNativeWindowType(window), parameter);
        }

        /// <summary>Releases the native objects if <see cref="Dispose"/> has not.</summary>
        // It may run as soon as the last field of an object that nobody knows has been read: operations end with KeepAlive.
        ~Spectrum() => Release();

        /// <summary>dBV, which is in force at first, or volts.</summary>
        public void SetUnit(PowerUnit unit)
        {
            RequireUndisposed();
            Native.qorn_spectrum_set_unit(m_pQorn, (int)unit, out NativeError error);
            error.ThrowIfFailed();
            GC.KeepAlive(this);
        }

        /// <summary>The number of points.</summary>
        public int GetSize()
        {
            RequireUndisposed();
            int size = Native.qorn_spectrum_size(m_pQorn);
            GC.KeepAlive(this);
            return size;
        }

        /// <summary>
        /// <paramref name="dst"/> becomes the two-sided spectrum of the real samples <paramref name="src"/>, in which a
        /// cosine of amplitude A reads A / 2 at either side of the middle.
        /// </summary>
        public void Apply(FloatArray dst, FloatArray src)
        {
            RequireUndisposed();
            try
            {
                Apply(dst, src, m_vecReal32In);
            }
            catch (Exception e) when (QORNExceptionCatcher.IsForeign(e))
            {
                throw QORNExceptionCatcher.NewException(e);
            }
        }

        /// <summary><paramref name="dst"/> becomes the spectrum of the IQ samples <paramref name="src"/>.</summary>
        public void Apply(FloatArray dst, IQArray src)
        {
            RequireUndisposed();
            try
            {
                Apply(dst, src, m_vecCplx32In);
            }
            catch (Exception e) when (QORNExceptionCatcher.IsForeign(e))
            {
                throw QORNExceptionCatcher.NewException(e);
            }
        }

        /// <summary>Releases the native objects. Further calls do nothing.</summary>
        public void Dispose()
        {
            Release();
            GC.SuppressFinalize(this);
        }

        private static int GetNativeWindowType(QornWindowType window) => (int)window;

        // The native vector sees the pinned array for the time of the call: a copy would cost a tenth of the spectrum.
        private unsafe void Apply<T>(FloatArray dst, KSTArray<T> src, NativeVector<T> seeing) where T : unmanaged
        {
            int n = Helper.BlockOf(src, out T[] block);
            fixed (T* first = block)
            {
                Native.qorn_spectrum_apply_block(m_pQorn, m_vecReal32Out, seeing, first, n, out NativeError error);
                error.ThrowIfFailed();
            }
            Helper.CopyFloat(m_vecReal32Out, dst);
            GC.KeepAlive(this);
        }

        private void RequireUndisposed()
        {
            if (m_disposed) throw new ObjectDisposedException(nameof(Spectrum));
        }

        // The finaliser may come here after a constructor that failed, with some of the fields still null.
        private void Release()
        {
            if (m_disposed) return;
            m_disposed = true;
            m_pQorn?.Dispose();
            m_vecCplx32In?.Dispose();
            m_vecReal32Out?.Dispose();
            m_vecReal32In?.Dispose();
        }
    }

    /// <summary>Owns a native spectrum.</summary>
    internal sealed class SpectrumHandle : SafeHandleZeroOrMinusOneIsInvalid
    {
        // Its window and its vectors hold this many bytes for each point.
        private const int BytesPerPoint = 40;
        private readonly NativeMemory m_memory = new NativeMemory();

        internal SpectrumHandle(int size, int window, float parameter) : base(true)
        {
            Native.RequireInterface();
            SetHandle(Native.qorn_spectrum_create(size, window, parameter, out NativeError error));
            error.ThrowIfFailed();
            m_memory.HoldAtLeast(size, BytesPerPoint);
        }

        protected override bool ReleaseHandle()
        {
            Native.qorn_spectrum_destroy(handle);
            m_memory.HoldNothing();
            return true;
        }
    }
}
