namespace Morvenhal.RF.KST.QORNWrapper
{
    /// <summary>
    /// The kinds of windows, under the numbers of the native library. A <see cref="Spectrum"/> with one that is not offered
    /// refuses to work.
    /// </summary>
    public enum QornWindowType
    {
        /// <summary>No taper.</summary>
        WindowRectangle = 0,

        /// <summary>Blackman-Harris, the window of a <see cref="Spectrum"/> unless another is chosen.</summary>
        WindowBlackmanHarris = 1,

        /// <summary>Flat top: reads the level of a tone between two points.</summary>
        WindowFlatTop = 2,

        /// <summary>Hann.</summary>
        WindowHann = 3,

        /// <summary>Gauss; the parameter is alpha.</summary>
        WindowGauss = 4,

        /// <summary>The 6 dB bandwidth shape of CISPR; the parameter is beta.</summary>
        WindowCISPR6dB = 5,

        /// <summary>The same shape for MIL-STD-461; the parameter is beta.</summary>
        WindowMil6dB = 6,

        /// <summary>Kaiser; the parameter is beta.</summary>
        WindowKaiser = 7,

        /// <summary>Hamming.</summary>
        WindowHamming = 8,

        /// <summary>Not offered.</summary>
        WindowBlackman = 9,

        /// <summary>Not offered.</summary>
        WindowBarlett = 10,

        /// <summary>Not offered.</summary>
        WindowTriangular = 11,

        /// <summary>Not offered.</summary>
        WindowTukey = 12,

        /// <summary>Not offered.</summary>
        WindowChebyshev = 13,

        /// <summary>Not offered.</summary>
        WindowUserDefined = 14,

        /// <summary>No window: not offered.</summary>
        WindowNone = 16,
    }
}
